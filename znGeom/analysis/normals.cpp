#include "znGeom/analysis/normals.h"

#include <algorithm>
#include <cmath>

#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/parallel_for.h"

namespace znGeom {

using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// For lengths whose square is beyond `float`.
void normalizeLong(MeshNormal& normal)
{
    const znLinear::Vector vector = normal.asVector(), unit = vector / vector.length();
    normal.set(znLinear::narrow(unit.dx), znLinear::narrow(unit.dy), znLinear::narrow(unit.dz));
}

void normalize(MeshNormal& normal)
{
    const float length2 = normal.x * normal.x + normal.y * normal.y + normal.z * normal.z;
    if (std::isinf(length2)) return normalizeLong(normal);
    if (double(length2) <= znLinear::epsilon2Tol) {
        normal.set(0, 0, 1);
        return;
    }
    const float scale = static_cast<float>(1.0 / std::sqrt(double(length2)));
    normal.set(normal.x * scale, normal.y * scale, normal.z * scale);
}

class MeshNormalize : public znUtil::ThreadedAlg
{
public:
    MeshNormalize(MeshNormal* normals, int count) : m_normals(normals), m_count(count) {}

    void execute(int threadIndex, int numThreads) override
    {
        const Slice slice(m_count, threadIndex, numThreads);
        for (int i = slice.begin; i < slice.end; ++i) normalize(m_normals[i]);
    }

private:
    MeshNormal* m_normals;
    int m_count;
};

/// Each thread owns a slice of the vertices, looks at all triangles, and adds their normals to the vertices it owns. So
/// every sum is taken in the order of the triangles by one thread, with nothing to wait for; only triangles whose
/// corners have several owners are computed more than once.
class VertexNormals : public znUtil::ThreadedAlg
{
public:
    VertexNormals(const CompactMesh& mesh, MeshNormal* normals)
        : m_vertices(mesh.getVerticesRaw()), m_triangles(mesh.getTriangles()), m_normals(normals),
          m_numVertices(mesh.getNumVertices()), m_numTriangles(mesh.getNumTriangles())
    {}

    void execute(int threadIndex, int numThreads) override
    {
        const Slice owned(m_numVertices, threadIndex, numThreads);
        std::fill(m_normals + owned.begin, m_normals + owned.end, MeshNormal{0, 0, 0});
        sum(owned);
        for (int v = owned.begin; v < owned.end; ++v) normalize(m_normals[v]);
    }

private:
    void sum(Slice owned)
    {
        const auto owns = [owned](int vertex) { return vertex >= owned.begin && vertex < owned.end; };
        for (int i = 0; i < m_numTriangles; ++i) {
            const MeshTriangle& triangle = m_triangles[i];
            if (!owns(triangle[0]) && !owns(triangle[1]) && !owns(triangle[2])) continue;
            MeshNormal normal;
            normal = meshTriNormal(m_vertices, triangle.corners);
            for (const int vertex : triangle.corners)
                if (owns(vertex)) add(m_normals[vertex], normal);
        }
    }

    static void add(MeshNormal& sum, const MeshNormal& normal)
    {
        sum.set(sum.x + normal.x, sum.y + normal.y, sum.z + normal.z);
    }

    const float* m_vertices;
    const MeshTriangle* m_triangles;
    MeshNormal* m_normals;
    int m_numVertices, m_numTriangles;
};

} // namespace

void meshComputeNormals(CompactMesh& mesh)
{
    if (mesh.getNumVertices() == 0) return;
    debugChannel().print("meshComputeNormals:  vertices %d  triangles %d\n", mesh.getNumVertices(),
                         mesh.getNumTriangles());
    mesh.allocNormalArray();
    VertexNormals alg(mesh, mesh.getNormals());
    ThreadPool::get().run(alg);
    mesh.setNormalsComputed(true);

    MeshModification modification(&mesh, MeshModification::AttributesChanged);
    modification.normalsModified();
    mesh.modified(modification);
}

void meshComputeTriangleNormals(CompactMesh& mesh)
{
    const int numTriangles = mesh.getNumTriangles();
    if (numTriangles == 0) return;
    debugChannel().print("meshComputeTriangleNormals:  vertices %d  triangles %d\n", mesh.getNumVertices(),
                         numTriangles);
    znOS::StopWatch watch;
    mesh.allocTriangleNormalArray();
    const CompactMesh& source = mesh;
    const float* vertices = source.getVerticesRaw();
    const MeshTriangle* triangles = source.getTriangles();
    MeshNormal* normals = mesh.getTriangleNormals();
    znUtil::parallelFor(ThreadPool::get(), numTriangles, [=](Slice slice, int) {
        for (int i = slice.begin; i < slice.end; ++i) normals[i] = meshTriNormal(vertices, triangles[i].corners);
    });
    debugChannel().print("  normalized: %f s\n", watch.stop());

    MeshModification modification(&mesh, MeshModification::AttributesChanged);
    modification.triangleNormalsModified();
    mesh.modified(modification);
}

void meshNormalize(PointMesh& mesh)
{
    MeshNormal* normals = mesh.getNormals();
    if (!normals) return;
    MeshNormalize alg(normals, mesh.getNumVertices());
    ThreadPool::get().run(alg);

    MeshModification modification(&mesh, MeshModification::AttributesChanged);
    modification.normalsModified();
    mesh.modified(modification);
}

void meshNormalize(float* normals, int count)
{
    MeshNormalize alg(reinterpret_cast<MeshNormal*>(normals), count);
    ThreadPool::get().run(alg);
}

} // namespace znGeom
