#include "znGeom/spatial/shapes/box_predicates.h"

#include <iterator>

#include "znGeom/spatial/shapes/ray.h"

namespace znGeom {

using namespace znLinear;

bool contains(const Frustum& frustum, const Point& p)
{
    return std::none_of(std::begin(frustum.planes), std::end(frustum.planes),
                        [&](const Plane& plane) { return dot(p - plane.point, plane.normal) > 0.0; });
}

namespace {

/// Whether a face of the box has all eight corners of the frustum beyond it. A corner inside the box settles it at
/// once.
bool boxFaceSeparates(const BoundingBox& box, const Frustum& frustum)
{
    const Point low = box.minPt(), high = box.maxPt();
    int below[3] = {0, 0, 0}, above[3] = {0, 0, 0};
    for (const Point& corner : frustum.corners) {
        bool inside = true;
        for (int axis = 0; axis < 3; ++axis) {
            below[axis] += corner[axis] < low[axis];
            above[axis] += corner[axis] > high[axis];
            inside = inside && low[axis] < corner[axis] && corner[axis] < high[axis];
        }
        if (inside) return false;
    }
    const auto all = [](int count) { return count == 8; };
    return std::any_of(below, below + 3, all) || std::any_of(above, above + 3, all);
}

bool planeSeparates(const Plane& plane, const BoundingBox& box)
{
    for (int i = 0; i < 8; ++i) {
        float corner[3];
        box.getPoint(i, corner);
        if (dot(Point(PointFlt(corner)) - plane.point, plane.normal) <= 0.0) return false;
    }
    return true;
}

} // namespace

bool intersects(const BoundingBox& box, const Frustum& frustum)
{
    if (boxFaceSeparates(box, frustum)) return false;
    return std::none_of(std::begin(frustum.planes), std::end(frustum.planes),
                        [&](const Plane& plane) { return planeSeparates(plane, box); });
}

bool intersects(const BoundingBox& box, const Sphere& sphere)
{
    return sphere.radius >= box.distance(PointFlt(sphere.center));
}

namespace {

/// A triangle and a box seen from the triangle's first corner.
struct TriangleInBox
{
    VectorFlt e01, e02, e12;
    BoundingBox box;

    TriangleInBox(const BoundingBox& worldBox, const float* p0, const float* p1, const float* p2)
        : e01(PointFlt(p1) - PointFlt(p0)), e02(PointFlt(p2) - PointFlt(p0)), e12(PointFlt(p2) - PointFlt(p1))
    {
        const VectorFlt low = worldBox.minPt() - PointFlt(p0), high = worldBox.maxPt() - PointFlt(p0);
        box.minX = low.dx, box.minY = low.dy, box.minZ = low.dz;
        box.maxX = high.dx, box.maxY = high.dy, box.maxZ = high.dz;
    }

    /// Whether the extents of triangle and box along `axis` leave a gap.
    bool gapAlong(const VectorFlt& axis) const
    {
        float boxLow, boxHigh;
        project(box, axis, boxLow, boxHigh);
        const float t1 = dot(e01, axis), t2 = dot(e02, axis);
        return boxHigh < std::min({0.0f, t1, t2}) || boxLow > std::max({0.0f, t1, t2});
    }

    /// The same for the cross products of an edge with the coordinate axes.
    bool gapAcross(const VectorFlt& edge) const
    {
        return gapAlong({0, edge.dz, -edge.dy}) || gapAlong({-edge.dz, 0, edge.dx}) || gapAlong({edge.dy, -edge.dx, 0});
    }

    bool planeMissesBox() const
    {
        float low, high;
        // In `double`: the normal of a sliver is a small difference of large products, and one that deviates from its
        // true direction would reject boxes that the sliver passes through.
        project(box, VectorFlt(cross(Vector(e01), Vector(e12))), low, high);
        return low > 0 || high < 0;
    }
};

/// Whether the corners lie beyond one face of the box.
bool facesSeparate(const BoundingBox& box, const float* p0, const float* p1, const float* p2)
{
    const float *low = &box.minX, *high = &box.maxX;
    for (int axis = 0; axis < 3; ++axis) {
        const float a = p0[axis], b = p1[axis], c = p2[axis];
        if ((a < low[axis] && b < low[axis] && c < low[axis]) || (a > high[axis] && b > high[axis] && c > high[axis]))
            return true;
    }
    return false;
}

} // namespace

bool intersects(const BoundingBox& box, const float* p0, const float* p1, const float* p2)
{
    if (facesSeparate(box, p0, p1, p2)) return false;
    const TriangleInBox test(box, p0, p1, p2);
    return !test.gapAcross(test.e01) && !test.gapAcross(test.e12) && !test.gapAcross(test.e02) &&
           !test.planeMissesBox();
}

bool intersects(const BoundingBox& box, const float* p0, const float* p1)
{
    if (facesSeparate(box, p0, p1, p1)) return false;
    const TriangleInBox segment(box, p0, p1, p1);
    const VectorFlt d = segment.e01;
    // Along these axes the segment is a single point, at 0.
    for (const VectorFlt& axis : {VectorFlt(0, d.dz, -d.dy), VectorFlt(-d.dz, 0, d.dx), VectorFlt(d.dy, -d.dx, 0)}) {
        float low, high;
        project(segment.box, axis, low, high);
        if (low > 0 || high < 0) return false;
    }
    return true;
}

int intersects(const BoundingBox& box, const Plane& plane)
{
    const Vector half = box.halfDiagonal();
    const double reach = std::fabs(plane.normal.dx) * half.dx + std::fabs(plane.normal.dy) * half.dy +
                         std::fabs(plane.normal.dz) * half.dz;
    const double middle = plane.eval(box.center());
    if (middle - reach > 0.0) return 1;
    return 0.0 > middle + reach ? -1 : 0;
}

bool pointFrustumIntersect(const Point& p, const Frustum& frustum)
{
    return std::none_of(std::begin(frustum.planes), std::end(frustum.planes),
                        [&](const Plane& plane) { return isAbove(p, plane, epsilonTol); });
}

namespace {

/// The hull of a frustum. The last four are wound the other way round, so that a raised cull distance hides them where
/// it shows the others.
constexpr int hullTriangles[12][3] = {{0, 1, 2}, {0, 2, 3}, {0, 4, 5}, {0, 5, 1}, {3, 7, 4}, {3, 4, 0},
                                      {2, 1, 5}, {2, 5, 6}, {3, 7, 6}, {3, 6, 2}, {6, 7, 4}, {6, 4, 5}};

/// The first hull triangle, in the table's order, that the segment crosses.
bool crossesHull(const Point& a, const Point& b, const Frustum& frustum, PointFlt& out)
{
    const Line line(a, b);
    const double length = distance(a, b);
    const PointFlt origin(a);
    for (const auto& triangle : hullTriangles) {
        const PointFlt p0(frustum.corners[triangle[0]]), p1(frustum.corners[triangle[1]]),
            p2(frustum.corners[triangle[2]]);
        double t = 0, u = 0, v = 0;
        if (!intersectRayTriangle(&line.direction.dx, &origin.x, &p0.x, &p1.x, &p2.x, t, u, v)) continue;
        if (!(0 <= t && t <= length)) continue;
        out = PointFlt(line.eval(t));
        return true;
    }
    return false;
}

} // namespace

bool lineFrustumIntersect(const PointFlt& a, const PointFlt& b, const Frustum& frustum, PointFlt& out)
{
    bool aInside = true, bInside = true;
    for (const Plane& plane : frustum.planes) {
        const bool aAbove = isAbove(a, plane, epsilonTol), bAbove = isAbove(b, plane, epsilonTol);
        if (aAbove && bAbove) return false;
        aInside = aInside && !aAbove;
        bInside = bInside && !bAbove;
    }
    if (!aInside && !bInside) return crossesHull(a, b, frustum, out);
    out = a;
    return true;
}

bool lineFrustumIntersect(const PointFlt& a, const PointFlt& b, const Frustum& frustum)
{
    PointFlt discarded;
    return lineFrustumIntersect(a, b, frustum, discarded);
}

} // namespace znGeom
