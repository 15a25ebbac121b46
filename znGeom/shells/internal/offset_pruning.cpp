#include "znGeom/shells/internal/offset_pruning.h"

#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/topology/edge_swapper.h"
#include "znGeom/topology/internal/plain_fan.h"
#include "znGeom/topology/topo_iterators.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using znLinear::Vector;

OffsetRemoval::OffsetRemoval(TopoMesh& mesh, BitVector& changed)
    : m_mesh(mesh), m_changed(changed), m_isSwapped(mesh.edgeNumbers())
{}

bool OffsetRemoval::remove(TopoMeshVertex vertex)
{
    if (!isPlainFan(vertex)) return false;
    m_queue.clear();
    m_isSwapped.next();
    if (!swapDownToThree(vertex)) return false;
    for (const TopoMeshEdge spoke : fanOf(vertex)) m_changed.setBit(endOf(spoke).number());
    m_mesh.deleteVertex(vertex);
    improve();
    return true;
}

/// The step goes before the swap: the half-edge that was just left is the one that goes.
bool OffsetRemoval::swapDownToThree(TopoMeshVertex vertex)
{
    const std::uint32_t stamp = m_isSwapped.next();
    int valence = vertex.valence();
    for (TopoMeshEdgeVertexIterator spokes(vertex); valence > 3 && spokes.valid();) {
        const TopoMeshEdge spoke = spokes.edge;
        spokes.next();
        if (!swap(spoke)) continue;
        --valence;
        m_queue.push_back(spoke);
        m_isSwapped.mark(spoke.number(), stamp);
    }
    return valence == 3;
}

/// On bent ground swaps need not have an end: in the plane some two for each edge are what it takes.
void OffsetRemoval::improve()
{
    const size_t most = 64 + 16 * m_queue.size();
    size_t numSwapped = 0;
    for (size_t next = 0; next < m_queue.size() && numSwapped < most; ++next) {
        const TopoMeshEdge e = m_queue[next];
        bool veto = false;
        MeshEdgeSwapper::minimizeOppositeAngleSum(e, veto);
        if (veto || !swap(e)) continue;
        ++numSwapped;
        for (const TopoMeshEdge side : {e->next, e->prev, e->twin->next, e->twin->prev})
            if (m_isSwapped.isMarked(side.number())) m_queue.push_back(side);
    }
}

bool OffsetRemoval::swap(TopoMeshEdge e)
{
    if (!m_mesh.swapEdge(e)) return false;
    for (const TopoMeshEdge corner : {e, e->next, e->prev, e->twin->prev}) m_changed.setBit(corner->origin.number());
    return true;
}

namespace {

class Pruning
{
public:
    Pruning(TopoMesh& mesh, const OffsetShell& shell, double leastCosine, BitVector& kept)
        : m_shell(shell), m_leastCosine(leastCosine), m_kept(kept), m_changed(mesh.vertexNumbers()),
          m_removal(mesh, m_changed), m_untried(shell.size())
    {
        m_kept.resize(shell.size());
        m_kept.setAllBits();
        m_untried.setAllBits();
        m_changed.setAllBits();
    }

    /// \return how many went
    int removeTooClose(const BitVector& tooClose)
    {
        forEachSetBit(tooClose, [this](int i) { m_numTooClose += remove(i); });
        return m_numTooClose;
    }

    /// In ascending order, over and over, until a pass finds no turned vertex that was not tried before. Whether a
    /// vertex has a turned triangle depends on the triangles around it alone: only vertices at which these have changed
    /// since are looked at again.
    void removeTurned()
    {
        for (bool hasTried = true; hasTried;) {
            hasTried = false;
            for (int i = nextChanged(0); i < m_shell.size(); i = nextChanged(i + 1)) {
                m_changed.clearBit(m_shell.size() + i);
                if (!m_untried[i] || !isTurned(i)) continue;
                hasTried = true;
                m_untried.clearBit(i);
                m_numTurned += remove(i);
            }
        }
    }

    MeshOffsetPruning result(const BitVector& tooClose) const
    {
        MeshOffsetPruning result{m_numTooClose, m_numTurned};
        forEachSetBit(m_kept, [&](int i) {
            result.tooCloseLeft += tooClose[i];
            result.turnedLeft += isTurned(i);
        });
        return result;
    }

private:
    bool remove(int i)
    {
        if (!m_removal.remove(m_shell.copies[i])) return false;
        m_kept.clearBit(i);
        m_untried.clearBit(i);
        return true;
    }

    /// Whether a triangle of the copy faces the way of the source's normal; its own winding is reversed. Walls don't
    /// count.
    bool isTurned(int i) const
    {
        const Vector normal = m_shell.normals[i];
        for (const TopoMeshEdge e : outgoingOf(m_shell.copies[i])) {
            const TopoMeshVertex a = e->origin, b = endOf(e), c = e->prev->origin;
            if (m_shell.isSource(b) || m_shell.isSource(c)) continue;
            const Vector facing = cross(c->point - b->point, a->point - b->point);
            const double along = dot(facing, normal);
            if (along > 0 && (m_leastCosine == 0 || along > m_leastCosine * facing.length())) return true;
        }
        return false;
    }

    /// The first vertex from `i` on whose copy has changed.
    int nextChanged(int i) const
    {
        const int size = 2 * m_shell.size();
        int bit = m_shell.size() + i;
        while (bit < size && !m_changed[bit]) {
            const bool isEmptyWord = bit % 32 == 0 && m_changed.getWords()[bit / 32] == 0;
            bit += isEmptyWord ? 32 : 1;
        }
        return std::min(bit, size) - m_shell.size();
    }

    const OffsetShell& m_shell;
    double m_leastCosine;
    BitVector& m_kept;
    BitVector m_changed; ///< by numbers of vertices, those of the source included
    OffsetRemoval m_removal;
    BitVector m_untried; ///< vertices of the source; those whose copies went are not among them
    int m_numTooClose = 0, m_numTurned = 0;
};

} // namespace

MeshOffsetPruning pruneOffset(TopoMesh& mesh, const OffsetShell& shell, const BitVector& tooClose, double leastCosine,
                              BitVector& kept)
{
    Pruning pruning(mesh, shell, leastCosine, kept);
    if (pruning.removeTooClose(tooClose) > 0) pruning.removeTurned();
    return pruning.result(tooClose);
}

} // namespace znGeom::internal
