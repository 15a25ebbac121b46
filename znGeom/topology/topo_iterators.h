/// Walks round a vertex and along a boundary.
#pragma once

#include "znGeom/topology/topo_handles.h"

namespace znGeom {

/// Every outgoing half-edge of one fan of a vertex once, in fan order; faces are listed by the half-edges they own at
/// the vertex. Where fans touch at the vertex it walks the one of its `edge`; `outgoingOf` meets all.
///
/// The walk begins at the vertex's `edge` and steps from `e` to `e->twin->next`; at the end of an open fan it restarts
/// from where it began and steps the other way. The boundary half-edge that arrives at the vertex is not among them. A
/// caller may set `edge` by hand to begin elsewhere, and may step first and then change the half-edge just left: one
/// that has left the vertex by then is replaced as the beginning by the present one, so that none is met twice and none
/// is missed. Any other change at the vertex ends the walk's validity.
class ZNGEOM_API TopoMeshEdgeVertexIterator
{
public:
    TopoMeshVertex vertex;
    TopoMeshEdge edge; ///< null when the walk is over
    int direction = 1; ///< 0 on the way back from the beginning

    explicit TopoMeshEdgeVertexIterator(TopoMeshVertex v) : vertex(v), edge(v->edge) {}

    bool valid() const { return static_cast<bool>(edge); }
    void next();

private:
    TopoMeshEdge m_begin; ///< where the walk began
    TopoMeshEdge m_set;   ///< what `edge` was set to by the last step; anything else was set by hand
};

/// A walk along the boundary loop through a vertex. It ends, with `edge` null, where it comes back to its beginning or
/// finds no further boundary half-edge.
class ZNGEOM_API TopoMeshBoundaryIterator
{
public:
    TopoMeshEdge edge; ///< the boundary half-edge whose origin is the walk's vertex

    /// \param forward  along the half-edges, or against them
    TopoMeshBoundaryIterator(TopoMeshVertex vertex, bool forward) { reset(vertex, forward); }
    /// Begins anew. Null at once at a vertex that is not on the boundary.
    void reset(TopoMeshVertex vertex, bool forward);

    bool valid() const { return static_cast<bool>(edge); }
    void next();
    /// The boundary half-edge along which the next step will go: forward the present one, otherwise the one that
    /// arrives at the walk's vertex.
    TopoMeshEdge nextEdge() const;
    /// The one along which the last step went; null before the first.
    TopoMeshEdge prevEdge() const { return m_stepped; }

    /// The boundary half-edges that arrive at a vertex and leave it, both of one fan: that of the vertex's `edge` if it
    /// is open, otherwise some open one; null where there is none.
    static void getPrevNextEdges(TopoMeshVertex vertex, TopoMeshEdge& prev, TopoMeshEdge& next);

private:
    TopoMeshEdge m_begin, m_stepped;
    bool m_forward = true;
};

} // namespace znGeom
