#include "znGeom/spatial/trees/kd_tree.h"

#include <algorithm>
#include <cstddef>

#include "znGeom/foundation/threads/radix_sort.h"

namespace znGeom {

namespace {

constexpr int smallestBlock = 16;
/// Ranges of up to this many points are not divided further.
constexpr int bucketSize = 8;

float coordinate(const float* points, int number, int axis)
{
    return points[3 * static_cast<std::ptrdiff_t>(number) + axis];
}

/// A part of a block that is a tree: the middle is its root, and what lies before it is its low side on the axis.
struct Range
{
    int begin, end, axis;

    bool isBucket() const { return end - begin <= bucketSize; }
    int middle() const { return begin + (end - begin) / 2; }
    Range low() const { return {begin, middle(), (axis + 1) % 3}; }
    Range high() const { return {middle() + 1, end, (axis + 1) % 3}; }
};

/// Puts the numbers of a block into the order of a balanced tree. The depth of the recursion is the tree's.
void balance(int* numbers, Range range, const float* points)
{
    if (range.isBucket()) return;
    // By keys, not by the coordinates themselves: these may be not-a-number and then have no order.
    const auto key = [&](int number) { return znUtil::sortableKey(coordinate(points, number, range.axis)); };
    std::nth_element(numbers + range.begin, numbers + range.middle(), numbers + range.end,
                     [&](int a, int b) { return key(a) < key(b); });
    balance(numbers, range.low(), points);
    balance(numbers, range.high(), points);
}

bool isInside(const float* points, int number, const float* box)
{
    for (int axis = 0; axis < 3; ++axis) {
        const float value = coordinate(points, number, axis);
        if (!(box[axis] <= value && value <= box[axis + 3])) return false;
    }
    return true;
}

} // namespace

void KDTree::insert(const float* points, int index)
{
    m_numbers.append(index);
    if (m_numbers.size() % smallestBlock != 0) return;
    int size = smallestBlock;
    while (!m_blockSizes.empty() && m_blockSizes.back() == size) {
        m_blockSizes.eraseBack();
        size *= 2;
    }
    m_blockSizes.append(size);
    balance(m_numbers.data() + (m_numbers.size() - size), {0, size, 0}, points);
}

/// Calls `visit(number)` for the points in the box until it returns false.
template <typename Visit>
void KDTree::visitBox(const float* points, const float* box, const Visit& visit) const
{
    const auto visitRun = [&](const int* first, const int* last) {
        return std::all_of(first, last, [&](int number) { return !isInside(points, number, box) || visit(number); });
    };
    const int* block = m_numbers.begin();
    for (const int size : m_blockSizes) {
        Range stack[32];
        int top = 0;
        stack[top++] = {0, size, 0};
        while (top > 0) {
            const Range range = stack[--top];
            if (range.isBucket()) {
                if (!visitRun(block + range.begin, block + range.end)) return;
                continue;
            }
            const int* middle = block + range.middle();
            if (!visitRun(middle, middle + 1)) return;
            const float value = coordinate(points, *middle, range.axis);
            if (!(value < box[range.axis])) stack[top++] = range.low();
            if (!(value > box[range.axis + 3])) stack[top++] = range.high();
        }
        block += size;
    }
    visitRun(block, m_numbers.end());
}

int KDTree::search(const float* points, const float* const box) const
{
    int found = -1;
    visitBox(points, box, [&](int number) {
        found = number;
        return false;
    });
    return found;
}

void KDTree::searchAll(const float* points, const float* const box, std::vector<int>& out) const
{
    const size_t before = out.size();
    visitBox(points, box, [&](int number) {
        out.push_back(number);
        return true;
    });
    std::sort(out.begin() + static_cast<std::ptrdiff_t>(before), out.end());
}

} // namespace znGeom
