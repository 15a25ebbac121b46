/// What triangles contribute to the curvature at their corners.
#pragma once

#include "znGeom/foundation/mesh/mesh_records.h"

namespace znGeom::internal {

/// What a triangle adds to the sums at each of its corners.
enum Term : int {
    Angle, ///< at the corner
    Area,  ///< the part of the triangle that belongs to the corner
    EdgeX,
    EdgeY,
    EdgeZ, ///< the sum of the two edges to the corner, each times the cotangent of the angle opposite
    numTerms
};

/// The terms that a quantity is computed from.
template <Term firstTerm, Term lastTerm>
struct Terms
{
    static constexpr int first = firstTerm, count = lastTerm + 1 - firstTerm;
    static constexpr bool hasAngles = first == Angle, hasEdges = lastTerm == EdgeZ;
};

/// Triangles that are processed together, number by number.
struct TriangleBlock
{
    static constexpr int width = 32;

    int count = 0;
    const MeshTriangle* triangles[width];
    float corners[3][3][width] = {}; ///< by corner and coordinate
    double terms[3][numTerms][width];

    bool isFull() const { return count == width; }
    void append(const MeshTriangle& triangle, const MeshVertex* vertices)
    {
        for (int corner = 0; corner < 3; ++corner) {
            const MeshVertex& vertex = vertices[triangle[corner]];
            corners[corner][0][count] = vertex.x;
            corners[corner][1][count] = vertex.y;
            corners[corner][2][count] = vertex.z;
        }
        triangles[count++] = &triangle;
    }
};

/// Fills the terms of a block from its corners.
void compute(Terms<Angle, Area>, TriangleBlock& block);
void compute(Terms<Area, EdgeZ>, TriangleBlock& block);
void compute(Terms<Angle, EdgeZ>, TriangleBlock& block);

} // namespace znGeom::internal
