#include "znGeom/foundation/mesh/mesh_coord.h"

#include <algorithm>

#include "znGeom/foundation/linear/line.h"
#include "znGeom/foundation/mesh/mesh_records.h"

namespace znGeom {

using znLinear::ParamLine;
using znLinear::Point;
using znLinear::Vector;

namespace {

struct Corners
{
    Point at[3];

    Corners(const float* vertices, const int* triangles, int triangle)
    {
        for (int i = 0; i < 3; ++i) {
            const float* v =
                vertices + 3 * static_cast<std::ptrdiff_t>(triangles[3 * static_cast<std::ptrdiff_t>(triangle) + i]);
            at[i] = Point(double(v[0]), double(v[1]), double(v[2]));
        }
    }
    const Point& operator[](int corner) const { return at[corner]; }
};

/// The weights of the orthogonal projection of p on the plane of a, b, c; false when the triangle has no area.
bool planeWeights(const Point& a, const Point& b, const Point& c, const Point& p, double* weights)
{
    const Vector normal = cross(b - a, c - a);
    const double area2 = normal.length2();
    if (!(area2 > 0) || !std::isfinite(area2)) return false;
    weights[1] = dot(cross(p - a, c - a), normal) / area2;
    weights[2] = dot(cross(b - a, p - a), normal) / area2;
    weights[0] = 1.0 - weights[1] - weights[2];
    return std::isfinite(weights[0]);
}

/// The closest point to p on side `side` of a triangle: its squared distance, and its weights.
double sideWeights(const Point corners[3], int side, const Point& p, double* weights)
{
    const int next = cornerAfter(side);
    const ParamLine line(corners[side], corners[next]);
    const double t = std::clamp(projectParam(p, line), 0.0, 1.0);
    weights[side] = 1.0 - t, weights[next] = t, weights[cornerBefore(side)] = 0.0;
    return distance2(p, line.eval(t));
}

/// The first of the nearest sides, its squared distance, and the weights of the closest point.
int nearestSide(const Point corners[3], const Point& p, double* weights, double* distance2 = nullptr)
{
    int nearest = 0;
    double best = sideWeights(corners, 0, p, weights);
    for (int side = 1; side < 3; ++side) {
        double candidate[3];
        const double d2 = sideWeights(corners, side, p, candidate);
        if (!(d2 < best)) continue;
        nearest = side;
        best = d2;
        std::copy_n(candidate, 3, weights);
    }
    if (distance2) *distance2 = best;
    return nearest;
}

int longestSide(const Point corners[3])
{
    int longest = 0;
    for (int side = 1; side < 3; ++side)
        if (distance2(corners[side], corners[cornerAfter(side)]) >
            distance2(corners[longest], corners[cornerAfter(longest)]))
            longest = side;
    return longest;
}

} // namespace

Point MeshCoordBase::evaluateBase(const Point corners[3]) const
{
    Vector sum;
    for (int i = 0; i < 3; ++i) sum += corners[i].asVector() * weights[i];
    return sum.asPoint();
}

bool MeshCoordBase::projectBase(const Point& a, const Point& b, const Point& c, const Point& p)
{
    const Point corners[3] = {a, b, c};
    *this = MeshCoordBase();
    const Vector span = (b - a) + (c - a) + (p - a);
    if (!std::isfinite(span.dx + span.dy + span.dz)) return false;
    double within[3];
    if (!planeWeights(a, b, c, p, within)) {
        sideWeights(corners, longestSide(corners), p, weights);
        return true;
    }
    nearestSide(corners, p, weights);
    // Within the triangle no side is nearer than the plane, except by rounding in a needle.
    if (within[0] < 0 || within[1] < 0 || within[2] < 0) return true;
    const MeshCoordBase side = *this;
    std::copy_n(within, 3, weights);
    if (distance2(p, side.evaluateBase(corners)) < distance2(p, evaluateBase(corners))) *this = side;
    return true;
}

Point MeshCoord::evaluate(const MeshVertex* vertices, const MeshTriangle* triangles) const
{
    return evaluate(&vertices->x, triangles->corners);
}

Point MeshCoord::evaluate(const float* vertices, const int* triangles) const
{
    return evaluateBase(Corners(vertices, triangles, triangle).at);
}

bool MeshCoord::onVertex(const float* vertices, const int* triangles, double tol, int* which) const
{
    const Corners corners(vertices, triangles, triangle);
    const Point here = evaluateBase(corners.at);
    int nearest = 0;
    for (int i = 1; i < 3; ++i)
        if (distance2(here, corners[i]) < distance2(here, corners[nearest])) nearest = i;
    if (!(tol > distance(here, corners[nearest]))) return false;
    if (which) *which = nearest;
    return true;
}

bool MeshCoord::onEdge(const float* vertices, const int* triangles, double tol, int* which) const
{
    const Corners corners(vertices, triangles, triangle);
    const Point here = evaluateBase(corners.at);
    double unused[3], best = 0;
    const int nearest = nearestSide(corners.at, here, unused, &best);
    if (!(tol > std::sqrt(best))) return false;
    if (which) *which = nearest;
    return true;
}

bool MeshCoord::project(int triangleIndex, const float* vertices, const int* triangles, const Point& p)
{
    *this = MeshCoord();
    if (triangleIndex < 0) return false;
    triangle = triangleIndex;
    const Corners corners(vertices, triangles, triangle);
    return projectBase(corners[0], corners[1], corners[2], p);
}

void MeshCoord::setFromPoint(int triangleIndex, const float* vertices, const int* triangles, const Point& p)
{
    *this = MeshCoord();
    if (triangleIndex < 0) return;
    triangle = triangleIndex;
    const Corners corners(vertices, triangles, triangle);
    double projected[3];
    if (planeWeights(corners[0], corners[1], corners[2], p, projected)) std::copy_n(projected, 3, weights);
}

} // namespace znGeom
