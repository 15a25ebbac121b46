#include "znGeom/planar/min_area_bound.h"

#include <array>
#include <cmath>
#include <limits>

#include "znGeom/foundation/linear/line.h"
#include "znGeom/planar/convex_hull.h"

namespace znGeom {

using namespace znLinear;

namespace {

/// The extent of a hull along a line.
struct Axis
{
    Line line;
    double min = std::numeric_limits<double>::max(), max = std::numeric_limits<double>::lowest();
    int minIndex = 0, maxIndex = 0;

    Vector extent() const { return line.eval(max) - line.eval(min); }
};

/// The rectangle around a hull that has a side along one of its edges.
struct Frame
{
    Axis along, across;

    double area() const { return cross(along.extent(), across.extent()).length(); }
};

/// Turns a frame once round a hull of three or more vertices.
class Calipers
{
public:
    explicit Calipers(const zn::vector<Point>& hull) : m_hull(hull)
    {
        setLines(0);
        for (int i = 0; i < m_hull.size(); ++i) {
            include(m_current.along, i);
            include(m_current.across, i);
        }
        m_smallest = m_current;
        m_smallestArea = m_largestArea = m_current.area();
        for (int edge = 1; edge < m_hull.size(); ++edge) {
            setLines(edge);
            advance(m_current.along);
            advance(m_current.across);
            compare();
        }
    }

    const Frame& smallest() const { return m_smallest; }
    float ratio() const { return static_cast<float>(m_largestArea / m_smallestArea); }

private:
    int after(int vertex) const { return vertex + 1 < m_hull.size() ? vertex + 1 : 0; }
    double param(const Axis& axis, int vertex) const { return projectParam(m_hull[vertex], axis.line); }

    /// An edge too short or too long to have a direction keeps the lines of the one before.
    void setLines(int edge)
    {
        Vector along = m_hull[after(edge)] - m_hull[edge];
        Vector across(-along.dy, along.dx, along.dz);
        if (!along.normalize() || !across.normalize()) return;
        m_current.along.line.point = m_current.across.line.point = m_hull[edge];
        m_current.along.line.direction = along;
        m_current.across.line.direction = across;
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
        axis.min = advanced(axis.line, -1, axis.minIndex);
        axis.max = advanced(axis.line, 1, axis.maxIndex);
    }

    /// Moves a vertex on while that leads further along a line, forwards (1) or backwards (-1); its parameter.
    double advanced(const Line& line, int sense, int& vertex) const
    {
        double t = projectParam(m_hull[vertex], line);
        // No more than once round, even where coordinates are not numbers.
        for (int left = m_hull.size(); left > 0; --left) {
            const int next = after(vertex);
            const double tNext = projectParam(m_hull[next], line);
            if (!(sense * tNext > sense * t) && !leads(line, sense, vertex, next)) break;
            vertex = next;
            t = tNext;
        }
        return t;
    }

    /// Whether an edge leads clearly along a line. One that is too short to change the parameter by a digit does so as
    /// well, and must not hold the vertex up: there may be longer ones behind it.
    bool leads(const Line& line, int sense, int vertex, int next) const
    {
        constexpr double smallestSlope = 8 * std::numeric_limits<double>::epsilon();
        const Vector edge = m_hull[next] - m_hull[vertex];
        return sense * dot(edge, line.direction) > smallestSlope * (std::fabs(edge.dx) + std::fabs(edge.dy));
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

    const zn::vector<Point>& m_hull;
    Frame m_current, m_smallest;
    double m_smallestArea = 0, m_largestArea = 0;
};

/// The index of the corner that becomes c0. Corners run clockwise, from each along a side to the next.
int startingCorner(const std::array<Point, 4>& corners)
{
    int leftmost = 0, lowest = 0;
    for (int i = 1; i < 4; ++i) {
        if (corners[i].x < corners[leftmost].x) leftmost = i;
        if (corners[i].y < corners[lowest].y) lowest = i;
    }
    const auto slope = [&corners](int i) { return dot(Normal(corners[(i + 3) % 4] - corners[i]), Normal::x); };
    return slope(leftmost) > slope(lowest) ? leftmost : lowest;
}

Rect2 rectOf(const Frame& frame)
{
    const Point first = frame.along.line.eval(frame.along.min), last = frame.along.line.eval(frame.along.max);
    const Vector up = frame.across.extent();
    const std::array<Point, 4> corners{first, first + up, last + up, last};
    const int start = startingCorner(corners);
    const auto corner = [&](int i) {
        const Point& p = corners[(start + i) % 4];
        return Point2(p.x, p.y);
    };
    return {corner(0), corner(3), corner(1), corner(2)};
}

/// The smallest rectangle around a hull that has a vertex, and the ratio of the largest to it.
Rect2 boundHull(const zn::vector<Point>& hull, float& ratio)
{
    const Point2 first(hull.front().x, hull.front().y), last(hull.back().x, hull.back().y);
    if (hull.size() > 2) {
        const Calipers calipers(hull);
        ratio = calipers.ratio();
        return rectOf(calipers.smallest());
    }
    ratio = hull.size() == 1 ? 1.0f : std::numeric_limits<float>::max();
    // A height beside an abscissa: of the two ends this makes one the base, as callers have come to know it.
    const bool startsAtFirst = last.y > first.x;
    const Point2 &from = startsAtFirst ? first : last, &to = startsAtFirst ? last : first;
    return {from, to, from, to};
}

} // namespace

bool minAreaRect2d(const zn::vector<Point2>& points, Rect2& rect, float* ratio)
{
    zn::vector<int> vertices;
    convexHull2d(points, vertices);
    zn::vector<Point> hull;
    hull.reserve(vertices.size());
    for (int vertex : vertices) {
        const Point2& p = points[vertex];
        const bool isNew = hull.empty() || !(Point(p) == hull.back());
        if (std::isfinite(p.x) && std::isfinite(p.y) && isNew) hull.append(Point(p));
    }
    float found = 0;
    if (!hull.empty()) rect = boundHull(hull, found);
    if (ratio) *ratio = found;
    return !hull.empty();
}

} // namespace znGeom
