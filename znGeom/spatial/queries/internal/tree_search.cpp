#include "znGeom/spatial/queries/internal/tree_search.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace znGeom::internal {

using znLinear::Point;
using znLinear::PointFlt;

namespace {

/// With more triangles at exactly the same distance, the walk finds the first one just as quickly.
constexpr int mostSought = 64;

bool isFinite(const BoundingBox& box)
{
    const float *low = &box.minX, *high = &box.maxX;
    return std::all_of(low, low + 3, [](float c) { return std::isfinite(c); }) &&
           std::all_of(high, high + 3, [](float c) { return std::isfinite(c); });
}

SoughtTriangle makeSought(const PackedTriangles& tree, int place)
{
    SoughtTriangle sought;
    sought.number = tree.triangleAt(place);
    for (int i = 0; i < 9; ++i) sought.corners[i] = static_cast<float>(tree.cornerAt(place, i));
    for (int i = 0; i < 9; i += 3) sought.box.extend(sought.corners + i);
    return sought;
}

} // namespace

TreeSearch::TreeSearch(const PackedTriangles& tree, const Octree& octree, const OctreeTris& octreeTris)
    : m_tree(tree), m_octree(octree), m_firstLeaf(octree, octreeTris)
{
    const BoundingBox& root = octree.getRoot().box;
    m_isUsable = tree.numTriangles > 0 && tree.isExact && isFinite(root) && root.contains(tree.box);
}

bool TreeSearch::find(const Point& query, OctreeClosestIt& walk, MeshCoord& coord, double& distance2)
{
    const FrameQuery frameQuery(m_tree.frame, query);
    if (!m_isUsable || !frameQuery.isInside) return false;
    const double known = m_hasLast ? distance(query, m_lastPlace) : std::numeric_limits<double>::infinity();
    m_candidates.search(m_tree, frameQuery, known * m_tree.frame.scale);
    const int count = measureCandidates(m_tree, m_candidates, query, m_measured);
    if (count == 0) return false;
    m_margin = frameQuery.loss * m_tree.frame.unscale;
    splitNearest(count);
    const double second2 = secondDistance2(count);
    int first = 0;
    if (!isAlone(query, second2)) first = firstOfNearest(query, second2, walk);
    if (first < 0) return false;
    const MeasuredTriangle& found = m_measured[static_cast<size_t>(first)];
    std::copy_n(found.weights, 3, coord.weights);
    coord.triangle = m_tree.triangleAt(found.place);
    distance2 = found.distance2;
    remember(found);
    return true;
}

/// From the corners in the tree, which have just been read.
void TreeSearch::remember(const MeasuredTriangle& found)
{
    for (int axis = 0; axis < 3; ++axis) {
        double sum = 0;
        for (int corner = 0; corner < 3; ++corner)
            sum += found.weights[corner] * double(m_tree.cornerAt(found.place, 3 * corner + axis));
        m_lastPlace[axis] = sum;
    }
    m_hasLast = true;
}

/// Brings the triangles at exactly the least distance to the front.
void TreeSearch::splitNearest(int count)
{
    MeasuredTriangle* const all = m_measured.data();
    double least2 = all[0].distance2;
    m_numNearest = 1;
    for (int i = 1; i < count; ++i) {
        if (all[i].distance2 > least2) continue;
        if (all[i].distance2 < least2) m_numNearest = 0;
        least2 = all[i].distance2;
        std::swap(all[m_numNearest++], all[i]);
    }
}

/// The squared distance of the nearest triangle apart from those at the least distance, or a smaller number: all
/// triangles that were not measured are farther than the nearest by at least half the margin.
double TreeSearch::secondDistance2(int count) const
{
    const double unmeasured = std::sqrt(m_measured[0].distance2) + m_margin / 2;
    double second2 = unmeasured * unmeasured;
    for (int i = m_numNearest; i < count; ++i)
        second2 = std::min(second2, m_measured[static_cast<size_t>(i)].distance2);
    return second2;
}

/// Whether the leaf with the place of the only nearest triangle is nearer than any other triangle: there the query is
/// taken narrowed to `float`, and place and leaf are slightly inexact.
bool TreeSearch::isAlone(const Point& query, double second2) const
{
    if (m_numNearest > 1) return false;
    const double narrowing = distance(query, Point(PointFlt(query)));
    return std::sqrt(second2) > std::sqrt(m_measured[0].distance2) + narrowing + m_margin / 16;
}

/// \return the place of one of the nearest triangles among those measured; -1 when the walk has to decide
int TreeSearch::firstOfNearest(const Point& query, double second2, OctreeClosestIt& walk)
{
    if (m_numNearest > mostSought) return -1;
    MeasuredTriangle* const all = m_measured.data();
    std::sort(all, all + m_numNearest, [this](const MeasuredTriangle& a, const MeasuredTriangle& b) {
        return m_tree.triangleAt(a.place) < m_tree.triangleAt(b.place);
    });
    m_sought.resize(mostSought);
    for (int i = 0; i < m_numNearest; ++i) m_sought[static_cast<size_t>(i)] = makeSought(m_tree, all[i].place);
    return m_firstLeaf.find(m_sought.data(), m_numNearest, PointFlt(query), second2, walk);
}

} // namespace znGeom::internal
