#include "znGeom/spatial/internal/nearest_search.h"

#include <algorithm>

#include "znGeom/foundation/machine/prefetch.h"

namespace znGeom {

namespace {

/// Levels of an octree at most, times the seven siblings that may wait on each.
constexpr int stackSize = 24 * 7 + 1;

/// A bound from below for the squared distance of a point from each of eight boxes.
void boundSiblings(const SearchBoxes::Siblings& boxes, const float* p, float* lower2)
{
    for (int i = 0; i < 8; ++i) lower2[i] = 0;
    for (int axis = 0; axis < 3; ++axis)
        for (int i = 0; i < 8; ++i) {
            const float below = boxes.low[axis][i] - p[axis], above = p[axis] - boxes.high[axis][i];
            const float outside = below > above ? below : above;
            const float distance = outside > 0 ? outside : 0.0f;
            lower2[i] += distance * distance;
        }
}

/// The same for some entries of a leaf: `bytes` for the first of them, `stride` entries in the leaf.
void boundEntries(const std::uint8_t* bytes, int stride, int count, const SearchBoxes::Scale& scale, const float* p,
                  float* __restrict lower2)
{
    for (int i = 0; i < count; ++i) lower2[i] = 0;
    for (int axis = 0; axis < 3; ++axis) {
        const float begin = scale.low[axis] - p[axis], step = scale.step[axis];
        const std::uint8_t *lows = bytes + axis * stride, *highs = bytes + (axis + 3) * stride;
        for (int i = 0; i < count; ++i) {
            const float below = begin + static_cast<float>(lows[i]) * step;
            const float above = -(begin + static_cast<float>(highs[i]) * step);
            const float outside = below > above ? below : above;
            const float distance = outside > 0 ? outside : 0.0f;
            lower2[i] += distance * distance;
        }
    }
}

} // namespace

bool NearestSearch::run()
{
    Pending stack[stackSize];
    stack[0] = {0, -1, m_boxes.root()};
    for (int size = 1; size > 0;) {
        const Pending cell = stack[--size];
        if (m_nearest.isBeyond(cell.lower2)) continue;
        if (cell.content.isLeaf()) {
            testLeaf(cell);
            if (m_isUndecided) return false;
        } else {
            size = pushChildren(cell, stack, size);
        }
    }
    return m_nearest.isFound() && m_best.leafDistance2 < m_nearest.best2();
}

/// The nearest child on top. What a child leads to is asked for now, since it will be needed a little later.
int NearestSearch::pushChildren(const Pending& parent, Pending* stack, int size) const
{
    const SearchBoxes::Siblings& children = m_boxes.siblings(parent.content.first);
    float lower2[8];
    boundSiblings(children, &m_query.x, lower2);
    const int bottom = size;
    for (int child = 0; child < 8; ++child) {
        if (m_nearest.isBeyond(lower2[child]) || children.cells[child].count == 0) continue;
        prefetch(children.cells[child]);
        int place = size++;
        for (; place > bottom && stack[place - 1].lower2 < lower2[child]; --place) stack[place] = stack[place - 1];
        stack[place] = {lower2[child], 8 * parent.content.first + child, children.cells[child]};
    }
    return size;
}

void NearestSearch::prefetch(SearchBoxes::Cell cell) const
{
    constexpr int lineBytes = 64;
    const auto lines = [](const void* begin, int bytes) {
        for (int at = 0; at < bytes; at += lineBytes) znUtil::prefetch(static_cast<const char*>(begin) + at);
    };
    if (cell.isLeaf()) {
        lines(m_boxes.entries(cell.first), 6 * std::min(cell.count, TriangleBounds::capacity));
        lines(m_entries + cell.first, 4 * std::min(cell.count, TriangleBounds::capacity));
    } else {
        lines(&m_boxes.siblings(cell.first), static_cast<int>(sizeof(SearchBoxes::Siblings)));
    }
}

void NearestSearch::testLeaf(const Pending& leaf)
{
    const auto [first, count] = leaf.content;
    const SearchBoxes::Scale scale(m_boxes.box(leaf.cell));
    for (int done = 0; done < count; done += TriangleBounds::capacity) {
        const int size = std::min(count - done, TriangleBounds::capacity);
        float lower2[TriangleBounds::capacity];
        boundEntries(m_boxes.entries(first) + done, count, size, scale, &m_query.x, lower2);
        testEntries(leaf, first + done, size, lower2);
    }
}

/// Tests those entries that may be nearest, the one that seems so first: it tells the others how far is too far.
void NearestSearch::testEntries(const Pending& leaf, int first, int count, float* lower2)
{
    const int* triangles = m_entries + first;
    int kept[TriangleBounds::capacity];
    if (!m_nearest.isFound()) m_nearest.boundByCorners(triangles, count);
    const int numKept = m_nearest.sift(triangles, count, lower2, kept);
    if (numKept == 0) return;
    const int seemsNearest = static_cast<int>(std::min_element(lower2, lower2 + numKept) - lower2);
    testEntry(leaf, first + kept[seemsNearest]);
    for (int i = 0; i < numKept; ++i)
        if (i != seemsNearest && !m_nearest.isBeyond(lower2[i])) testEntry(leaf, first + kept[i]);
}

void NearestSearch::testEntry(const Pending& leaf, int entry)
{
    NearestTriangle::Candidate candidate;
    const int triangle = m_entries[entry];
    if (!m_nearest.measure(triangle, candidate) || candidate.distance2 > m_nearest.best2()) return;
    const Place place{entry, leaf.content.first, m_boxes.cellBox(leaf.cell).distance2(m_query)};
    if (m_nearest.isFound() && candidate.distance2 == m_nearest.best2()) {
        if (place.leaf == m_best.leaf) {
            if (entry > m_best.entry) return;
        } else {
            m_isUndecided =
                m_isUndecided || (place.leafDistance2 == m_best.leafDistance2 && triangle != m_coord.triangle);
            if (!(place.leafDistance2 < m_best.leafDistance2)) return;
        }
    }
    m_nearest.take(candidate);
    m_best = place;
}

} // namespace znGeom
