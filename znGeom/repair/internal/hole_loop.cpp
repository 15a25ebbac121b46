#include "znGeom/repair/internal/hole_loop.h"

#include <algorithm>
#include <numeric>
#include <tuple>

#include "znGeom/foundation/threads/bounded_sort.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

namespace {

/// Finds spikes: a vertex of one triangle in the place of another vertex of the rim.
class SpikeSearch
{
public:
    SpikeSearch(MeshModifyRep& scope, TopoMesh& mesh, const zn::vector<int>& loop) : m_scope(scope), m_mesh(mesh)
    {
        for (const int vertex : loop) m_vertices.append(scope.getTopoMeshVertex(vertex));
    }

    bool hasAllVertices() const
    {
        return std::all_of(m_vertices.begin(), m_vertices.end(), [](TopoMeshVertex v) { return v.isAlive(); });
    }

    /// Goes through the vertices of the rim in the order of their places. \return false at a triangle that nothing
    /// holds
    bool takeOff()
    {
        const zn::vector<int> order = orderByPlace();
        for (int previous = 0, current = 1; current < order.size(); ++current) {
            const int a = order[previous], b = order[current];
            bool isGone = false;
            if (equivalent(m_vertices[a].point(), m_vertices[b].point(), znLinear::epsilonTol)) {
                const bool isSpikeB = m_vertices[b].valence() == 1;
                if (isSpikeB && !takeOff(b)) return false;
                const bool isSpikeA = m_vertices[a].valence() == 1;
                if (isSpikeA && !takeOff(a)) return false;
                if (isSpikeA && isSpikeB) ++current; // the next one has nothing left to be compared with
                isGone = isSpikeB && !isSpikeA;
            }
            if (!isGone) previous = current;
        }
        return true;
    }

    void eraseFrom(zn::vector<int>& loop)
    {
        std::sort(m_gone.begin(), m_gone.end());
        zn::vector<int> kept;
        for (int i = 0; i < loop.size(); ++i)
            if (!std::binary_search(m_gone.begin(), m_gone.end(), i)) kept.append(loop[i]);
        loop.swap(kept);
    }

private:
    zn::vector<int> orderByPlace() const
    {
        zn::vector<int> order(m_vertices.size());
        std::iota(order.begin(), order.end(), 0);
        const auto key = [this](int i) {
            const znLinear::Point p = m_vertices[i].point();
            return std::tuple(p.x, p.y, p.z, i);
        };
        // Places that are not numbers are in no order.
        znUtil::boundedSort(order.begin(), order.end(), [&key](int a, int b) { return key(a) < key(b); });
        return order;
    }

    bool takeOff(int position)
    {
        const TopoMeshVertex vertex = m_vertices[position];
        if (vertex->edge->next->origin.valence() == 1 || vertex->edge->prev->origin.valence() == 1) return false;
        m_scope.removeVertex(vertex);
        m_mesh.deleteVertex(vertex);
        m_gone.append(position);
        return true;
    }

    MeshModifyRep& m_scope;
    TopoMesh& m_mesh;
    zn::vector<TopoMeshVertex> m_vertices;
    zn::vector<int> m_gone; ///< positions in the loop
};

bool isBoundaryEdge(TopoMeshVertex from, TopoMeshVertex to)
{
    for (const TopoMeshEdge e : outgoingOf(from))
        if (endOf(e) == to && !e->twin) return true;
    return false;
}

} // namespace

HoleOutcome prepareLoop(MeshModifyRep& scope, TopoMesh& mesh, zn::vector<int>& loop)
{
    SpikeSearch search(scope, mesh, loop);
    if (!search.hasAllVertices()) return HoleOutcome::NotABoundary;
    if (!search.takeOff()) return HoleOutcome::LooseTriangle;
    search.eraseFrom(loop);
    constexpr int longest = 46340; // whose square is an `int`
    if (loop.size() < 3) return HoleOutcome::NoLoop;
    if (loop.size() > longest) return HoleOutcome::TooLong;
    for (int i = 0; i < loop.size(); ++i) {
        const int next = loop[i + 1 < loop.size() ? i + 1 : 0];
        if (!isBoundaryEdge(scope.getTopoMeshVertex(loop[i]), scope.getTopoMeshVertex(next)))
            return HoleOutcome::NotABoundary;
    }
    return HoleOutcome::Filled;
}

} // namespace znGeom::internal
