#include "znGeom/foundation/mesh/mesh_transform.h"

#include <cstddef>

#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/foundation/threads/parallel_for.h"

namespace znGeom {

using namespace znLinear;
using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// Whether there is nothing to do.
bool leavesAlone(const AffineMatrixFlt& matrix, const PointMesh& mesh)
{
    return mesh.getNumVertices() == 0 || equivalent(matrix, AffineMatrixFlt::Identity, epsilonTolFlt);
}

/// Handing out fewer than this would take longer than doing it.
ThreadPool& poolFor(int count)
{
    constexpr int parallelCount = 10000;
    return count < parallelCount ? ThreadPool::getSingleThreadedPool() : ThreadPool::get();
}

/// Positions and vertex normals.
/// \return whether there are normals
bool transformVertices(PointMesh& mesh, const AffineMatrixFlt& matrix)
{
    meshTransform(mesh.getVerticesRaw(), mesh.getNumVertices(), matrix);
    float* const normals = mesh.getNormalsRaw();
    if (normals) meshTransformNormals(normals, mesh.getNumVertices(), matrix);
    return normals != nullptr;
}

} // namespace

void meshTransform(PointMesh& mesh, const AffineMatrixFlt& matrix)
{
    if (leavesAlone(matrix, mesh)) return;
    MeshModification modification(&mesh, MeshModification::GeometryChanged);
    if (transformVertices(mesh, matrix)) modification.normalsModified();
    mesh.modified(modification);
}

void meshTransform(CompactMesh& mesh, const AffineMatrixFlt& matrix)
{
    if (leavesAlone(matrix, mesh)) return;
    MeshModification modification(&mesh, MeshModification::GeometryChanged);
    if (transformVertices(mesh, matrix)) modification.normalsModified();
    if (float* const normals = mesh.getTriangleNormalsRaw())
        meshTransformNormals(normals, mesh.getNumTriangles(), matrix);
    modification.triangleNormalsModified();
    mesh.modified(modification);
}

void meshTransform(float* points, int count, const AffineMatrixFlt& matrix)
{
    const AffineMatrix placement(matrix);
    MeshVertex* const vertices = reinterpret_cast<MeshVertex*>(points);
    znUtil::parallelFor(poolFor(count), count, [=](Slice slice, int) {
        for (int i = slice.begin; i < slice.end; ++i) {
            const Point moved = vertices[i].asPoint() * placement;
            vertices[i].set(&moved.x);
        }
    });
}

void meshTransformNormals(float* normals, int count, const AffineMatrixFlt& matrix)
{
    bool regular;
    const AffineMatrix placement = AffineMatrix(matrix).normalMatrix(regular);
    MeshNormal* const directions = reinterpret_cast<MeshNormal*>(normals);
    znUtil::parallelFor(poolFor(count), count, [=](Slice slice, int) {
        for (int i = slice.begin; i < slice.end; ++i) directions[i] = Normal(directions[i].asVector() * placement);
    });
}

} // namespace znGeom
