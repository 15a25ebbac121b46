#include "znGeom/shells/internal/offset_shell.h"

#include "znGeom/foundation/linear/normal.h"
#include "znGeom/foundation/mesh/bit_vector.h"
#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/topology/topo_walks.h"
#include "znGeom/topology/twin.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

template <typename Handle, Handle (*Next)(Handle)>
zn::vector<Handle> listed(const TopoRange<Handle, Next>& range, int count)
{
    zn::vector<Handle> list;
    list.reserve(count);
    for (const Handle element : range) list.append(element);
    return list;
}

/// By their numbers. Invalid where a face has no area.
zn::vector<Normal> normalsOf(const zn::vector<TopoMeshFace>& faces)
{
    zn::vector<Normal> normals(faces.size());
    znUtil::parallelFor(znUtil::ThreadPool::get(), faces.size(), [&](znUtil::Slice slice, int) {
        for (int i = slice.begin; i < slice.end; ++i) {
            const TopoMeshEdge e = faces[i]->edge;
            const Point a = e->origin.point(), b = e->next->origin.point(), c = e->prev->origin.point();
            normals[i] = Normal(cross(c - b, a - b));
        }
    });
    return normals;
}

/// The normals of the faces around a vertex, each counted with the angle at which it meets its neighbours, so that the
/// way in which flat parts are divided plays no part. On flat ground that of a face.
Normal normalAt(TopoMeshVertex vertex, const zn::vector<Normal>& faceNormals)
{
    Vector sum;
    Normal fallback;
    for (const TopoMeshEdge e : outgoingOf(vertex)) {
        const Normal& here = faceNormals[e->face.number()];
        if (!fallback.isValid()) fallback = here;
        if (!e->twin) continue;
        const Normal& across = faceNormals[e->twin->face.number()];
        if (!here.isValid() || !across.isValid()) continue;
        const double weight = angle(here, across);
        sum += here * weight + across * weight;
    }
    return sum.length() < epsilonTol ? fallback : Normal(sum);
}

/// The half-edges without twins: those of the loops in their order, then all others. A face that repeats a vertex may
/// have one that ends where it begins; no wall can stand there.
zn::vector<TopoMeshEdge> listBorder(const TopoMesh& mesh, const zn::vector<TopoMeshVertex>& sources,
                                    const MeshBoundaries& boundaries)
{
    zn::vector<TopoMeshEdge> border;
    BitVector listed(mesh.edgeNumbers());
    const auto take = [&](TopoMeshEdge e) {
        if (e->twin || endOf(e) == e->origin || listed[e.number()]) return false;
        listed.setBit(e.number());
        border.append(e);
        return true;
    };
    for (int loop = 0; loop < boundaries.size(); ++loop)
        for (const int* v = boundaries.getStart(loop); v != boundaries.getEnd(loop); ++v) {
            const int next = v + 1 == boundaries.getEnd(loop) ? *boundaries.getStart(loop) : v[1];
            for (const TopoMeshEdge e : outgoingOf(sources[*v]))
                if (endOf(e) == sources[next] && take(e)) break;
        }
    for (const TopoMeshEdge e : edgesOf(mesh)) take(e);
    return border;
}

} // namespace

OffsetShell makeOffsetShell(TopoMesh& mesh, const MeshBoundaries& boundaries, double distance)
{
    const zn::vector<TopoMeshVertex> sources = listed(verticesOf(mesh), mesh.numVertices());
    const zn::vector<TopoMeshFace> faces = listed(facesOf(mesh), mesh.numFaces());
    const zn::vector<TopoMeshEdge> border = listBorder(mesh, sources, boundaries);
    const zn::vector<Normal> faceNormals = normalsOf(faces);
    zn::vector<Vector> normals(sources.size());
    znUtil::parallelFor(znUtil::ThreadPool::get(), sources.size(), [&](znUtil::Slice slice, int) {
        for (int i = slice.begin; i < slice.end; ++i) normals[i] = normalAt(sources[i], faceNormals).asVector();
    });

    OffsetShell shell;
    shell.normals.reserve(sources.size());
    shell.copies.reserve(sources.size());
    for (int i = 0; i < sources.size(); ++i) {
        shell.copies.append(mesh.allocVertex(sources[i].point() - normals[i] * distance));
        shell.normals.append(VectorFlt(normals[i]));
    }
    const auto copyOf = [&shell](TopoMeshVertex source) { return shell.copies[source.number()]; };
    for (const TopoMeshFace face : faces) {
        const TopoMeshEdge e = face->edge;
        mesh.allocTriangle(copyOf(e->prev->origin), copyOf(endOf(e)), copyOf(e->origin));
    }
    for (const TopoMeshEdge e : border) {
        const TopoMeshVertex v = e->origin, w = endOf(e);
        mesh.allocTriangle(w, v, copyOf(v));
        mesh.allocTriangle(copyOf(v), copyOf(w), w);
    }
    meshTwin(mesh);
    return shell;
}

} // namespace znGeom::internal
