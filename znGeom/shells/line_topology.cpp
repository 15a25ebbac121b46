#include "znGeom/shells/line_topology.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "znGeom/foundation/containers/disjoint_sets.h"
#include "znGeom/shells/internal/line_runs.h"

namespace znGeom {

using namespace internal;

namespace {

struct EdgeRecord
{
    int boundary;
    int first, second; ///< points
    double length = 0;
    int twin = -1;
    bool isCircular = false, isTwinReversed = false;
};

/// An end of a pair on a strip, or a whole strip.
struct Mark
{
    int sample;
    int pair;      ///< that begins here; -1 where one ends
    bool isOfTwin; ///< whether it is the twin's side that begins
};

} // namespace

struct MeshLineTopology::Records
{
    int numBoundaries = 0;
    zn::vector<EdgeRecord> edges;
    zn::vector<int> firstEdges;    ///< per strip, and the number of edges
    zn::vector<bool> hasNeighbour; ///< per strip
    zn::vector<int> samples;       ///< of the points, ascending
    zn::vector<int> vertices;      ///< of the points
    zn::vector<int> firstEdgesOfVertices, degrees;
    zn::vector<znLinear::Point> positions; ///< of the vertices

    Records(const LineStrips& strips, const zn::vector<LinePair>& pairs) : numBoundaries(strips.numStrips())
    {
        divide(strips, pairs);
        uniteVertices(strips);
    }

private:
    /// Divides the strips at the ends of all pairs.
    void divide(const LineStrips& strips, const zn::vector<LinePair>& pairs)
    {
        zn::vector<Mark> marks;
        for (int i = 0; i < pairs.size(); ++i)
            for (const bool isOfTwin : {false, true}) {
                const LineStretch& stretch = isOfTwin ? pairs[i].twin : pairs[i].own;
                marks.append({stretch.first, i, isOfTwin});
                if (!stretch.isWhole) marks.append({stretch.last, -1, false});
            }
        for (int strip = 0; strip < strips.numStrips(); ++strip)
            if (strips.count(strip) > 0) marks.append({strips.first(strip), -2, false});
        std::sort(marks.begin(), marks.end(), [](const Mark& a, const Mark& b) {
            return a.sample != b.sample ? a.sample < b.sample : a.pair > b.pair;
        });
        zn::vector<int> sides(2 * pairs.size(), -1);
        int next = 0;
        for (int strip = 0; strip < strips.numStrips(); ++strip) {
            firstEdges.append(edges.size());
            const int end = strips.first(strip) + strips.count(strip);
            const int begin = next;
            while (next < marks.size() && marks[next].sample < end) ++next;
            divideStrip(strips, strip, marks.begin() + begin, marks.begin() + next, sides);
        }
        firstEdges.append(edges.size());
        for (int i = 0; i < pairs.size(); ++i) join(pairs[i], sides[2 * i], sides[2 * i + 1]);
    }

    /// Of several marks at one sample the first one counts. The beginning of the strip is a mark without meaning, which
    /// counts where there is no other on the strip.
    void divideStrip(const LineStrips& strips, int strip, const Mark* begin, const Mark* end, zn::vector<int>& sides)
    {
        const bool isDivided = std::any_of(begin, end, [](const Mark& mark) { return mark.pair != -2; });
        const int firstPoint = samples.size();
        zn::vector<const Mark*> cuts;
        for (const Mark* mark = begin; mark != end; ++mark) {
            if ((mark->pair == -2 && isDivided) || (!cuts.empty() && cuts.back()->sample == mark->sample)) continue;
            cuts.append(mark);
            samples.append(mark->sample);
        }
        for (int i = 0; i < cuts.size(); ++i) {
            const int next = (i + 1) % cuts.size();
            if (cuts[i]->pair >= 0) sides[2 * cuts[i]->pair + cuts[i]->isOfTwin] = edges.size();
            const double length =
                next == i ? strips.length(strip)
                          : strips.wayForward(strip, strips.arc(cuts[i]->sample), strips.arc(cuts[next]->sample));
            edges.append({strip, firstPoint + i, firstPoint + next, length});
        }
    }

    void join(const LinePair& pair, int own, int twin)
    {
        edges[own].twin = twin;
        edges[twin].twin = own;
        for (EdgeRecord* const edge : {&edges[own], &edges[twin]}) {
            edge->isCircular = pair.isCircular();
            edge->isTwinReversed = pair.isForward;
        }
    }

    void uniteVertices(const LineStrips& strips)
    {
        zn::DisjointSets sets(samples.size());
        for (const EdgeRecord& edge : edges) {
            if (edge.twin < 0) continue;
            const EdgeRecord& twin = edges[edge.twin];
            sets.unite(edge.first, edge.isTwinReversed ? twin.first : twin.second);
            sets.unite(edge.second, edge.isTwinReversed ? twin.second : twin.first);
        }
        zn::vector<int> counts;
        for (int point = 0; point < samples.size(); ++point) {
            const int lowest = sets.find(point);
            const int vertex = lowest == point ? counts.size() : vertices[lowest];
            vertices.append(vertex);
            if (vertex == counts.size()) {
                counts.append(0);
                positions.append(znLinear::Point());
            }
            ++counts[vertex];
            positions[vertex] += strips.points[samples[point]].asVector();
        }
        for (int i = 0; i < counts.size(); ++i) positions[i] = (positions[i].asVector() / counts[i]).asPoint();
        firstEdgesOfVertices = zn::vector<int>(counts.size(), -1);
        degrees = zn::vector<int>(counts.size(), 0);
        for (int i = 0; i < edges.size(); ++i)
            for (const int point : {edges[i].first, edges[i].second}) {
                ++degrees[vertices[point]];
                int& firstEdge = firstEdgesOfVertices[vertices[point]];
                if (firstEdge < 0) firstEdge = i;
            }
    }
};

namespace {

/// Groups of strips that are known to be turned alike or not, compared along their twins.
class OrientedGroups
{
public:
    explicit OrientedGroups(int numGroups) : m_sets(numGroups), m_links(numGroups) {}

    /// Has no effect on groups that are compared already.
    void compare(int a, int b, bool areOpposed)
    {
        if (m_sets.find(a) == m_sets.find(b)) return;
        m_sets.unite(a, b);
        m_links[a].append({b, areOpposed});
        m_links[b].append({a, areOpposed});
    }

    /// The groups to be turned over, so that the lowest one of all that are connected stays.
    zn::vector<bool> turned() const
    {
        zn::vector<bool> isTurned(m_links.size(), false), isKnown(m_links.size(), false);
        zn::vector<int> queue;
        for (int first = 0; first < m_links.size(); ++first) {
            if (isKnown[first]) continue;
            isKnown[first] = true;
            queue.append(first);
            for (int at = queue.size() - 1; at < queue.size(); ++at)
                for (const auto& [group, areOpposed] : m_links[queue[at]]) {
                    if (isKnown[group]) continue;
                    isKnown[group] = true;
                    isTurned[group] = isTurned[queue[at]] != areOpposed;
                    queue.append(group);
                }
        }
        return isTurned;
    }

private:
    zn::DisjointSets m_sets;
    zn::vector<zn::vector<std::pair<int, bool>>> m_links; ///< a forest
};

} // namespace

int MeshLineTopology::Point::getSample() const { return m_records->samples[m_index]; }
MeshLineTopology::Vertex MeshLineTopology::Point::getVertex() const
{
    return {m_records, m_records->vertices[m_index]};
}

MeshLineTopology::Edge MeshLineTopology::Vertex::getFirstEdge() const
{
    return {m_records, m_records->firstEdgesOfVertices[m_index]};
}
znLinear::Point MeshLineTopology::Vertex::getPosition() const { return m_records->positions[m_index]; }
int MeshLineTopology::Vertex::getDegree() const { return m_records->degrees[m_index]; }

int MeshLineTopology::Edge::getBoundary() const { return m_records->edges[m_index].boundary; }
MeshLineTopology::Edge MeshLineTopology::Edge::getTwin() const
{
    const int twin = m_records->edges[m_index].twin;
    return twin < 0 ? Edge() : Edge(m_records, twin);
}
MeshLineTopology::Edge MeshLineTopology::Edge::getNextOnBoundary() const
{
    const bool isLast = m_index + 1 == m_records->firstEdges[getBoundary() + 1];
    return {m_records, isLast ? m_records->firstEdges[getBoundary()] : m_index + 1};
}
MeshLineTopology::Edge MeshLineTopology::Edge::getPrevOnBoundary() const
{
    const bool isFirst = m_index == m_records->firstEdges[getBoundary()];
    return {m_records, isFirst ? m_records->firstEdges[getBoundary() + 1] - 1 : m_index - 1};
}
bool MeshLineTopology::Edge::isCircular() const { return m_records->edges[m_index].isCircular; }
bool MeshLineTopology::Edge::isLinear() const { return m_records->edges[m_index].twin >= 0 && !isCircular(); }
bool MeshLineTopology::Edge::isTwinReversed() const { return m_records->edges[m_index].isTwinReversed; }
MeshLineTopology::Point MeshLineTopology::Edge::getFirstPoint() const
{
    return {m_records, m_records->edges[m_index].first};
}
MeshLineTopology::Point MeshLineTopology::Edge::getSecondPoint() const
{
    return {m_records, m_records->edges[m_index].second};
}
double MeshLineTopology::Edge::getLength() const { return m_records->edges[m_index].length; }

MeshLineTopology::Edge MeshLineTopology::edgeOf(const TopologyAlg& topology, int index)
{
    return {topology.m_records.get(), index};
}

MeshLineTopology::TopologyAlg::TopologyAlg(const CompactMesh& lines)
    : m_lines(lines), m_records(std::make_unique<Records>(LineStrips(CompactMesh()), zn::vector<LinePair>()))
{}
MeshLineTopology::TopologyAlg::~TopologyAlg() = default;

bool MeshLineTopology::TopologyAlg::compute(double tolerance, znUtil::ThreadPool& pool)
{
    const bool isUsable = tolerance > 0 && std::isfinite(tolerance);
    const LineStrips strips(isUsable ? m_lines : CompactMesh());
    zn::vector<LinePair> pairs;
    zn::vector<bool> hasNeighbour(strips.numStrips(), false);
    if (isUsable) {
        const LineMatches matches = findLineMatches(strips, tolerance, pool);
        for (int sample = 0; sample < strips.size(); ++sample)
            if (!matches.of(sample).empty()) hasNeighbour[strips.strip(sample)] = true;
        pairs = pairLineRuns(strips, matches, mutualMatches(strips, matches, tolerance), tolerance);
    }
    m_records = std::make_unique<Records>(strips, pairs);
    m_records->hasNeighbour.swap(hasNeighbour);
    return !pairs.empty();
}

int MeshLineTopology::TopologyAlg::getNumBoundaries() const { return m_records->numBoundaries; }
MeshLineTopology::Edge MeshLineTopology::TopologyAlg::getFirstEdgeOnBoundary(int boundary) const
{
    return edgeOf(*this, m_records->firstEdges[boundary]);
}
int MeshLineTopology::TopologyAlg::getNumEdges() const { return m_records->edges.size(); }
int MeshLineTopology::TopologyAlg::getNumVertices() const { return m_records->positions.size(); }

BitVector MeshLineTopology::TopologyAlg::getOrientation() const
{
    zn::vector<int> groups;
    for (int strip = 0; strip < getNumBoundaries(); ++strip) groups.append(strip);
    return getOrientation(groups);
}

BitVector MeshLineTopology::TopologyAlg::getOrientation(const zn::vector<int>& groups) const
{
    BitVector turned(getNumBoundaries());
    if (groups.empty()) return turned;
    const zn::vector<EdgeRecord>& edges = m_records->edges;
    zn::vector<int> byLength;
    for (int i = 0; i < edges.size(); ++i)
        if (edges[i].twin > i) byLength.append(i);
    std::stable_sort(byLength.begin(), byLength.end(), [&](int a, int b) { return edges[a].length > edges[b].length; });
    OrientedGroups oriented(*std::max_element(groups.begin(), groups.end()) + 1);
    for (const int i : byLength)
        oriented.compare(groups[edges[i].boundary], groups[edges[edges[i].twin].boundary], edges[i].isTwinReversed);
    const zn::vector<bool> isTurned = oriented.turned();
    for (int strip = 0; strip < groups.size(); ++strip)
        if (isTurned[groups[strip]]) turned.setBit(strip);
    return turned;
}

bool MeshLineTopology::TopologyAlg::hasNeighbour(int boundary) const { return m_records->hasNeighbour[boundary]; }

bool MeshLineTopology::TopologyAlg::hasReversedTwins() const
{
    return std::any_of(m_records->edges.begin(), m_records->edges.end(),
                       [](const EdgeRecord& edge) { return edge.isTwinReversed; });
}

} // namespace znGeom
