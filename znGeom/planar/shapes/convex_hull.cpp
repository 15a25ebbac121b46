#include "znGeom/planar/shapes/convex_hull.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <numbers>
#include <numeric>
#include <utility>

#include "znGeom/foundation/linear/range.h"
#include "znGeom/foundation/machine/clones.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/foundation/threads/bounded_sort.h"
#include "znGeom/foundation/threads/radix_sort.h"
#include "znGeom/planar/shapes/internal/line_vertices.h"
#include "znGeom/planar/shapes/internal/orientation.h"

namespace znGeom {

using namespace znLinear;
using znUtil::KeyedIndex;

namespace {

using Points = zn::vector<Point2>;
using Indices = zn::vector<int>;

bool isFinite(const Point2& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

/// A polygon of input points that are extreme, or nearly so, in directions all round, and a test that shows points to
/// lie inside of it.
class InnerPolygon
{
public:
    /// \param pointAt  gives point i of `count`
    template <typename PointAt>
    InnerPolygon(int numSides, int count, const PointAt& pointAt) : m_numSides(numSides)
    {
        // So many points, drawn evenly, know the shape of the rest well enough.
        constexpr int numDrawn = 4096;
        const auto draw = [count](int i) {
            const std::uint64_t fraction = static_cast<std::uint32_t>(i) * std::uint64_t(0x9E3779B9) & 0xFFFFFFFF;
            return static_cast<int>(fraction * static_cast<std::uint64_t>(count) >> 32);
        };
        for (int i = 0; i < numSides; ++i) {
            const double angle = 2 * std::numbers::pi / numSides * i;
            m_directions[i] = Vector2(std::cos(angle), std::sin(angle));
            m_heights[i] = -std::numeric_limits<double>::infinity();
        }
        for (int i = 0; i < std::min(count, numDrawn); ++i) include(pointAt(count <= numDrawn ? i : draw(i)));
        setSides();
    }

    /// Which of the points 0 to count - 1 are not shown to be inside, ascending.
    template <typename PointAt>
    Indices findOutside(int count, const PointAt& pointAt) const
    {
        Indices outside;
        outside.reserve(count);
        Block block;
        for (int begin = 0; begin < count; begin += blockSize) {
            const int length = std::min(blockSize, count - begin);
            for (int i = 0; i < length; ++i) {
                const Point2& p = pointAt(begin + i);
                block.x[i] = p.x - m_centre.x, block.y[i] = p.y - m_centre.y;
            }
            measure(block, length);
            int found[blockSize], numFound = 0;
            for (int i = 0; i < length; ++i) {
                found[numFound] = begin + i;
                numFound += block.inside[i] > 0 ? 0 : 1;
            }
            for (int i = 0; i < numFound; ++i) outside.append(found[i]);
        }
        return outside;
    }

private:
    static constexpr int mostSides = 32, blockSize = 256;

    struct Block
    {
        double x[blockSize], y[blockSize]; ///< from the centre
        double inside[blockSize];          ///< above 0 where a point is inside, unless it is not finite
    };

    void include(const Point2& p)
    {
        if (!isFinite(p)) return;
        for (int i = 0; i < m_numSides; ++i) {
            const double height = m_directions[i].dx * p.x + m_directions[i].dy * p.y;
            if (!(height > m_heights[i])) continue;
            m_heights[i] = height;
            m_corners[i] = p;
        }
    }

    /// Any closed polygon holds what is to the left of all its sides, even if rounding has left it a dent. A side must
    /// be passed by more than the test itself rounds, for points that are closer to the centre than `m_reach`.
    void setSides()
    {
        Range2d box;
        for (int i = 0; i < m_numSides; ++i) box.include(m_corners[i]);
        m_centre = box.mid();
        m_reach = std::max(box.x.size(), box.y.size());
        // Beyond these, products may leave the range of numbers.
        if (!(m_reach > 0x1p-400 && m_reach < 0x1p400)) m_reach = 0;
        for (int i = 0; i < m_numSides; ++i) {
            const Point2 &start = m_corners[i], &end = m_corners[(i + 1) % m_numSides];
            const Vector2 along = end - start, fromCentre = start - m_centre;
            constexpr double relativeError = 32 * 0x1p-53, smallest = 0x1p-1000;
            m_across[i] = Vector2(-along.dy, along.dx);
            m_least[i] = dot(m_across[i], fromCentre) +
                         relativeError * (std::fabs(along.dx) + std::fabs(along.dy)) * m_reach + smallest;
            if (start == end) m_least[i] = -1; // passed by all
        }
    }

    void measure(Block& block, int count) const
    {
        for (int i = 0; i < count; ++i)
            block.inside[i] = m_reach - std::max(std::fabs(block.x[i]), std::fabs(block.y[i]));
        for (int side = 0; side < m_numSides; ++side)
            includeSide(block.x, block.y, m_across[side], m_least[side], block.inside, count);
    }

    ZNGEOM_CLONES static void includeSide(const double* __restrict x, const double* __restrict y, const Vector2& across,
                                          double least, double* __restrict inside, int count)
    {
        for (int i = 0; i < count; ++i) {
            const double passed = across.dx * x[i] + across.dy * y[i] - least;
            inside[i] = passed < inside[i] ? passed : inside[i];
        }
    }

    int m_numSides;
    Vector2 m_directions[mostSides];
    double m_heights[mostSides];
    Point2 m_corners[mostSides];
    Point2 m_centre;
    double m_reach = 0;
    Vector2 m_across[mostSides]; ///< of each side, to the left
    double m_least[mostSides];   ///< what a point inside has more of than that along `m_across`
};

/// The indices of finite points, ascending, without most of those that are well inside the hull.
Indices findOuter(const Points& points)
{
    constexpr int fewPoints = 100, manyPoints = 10000;
    Indices outer;
    if (points.size() < fewPoints) {
        outer.setSize(points.size());
        std::iota(outer.begin(), outer.end(), 0);
    } else {
        const auto pointAt = [&points](int i) -> const Point2& { return points[i]; };
        outer = InnerPolygon(8, points.size(), pointAt).findOutside(points.size(), pointAt);
    }
    // Where that was worth it, a polygon with more sides is as well.
    if (outer.size() > manyPoints && outer.size() < points.size() / 2) {
        const auto pointAt = [&](int i) -> const Point2& { return points[outer[i]]; };
        Indices places = InnerPolygon(32, outer.size(), pointAt).findOutside(outer.size(), pointAt);
        for (int& place : places) place = outer[place];
        outer.swap(places);
    }
    int* const end = std::remove_if(outer.begin(), outer.end(), [&points](int i) { return !isFinite(points[i]); });
    outer.setSize(static_cast<int>(end - outer.begin()));
    return outer;
}

/// Whether p comes after q on the way upwards, and to the left among points of one height.
bool isAbove(const Point2& p, const Point2& q) { return p.y != q.y ? p.y > q.y : p.x < q.x; }

/// Puts points in upward order, one for each place: that with the highest index.
class UpwardOrder
{
public:
    explicit UpwardOrder(const Points& points) : m_points(points) {}

    /// Indices of finite points, changed in place.
    void sort(Indices& indices)
    {
        const int count = indices.size();
        if (count == 0) return;
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
        const double height = points[*begin].y;
        if (end - begin > 2 && std::all_of(begin, end, [=](int i) { return points[i].y == height; }))
            return appendRow(begin, end);
        znUtil::boundedSort(begin, end, [points](int i, int j) {
            const Point2 &a = points[i], &b = points[j];
            return a == b ? i < j : isAbove(b, a);
        });
        for (; begin != end; ++begin) {
            const bool isLast = begin + 1 == end || !(points[begin[0]] == points[begin[1]]);
            if (isLast) m_order[m_count++] = *begin;
        }
    }

    /// The same for points of one height, of which only those at the two ends can be vertices.
    void appendRow(const int* begin, const int* end)
    {
        int right = *begin, left = *begin;
        for (const int* next = begin; next != end; ++next) {
            const double x = m_points[*next].x;
            if (x > m_points[right].x || (x == m_points[right].x && *next > right)) right = *next;
            if (x < m_points[left].x || (x == m_points[left].x && *next > left)) left = *next;
        }
        m_order[m_count++] = right;
        if (left != right) m_order[m_count++] = left;
    }

    const Points& m_points;
    int* m_order = nullptr;
    int m_count = 0;
};

/// One side of a hull, as a chain of vertices from the lowest one upwards that turns one way only.
class Chain
{
public:
    /// \param turn  1 for the right side of the hull, -1 for the left one
    Chain(const Points& points, int turn) : m_points(points), m_turn(turn) {}

    /// \param between  points on this side of the line from the lowest to the highest, which are put in upward order
    Indices scan(int lowest, Indices& between, int highest)
    {
        UpwardOrder(m_points).sort(between);
        m_vertices.reserve(between.size() + 2);
        m_vertices.append(lowest);
        constexpr std::ptrdiff_t prefetchDistance = 16;
        for (const int *next = between.begin(), *end = between.end(); next != end; ++next) {
            znUtil::prefetch(m_points.data() + *(end - next > prefetchDistance ? next + prefetchDistance : next));
            append(*next);
        }
        append(highest);
        return std::move(m_vertices);
    }

private:
    /// Adds a point above all before it, and drops vertices that now lie within the hull or on its border.
    void append(int index)
    {
        while (m_vertices.size() > 1 && turnTo(index) != m_turn) m_vertices.eraseBack();
        m_vertices.append(index);
    }

    int turnTo(int index) const
    {
        const int* const end = m_vertices.end();
        return internal::orientation(m_points[end[-2]], m_points[end[-1]], m_points[index]);
    }

    const Points& m_points;
    int m_turn;
    Indices m_vertices;
};

/// The hull of those points whose indices are given, ascending, at least one.
Indices hullOf(const Points& points, const Indices& indices)
{
    int lowest = indices.front(), highest = lowest;
    for (int i : indices) {
        if (isAbove(points[lowest], points[i])) lowest = i;
        if (!isAbove(points[highest], points[i])) highest = i;
    }
    if (points[lowest] == points[highest]) return {lowest};
    Indices right, left;
    right.reserve(indices.size());
    left.reserve(indices.size());
    for (int i : indices) {
        const int side = internal::orientation(points[lowest], points[highest], points[i]);
        if (side < 0) right.append(i);
        if (side > 0) left.append(i);
    }
    Indices hull = Chain(points, 1).scan(lowest, right, highest);
    const Indices back = Chain(points, -1).scan(lowest, left, highest);
    hull.reserve(hull.size() + back.size() - 2);
    for (int i = back.size() - 2; i > 0; --i) hull.append(back[i]);
    return hull;
}

template <typename Line>
bool hullOfLines(const zn::vector<const Line*>& polylines, zn::vector<Point>& hull)
{
    Points corners;
    if (!convexHull2d(internal::lineVertices(polylines), corners)) return false;
    hull.clear();
    hull.reserve(corners.size());
    for (const Point2& corner : corners) hull.append(Point(corner));
    return true;
}

} // namespace

bool convexHull2d(const Points& points, Indices& hull)
{
    if (points.size() < 3) {
        hull.setSize(points.size());
        std::iota(hull.begin(), hull.end(), 0);
        return true;
    }
    const Indices outer = findOuter(points);
    hull = outer.empty() ? Indices() : hullOf(points, outer);
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

bool convexHull2d(const zn::vector<const Polyline*>& polylines, zn::vector<Point>& hull)
{
    return hullOfLines(polylines, hull);
}

bool convexHull2d(const zn::vector<const Polyline2d*>& polylines, zn::vector<Point>& hull)
{
    return hullOfLines(polylines, hull);
}

} // namespace znGeom
