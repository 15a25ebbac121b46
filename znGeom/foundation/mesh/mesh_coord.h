/// `znGeom::MeshCoord`: a barycentric position in a triangle.
#pragma once

#include "znGeom/foundation/machine/export.h"
#include "znGeom/foundation/mesh/mesh_records.h"

namespace znGeom {

/// Three weights, weight i belonging to corner i; they add up to 1.
class ZNGEOM_API MeshCoordBase
{
public:
    double weights[3] = {0, 0, 0};

    /// False for the default: all weights zero.
    bool valid() const { return weights[0] != 0 || weights[1] != 0 || weights[2] != 0; }

    /// The position in the triangle of these corners.
    znLinear::Point evaluateBase(const znLinear::Point corners[3]) const;

    /// The closest point to `p` on the triangle a, b, c, its weights within [0, 1]; on a triangle without area the
    /// closest point of its longest side (of the first corner, where all corners coincide).
    /// \return false, with the weights all zero, when a position is not a number
    bool projectBase(const znLinear::Point& a, const znLinear::Point& b, const znLinear::Point& c,
                     const znLinear::Point& p);
};

/// A position on a mesh. The raw arrays are those of the mesh: three `float` per vertex, three `int` per triangle.
class ZNGEOM_API MeshCoord : public MeshCoordBase
{
public:
    int triangle = -1;

    znLinear::Point evaluate(const MeshVertex* vertices, const MeshTriangle* triangles) const;
    znLinear::Point evaluate(const float* vertices, const int* triangles) const;

    /// Whether the position lies at a corner: nearer to it than the tolerance, strictly. `which` (may be null) gets the
    /// number of the corner, 0 to 2, the nearest one if there are several; unchanged on a miss.
    bool onVertex(const float* vertices, const int* triangles, double tol, int* which) const;
    /// Whether the position lies on a side, strictly nearer to it than the tolerance. Side i runs from corner i to
    /// corner i + 1. `which` as above.
    bool onEdge(const float* vertices, const int* triangles, double tol, int* which) const;

    /// Becomes the closest point of a triangle to `p`, as in `projectBase`. An index below 0 or a failure leaves the
    /// coordinate invalid.
    /// \return whether it is valid
    bool project(int triangleIndex, const float* vertices, const int* triangles, const znLinear::Point& p);

    /// Becomes the orthogonal projection of `p` on the triangle's plane; the weights may leave [0, 1]. An index below
    /// 0 or a triangle without area leaves the coordinate invalid.
    void setFromPoint(int triangleIndex, const float* vertices, const int* triangles, const znLinear::Point& p);
};

} // namespace znGeom
