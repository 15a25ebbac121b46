#include "znGeom/scopes/convert_rep.h"

#include <algorithm>
#include <memory>

#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/scopes/internal/convert_impl.h"
#include "znGeom/topology/internal/triangle_builder.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

namespace {

BitVector resized(const BitVector& bits, int size)
{
    BitVector result(bits);
    result.resize(size);
    return result;
}

/// The triangles of a region all of whose corners are among its vertices.
BitVector whollyInside(const CompactMesh& mesh, const BitVector& triangles, const BitVector& vertices)
{
    const BitVector asked = resized(triangles, mesh.getNumTriangles());
    BitVector result(asked);
    forEachSetBit(asked, [&](int t) {
        const MeshTriangle& triangle = mesh.getTriangles()[t];
        if (!vertices[triangle[0]] || !vertices[triangle[1]] || !vertices[triangle[2]]) result.clearBit(t);
    });
    return result;
}

} // namespace

ConvertImpl::ConvertImpl(const CompactMesh& source, const BitVector& triangleSet, const BitVector& vertexSet,
                         const MeshAdjTris& adjTris, TopoMemory* memory)
    : mesh(source), vertices(resized(vertexSet, source.getNumVertices())),
      triangles(whollyInside(source, triangleSet, vertices)), adjacency(adjTris), topoMesh(memory),
      m_vertexRanks(vertices), m_triangleRanks(triangles), m_known(vertices)
{}

ConvertImpl::~ConvertImpl() = default;

/// The triangles of the region, over the places of their corners among its vertices.
zn::vector<MeshTriangle> ConvertImpl::renumberedTriangles() const
{
    const auto places = std::make_unique_for_overwrite<int[]>(static_cast<size_t>(mesh.getNumVertices()));
    for (int place = 0; place < m_members.size(); ++place) places[static_cast<size_t>(m_members[place])] = place;
    zn::vector<MeshTriangle> renumbered;
    renumbered.reserve(triangles.getNumSetBits());
    const auto placeOf = [&places](int corner) { return places[static_cast<size_t>(corner)]; };
    forEachSetBit(triangles, [&](int t) {
        const auto [a, b, c] = mesh.getTriangles()[t].corners;
        renumbered.append(MeshTriangle{{placeOf(a), placeOf(b), placeOf(c)}});
    });
    return renumbered;
}

TopoMesh& ConvertImpl::extract()
{
    znOS::StopWatch watch;
    m_members = listMembers(vertices, vertices.getSize());
    const int numTriangles = triangles.getNumSetBits();
    if (m_members.size() == mesh.getNumVertices() && numTriangles == mesh.getNumTriangles())
        internal::buildTriangles(topoMesh, mesh.getVertices(), m_members, mesh.getTriangles(), numTriangles);
    else
        internal::buildTriangles(topoMesh, mesh.getVertices(), m_members, renumberedTriangles().data(), numTriangles);
    m_firstVertex = topoMesh.firstVertex();
    m_firstFace = topoMesh.firstFace();
    debugChannel().print("MeshConvertRep::extract: %f s\n", watch.stop());
    return topoMesh;
}

MeshConvertRep::MeshConvertRep(const CompactMesh& mesh, const BitVector& triangles, const BitVector& vertices,
                               const MeshAdjTris& adjacency)
    : m_impl(new ConvertImpl(mesh, triangles, vertices, adjacency))
{}

MeshConvertRep::MeshConvertRep(const CompactMesh& mesh, const MeshAdjTris& adjacency)
    : MeshConvertRep(mesh, mesh.getSelectedTriangles(), mesh.getSelectedTriangles(), adjacency)
{}

MeshConvertRep::MeshConvertRep(ConvertImpl* impl) : m_impl(impl) {}

MeshConvertRep::~MeshConvertRep() = default;

TopoMesh& MeshConvertRep::extract() { return m_impl->extract(); }

TopoMeshVertex MeshConvertRep::getTopoMeshVertex(int vertexIndex) const { return m_impl->vertexOf(vertexIndex); }

void MeshConvertRep::copy(TopoMeshCoord& out, const MeshCoord& in) const
{
    out = {};
    out.face = m_impl->faceOf(in.triangle);
    if (out.face) out.w0 = in.weights[0], out.w1 = in.weights[1], out.w2 = in.weights[2];
}

CompactMesh* meshConvertRep(TopoMesh& mesh)
{
    auto result = std::make_unique<CompactMesh>();
    result->resizeVertexArray(mesh.numVertices());
    zn::vector<int> indices(mesh.vertexNumbers()); // by number
    MeshVertex* position = result->getVertices();
    for (int index = 0; const TopoMeshVertex vertex : verticesOf(mesh)) {
        indices[vertex.number()] = index++;
        (position++)->set(&vertex->point.x);
    }
    int numTriangles = 0;
    for (const TopoMeshFace face : facesOf(mesh)) numTriangles += face.numVertices() - 2;
    result->resizeTriangleArray(numTriangles);
    MeshTriangle* triangle = result->getTriangles();
    for (const TopoMeshFace face : facesOf(mesh))
        for (TopoMeshEdge side = face->edge->next; side->next != face->edge; side = side->next)
            *triangle++ = {
                {indices[face->edge->origin.number()], indices[side->origin.number()], indices[endOf(side).number()]}};
    return result.release();
}

} // namespace znGeom
