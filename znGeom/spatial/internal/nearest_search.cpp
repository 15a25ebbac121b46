#include "znGeom/spatial/internal/nearest_search.h"

namespace znGeom {

namespace {

/// Levels of an octree at most, times the seven siblings that may wait on each.
constexpr int stackSize = 24 * 7 + 1;

/// A lower bound for the squared distance of a point from each of eight boxes.
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
    stack[0] = {m_rootCell, 0, 0};
    for (int size = 1; size > 0;) {
        const Pending cell = stack[--size];
        if (cell.lower2 > m_nearest.reach2()) continue;
        if (m_nodes[cell.node].isLeaf) {
            testLeaf(cell);
            if (m_undecided) return false;
        } else {
            size = pushChildren(cell, stack, size);
        }
    }
    return m_leaf >= 0 && m_leafKey < m_nearest.best2();
}

/// The nearest child on top.
int NearestSearch::pushChildren(const Pending& parent, Pending* stack, int size) const
{
    const int firstChild = parent.node + m_nodes[parent.node].firstChild;
    float lower2[8];
    boundSiblings(m_boxes.siblings(firstChild), &m_query.x, lower2);
    const int bottom = size;
    for (int child = 0; child < 8; ++child) {
        if (lower2[child] > m_nearest.reach2()) continue;
        int place = size++;
        for (; place > bottom && stack[place - 1].lower2 < lower2[child]; --place) stack[place] = stack[place - 1];
        stack[place] = {parent.cell, lower2[child], firstChild + child};
        OctreeIterator::halve(stack[place].cell, child);
    }
    return size;
}

void NearestSearch::testLeaf(const Pending& leaf)
{
    const int number = m_nodes[leaf.node].leafIndex;
    const int start = m_table.start[number], count = m_table.getSetSize(number);
    const int* triangles = m_table.elements.read() + start;
    const std::uint8_t* bytes = m_boxes.entries(start);
    const SearchBoxes::Scale scale(m_boxes.box(leaf.node));
    for (int first = 0; first < count; first += TriangleBounds::capacity) {
        const int size = std::min(count - first, TriangleBounds::capacity);
        float lower2[TriangleBounds::capacity];
        boundEntries(bytes + first, count, size, scale, &m_query.x, lower2);
        if (m_leaf < 0) m_nearest.boundBy(triangles + first, size);
        for (int i = 0; i < size; ++i)
            if (!(lower2[i] > m_nearest.reach2())) testTriangle(triangles[first + i], leaf);
    }
}

void NearestSearch::testTriangle(int triangle, const Pending& leaf)
{
    NearestTriangle::Candidate candidate;
    if (!m_nearest.mayBeNearest(triangle) || !m_nearest.measure(triangle, candidate)) return;
    const int number = m_nodes[leaf.node].leafIndex;
    if (candidate.distance2 > m_nearest.best2() || (candidate.distance2 == m_nearest.best2() && number == m_leaf))
        return; // within a leaf the first one stays
    const double key = leaf.cell.distance2(m_query);
    if (candidate.distance2 == m_nearest.best2() && m_leaf >= 0) {
        m_undecided = m_undecided || (key == m_leafKey && triangle != m_coord.triangle);
        if (!(key < m_leafKey)) return;
    }
    m_nearest.take(candidate);
    m_leaf = number;
    m_leafKey = key;
}

} // namespace znGeom
