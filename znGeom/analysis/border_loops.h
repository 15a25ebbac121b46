/// The open borders of a mesh as loops of edges, however its triangles are wound.
#pragma once

#include <span>
#include <utility>

#include "znGeom/analysis/edge_sides.h"
#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// Boundary edges strung together, as they were when they were found; see `meshBorderLoops`. Holds no reference to the
/// mesh. Loop numbers are trusted; every call is constant in time.
class ZNGEOM_API MeshBorderLoops
{
public:
    MeshBorderLoops() = default;
    /// Takes over the vertices of the loops, whose owner is then empty.
    /// \param closed   one per loop
    /// \param lengths  one per loop
    MeshBorderLoops(MeshSequence& vertices, zn::vector<bool> closed, zn::vector<double> lengths)
        : m_vertices(vertices), m_closed(std::move(closed)), m_lengths(std::move(lengths))
    {}

    /// The number of loops.
    int size() const { return m_vertices.size(); }
    /// The first one is not repeated at the end.
    std::span<const int> vertices(int loop) const { return {m_vertices.getStart(loop), m_vertices.getEnd(loop)}; }
    int numEdges(int loop) const { return m_vertices.getLength(loop) - (m_closed[loop] ? 0 : 1); }
    /// One that isn't closed ends at edges of three triangles or more.
    bool isClosed(int loop) const { return m_closed[loop]; }
    /// In the mesh's units; not finite where a vertex isn't.
    double length(int loop) const { return m_lengths[loop]; }

    void swap(MeshBorderLoops& other)
    {
        m_vertices.swap(other.m_vertices);
        m_closed.swap(other.m_closed);
        m_lengths.swap(other.m_lengths);
    }

private:
    MeshBoundaries m_vertices;
    zn::vector<bool> m_closed;
    zn::vector<double> m_lengths;
};

/// Finds the borders of a mesh: every edge that belongs to one triangle alone is in one loop, once.
///
/// \param sides     built from this mesh by `meshEdgeSides`
/// \param progress  advanced; a cancel leaves `result` as it was
/// \param result    replaced: the loops, the longest first; of equally long ones the one of the lowest vertex. Those
///                  whose length is not finite come last
/// \return false after a cancel
///
/// How triangles are wound plays no part, so that the border of a one-sided surface is found as well. Two borders that
/// touch at a vertex are two loops: walks go on within the triangles that hang together over edges at the vertex. On a
/// manifold and consistently wound surface loops run as its triangles do, the surface on their left.
/// `meshComputeBoundary` walks from vertex to vertex instead: it needs such a surface, and cuts loops that touch.
///
/// As good as linear, n log n in the loops; on the calling thread.
ZNGEOM_API bool meshBorderLoops(const CompactMesh& mesh, const MeshEdgeSides& sides, znUtil::Progress& progress,
                                MeshBorderLoops& result);
inline void meshBorderLoops(const CompactMesh& mesh, const MeshEdgeSides& sides, MeshBorderLoops& result)
{
    znUtil::Progress progress;
    meshBorderLoops(mesh, sides, progress, result);
}

} // namespace znGeom
