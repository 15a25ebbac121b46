/// `tool::Surface`: how the triangles of a mesh hang together.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// What triangles must share to be connected.
enum class Across { Edges, Vertices };

/// Components are numbered from 0, the one of most triangles first; of equal ones the one of the lowest triangle.
struct Components
{
    std::vector<int> ofTriangle; ///< per triangle its component
    std::vector<int> sizes;      ///< per component its triangles

    int count() const { return static_cast<int>(sizes.size()); }
};

/// Boundary edges one after the other.
struct BoundaryLoop
{
    std::vector<int> vertices; ///< the first one is not repeated at the end
    double length = 0;         ///< not finite where a vertex isn't
    bool closed = false;       ///< one that isn't ends at an edge of three triangles or more

    int numEdges() const { return static_cast<int>(vertices.size()) - (closed ? 0 : 1); }
};

/// Edges join two different vertices of a triangle.
struct EdgeCounts
{
    int edges = 0;
    int boundary = 0;              ///< of one triangle
    int boundaryVertices = 0;      ///< at the end of one of these
    int nonManifold = 0;           ///< of three triangles or more
    int unbalanced = 0;            ///< of several triangles, which don't run along it as often one way as the other
    std::optional<double> longest; ///< of edges between finite positions
};

class Surface
{
public:
    /// \param mesh  must outlive this and stay as it is
    ///
    /// May be cancelled. Linear for vertices of bounded valence.
    Surface(const znGeom::CompactMesh& mesh, znUtil::Progress& progress);

    const znGeom::MeshAdjTris& adjTris() const { return m_adjTris; }
    const EdgeCounts& edgeCounts() const { return m_counts; }

    Components components(Across across) const;

    /// The longest first; of equal ones the one of the lowest vertex. Every boundary edge is in one of them, once. Two
    /// borders that touch at a vertex are two loops. Winding plays no part, so that the border of a one-sided surface
    /// is found as well: that is why they are not taken from the library, whose walks follow the triangles' direction.
    std::vector<BoundaryLoop> boundaryLoops() const;

private:
    struct Side;

    void beginFans();
    void gatherSides(int vertex, std::vector<Side>& sides) const;
    void takeEdges(int low, std::span<const Side> sides);
    void takeEdge(int low, std::span<const Side> sides);
    void measure(int from, int to);
    void countBoundaryVertices();

    const znGeom::CompactMesh& m_mesh;
    znGeom::MeshAdjTris m_adjTris;
    EdgeCounts m_counts;
    std::vector<int> m_boundary; ///< 3 * triangle + side; side i runs from corner i to the next
    /// Per corner of a triangle (3 * triangle + corner) the lowest one of its fan: triangles around a vertex are in one
    /// fan where they share edges there.
    std::vector<int> m_fans;
};

} // namespace tool
