#include "znGeom/planar/shapes/min_area_bound.h"

#include <cmath>
#include <limits>

#include "znGeom/foundation/linear/affine_matrix.h"
#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/planar/shapes/convex_hull.h"
#include "znGeom/planar/shapes/internal/line_vertices.h"

namespace znGeom {

using namespace znLinear;

namespace {

/// The extent of a hull along a line.
struct Axis
{
    Vector2 direction; ///< of unit length
    double min = std::numeric_limits<double>::max(), max = std::numeric_limits<double>::lowest();
    int minIndex = 0, maxIndex = 0;
};

/// The rectangle around a hull that has a side along one of its edges.
struct Frame
{
    Point2 origin;
    Axis along, across;

    Point2 eval(const Axis& axis, double t) const { return origin + axis.direction * t; }
    Vector2 extent(const Axis& axis) const { return eval(axis, axis.max) - eval(axis, axis.min); }
    double area() const { return std::fabs(cross(extent(along), extent(across))); }
};

/// Turns a frame once round a hull of three or more vertices.
class Calipers
{
public:
    explicit Calipers(const zn::vector<Point2>& hull) : m_hull(hull.data()), m_size(hull.size())
    {
        setLines(0);
        for (int i = 0; i < m_size; ++i) {
            include(m_current.along, i);
            include(m_current.across, i);
        }
        // Past edges that make no difference here, but would be in the way from now on.
        advance(m_current.along);
        advance(m_current.across);
        m_smallest = m_current;
        m_smallestArea = m_largestArea = m_current.area();
        for (int edge = 1; edge < m_size; ++edge) {
            setLines(edge);
            advance(m_current.along);
            advance(m_current.across);
            compare();
        }
    }

    const Frame& smallest() const { return m_smallest; }
    float ratio() const { return static_cast<float>(m_largestArea / m_smallestArea); }

private:
    int after(int vertex) const { return vertex + 1 < m_size ? vertex + 1 : 0; }
    double param(const Axis& axis, int vertex) const { return dot(m_hull[vertex] - m_current.origin, axis.direction); }

    /// An edge too short or too long to have a direction keeps the lines of the one before.
    void setLines(int edge)
    {
        Vector2 along = m_hull[after(edge)] - m_hull[edge];
        if (!along.normalize()) return;
        m_current.origin = m_hull[edge];
        m_current.along.direction = along;
        m_current.across.direction = Vector2(-along.dy, along.dx);
    }

    void include(Axis& axis, int vertex) const
    {
        const double t = param(axis, vertex);
        if (t < axis.min) axis.min = t, axis.minIndex = vertex;
        if (t > axis.max) axis.max = t, axis.maxIndex = vertex;
    }

    /// Moves the ends of an axis on to where the hull reaches furthest, from where it did along the edge before.
    void advance(Axis& axis) const
    {
        axis.min = advanced(axis, -1, axis.minIndex);
        axis.max = advanced(axis, 1, axis.maxIndex);
    }

    /// Moves a vertex on while that leads further along an axis, forwards (1) or backwards (-1); its parameter.
    double advanced(const Axis& axis, int sense, int& vertex) const
    {
        double t = param(axis, vertex);
        // No more than once round, even where differences of coordinates are beyond the range of numbers.
        for (int left = m_size; left > 0; --left) {
            const int next = after(vertex);
            const double tNext = param(axis, next);
            if (!(sense * tNext > sense * t) && !leads(axis, sense, vertex, next)) break;
            vertex = next;
            t = tNext;
        }
        return t;
    }

    /// Whether an edge leads along an axis, or stands at right angles to it but with edges behind it that lead along.
    /// One that is too short to change the parameter by a digit must not hold the vertex up.
    bool leads(const Axis& axis, int sense, int vertex, int next) const
    {
        const Vector2 edge = m_hull[next] - m_hull[vertex];
        const double slope = sense * dot(edge, axis.direction), side = sense * cross(axis.direction, edge);
        const double rounding = 8 * std::numeric_limits<double>::epsilon() * (std::fabs(edge.dx) + std::fabs(edge.dy));
        return slope > rounding || (slope >= -rounding && side < 0);
    }

    /// Equal areas leave the earlier frame in its place.
    void compare()
    {
        const double area = m_current.area();
        if (area > m_largestArea) {
            m_largestArea = area;
        } else if (m_smallestArea > area) {
            m_smallestArea = area;
            m_smallest = m_current;
        }
    }

    const Point2* m_hull;
    int m_size;
    Frame m_current, m_smallest;
    double m_smallestArea = 0, m_largestArea = 0;
};

/// The index of the corner that becomes c0. Corners run clockwise, from each along a side to the next.
int startingCorner(const Point2* corners)
{
    int leftmost = 0, lowest = 0;
    for (int i = 1; i < 4; ++i) {
        if (corners[i].x < corners[leftmost].x) leftmost = i;
        if (corners[i].y < corners[lowest].y) lowest = i;
    }
    const auto slope = [corners](int i) {
        Vector2 side = corners[(i + 3) % 4] - corners[i];
        return side.normalize() ? side.dx : 0.0;
    };
    return slope(leftmost) > slope(lowest) ? leftmost : lowest;
}

Rect2 rectOf(const Frame& frame)
{
    const Point2 first = frame.eval(frame.along, frame.along.min), last = frame.eval(frame.along, frame.along.max);
    const Vector2 up = frame.extent(frame.across);
    const Point2 corners[] = {first, first + up, last + up, last};
    const int start = startingCorner(corners);
    const auto corner = [&](int i) { return corners[(start + i) % 4]; };
    return {corner(0), corner(3), corner(1), corner(2)};
}

/// The smallest rectangle around a hull that has a vertex, and the ratio of the largest to it.
Rect2 boundHull(const zn::vector<Point2>& hull, float& ratio)
{
    if (hull.size() > 2) {
        const Calipers calipers(hull);
        ratio = calipers.ratio();
        return rectOf(calipers.smallest());
    }
    ratio = hull.size() == 1 ? 1.0f : std::numeric_limits<float>::max();
    // A height beside an abscissa: of the two ends this makes one the base, as callers have come to know it.
    const bool startsAtFirst = hull.back().y > hull.front().x;
    const Point2 &from = startsAtFirst ? hull.front() : hull.back(), &to = startsAtFirst ? hull.back() : hull.front();
    return {from, to, from, to};
}

/// A square is grown by half a side at each corner, along the axes.
void growSquare(Rect2& rect)
{
    constexpr double tolerance = 1e-6;
    const double sides[] = {distance(rect.c0, rect.c1), distance(rect.c1, rect.c3), distance(rect.c3, rect.c2),
                            distance(rect.c2, rect.c0)};
    const double mean = (sides[0] + sides[1] + sides[2] + sides[3]) / 4;
    for (const double side : sides)
        if (std::fabs(side - mean) > tolerance) return;
    const double half = mean / 2;
    rect.c0 += Vector2(-half, -half);
    rect.c1 += Vector2(half, -half);
    rect.c2 += Vector2(-half, half);
    rect.c3 += Vector2(half, half);
}

Vector2 unit(Vector2 v)
{
    v.normalize();
    return v;
}

/// The frame of a rectangle: its base, or what is at right angles to its side where there is no base.
AffineMatrix2 frameOf(const Rect2& rect)
{
    Vector2 base, up;
    if (!equivalent(rect.c0, rect.c1, epsilonTol)) {
        base = unit(rect.c1 - rect.c0);
        up = Vector2(-base.dy, base.dx);
    } else {
        up = unit(rect.c2 - rect.c0);
        base = Vector2(up.dy, -up.dx);
    }
    AffineMatrix2 frame;
    frame.setFrame(rect.c0, base, up);
    return frame;
}

template <typename Line>
void boundLines(const zn::vector<const Line*>& polylines, double margin, Rect2& rect, float& ratio)
{
    zn::vector<Point2> hull;
    ratio = 0;
    if (!convexHull2d(internal::lineVertices(polylines), hull) || hull.empty()) return;
    rect = boundHull(hull, ratio);
    growSquare(rect);
    rectGrow(rect, margin);
}

} // namespace

bool minAreaRect2d(const zn::vector<Point2>& points, Rect2& rect, float* ratio)
{
    zn::vector<int> vertices;
    convexHull2d(points, vertices);
    zn::vector<Point2> hull;
    hull.reserve(vertices.size());
    for (int vertex : vertices) {
        const Point2& p = points[vertex];
        if (std::isfinite(p.x) && std::isfinite(p.y) && (hull.empty() || !(p == hull.back()))) hull.append(p);
    }
    float found = 0;
    if (!hull.empty()) rect = boundHull(hull, found);
    if (ratio) *ratio = found;
    return !hull.empty();
}

void rectGrow(Rect2& rect, double margin)
{
    if (margin == 0) return;
    const bool isPoint = equivalent(rect.c0, rect.c1, epsilonTol) && equivalent(rect.c2, rect.c0, epsilonTol);
    const AffineMatrix2 frame = isPoint ? AffineMatrix2() : frameOf(rect), inverse = frame.inverse();
    const auto move = [&](Point2& corner, double dx, double dy) {
        corner = isPoint ? corner + Vector2(dx, dy) : (corner * inverse + Vector2(dx, dy)) * frame;
    };
    move(rect.c0, -margin, -margin);
    move(rect.c1, margin, -margin);
    move(rect.c3, margin, margin);
    move(rect.c2, -margin, margin);
}

void minAreaBound(const zn::vector<const Polyline*>& polylines, double margin, Rect2& rect, float& ratio)
{
    boundLines(polylines, margin, rect, ratio);
}

void minAreaBound(const zn::vector<const Polyline2d*>& polylines, double margin, Rect2& rect, float& ratio)
{
    boundLines(polylines, margin, rect, ratio);
}

} // namespace znGeom
