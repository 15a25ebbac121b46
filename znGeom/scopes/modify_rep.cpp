#include "znGeom/scopes/modify_rep.h"

#include <algorithm>
#include <cstdint>

#include "znGeom/editing/delete_selected.h"
#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/scopes/internal/convert_impl.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

namespace {

/// The members of a selection that are not in a region.
zn::vector<int> membersOutside(const BitVector& selected, const BitVector& region)
{
    zn::vector<int> members;
    forEachSetBit(selected, [&](int i) {
        if (i < region.getSize() && !region[i]) members.append(i);
    });
    return members;
}

/// Selects members again after their numbers have changed. \param moved  their new numbers; -1 for those that went
template <typename Moved>
void selectAgain(const zn::vector<int>& members, BitVector& selected, int size, const Moved& moved)
{
    if (members.empty()) return;
    selected.resize(size);
    for (const int member : members)
        if (const int now = moved(member); now >= 0) selected.setBit(now);
}

/// Makes a selection equal to a set and sizes it.
void select(BitVector& selected, const BitVector& members, int size)
{
    selected = members;
    selected.resize(size);
}

} // namespace

class MeshModifyRep::ModifyImpl final : public ConvertImpl
{
public:
    ModifyImpl(CompactMesh& target, const BitVector& triangleSet, const BitVector& vertexSet,
               const MeshAdjTris& adjTris, TopoMemory* memory)
        : ConvertImpl(target, triangleSet, vertexSet, adjTris, memory), m_target(target)
    {}

    TopoMesh& extract() override
    {
        znOS::StopWatch watch;
        ConvertImpl::extract();
        m_interior.resize(vertices.getSize());
        for (const int v : m_members) {
            const std::span<const int> around = adjacency.around(v);
            if (std::all_of(around.begin(), around.end(), [this](int t) { return triangles[t]; })) m_interior.setBit(v);
        }
        debugChannel().print("MeshModifyRep::extract: %f s\n", watch.stop());
        return topoMesh;
    }

    void removeVertex(TopoMeshVertex vertex)
    {
        const int compact = compactVertexOf(vertex);
        if (compact < 0) return;
        m_interior.clearBit(compact);
        m_members[vertex.number()] = -1;
        forgetVertex(compact);
    }

    void merge(Array<int>* vertexRemap, ArrayMap<TopoMeshVertex, int>* newIndices)
    {
        znOS::StopWatch watch;
        const zn::vector<int> newPlaces = placeVertices();
        const zn::Reference<Remap> moved = replaceRegion(newPlaces);
        if (vertexRemap) traceVertices(*moved, newPlaces, *vertexRemap);
        if (newIndices) listPlaces(*moved, newPlaces, *newIndices);
        debugChannel().print("MeshModifyRep::merge(): %f s\n", watch.stop());
    }

private:
    /// -1 for a vertex that the edit made, and for one that was given up.
    int compactVertexOf(TopoMeshVertex vertex) const
    {
        return vertex && vertex.number() < m_members.size() ? m_members[vertex.number()] : -1;
    }

    /// Where each vertex of the half-edge mesh goes, by its number: the frontier stays, all others come after the old
    /// vertices.
    zn::vector<int> placeVertices()
    {
        zn::vector<int> places(topoMesh.vertexNumbers(), -1);
        std::int64_t next = m_target.getNumVertices();
        for (const TopoMeshVertex vertex : verticesOf(topoMesh)) {
            const int compact = compactVertexOf(vertex);
            const bool stays = compact >= 0 && !m_interior[compact];
            places[vertex.number()] = stays ? compact : zn::checkedSize(next++);
        }
        m_numPlaces = zn::checkedSize(next);
        return places;
    }

    /// Appends what the half-edge mesh holds and deletes what was taken out.
    /// \return where the vertices are then
    zn::Reference<Remap> replaceRegion(const zn::vector<int>& places)
    {
        BitVector &ofVertices = m_target.getSelectedVertices(), &ofTriangles = m_target.getSelectedTriangles();
        const zn::vector<int> otherVertices = membersOutside(ofVertices, vertices);
        const zn::vector<int> otherTriangles = membersOutside(ofTriangles, triangles);
        appendVertices(places);
        appendTriangles(places);
        select(ofVertices, vertices, m_target.getNumVertices());
        select(ofTriangles, triangles, m_target.getNumTriangles());
        const zn::Reference<Remap> moved = deleteSelected();
        selectAgain(otherVertices, ofVertices, m_target.getNumVertices(), *moved);
        selectAgain(otherTriangles, ofTriangles, m_target.getNumTriangles(),
                    [this](int t) { return t - trianglesBelow(t); });
        return moved;
    }

    void appendVertices(const zn::vector<int>& places)
    {
        m_target.resizeVertexArray(m_numPlaces);
        MeshVertex* const positions = m_target.getVertices();
        for (const TopoMeshVertex vertex : verticesOf(topoMesh))
            positions[places[vertex.number()]].set(&vertex->point.x);
    }

    void appendTriangles(const zn::vector<int>& places)
    {
        const int numOld = m_target.getNumTriangles();
        m_target.resizeTriangleArray(zn::checkedSize(std::int64_t{numOld} + topoMesh.numFaces()));
        MeshTriangle* triangle = m_target.getTriangles() + numOld;
        for (const TopoMeshFace face : facesOf(topoMesh)) {
            const TopoMeshEdge second = face->edge->next;
            *triangle++ = {
                {places[face->edge->origin.number()], places[second->origin.number()], places[endOf(second).number()]}};
        }
    }

    /// Without a triangle in the region there is nothing to delete, and the change is reported here.
    zn::Reference<Remap> deleteSelected()
    {
        MeshDeleteSelected deletion(m_target);
        deletion();
        if (deletion.vertexRemap()) return deletion.vertexRemap();
        const int numVertices = m_target.getNumVertices();
        zn::Reference<Remap> same(new Remap(numVertices, numVertices));
        same->setSequential();
        m_target.clearSelection();
        MeshModification modification(&m_target, MeshModification::TopologyChanged);
        m_target.modified(modification);
        return same;
    }

    /// Vertices that survived the edit are found again under their new numbers.
    void traceVertices(const Remap& moved, const zn::vector<int>& places, Array<int>& vertexRemap) const
    {
        vertexRemap.resize(moved.getDomainSize());
        std::copy_n(moved.data(), moved.getDomainSize(), vertexRemap.write());
        for (const TopoMeshVertex vertex : verticesOf(topoMesh))
            if (const int compact = compactVertexOf(vertex); compact >= 0 && moved(compact) < 0)
                vertexRemap[compact] = moved(places[vertex.number()]);
    }

    void listPlaces(const Remap& moved, const zn::vector<int>& places, ArrayMap<TopoMeshVertex, int>& newIndices) const
    {
        newIndices.clear();
        newIndices.reserve(topoMesh.numVertices());
        for (const TopoMeshVertex vertex : verticesOf(topoMesh))
            newIndices.append(vertex, moved(places[vertex.number()]));
        newIndices.sort();
    }

    CompactMesh& m_target;
    BitVector m_interior; ///< vertices all of whose triangles are in the region
    int m_numPlaces = 0;  ///< old vertices and new ones
};

MeshModifyRep::MeshModifyRep(CompactMesh& mesh, const BitVector& triangles, const BitVector& vertices,
                             const MeshAdjTris& adjacency, TopoMemory* memory)
    : MeshConvertRep(new ModifyImpl(mesh, triangles, vertices, adjacency, memory))
{}

MeshModifyRep::MeshModifyRep(CompactMesh& mesh, const MeshAdjTris& adjacency, TopoMemory* memory)
    : MeshModifyRep(mesh, mesh.getSelectedTriangles(), mesh.getSelectedVertices(), adjacency, memory)
{}

MeshModifyRep::~MeshModifyRep() = default;

MeshModifyRep::ModifyImpl& MeshModifyRep::impl() const { return static_cast<ModifyImpl&>(*getConvert()); }

TopoMesh& MeshModifyRep::extract() { return impl().extract(); }

void MeshModifyRep::removeVertex(TopoMeshVertex vertex) { impl().removeVertex(vertex); }

void MeshModifyRep::merge() { impl().merge(nullptr, nullptr); }

void MeshModifyRep::merge(Array<int>& vertexRemap, ArrayMap<TopoMeshVertex, int>* newIndices)
{
    impl().merge(&vertexRemap, newIndices);
}

} // namespace znGeom
