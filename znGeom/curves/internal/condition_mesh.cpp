#include "znGeom/curves/internal/condition_mesh.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "znGeom/foundation/linear/line.h"
#include "znGeom/topology/topo_iterators.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

constexpr int mostPasses = 5;
constexpr double thin = 0.15;
constexpr double room = 1.1;           ///< of the tolerance, for vertices that lie as far off as it allows
constexpr double flatSine = 0.0436194; ///< of 2.5 degrees, up to which swaps take a fold for none

/// Whether a triangle is much longer than wide. The side from b to c counts as neither end of it being thin: a triangle
/// on that side is looked at from its other corners.
bool isThinTriangle(const Point& a, const Point& b, const Point& c)
{
    const double ab = distance(a, b), bc = distance(b, c), ca = distance(c, a);
    if (bc * thin > ab && ca * thin > ab) return true;
    if (ab * thin > ca && bc * thin > ca) return true;
    if (ab >= bc && ab >= ca && distance(c, Line(a, b)) < ab * thin) return true;
    return ca >= ab && ca >= bc && distance(b, Line(a, c)) < ab * thin;
}

bool isThin(TopoMeshVertex v)
{
    const bool isOpen = v.onBoundary();
    for (const TopoMeshEdge e : fanOf(v)) {
        const TopoMeshVertex end = endOf(e);
        if (isThinTriangle(v->point, end->point, e->prev->origin->point) && (isOpen || end.onBoundary())) return true;
    }
    return false;
}

double distanceToWay(const Point& point, const Point& from, const Point& to)
{
    return distance(point, ParamLine(from, to).projectBounded(point, 0, 1));
}

/// Twice the area of a triangle along its normal.
Vector areaOf(const Point& a, const Point& b, const Point& c) { return cross(b - a, c - a); }

/// Whether the three faces at a vertex lie in the plane of the triangle that is to replace them and, but for what a
/// fold of that size takes, just cover it: a vertex outside the triangle would take some of the surface along. Faces
/// without area don't count.
bool liesFlat(TopoMeshVertex v)
{
    constexpr double slack = 2 * flatSine * flatSine;
    const TopoMeshEdge first = v->edge, second = nextAround(first),
                       third = second ? nextAround(second) : TopoMeshEdge();
    if (!third) return false;
    const Vector whole = areaOf(endOf(first)->point, endOf(second)->point, endOf(third)->point);
    const Normal normal(whole);
    if (!normal.isValid()) return false;
    double covered = 0;
    for (const TopoMeshEdge e : {first, second, third}) {
        const Vector area = areaOf(v->point, endOf(e)->point, e->prev->origin->point);
        if (const Normal own(area); own.isValid() && cross(own, normal).length() > flatSine) return false;
        covered += area.length();
    }
    return covered <= (1 + slack) * whole.length();
}

/// Whether nothing would be left of the surface around a vertex of one face.
bool isLoneFace(TopoMeshVertex v) { return !v->edge->next->twin; }

} // namespace

void PacedSwapper::begin(znUtil::Progress& progress, int numEdges)
{
    m_pace.emplace(progress);
    m_numAsked = 0, m_numEdges = numEdges;
    m_goesOn = !progress.cancelled();
}

/// Nobody knows how many passes there will be: each takes half of what is left, nearly.
bool PacedSwapper::shouldSwap(TopoMeshEdge e)
{
    ++m_numAsked;
    m_goesOn = m_goesOn && m_pace->goesOn(m_numAsked, m_numAsked + m_numEdges);
    return m_goesOn && MeshEdgeSwapper::shouldSwap(e);
}

ConditionMesh::ConditionMesh(TopoMesh& mesh, zn::set<TopoMeshVertex>& candidates,
                             znRTB::SignalArg<TopoMeshVertex>* removed)
    : m_mesh(mesh), m_candidates(candidates), m_isCandidate(mesh.vertexNumbers()), m_removed(removed)
{
    for (const TopoMeshVertex v : candidates) m_isCandidate.setBit(v.number());
    for (MeshEdgeSwapper* const swapper :
         std::initializer_list<MeshEdgeSwapper*>{&m_mainSwapper, &m_removalSwapper, &m_lastSwapper})
        swapper->getVetoSignal().addCallback([this](TopoMeshEdge e, bool& veto) { vetoFarAway(e, veto); });
    m_mainSwapper.getVetoSignal().addCallback(MeshEdgeSwapper::preserveFeatures);
    m_mainSwapper.getVetoSignal().addCallback(MeshEdgeSwapper::minimizeOppositeAngleSum);
    m_removalSwapper.getVetoSignal().addCallback(MeshEdgeSwapper::preserveFeatures);
    m_removalSwapper.getVetoSignal().addCallback(MeshEdgeSwapper::preventFoldover);
}

void ConditionMesh::vetoFarAway(TopoMeshEdge e, bool& veto) const
{
    const auto isNear = [this](TopoMeshVertex v) { return m_isCandidate[v.number()]; };
    const bool hasNearEnd = isNear(e->origin) || isNear(endOf(e));
    if (!hasNearEnd || !(isNear(e->prev->origin) || isNear(e->twin->prev->origin))) veto = true;
}

void ConditionMesh::operator()(double tolerance, znUtil::Progress& progress)
{
    znUtil::Progress share;
    for (int pass = 0; pass < mostPasses; ++pass) {
        progress.subPhase(0.6 / mostPasses, share);
        swapRepeatedly(share);
        progress.subPhase(0.4 / mostPasses, share);
        if (progress.cancelled() || removeThin(tolerance, share) == 0) return;
    }
}

void ConditionMesh::swapRepeatedly(znUtil::Progress& progress)
{
    // Others would be vetoed, now and after any swap.
    zn::vector<TopoMeshEdge> edges;
    for (const TopoMeshVertex v : m_candidates)
        for (const TopoMeshEdge e : outgoingOf(v))
            if (e->twin) edges.append(std::min(e, e->twin));
    std::sort(edges.begin(), edges.end());
    const zn::vector<TopoMeshEdge> once(edges.begin(), std::unique(edges.begin(), edges.end()));
    m_mainSwapper.begin(progress, once.size());
    meshSwapEdgesRepeatedly(m_mesh, once, m_mainSwapper);
}

/// \return how many vertices were removed
int ConditionMesh::removeThin(double tolerance, znUtil::Progress& progress)
{
    int count = 0;
    zn::set<TopoMeshVertex> touched;
    Pace pace(progress);
    const int numCandidates = m_candidates.size();
    std::int64_t numSeen = 0;
    for (auto at = m_candidates.firstNode(); at && pace.goesOn(numSeen++, numCandidates);) {
        const TopoMeshVertex v = at.value();
        const auto node = at;
        at = at.next();
        if (!isThin(v)) continue;
        TopoMeshEdge arriving, leaving;
        TopoMeshBoundaryIterator::getPrevNextEdges(v, arriving, leaving);
        const TopoMeshVertex p = arriving ? arriving->origin : TopoMeshVertex(), q = leaving ? endOf(leaving) : p;
        // From the way between the neighbours, not from the line: the tip of a spike lies on that, too.
        if (p && (touched.contains(v) || !(distanceToWay(v->point, p->point, q->point) < tolerance * room))) continue;
        if (!removeVertex(v)) continue;
        ++count;
        m_candidates.eraseNode(node);
        m_isCandidate.clearBit(v.number());
        if (p) touched.insert(p), touched.insert(q);
    }
    return count;
}

bool ConditionMesh::removeVertex(TopoMeshVertex v)
{
    const bool isOpen = v.onBoundary();
    zn::vector<TopoMeshEdge> swapped;
    const bool isReady = swapDownTo(v, isOpen ? 1 : 3, swapped) && (isOpen ? !isLoneFace(v) : liesFlat(v));
    if (!isReady) {
        for (int i = swapped.size() - 1; i >= 0; --i) m_mesh.swapEdge(swapped[i]);
        return false;
    }
    if (m_removed) m_removed->emit(v);
    m_mesh.deleteVertex(v);
    return true;
}

bool ConditionMesh::swapDownTo(TopoMeshVertex v, int valence, zn::vector<TopoMeshEdge>& swapped)
{
    while (v.valence() > valence)
        if (!swapOneSpoke(v, swapped)) return false;
    return v.valence() == valence;
}

bool ConditionMesh::swapOneSpoke(TopoMeshVertex v, zn::vector<TopoMeshEdge>& swapped)
{
    MeshEdgeSwapper& swapper = v.valence() == 2 ? m_lastSwapper : m_removalSwapper;
    for (TopoMeshEdgeVertexIterator at(v); at.valid(); at.next()) {
        if (!at.edge->twin || !swapper.shouldSwap(at.edge) || !m_mesh.swapEdge(at.edge)) continue;
        swapped.append(at.edge);
        return true;
    }
    return false;
}

} // namespace znGeom::internal
