#include "znGeom/planar/convex_hull.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <numeric>

#include "znGeom/foundation/linear/range.h"
#include "znGeom/foundation/machine/clones.h"
#include "znGeom/foundation/threads/bounded_sort.h"
#include "znGeom/foundation/threads/radix_sort.h"
#include "znGeom/planar/internal/orientation.h"

namespace znGeom {

using namespace znLinear;
using znUtil::KeyedIndex;

namespace {

using Points = zn::vector<Point2>;
using Indices = zn::vector<int>;

bool isFinite(const Point2& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

/// A closed polygon of input points that are extreme, or nearly so, in eight directions, and a test that shows points
/// to lie inside of it.
class Octagon
{
public:
    explicit Octagon(const Points& points)
    {
        // So many points, drawn evenly, know the shape of the rest well enough.
        constexpr int numDrawn = 4096;
        const int size = points.size();
        const auto draw = [size](int i) {
            const std::uint64_t fraction = static_cast<std::uint32_t>(i) * std::uint64_t(0x9E3779B9) & 0xFFFFFFFF;
            return static_cast<int>(fraction * static_cast<std::uint64_t>(size) >> 32);
        };
        for (int i = 0; i < std::min(size, numDrawn); ++i) include(points[size <= numDrawn ? i : draw(i)]);
        setSides();
    }

    /// The indices of all finite points that are not shown to be inside, ascending.
    Indices pointsOutside(const Points& points) const
    {
        Indices outside;
        outside.reserve(points.size());
        std::array<std::uint8_t, blockSize> inside{};
        for (int begin = 0; begin < points.size(); begin += blockSize) {
            const int count = std::min(blockSize, points.size() - begin);
            if (m_hasArea) findInside(points.begin() + begin, count, m_sides, inside.data());
            for (int i = 0; i < count; ++i)
                if (inside[static_cast<size_t>(i)] == 0 && isFinite(points[begin + i])) outside.append(begin + i);
        }
        return outside;
    }

private:
    static constexpr int numSides = 8, blockSize = 512;

    /// What a point (x, y) inside satisfies: it is closer to the centre than `reach` in x and y, and for each side
    /// across.dx * (x - centre.x) + across.dy * (y - centre.y) is above `least`.
    struct Sides
    {
        Point2 centre;
        double reach = 0;
        double dx[numSides], dy[numSides], least[numSides];
    };

    void include(const Point2& p)
    {
        if (!isFinite(p)) return;
        const double heights[numSides] = {-p.y, p.x - p.y, p.x, p.x + p.y, p.y, p.y - p.x, -p.x, -p.x - p.y};
        for (int i = 0; i < numSides; ++i) {
            if (!(heights[i] > m_heights[i])) continue;
            m_heights[i] = heights[i];
            m_corners[i] = p;
        }
    }

    /// A polygon that runs once round counter-clockwise holds what is to the left of all its sides, even if rounding
    /// has left it a dent. A side must be passed by more than the test's own rounding.
    void setSides()
    {
        const Point2 low(m_corners[6].x, m_corners[0].y), high(m_corners[2].x, m_corners[4].y);
        m_sides.centre = Point2(0.5 * low.x + 0.5 * high.x, 0.5 * low.y + 0.5 * high.y);
        m_sides.reach = std::max(high.x - low.x, high.y - low.y);
        // Beyond these, squares may leave the range of numbers.
        m_hasArea = m_sides.reach > 0x1p-400 && m_sides.reach < 0x1p400;
        int numLeft = 0;
        for (int i = 0; i < numSides; ++i) {
            const Point2 &start = m_corners[i], &end = m_corners[(i + 1) % numSides];
            numLeft += start == end ? 0 : 1;
            const Vector2 along = end - start, fromCentre = start - m_sides.centre;
            constexpr double relativeError = 32 * 0x1p-53, smallest = 0x1p-1000;
            m_sides.dx[i] = -along.dy, m_sides.dy[i] = along.dx;
            m_sides.least[i] = along.dx * fromCentre.dy - along.dy * fromCentre.dx +
                               relativeError * (std::fabs(along.dx) + std::fabs(along.dy)) * m_sides.reach + smallest;
            if (start == end) m_sides.least[i] = -1;
        }
        m_hasArea = m_hasArea && numLeft > 2;
    }

    ZNGEOM_CLONES static void findInside(const Point2* points, int count, const Sides& sides, std::uint8_t* inside)
    {
        for (int i = 0; i < count; ++i) {
            const double x = points[i].x - sides.centre.x, y = points[i].y - sides.centre.y;
            const auto passes = [&sides, x, y](int side) {
                return static_cast<int>(sides.dx[side] * x + sides.dy[side] * y > sides.least[side]);
            };
            inside[i] = static_cast<std::uint8_t>(
                passes(0) & passes(1) & passes(2) & passes(3) & passes(4) & passes(5) & passes(6) & passes(7) &
                static_cast<int>(std::fabs(x) < sides.reach) & static_cast<int>(std::fabs(y) < sides.reach));
        }
    }

    std::array<Point2, numSides> m_corners;
    double m_heights[numSides] = {-inf, -inf, -inf, -inf, -inf, -inf, -inf, -inf};
    Sides m_sides;
    bool m_hasArea = false;

    static constexpr double inf = std::numeric_limits<double>::infinity();
};

/// Puts points in the order in which the scan meets them, upwards and then to the left, one for each place.
class UpwardOrder
{
public:
    explicit UpwardOrder(const Points& points) : m_points(points) {}

    /// Indices of finite points, changed in place.
    void sort(Indices& indices)
    {
        const int count = indices.size();
        m_order = indices.data();
        Range1d heights;
        for (int index : indices) heights.include(m_points[index].y);
        // Where steps of the key would not be numbers, and for few points, comparisons do it all.
        constexpr int fewPoints = 2000;
        if (count < fewPoints || !(heights.size() > 0x1p-900 && heights.size() < 0x1p900))
            appendRun(indices.begin(), indices.end());
        else
            sortByHeight(indices, heights);
        indices.setSize(m_count);
    }

private:
    /// Sorts by where points lie in 2^32 steps of height, which leaves only short runs to be compared.
    void sortByHeight(const Indices& indices, const Range1d& heights)
    {
        const int count = indices.size();
        const auto records = std::make_unique_for_overwrite<KeyedIndex[]>(static_cast<size_t>(count));
        const auto scratch = std::make_unique_for_overwrite<KeyedIndex[]>(static_cast<size_t>(count));
        constexpr double numSteps = 4294967000;
        const double stepsPerHeight = numSteps / heights.size();
        for (int i = 0; i < count; ++i) {
            const double height = m_points[indices[i]].y - heights.min;
            records[static_cast<size_t>(i)] = {static_cast<std::uint32_t>(height * stepsPerHeight), indices[i]};
        }
        znUtil::radixSort(records.get(), scratch.get(), count, znUtil::ThreadPool::getSingleThreadedPool());
        Indices run;
        for (const KeyedIndex *first = records.get(), *end = first + count; first != end;) {
            run.clear();
            const std::uint32_t key = first->key;
            for (; first != end && first->key == key; ++first) run.append(first->index);
            appendRun(run.begin(), run.end());
        }
    }

    /// Appends points that come after all that were appended before.
    void appendRun(int* begin, int* end)
    {
        const Point2* const points = m_points.data();
        znUtil::boundedSort(begin, end, [points](int i, int j) {
            const Point2 &a = points[i], &b = points[j];
            return a.y != b.y ? a.y < b.y : a.x != b.x ? a.x > b.x : i < j;
        });
        while (begin != end) {
            const int lowest = *begin;
            while (begin + 1 != end && points[begin[1]] == points[lowest]) ++begin;
            m_order[m_count] = m_count == 0 ? lowest : *begin;
            ++m_count, ++begin;
        }
    }

    const Points& m_points;
    int* m_order = nullptr;
    int m_count = 0;
};

/// One side of a hull, as a chain of vertices from the lowest upwards that turns one way only.
class Chain
{
public:
    /// \param turn  1 for the right side of the hull, -1 for the left one
    Chain(const Points& points, int lowest, int turn) : m_points(points), m_turn(turn), m_vertices(1, lowest) {}

    /// Adds a point above all before it, and drops vertices that now lie within the hull or on its border.
    void append(int index)
    {
        while (m_vertices.size() > 1 && turnTo(index) != m_turn) m_vertices.eraseBack();
        m_vertices.append(index);
    }

    const Indices& vertices() const { return m_vertices; }

private:
    int turnTo(int index) const
    {
        const int* const end = m_vertices.end();
        return internal::orientation(m_points[end[-2]], m_points[end[-1]], m_points[index]);
    }

    const Points& m_points;
    int m_turn;
    Indices m_vertices;
};

/// The hull of points in upward order.
Indices scan(const Points& points, const Indices& order)
{
    if (order.size() < 2) return order;
    const int lowest = order.front(), highest = order.back();
    Chain right(points, lowest, 1), left(points, lowest, -1);
    for (const int *next = order.begin() + 1, *end = order.end() - 1; next != end; ++next) {
        const int side = internal::orientation(points[lowest], points[highest], points[*next]);
        if (side < 0) right.append(*next);
        if (side > 0) left.append(*next);
    }
    right.append(highest);
    left.append(highest);
    Indices hull = right.vertices();
    for (int i = left.vertices().size() - 2; i > 0; --i) hull.append(left.vertices()[i]);
    return hull;
}

} // namespace

bool convexHull2d(const Points& points, Indices& hull)
{
    if (points.size() < 3) {
        hull.setSize(points.size());
        std::iota(hull.begin(), hull.end(), 0);
        return true;
    }
    Indices order = Octagon(points).pointsOutside(points);
    UpwardOrder(points).sort(order);
    hull = scan(points, order);
    return hull.size() > 1;
}

bool convexHull2d(const Points& points, Points& hull)
{
    Indices vertices;
    if (!convexHull2d(points, vertices)) return false;
    Points corners(vertices.size());
    for (int i = 0; i < vertices.size(); ++i) corners[i] = points[vertices[i]];
    hull.swap(corners);
    return true;
}

} // namespace znGeom
