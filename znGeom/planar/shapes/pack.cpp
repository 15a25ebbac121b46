#include "znGeom/planar/shapes/pack.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>

#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/ordering.h"
#include "znGeom/planar/shapes/internal/free_leaves.h"

namespace znGeom {

using namespace znLinear;

namespace {

using Rectangles = zn::vector<Range2d>;

double largestSide(const Range2d& item)
{
    const Point2 size = item.size();
    return std::max(size.x, size.y);
}

/// Of elements of one array: by descending larger side, equal ones in their order.
bool comesBefore(const Range2d& a, const Range2d& b)
{
    const double sideA = largestSide(a), sideB = largestSide(b);
    return sideA > sideB || (!(sideB > sideA) && &a < &b);
}

Range2d atOrigin(const Point2& size) { return {Point2(0, 0), size}; }

/// Tries at packing, one after another, in memory that is taken once.
class Packer
{
public:
    bool tryOnce(Rectangles& items)
    {
        if (items.empty()) return true;
        if (largestSide(items.back()) > 1.0) return false;
        prepare(items);
        for (int i = 0; i < items.size(); ++i)
            if (!m_free.place(items[i].size(), m_leastLater[i], items[i])) return false;
        return true;
    }

private:
    void prepare(const Rectangles& items)
    {
        m_leastLater.setSize(items.size());
        constexpr double infinity = std::numeric_limits<double>::infinity();
        Point2 least(infinity, infinity);
        double greatestHeight = 0;
        for (int i = items.size() - 1; i >= 0; --i) {
            m_leastLater[i] = least;
            const Point2 size = items[i].size();
            least = {std::min(least.x, size.x), std::min(least.y, size.y)};
            greatestHeight = std::max(greatestHeight, size.y);
        }
        m_free.reset(greatestHeight);
    }

    internal::FreeLeaves m_free;
    zn::vector<Point2> m_leastLater; ///< the least width and the least height after each item
};

/// The factor of one step. Beyond some 24 million steps for one halving it would be 1, and no number of steps enough.
float shrinkFor(int iterations)
{
    const float shrink = std::pow(0.499f, 1.0f / static_cast<float>(iterations));
    return shrink < 1 ? shrink : std::nextafter(1.0f, 0.0f);
}

bool areAllFinite(const Rectangles& items)
{
    return std::all_of(items.begin(), items.end(), [](const Range2d& item) {
        const Point2 size = item.size();
        return std::isfinite(size.x) && std::isfinite(size.y);
    });
}

/// Shrinks sorted rectangles from try to try until one succeeds.
class ShrinkingSearch
{
public:
    ShrinkingSearch(Rectangles& working, float shrink) : m_working(working), m_shrink(shrink) {}

    /// False after a cancel.
    bool run(znUtil::Progress& progress, PackResult& result)
    {
        Packer packer;
        for (;;) {
            if (progress.cancelled()) return false;
            if (const int steps = countHopeless())
                shrink(steps);
            else if (packer.tryOnce(m_working))
                break;
            else
                shrink(1);
        }
        result.attempts = m_attempts;
        result.coverage = m_coverage;
        return true;
    }

private:
    /// How many tries from here, counted up to some number, would end before anything is placed. Sizes that are huge
    /// and steps that are tiny ask for billions.
    int countHopeless() const
    {
        constexpr int most = 1 << 16;
        double first = largestSide(m_working.front()), last = largestSide(m_working.back());
        const auto factor = static_cast<double>(m_shrink);
        int count = 0;
        for (; count < most && (last > 1.0 || first - 1.0 >= epsilonTol); ++count) first *= factor, last *= factor;
        return count;
    }

    void shrink(int steps)
    {
        m_attempts = static_cast<int>(std::min<std::int64_t>(std::int64_t{m_attempts} + steps, INT_MAX));
        for (int step = 0; step < steps; ++step) m_coverage *= m_shrink;
        const auto factor = static_cast<double>(m_shrink);
        for (Range2d& item : m_working) {
            Point2 size = item.size();
            for (int step = 0; step < steps; ++step) size = {size.x * factor, size.y * factor};
            item = atOrigin(size);
        }
    }

    Rectangles& m_working;
    const float m_shrink;
    int m_attempts = 1;
    float m_coverage = 1;
};

/// Writes the places back to the items that they belong to, and logs the first few.
void writeBack(const Rectangles& working, const znUtil::Ordering& order, Rectangles& items)
{
    constexpr int numLogged = 6;
    for (int i = 0; i < order.size(); ++i) {
        Range2d& item = items[order[i]];
        if (i < numLogged)
            debugChannel().print("Packed (%.4f,%.4f)-(%.4f,%.4f) to", item.x.min, item.y.min, item.x.max, item.y.max);
        item = working[i];
        if (i < numLogged)
            debugChannel().print(" (%.4f,%.4f)-(%.4f,%.4f)\n", item.x.min, item.y.min, item.x.max, item.y.max);
    }
}

/// Scales a packing up that leaves a part of the square's side free; returns the factor.
double fillSquare(Rectangles& items)
{
    Range2d bound;
    for (const Range2d& item : items) bound.include(item);
    const double factor = 1.0 / largestSide(bound);
    // Rectangles that are all without extent stay so.
    if (!(factor > 1.01) || !std::isfinite(factor)) return 1;
    debugChannel().print("Scaling packing by %.2f\n", factor);
    for (Range2d& item : items)
        for (int axis = 0; axis < 2; ++axis) item[axis].min *= factor, item[axis].max *= factor;
    return factor;
}

} // namespace

bool pack(zn::vector<Range2d>& items) { return Packer().tryOnce(items); }

void pack(zn::vector<Range2d>& items, int iterations)
{
    znUtil::Progress progress;
    pack(items, iterations, progress);
}

PackResult pack(zn::vector<Range2d>& items, int iterations, znUtil::Progress& progress, znUtil::ThreadPool& pool)
{
    PackResult result;
    if (items.empty() || iterations <= 0 || !areAllFinite(items)) return result;

    znOS::StopWatch watch;
    znUtil::Ordering order;
    order.sort(items.data(), items.size(), comesBefore, pool);
    Rectangles working(items.size());
    for (int i = 0; i < order.size(); ++i) working[i] = items[order[i]];
    if (!ShrinkingSearch(working, shrinkFor(iterations)).run(progress, result)) return result;

    writeBack(working, order, items);
    result.scale = fillSquare(items);
    progress.set(1.0);
    debugChannel().print("Packed %d items with %.2f coverage in %d iterations in %.2f seconds.\n", items.size(),
                         static_cast<double>(result.coverage), result.attempts, watch.stop());
    return result;
}

} // namespace znGeom
