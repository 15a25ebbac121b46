#include "znGeom/planar/shapes/internal/free_leaves.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "znGeom/foundation/linear/tolerance.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

constexpr double none = -std::numeric_limits<double>::infinity();

/// Rises with a height that is not negative, by one in a quarter of an octave: the bits of a `float` down to the second
/// of its mantissa.
int quarterOctave(double height) { return std::bit_cast<std::int32_t>(static_cast<float>(height)) >> 21; }

} // namespace

void FreeLeaves::reset(double greatestHeight)
{
    m_tolerance = epsilonTol;
    m_lowestClass = quarterOctave(std::min(greatestHeight, 1.0)) - (numClasses - 1);
    m_numUsed = 0;
    m_order.clear();
    for (zn::vector<double>& widest : m_widest) widest.clear();
    insertBlock(0);
    Rest square{1, {Range2d::unitSquare}};
    blockAt(0).count = 1;
    replace(0, 0, square);
}

bool FreeLeaves::place(const Point2& size, const Point2& leastLater, Range2d& place)
{
    // Whatever has room is higher than this, however the differences are rounded.
    const zn::vector<double>& widest = m_widest[classOf(size.y - 2 * m_tolerance)];
    for (int rank = 0; rank < widest.size(); ++rank) {
        if (!hasRoom(widest[rank], size.x)) continue;
        const int leaf = firstFit(blockAt(rank), size);
        if (leaf < 0) continue;
        Range2d cell = blockAt(rank).range[static_cast<size_t>(leaf)];
        const Rest rest = cut(cell, size, leastLater);
        replace(rank, leaf, rest);
        place = cell;
        return true;
    }
    return false;
}

int FreeLeaves::classOf(double height) const
{
    if (!(height > 0)) return 0;
    return std::clamp(quarterOctave(std::min(height, 1.0)) - m_lowestClass, 0, numClasses - 1);
}

int FreeLeaves::firstFit(const Block& block, const Point2& size) const
{
    for (int i = 0; i < block.count; ++i) {
        const auto leaf = static_cast<size_t>(i);
        if (hasRoom(block.width[leaf], size.x) && hasRoom(block.height[leaf], size.y)) return i;
    }
    return -1;
}

/// Cuts `leaf` down to the size, and returns what is left and may be of use.
FreeLeaves::Rest FreeLeaves::cut(Range2d& leaf, const Point2& size, const Point2& leastLater) const
{
    Rest rest;
    for (int cuts = 0; cuts < 2; ++cuts) {
        const double slackX = leaf.x.size() - size.x, slackY = leaf.y.size() - size.y;
        if (m_tolerance > std::fabs(slackX) && m_tolerance > std::fabs(slackY)) break;
        const int axis = slackX > slackY ? 0 : 1;
        Range2d beyond = leaf;
        leaf[axis].max = beyond[axis].min = leaf[axis].min + size[axis];
        if (!hasRoom(beyond.size(), leastLater)) continue;
        // The first cut is the parent of the second, and what lies beyond it comes later.
        rest.range[1] = rest.range[0];
        rest.range[0] = beyond;
        ++rest.count;
    }
    return rest;
}

/// Puts what was left of a leaf in its place.
void FreeLeaves::replace(int rank, int leaf, const Rest& rest)
{
    if (blockAt(rank).count - 1 + rest.count > blockSize) {
        split(rank);
        if (const int kept = blockAt(rank).count; leaf >= kept) ++rank, leaf -= kept;
    }
    Block& block = blockAt(rank);
    const auto shift = [&](auto& values) {
        const auto from = values.begin() + leaf + 1, end = values.begin() + block.count;
        if (rest.count == 0) std::copy(from, end, from - 1);
        if (rest.count == 2) std::copy_backward(from, end, end + 1);
    };
    shift(block.width);
    shift(block.height);
    shift(block.range);
    block.count += rest.count - 1;
    for (int i = 0; i < rest.count; ++i) {
        const auto to = static_cast<size_t>(leaf + i);
        block.range[to] = rest.range[i];
        block.width[to] = rest.range[i].x.size();
        block.height[to] = rest.range[i].y.size();
    }
    updateWidest(rank);
}

/// Moves the second half of a full block to a new one behind it.
void FreeLeaves::split(int rank)
{
    insertBlock(rank + 1);
    Block &full = blockAt(rank), &next = blockAt(rank + 1);
    constexpr int kept = blockSize / 2;
    std::copy(full.width.begin() + kept, full.width.end(), next.width.begin());
    std::copy(full.height.begin() + kept, full.height.end(), next.height.begin());
    std::copy(full.range.begin() + kept, full.range.end(), next.range.begin());
    next.count = blockSize - kept;
    full.count = kept;
    updateWidest(rank);
    updateWidest(rank + 1);
}

void FreeLeaves::insertBlock(int rank)
{
    if (m_numUsed == m_blocks.size()) m_blocks.appendAndReturnPtr();
    m_order.insert(m_order.begin() + rank, m_numUsed++);
    blockAt(rank).count = 0;
    for (zn::vector<double>& widest : m_widest) widest.insert(widest.begin() + rank, none);
}

void FreeLeaves::updateWidest(int rank)
{
    const Block& block = blockAt(rank);
    double widest[numClasses];
    std::fill(std::begin(widest), std::end(widest), none);
    for (int i = 0; i < block.count; ++i) {
        double& known = widest[classOf(block.height[static_cast<size_t>(i)])];
        known = std::max(known, block.width[static_cast<size_t>(i)]);
    }
    for (int k = numClasses - 1; k > 0; --k) widest[k - 1] = std::max(widest[k - 1], widest[k]);
    for (int k = 0; k < numClasses; ++k) m_widest[k][rank] = widest[k];
}

} // namespace znGeom::internal
