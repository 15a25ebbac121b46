#include "znGeom/parameterize/internal/cut_graph.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <queue>
#include <utility>
#include <vector>

namespace znGeom::internal {

namespace {

using Edge = CappedSurface::Edge;
using znUtil::Progress;

constexpr double unreached = std::numeric_limits<double>::infinity();

int otherNode(const Edge& edge, int node) { return edge.nodes[0] == node ? edge.nodes[1] : edge.nodes[0]; }

/// The shortest paths along edges from some nodes, the roots (Dijkstra 1959). Of nodes at the same distance the lower
/// one comes first.
class PathTree
{
public:
    explicit PathTree(const CappedSurface& surface) : m_surface(surface) {}

    /// Forgets everything.
    void clear()
    {
        m_distances = zn::vector<double>(m_surface.numNodes(), unreached);
        m_edgeTo = zn::vector<int>(m_surface.numNodes(), -1);
    }

    /// Adds roots to those there are. \return false after a cancel
    bool grow(const zn::vector<int>& roots, const Progress& progress)
    {
        for (const int root : roots) {
            m_distances[root] = 0;
            m_edgeTo[root] = -1;
            m_queue.emplace(0.0, root);
        }
        for (int steps = 1; !m_queue.empty(); ++steps) {
            const auto [distance, node] = m_queue.top();
            m_queue.pop();
            if (distance == m_distances[node]) leave(node);
            if (steps % 1000 == 0 && progress.cancelled()) return false;
        }
        return true;
    }

    double distance(int node) const { return m_distances[node]; }
    /// The edge by which a node was reached; -1 for a root.
    int edgeTo(int node) const { return m_edgeTo[node]; }
    bool isReached(int node) const { return m_distances[node] < unreached; }
    /// The node before this one on its path.
    int before(int node) const { return otherNode(m_surface.edges()[m_edgeTo[node]], node); }

private:
    void leave(int node)
    {
        for (const int i : m_surface.edgesAt(node)) {
            const Edge& edge = m_surface.edges()[i];
            const int next = otherNode(edge, node);
            const double distance = m_distances[node] + edge.length;
            if (!(distance < m_distances[next])) continue;
            m_distances[next] = distance;
            m_edgeTo[next] = i;
            m_queue.emplace(distance, next);
        }
    }

    const CappedSurface& m_surface;
    zn::vector<double> m_distances;
    zn::vector<int> m_edgeTo;
    std::priority_queue<std::pair<double, int>, std::vector<std::pair<double, int>>, std::greater<>> m_queue;
};

class CutFinder
{
public:
    CutFinder(const CappedSurface& surface, Progress& progress)
        : m_surface(surface), m_progress(progress), m_tree(surface)
    {}

    bool run(zn::vector<bool>& isOpen)
    {
        isOpen = zn::vector<bool>(m_surface.edges().size(), false);
        return cutHandles(isOpen) && slitSpheres(isOpen);
    }

private:
    /// From how many nodes of a component its loops are tried.
    static constexpr int numTries = 4;
    /// How far from a slit a place may be, as a part of its length, that does not get a branch of its own. In a chart,
    /// what is far from the border shrinks to nothing.
    static constexpr double longestReach = 0.4;

    /// The first node of each component that is to be cut, -1 for others.
    template <typename IsWanted>
    zn::vector<int> firstNodes(const IsWanted& isWanted) const
    {
        zn::vector<int> first(m_surface.numComponents(), -1);
        for (int node = m_surface.numNodes() - 1; node >= 0; --node)
            if (const int component = m_surface.componentOf(node); isWanted(component)) first[component] = node;
        return first;
    }

    static zn::vector<int> withoutGaps(zn::vector<int> nodes)
    {
        nodes.erase(std::remove(nodes.begin(), nodes.end(), -1), nodes.end());
        return nodes;
    }

    bool cutHandles(zn::vector<bool>& isOpen)
    {
        zn::vector<int> roots = firstNodes([this](int component) { return m_surface.genusOf(component) > 0; });
        const int numParts = m_surface.numComponents();
        zn::vector<double> shortest(numParts, unreached);
        Progress phase;
        for (int turn = 0; turn < numTries; ++turn) {
            m_progress.subPhase(0.7 / numTries, phase);
            const zn::vector<int> used = withoutGaps(roots);
            if (used.empty()) return true;
            if (!growAnew(used)) return false;
            zn::vector<int> opposite(numParts, -1);
            zn::vector<bool> graph = shortestLoops(opposite);
            prune(graph);
            takeShorter(graph, shortest, isOpen);
            if (m_progress.cancelled()) return false;
            roots = turn % 2 == 0 ? opposite : junctions(graph);
            phase.set(1.0);
        }
        return true;
    }

    /// The shortest loops through the roots of the tree that leave one face of each component when they are cut.
    /// \param opposite  receives a node of the shortest loop that is far from the root, for each component
    zn::vector<bool> shortestLoops(zn::vector<int>& opposite) const
    {
        const zn::vector<Edge>& edges = m_surface.edges();
        std::vector<std::pair<double, int>> chords; // by the loop that they close, the longest first
        for (int i = 0; i < edges.size(); ++i) {
            const auto [start, end] = edges[i].nodes;
            if (!m_tree.isReached(start) || m_tree.edgeTo(start) == i || m_tree.edgeTo(end) == i) continue;
            chords.emplace_back(-(m_tree.distance(start) + edges[i].length + m_tree.distance(end)), i);
        }
        std::sort(chords.begin(), chords.end());
        zn::vector<bool> graph(edges.size(), false);
        zn::DisjointSets faces(m_surface.numFaces());
        for (const auto& chord : chords) {
            const auto [left, right] = edges[chord.second].faces;
            if (faces.find(left) != faces.find(right)) {
                faces.unite(left, right);
                continue;
            }
            graph[chord.second] = true;
            opposite[m_surface.componentOf(edges[chord.second].nodes[0])] = edges[chord.second].nodes[0];
            for (const int end : edges[chord.second].nodes) addPath(end, graph);
        }
        return graph;
    }

    /// Adds the edges from a node back to its root, up to where another path joins it.
    void addPath(int node, zn::vector<bool>& graph) const
    {
        for (int edge; (edge = m_tree.edgeTo(node)) >= 0 && !graph[edge]; node = m_tree.before(node))
            graph[edge] = true;
    }

    zn::vector<int> degrees(const zn::vector<bool>& graph) const
    {
        zn::vector<int> result(m_surface.numNodes(), 0);
        for (int i = 0; i < graph.size(); ++i)
            if (graph[i])
                for (const int node : m_surface.edges()[i].nodes) ++result[node];
        return result;
    }

    /// Takes off what leads nowhere: at a node of one edge there is nothing to open.
    void prune(zn::vector<bool>& graph) const
    {
        zn::vector<int> numEdges = degrees(graph);
        for (int first = 0; first < numEdges.size(); ++first) {
            for (int node = first; numEdges[node] == 1;) {
                const std::span<const int> around = m_surface.edgesAt(node);
                const int edge = *std::find_if(around.begin(), around.end(), [&](int i) { return graph[i]; });
                graph[edge] = false;
                --numEdges[node];
                node = otherNode(m_surface.edges()[edge], node);
                --numEdges[node];
            }
        }
    }

    /// Replaces the cut of each component for which the graph is shorter.
    void takeShorter(const zn::vector<bool>& graph, zn::vector<double>& shortest, zn::vector<bool>& isOpen) const
    {
        const zn::vector<Edge>& edges = m_surface.edges();
        zn::vector<double> lengths(shortest.size(), 0.0);
        for (int i = 0; i < edges.size(); ++i)
            if (graph[i]) lengths[m_surface.componentOf(edges[i].nodes[0])] += edges[i].length;
        for (int i = 0; i < edges.size(); ++i) {
            const int component = m_surface.componentOf(edges[i].nodes[0]);
            if (m_surface.genusOf(component) > 0 && lengths[component] < shortest[component])
                isOpen[i] = graph[i] && m_surface.isInner(i);
        }
        for (int i = 0; i < lengths.size(); ++i) shortest[i] = std::min(shortest[i], lengths[i]);
    }

    /// In each component the node at which most edges of a graph meet; -1 without one.
    zn::vector<int> junctions(const zn::vector<bool>& graph) const
    {
        const zn::vector<int> numEdges = degrees(graph);
        zn::vector<int> best(m_surface.numComponents(), -1);
        for (int node = 0; node < numEdges.size(); ++node) {
            int& chosen = best[m_surface.componentOf(node)];
            if (numEdges[node] > (chosen < 0 ? 0 : numEdges[chosen])) chosen = node;
        }
        return best;
    }

    bool growAnew(const zn::vector<int>& roots)
    {
        m_tree.clear();
        return m_tree.grow(roots, m_progress);
    }

    bool slitSpheres(zn::vector<bool>& isOpen)
    {
        const auto isSphere = [this](int component) {
            return m_surface.genusOf(component) == 0 && m_surface.isClosed(component);
        };
        const zn::vector<int> somewhere = withoutGaps(firstNodes(isSphere));
        if (somewhere.empty()) return true;
        if (!growAnew(somewhere) || !growAnew(withoutGaps(farthest()))) return false;
        zn::vector<double> reach(m_surface.numComponents(), 0.0);
        zn::vector<int> fresh; // nodes of the slit
        for (const int end : withoutGaps(farthest())) {
            reach[m_surface.componentOf(end)] = longestReach * m_tree.distance(end);
            if (m_tree.edgeTo(m_tree.before(end)) < 0) lengthen(end, isOpen, fresh);
            openPath(end, isOpen, fresh);
        }
        return addBranches(reach, isOpen, fresh);
    }

    /// \param reach  how far a node may be from the slit of its component
    bool addBranches(const zn::vector<double>& reach, zn::vector<bool>& isOpen, zn::vector<int>& fresh)
    {
        while (!fresh.empty()) {
            if (!m_tree.grow(fresh, m_progress)) return false;
            fresh.clear();
            for (const int end : withoutGaps(farthest()))
                if (m_tree.distance(end) > reach[m_surface.componentOf(end)]) openPath(end, isOpen, fresh);
        }
        return true;
    }

    /// Opens the way from a node back to its root, and lists its nodes.
    void openPath(int node, zn::vector<bool>& isOpen, zn::vector<int>& nodes) const
    {
        addPath(node, isOpen);
        for (; m_tree.edgeTo(node) >= 0; node = m_tree.before(node)) nodes.append(node);
        nodes.append(node);
    }

    /// In each component that was searched the farthest node, of equals the lowest.
    zn::vector<int> farthest() const
    {
        zn::vector<int> result(m_surface.numComponents(), -1);
        for (int node = 0; node < m_surface.numNodes(); ++node) {
            if (!m_tree.isReached(node) || m_tree.edgeTo(node) < 0) continue;
            int& chosen = result[m_surface.componentOf(node)];
            if (chosen < 0 || m_tree.distance(node) > m_tree.distance(chosen)) chosen = node;
        }
        return result;
    }

    /// Continues a slit of one edge, which would leave a border of two, to the nearest neighbour of its end.
    void lengthen(int end, zn::vector<bool>& isOpen, zn::vector<int>& nodes) const
    {
        const zn::vector<Edge>& edges = m_surface.edges();
        const int begin = m_tree.before(end);
        int chosen = -1;
        for (const int i : m_surface.edgesAt(end))
            if (otherNode(edges[i], end) != begin && (chosen < 0 || edges[i].length < edges[chosen].length)) chosen = i;
        if (chosen < 0) return;
        isOpen[chosen] = true;
        nodes.append(otherNode(edges[chosen], end));
    }

    const CappedSurface& m_surface;
    Progress& m_progress;
    PathTree m_tree;
};

} // namespace

bool findCut(const CappedSurface& surface, Progress& progress, zn::vector<bool>& isOpen)
{
    return CutFinder(surface, progress).run(isOpen);
}

} // namespace znGeom::internal
