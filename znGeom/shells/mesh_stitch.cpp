#include "znGeom/shells/mesh_stitch.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <utility>

#include "znGeom/analysis/components.h"
#include "znGeom/cache/mesh_cache.h"
#include "znGeom/editing/reverse_winding.h"
#include "znGeom/editing/select.h"
#include "znGeom/foundation/containers/disjoint_sets.h"
#include "znGeom/scopes/modify_rep.h"
#include "znGeom/shells/internal/boundary_path.h"
#include "znGeom/shells/internal/boundary_sampler.h"
#include "znGeom/shells/internal/flat_faces.h"
#include "znGeom/shells/line_topology.h"
#include "znGeom/shells/stitch_seam.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace internal;
using Edge = MeshLineTopology::Edge;
using LinePoint = MeshLineTopology::Point;

namespace {

/// The vertices of a half-edge mesh at the ends of stretches. Points that a seam has brought together share one.
class SeamPoints
{
public:
    SeamPoints(const BoundarySampler& sampler, const MeshModifyRep& scope, TopoMesh& mesh,
               const MeshLineTopology::TopologyAlg& topology)
        : m_sampler(sampler), m_scope(scope), m_mesh(mesh), m_groups(topology.getNumEdges() * 2)
    {
        m_vertices.setSize(m_groups.size());
        for (MeshLineTopology::EdgeIterator it(topology); it.valid(); it.next()) resolve(*it);
        for (auto& [edge, places] : m_onEdges) divide(edge, places);
        uniteShared();
    }

    TopoMeshVertex vertex(const LinePoint& point) { return m_vertices[m_groups.find(point.index())]; }

    /// After two points were brought together: where the vertex of one is gone, it gets that of the other.
    void unify(const LinePoint& a, const LinePoint& b)
    {
        const TopoMeshVertex ofA = vertex(a), ofB = vertex(b);
        const bool isSame = ofA == ofB || !ofA.isAlive() || !ofB.isAlive();
        if (isSame) m_vertices[m_groups.unite(a.index(), b.index())] = ofA.isAlive() ? ofA : ofB;
    }

private:
    struct Place
    {
        float t;
        int point;
    };

    void resolve(const Edge& edge)
    {
        if (edge.isLinear()) {
            for (const LinePoint& point : {edge.getFirstPoint(), edge.getSecondPoint()})
                if (!std::exchange(m_isSeen[point.index()], true)) enter(point);
        } else if (edge.isCircular()) {
            const BoundarySample& sample = sampleOf(edge.getFirstPoint());
            m_vertices[edge.getFirstPoint().index()] = m_scope.getTopoMeshVertex(
                sample.t > 0.5F ? m_sampler.firstVertex(sample) : m_sampler.secondVertex(sample));
        }
    }

    const BoundarySample& sampleOf(const LinePoint& point) const { return m_sampler.sample(point.getSample()); }

    void enter(const LinePoint& point)
    {
        const BoundarySample& sample = sampleOf(point);
        const TopoMeshVertex first = m_scope.getTopoMeshVertex(m_sampler.firstVertex(sample));
        const TopoMeshVertex second = m_scope.getTopoMeshVertex(m_sampler.secondVertex(sample));
        const TopoMeshEdge edge = first && second ? TopoMesh::findEdge(first, second) : TopoMeshEdge();
        if (edge && !edge->twin) m_onEdges[edge].append({sample.t, point.index()});
    }

    /// Makes vertices at places on an edge.
    void divide(TopoMeshEdge edge, zn::vector<Place>& places)
    {
        std::sort(places.begin(), places.end(), [](const Place& a, const Place& b) { return a.t > b.t; });
        double before = 1;
        for (const Place& place : places) {
            const double t = static_cast<double>(place.t);
            if (place.t != 1.0F) edge = divide(edge, t / before);
            m_vertices[place.point] = edge->origin;
            before = t;
        }
    }

    /// \return the half-edge from the new vertex to the old end
    TopoMeshEdge divide(TopoMeshEdge edge, double t)
    {
        const TopoMeshVertex middle =
            m_mesh.subdivideEdge(edge, combine(t, edge->origin->point, 1 - t, endOf(edge)->point));
        const TopoMeshEdge rest = edge->next;
        m_mesh.subdivideFace(edge->face, middle, edge->prev->origin);
        return rest;
    }

    /// Points may have come to the same vertex without a seam.
    void uniteShared()
    {
        std::map<TopoMeshVertex, int> firsts;
        for (int point = 0; point < m_vertices.size(); ++point)
            if (m_vertices[point]) m_groups.unite(firsts.try_emplace(m_vertices[point], point).first->second, point);
    }

    const BoundarySampler& m_sampler;
    const MeshModifyRep& m_scope;
    TopoMesh& m_mesh;
    std::map<TopoMeshEdge, zn::vector<Place>> m_onEdges;
    std::map<int, bool> m_isSeen;
    zn::DisjointSets m_groups;             ///< of points
    zn::vector<TopoMeshVertex> m_vertices; ///< of the lowest point of each group
};

/// The two vertices at one end of a seam.
struct Opening
{
    TopoMeshVertex a, b;

    /// Where a third boundary leads straight from one to the other, the seam starts a step further in: brought together
    /// the two would pinch it. What stays open is a small hole.
    /// \param isFirst  whether path A begins here, or ends
    void leaveGap(bool isFirst)
    {
        constexpr int mostSteps = 20;
        const zn::vector<TopoMeshEdge> across = boundaryPath(isFirst ? b : a, isFirst ? a : b, true, mostSteps);
        if (across.empty()) return;
        double length = 0;
        for (const TopoMeshEdge e : across) length += distance(e->origin->point, endOf(e)->point);
        constexpr double straight = 1.2;
        if (length > straight * distance(a->point, b->point)) return;
        const TopoMeshEdge onA = isFirst ? nextOnBoundary(across.back()) : prevOnBoundary(across.front());
        const TopoMeshEdge onB = isFirst ? prevOnBoundary(across.front()) : nextOnBoundary(across.back());
        if (!onA || !onB) return;
        a = isFirst ? endOf(onA) : onA->origin;
        b = isFirst ? onB->origin : endOf(onB);
    }
};

/// One stitch, of at most two attempts: the first may end with shells turned over.
class BoundaryStitcher
{
public:
    BoundaryStitcher(CompactMesh& mesh, zn::Reference<MeshAdjTris> adjacency, zn::Reference<MeshBoundaries> boundaries,
                     zn::vector<int> chosen, double tolerance, double seamTolerance, MeshStitchAccount& account,
                     znUtil::ThreadPool& pool)
        : m_mesh(mesh), m_adjacency(std::move(adjacency)), m_boundaries(std::move(boundaries)),
          m_chosen(std::move(chosen)), m_tolerance(tolerance), m_seamTolerance(seamTolerance), m_account(account),
          m_pool(pool)
    {}

    bool run()
    {
        constexpr int mostAttempts = 2;
        for (int attempt = 0; attempt < mostAttempts; ++attempt) {
            bool wasTurned = false;
            if (attemptOnce(wasTurned)) return true;
            if (!wasTurned) return false;
            SimpleMeshCache cache;
            m_adjacency = cache.getAdjTris(m_mesh);
            m_boundaries = cache.getBoundaries(m_mesh);
        }
        return false;
    }

private:
    bool attemptOnce(bool& wasTurned)
    {
        startAccount();
        BoundarySampler sampler(m_mesh, *m_adjacency, *m_boundaries, m_chosen);
        CompactMesh lines;
        const bool areEnough = sampler.build(m_tolerance, lines);
        if (!areEnough) return false;
        MeshLineTopology::TopologyAlg topology(lines);
        const bool arePaired = topology.compute(m_tolerance, m_pool);
        for (int strip = 0; strip < topology.getNumBoundaries(); ++strip)
            m_account.outcomes[sampler.boundaryOf(strip)] = outcomeWithoutPair(topology, strip);
        if (!arePaired) return false;
        if (topology.hasReversedTwins()) wasTurned = turnShells(sampler, topology);
        return !wasTurned && sew(sampler, topology);
    }

    void startAccount()
    {
        m_account.pairs.clear();
        m_account.outcomes = zn::vector<StitchOutcome>(m_boundaries->size(), StitchOutcome::NotChosen);
        for (const int boundary : m_chosen) m_account.outcomes[boundary] = StitchOutcome::TooShort;
    }

    /// Turns over the shells that run against those beside them.
    bool turnShells(const BoundarySampler& sampler, const MeshLineTopology::TopologyAlg& topology)
    {
        Array<int> components;
        meshComponents(m_mesh, *m_adjacency, &components);
        zn::vector<int> shells;
        for (int strip = 0; strip < topology.getNumBoundaries(); ++strip)
            shells.append(components[*m_boundaries->getStart(sampler.boundaryOf(strip))]);
        const BitVector turned = topology.getOrientation(shells);
        if (turned.getNumSetBits() == 0) return false;

        const BitVector triangles = m_mesh.getSelectedTriangles(), vertices = m_mesh.getSelectedVertices();
        zn::vector<int> done;
        for (int strip = 0; strip < shells.size(); ++strip) {
            if (!turned[strip] || std::find(done.begin(), done.end(), shells[strip]) != done.end()) continue;
            done.append(shells[strip]);
            const int vertex = *m_boundaries->getStart(sampler.boundaryOf(strip));
            const int triangle = m_adjacency->around(vertex)[0];
            m_mesh.clearSelection();
            meshReverseWinding(m_mesh, *m_adjacency, triangle);
            m_account.turned.append(triangle);
        }
        m_mesh.getSelectedTriangles() = triangles;
        m_mesh.getSelectedVertices() = vertices;
        return true;
    }

    bool sew(const BoundarySampler& sampler, const MeshLineTopology::TopologyAlg& topology)
    {
        BitVector triangles, vertices(m_mesh.getNumVertices());
        const Array<int>& onBoundary = m_boundaries->sequence().values;
        vertices.setBits(onBoundary.size(), onBoundary.read());
        MeshSelect region(m_mesh, *m_adjacency, triangles, vertices);
        for (int ring = 0; ring < 2; ++ring) {
            region.selectAllTrianglesFromVertices();
            region.selectVerticesFromTriangles();
        }
        MeshModifyRep scope(m_mesh, triangles, vertices, *m_adjacency);
        TopoMesh& mesh = scope.extract();
        const zn::vector<double> heights = faceHeights(mesh);
        SeamPoints points(sampler, scope, mesh, topology);
        bool isSewn = false;
        for (MeshLineTopology::EdgeIterator it(topology); it.valid(); it.next()) {
            const Edge edge = *it;
            if (edge.getTwin() && edge.index() < edge.getTwin().index())
                isSewn = sewPair(edge, sampler, scope, mesh, points) || isSewn;
        }
        noteOutcomes(sampler, topology);
        if (!isSewn) return false;
        mendFlatFaces(mesh, heights, [&](TopoMeshVertex vertex) { scope.removeVertex(vertex); });
        scope.merge();
        return true;
    }

    /// \return whether anything changed
    bool sewPair(const Edge& edge, const BoundarySampler& sampler, MeshModifyRep& scope, TopoMesh& mesh,
                 SeamPoints& points)
    {
        const Edge twin = edge.getTwin();
        m_account.pairs.append({sampler.boundaryOf(edge.getBoundary()), sampler.boundaryOf(twin.getBoundary()),
                                edge.getLength(), edge.isCircular(), false});
        if (edge.isTwinReversed()) return false;
        const LinePoint a = edge.getFirstPoint(), b = edge.getSecondPoint();
        const LinePoint c = twin.getSecondPoint(), d = twin.getFirstPoint();
        for (const LinePoint& point : {a, b, c, d})
            if (!points.vertex(point).isAlive()) return false;
        bool hasChanged = false;
        MeshStitchSeam seam(mesh);
        seam.addCallback([&](TopoMeshVertex vertex) {
            hasChanged = true;
            scope.removeVertex(vertex);
        });
        if (edge.isCircular()) {
            sewRound({points.vertex(a), m_account.pairs.back().loop},
                     {points.vertex(c), m_account.pairs.back().otherLoop}, scope, seam);
        } else {
            Opening begin{points.vertex(a), points.vertex(c)}, end{points.vertex(b), points.vertex(d)};
            begin.leaveGap(true);
            end.leaveGap(false);
            seam.stitch(begin.a, end.a, begin.b, end.b, m_seamTolerance, true);
            points.unify(a, c);
            points.unify(b, d);
        }
        m_account.pairs.back().isSewn = seam.isComplete();
        return hasChanged || seam.isComplete();
    }

    /// A vertex of a boundary.
    struct Beginning
    {
        TopoMeshVertex vertex;
        int boundary;
    };

    void sewRound(const Beginning& a, const Beginning& c, const MeshModifyRep& scope, MeshStitchSeam& seam) const
    {
        const auto isLoop = [this](const Beginning& side) {
            return loopThrough(side.vertex).size() == m_boundaries->getLength(side.boundary);
        };
        if (isLoop(a) && isLoop(c))
            seam.stitchCircular(a.vertex, c.vertex, m_seamTolerance, true);
        else
            sewHalves(verticesOf(a.boundary, scope), verticesOf(c.boundary, scope), seam);
    }

    /// Sews loops of which one touches a further boundary in one vertex: there the half-edges go on along that one.
    /// Both halves end there.
    void sewHalves(const zn::vector<TopoMeshVertex>& loopA, const zn::vector<TopoMeshVertex>& loopC,
                   MeshStitchSeam& seam) const
    {
        TopoMeshVertex a = touching(loopA), c = touching(loopC);
        if (!a && !c) return;
        if (!c) c = nearest(loopC, a->point);
        if (!a) a = nearest(loopA, c->point);
        const TopoMeshVertex m = furthest(loopA, a), d = nearest(loopC, m->point);
        const auto sewHalf = [&](TopoMeshVertex a0, TopoMeshVertex a1, TopoMeshVertex b0, TopoMeshVertex b1) {
            const int mostSteps = std::max(loopA.size(), loopC.size());
            if (boundaryPath(a0, a1, true, mostSteps).empty() || boundaryPath(b0, b1, false, mostSteps).empty()) return;
            seam.stitch(a0, a1, b0, b1, m_seamTolerance, true);
        };
        sewHalf(a, m, c, d);
        if (!seam.isComplete()) return;
        const auto kept = [](TopoMeshVertex one, TopoMeshVertex other) { return one.isAlive() ? one : other; };
        sewHalf(kept(m, d), kept(a, c), kept(d, m), kept(c, a));
    }

    /// A vertex of a loop from which the boundary leads elsewhere; null if there is none.
    static TopoMeshVertex touching(const zn::vector<TopoMeshVertex>& loop)
    {
        for (int i = 0; i < loop.size(); ++i) {
            const TopoMeshEdge e = TopoMesh::findEdge(loop[i], loop[(i + 1) % loop.size()]);
            const TopoMeshEdge next = e && !e->twin ? nextOnBoundary(e) : TopoMeshEdge();
            if (!next || endOf(next) != loop[(i + 2) % loop.size()]) return loop[(i + 1) % loop.size()];
        }
        return {};
    }

    zn::vector<TopoMeshVertex> verticesOf(int boundary, const MeshModifyRep& scope) const
    {
        zn::vector<TopoMeshVertex> vertices;
        for (int i = 0; i < m_boundaries->getLength(boundary); ++i)
            if (const TopoMeshVertex v = scope.getTopoMeshVertex(m_boundaries->getStart(boundary)[i]); v.isAlive())
                vertices.append(v);
        return vertices;
    }

    /// By steps, of the vertices of a loop.
    static TopoMeshVertex furthest(const zn::vector<TopoMeshVertex>& loop, TopoMeshVertex from)
    {
        const auto* const at = std::find(loop.begin(), loop.end(), from);
        if (at == loop.end()) return {};
        return loop[static_cast<int>(at - loop.begin() + loop.size() / 2) % loop.size()];
    }

    static TopoMeshVertex nearest(const zn::vector<TopoMeshVertex>& vertices, const znLinear::Point& place)
    {
        const auto* const found =
            std::min_element(vertices.begin(), vertices.end(), [&](TopoMeshVertex a, TopoMeshVertex b) {
                return (a->point - place).length2() < (b->point - place).length2();
            });
        return found == vertices.end() ? TopoMeshVertex() : *found;
    }

    void noteOutcomes(const BoundarySampler& sampler, const MeshLineTopology::TopologyAlg& topology)
    {
        int pair = 0;
        zn::vector<int> pairOf(topology.getNumEdges(), -1);
        for (MeshLineTopology::EdgeIterator it(topology); it.valid(); it.next())
            if (const Edge twin = (*it).getTwin(); twin && (*it).index() < twin.index())
                pairOf[(*it).index()] = pairOf[twin.index()] = pair++;
        for (int strip = 0; strip < topology.getNumBoundaries(); ++strip)
            m_account.outcomes[sampler.boundaryOf(strip)] = outcomeOf(topology, strip, pairOf);
    }

    StitchOutcome outcomeWithoutPair(const MeshLineTopology::TopologyAlg& topology, int strip) const
    {
        if (topology.getFirstEdgeOnBoundary(strip).getLength() < m_tolerance) return StitchOutcome::TooShort;
        return topology.hasNeighbour(strip) ? StitchOutcome::TooNarrow : StitchOutcome::NothingBeside;
    }

    StitchOutcome outcomeOf(const MeshLineTopology::TopologyAlg& topology, int strip,
                            const zn::vector<int>& pairOf) const
    {
        int numEdges = 0, numSewn = 0, numSameWay = 0, numPairs = 0, numWithItself = 0;
        const Edge first = topology.getFirstEdgeOnBoundary(strip);
        Edge edge = first;
        do {
            ++numEdges;
            const int pair = pairOf[edge.index()];
            numPairs += pair >= 0;
            numSewn += pair >= 0 && m_account.pairs[pair].isSewn;
            numSameWay += edge.isTwinReversed();
            numWithItself += pair >= 0 && edge.getTwin().getBoundary() == strip;
            edge = edge.getNextOnBoundary();
        } while (edge != first);
        if (numSewn > 0) return numSewn == numEdges ? StitchOutcome::Sewn : StitchOutcome::SewnInPart;
        if (numPairs == 0) return outcomeWithoutPair(topology, strip);
        if (numSameWay == numPairs) return StitchOutcome::SameWay;
        // Two sides of one strip of surface, which are never sewn.
        return numWithItself == numPairs ? StitchOutcome::TooNarrow : StitchOutcome::NotSewn;
    }

    CompactMesh& m_mesh;
    zn::Reference<MeshAdjTris> m_adjacency;
    zn::Reference<MeshBoundaries> m_boundaries;
    zn::vector<int> m_chosen;
    double m_tolerance, m_seamTolerance;
    MeshStitchAccount& m_account;
    znUtil::ThreadPool& m_pool;
};

} // namespace

bool meshStitch(CompactMesh& mesh, zn::Reference<MeshAdjTris> adjacency, zn::Reference<MeshBoundaries> boundaries,
                double tolerance, double seamTolerance)
{
    zn::vector<int> all(boundaries->size());
    std::iota(all.begin(), all.end(), 0);
    return meshStitch(mesh, std::move(adjacency), std::move(boundaries), all, tolerance, seamTolerance);
}

bool meshStitch(CompactMesh& mesh, zn::Reference<MeshAdjTris> adjacency, zn::Reference<MeshBoundaries> boundaries,
                const zn::vector<int>& chosen, double tolerance, double seamTolerance)
{
    return meshStitch(mesh, std::move(adjacency), std::move(boundaries), chosen, tolerance, seamTolerance, nullptr);
}

bool meshStitch(CompactMesh& mesh, zn::Reference<MeshAdjTris> adjacency, zn::Reference<MeshBoundaries> boundaries,
                const zn::vector<int>& chosen, double tolerance, double seamTolerance, MeshStitchAccount* account,
                znUtil::ThreadPool& pool)
{
    zn::vector<int> sorted;
    for (const int boundary : chosen)
        if (boundary >= 0 && boundary < boundaries->size()) sorted.append(boundary);
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    MeshStitchAccount own;
    MeshStitchAccount& used = account ? *account : own;
    used = {};
    return BoundaryStitcher(mesh, std::move(adjacency), std::move(boundaries), std::move(sorted), tolerance,
                            seamTolerance, used, pool)
        .run();
}

} // namespace znGeom
