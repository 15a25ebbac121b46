#include "znGeom/solvers/internal/dissection.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace znGeom::internal {

using znLinear::Point;

namespace {

constexpr int smallestDivided = 48;

/// The axis along which points lie farthest apart.
int longestAxis(std::span<const Point> points, std::span<const int> chosen)
{
    Point low = points[static_cast<size_t>(chosen[0])], high = low;
    for (const int i : chosen)
        for (int axis = 0; axis < 3; ++axis) {
            const double value = points[static_cast<size_t>(i)][axis];
            low[axis] = std::min(low[axis], value);
            high[axis] = std::max(high[axis], value);
        }
    int longest = 0;
    for (int axis = 1; axis < 3; ++axis)
        if (high[axis] - low[axis] > high[longest] - low[longest]) longest = axis;
    return longest;
}

} // namespace

Dissection::Dissection(const FlatRows& matrix, std::span<const Point> points, int numKinds)
    : m_matrix(matrix), m_numKinds(numKinds), m_isMixed(matrix.size(), false), m_order(matrix.size()),
      m_places(matrix.size()), m_marks(matrix.size(), -1)
{
    findMixed();
    std::iota(m_order.begin(), m_order.end(), 0);
    addNode(0, matrix.size());
    for (int node = 0; node < m_nodes.size(); ++node) divide(node, points);
    for (int place = 0; place < m_order.size(); ++place) m_places[m_order[place]] = place;
    std::fill(m_marks.begin(), m_marks.end(), -1);
    for (int node = m_nodes.size() - 1; node >= 0; --node) findBorder(m_nodes[node]);
}

int Dissection::addNode(int begin, int end)
{
    m_nodes.append({begin, end});
    return m_nodes.size() - 1;
}

void Dissection::findMixed()
{
    for (int i = 0; i < m_matrix.size() && m_numKinds > 1; ++i) {
        const std::span<const SparseElement> row = m_matrix.row(i);
        m_isMixed[i] = std::any_of(row.begin(), row.end(),
                                   [&](const SparseElement& e) { return (e.index - i) % m_numKinds != 0; });
    }
}

/// Halves a part and leaves in its node what separates the halves.
void Dissection::divide(int node, std::span<const Point> points)
{
    const int begin = m_nodes[node].begin, end = m_nodes[node].end;
    if (end - begin < smallestDivided || divideByKind(node)) return;
    int* const order = m_order.begin();
    const int axis = longestAxis(points, {order + begin, order + end}), middle = begin + (end - begin) / 2;
    std::nth_element(order + begin, order + middle, order + end, [points, axis](int a, int b) {
        const double atA = points[static_cast<size_t>(a)][axis], atB = points[static_cast<size_t>(b)][axis];
        return atA != atB ? atA < atB : a < b;
    });
    const int separator = splitOff(begin, middle, end);
    setHalves(node, begin, middle, separator);
}

/// \param separator  where the second half ends, and what stays in the node begins
void Dissection::setHalves(int node, int begin, int middle, int separator)
{
    m_nodes[node].begin = separator;
    const int first = addNode(begin, middle);
    m_nodes[node].halves[0] = first;
    if (separator == middle) return;
    const int second = addNode(middle, separator);
    m_nodes[node].halves[1] = second;
}

/// Parts one kind from the others, and leaves in the node those of the others that are joined to some kind.
/// \return false where these are many, or there is one kind only
bool Dissection::divideByKind(int node)
{
    if (m_numKinds == 1) return false;
    const int begin = m_nodes[node].begin, end = m_nodes[node].end;
    int* const order = m_order.begin();
    const auto isOfFirstKind = [this, kind = order[begin] % m_numKinds](int i) { return i % m_numKinds == kind; };
    const auto isBetween = [&](int i) { return m_isMixed[i] && !isOfFirstKind(i); };
    const std::ptrdiff_t numBetween = std::count_if(order + begin, order + end, isBetween);
    if (numBetween * numBetween > end - begin) return false; // more than separate halves by position
    const int middle = static_cast<int>(std::stable_partition(order + begin, order + end, isOfFirstKind) - order);
    if (middle == end) return false;
    const int separator =
        static_cast<int>(std::stable_partition(order + middle, order + end, std::not_fn(isBetween)) - order);
    setHalves(node, begin, middle, separator);
    return true;
}

/// Moves the members of the second half that are joined to the first one to its end. \return where they begin
int Dissection::splitOff(int begin, int middle, int end)
{
    for (int place = begin; place < middle; ++place) m_marks[m_order[place]] = m_nodes.size();
    const auto isApart = [this](int unknown) {
        const std::span<const SparseElement> row = m_matrix.row(unknown);
        return std::none_of(row.begin(), row.end(),
                            [this](const SparseElement& e) { return m_marks[e.index] == m_nodes.size(); });
    };
    int* const order = m_order.begin();
    return static_cast<int>(std::stable_partition(order + middle, order + end, isApart) - order);
}

void Dissection::findBorder(Node& node)
{
    const int mark = static_cast<int>(&node - m_nodes.begin());
    node.borderBegin = m_borders.size();
    const auto add = [&](int place) {
        if (place < node.end || m_marks[place] == mark) return;
        m_marks[place] = mark;
        m_borders.append(place);
    };
    for (int place = node.begin; place < node.end; ++place)
        for (const SparseElement& element : m_matrix.row(m_order[place])) add(m_places[element.index]);
    for (const int half : node.halves) {
        if (half < 0) continue;
        for (int i = m_nodes[half].borderBegin; i < m_nodes[half].borderEnd; ++i) add(m_borders[i]);
    }
    node.borderEnd = m_borders.size();
    std::sort(m_borders.begin() + node.borderBegin, m_borders.end());
}

} // namespace znGeom::internal
