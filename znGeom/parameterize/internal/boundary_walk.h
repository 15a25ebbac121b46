/// Finding the borders of a mesh by comparing its triangles pair by pair, which names what is wrong with it.
#pragma once

#include <cstdint>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/output/app_output.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom::internal {

/// Made before there was adjacency, and kept for its messages, which name the triangle at fault; no flattening waits
/// for it, since the comparison is quadratic. Messages go to `znOS::AppOutput` as errors.
class BoundaryWalk
{
public:
    struct Edge
    {
        int start, end;
    };
    /// The side of a triangle that has no neighbour.
    struct UnsortedEdge
    {
        int start, end;
        int triangle;
        std::uint8_t side; ///< 0 to 2
        bool isTaken = false;
    };

    explicit BoundaryWalk(const CompactMesh& mesh);

    /// Lists the sides without a neighbour.
    ///
    /// \param edges  replaced; those found so far after a fault or a cancel
    /// \return the number of edges of the mesh; -1 for a triangle that repeats a vertex, an edge of three triangles,
    ///         neighbours of opposite winding, and after a cancel
    int findBoundaryEdges(zn::vector<UnsortedEdge>& edges, znUtil::Progress& progress);

    /// Joins sides to loops, each looking on from where it began.
    ///
    /// \param boundaries  the loops are appended
    /// \return the number of `boundaries`; -1 for a loop that doesn't close, or is shorter than three edges
    int orderBoundaries(zn::vector<UnsortedEdge>& edges, zn::vector<zn::vector<Edge>>& boundaries);

private:
    bool testDegenerate(int triangle);
    bool compareTriangles(int side, int first, int second, int* adjacent);
    bool findNeighbours(int triangle, int* adjacent);
    void follow(zn::vector<UnsortedEdge>& edges, int from, int& last, zn::vector<Edge>& boundary);

    const CompactMesh& m_mesh;
    znOS::AppOutput& m_output;
};

} // namespace znGeom::internal
