/// Samples of boundary loops, as a mesh of line strips.
#pragma once

#include <deque>

#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"

namespace znGeom::internal {

/// A place on a boundary edge.
struct BoundarySample
{
    int boundary;
    int edge; ///< from this vertex of the loop to the next one
    float t;  ///< the weight of the edge's first vertex; exactly 1 at that vertex
};

/// Samples boundaries a fifth of a tolerance apart, at their vertices and in between.
class BoundarySampler
{
public:
    BoundarySampler(const CompactMesh& mesh, const MeshAdjTris& adjacency, const MeshBoundaries& boundaries,
                    const zn::vector<int>& chosen)
        : m_mesh(mesh), m_adjacency(adjacency), m_boundaries(boundaries), m_chosen(chosen)
    {}

    /// Samples the chosen boundaries, in rising order, and makes a line strip of each that has at least ten samples.
    /// \param lines  replaced: the strips, closed, with a vertex for each sample of theirs
    /// \return whether there are at least two
    bool build(double tolerance, CompactMesh& lines);

    int boundaryOf(int strip) const { return m_strips[strip]; }
    const BoundarySample& sample(int lineVertex) const { return m_samples[static_cast<std::size_t>(lineVertex)]; }
    /// The vertices of the mesh between which a sample lies.
    int firstVertex(const BoundarySample& sample) const { return m_boundaries.getStart(sample.boundary)[sample.edge]; }
    int secondVertex(const BoundarySample& sample) const
    {
        const bool isLast = sample.edge + 1 == m_boundaries.getLength(sample.boundary);
        return m_boundaries.getStart(sample.boundary)[isLast ? 0 : sample.edge + 1];
    }

private:
    int addSamples(int boundary, double step);
    bool isBoundary(int boundary) const;
    MeshVertex position(const BoundarySample& sample) const;
    void fillLines(const zn::vector<int>& lengths, CompactMesh& lines) const;

    const CompactMesh& m_mesh;
    const MeshAdjTris& m_adjacency;
    const MeshBoundaries& m_boundaries;
    const zn::vector<int>& m_chosen; ///< sorted
    std::deque<BoundarySample> m_samples;
    zn::vector<int> m_strips; ///< the boundary of each
};

} // namespace znGeom::internal
