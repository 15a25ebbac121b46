#include "znGeom/curves/curve_topology.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <unordered_map>

#include "znGeom/curves/internal/curve_ends.h"
#include "znGeom/foundation/linear/intersect.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace znLinear;

using Node = TopoMeshCurve::Node;
using PointRef = zn::Reference<TopoMeshPoint>;

namespace {

Node lastNode(TopoMeshCurve& curve) { return curve.sentinel().prev(); }

double lengthOf(const TopoMeshCurve& curve)
{
    double sum = 0;
    const TopoMeshPoint* before = nullptr;
    for (const PointRef& point : curve) {
        if (before) sum += distance(before->position, point->position);
        before = point.get();
    }
    return sum;
}

/// Whether a point stands where the one before it in a run does.
bool repeats(const TopoMeshPoint& before, const TopoMeshPoint& point, double tolerance)
{
    if (before.kind != point.kind) return false;
    if (point.kind == TopoMeshPoint::AtVertex) return before.vertex == point.vertex;
    const bool shares = point.kind == TopoMeshPoint::OnEdge
                            ? point.edge == before.edge || (point.edge->twin && point.edge->twin == before.edge)
                            : point.coord.face == before.coord.face;
    return shares && equivalent(before.position, point.position, tolerance);
}

/// Moves `end` along the line from `before` to the side of its face.
void extendSegment(const TopoMeshPoint& before, TopoMeshPoint& end, double tolerance)
{
    const TopoMeshFace face = end.coord.face;
    const ParamLine line(before.position, end.position);
    double nearest = std::numeric_limits<double>::infinity();
    Point place;
    for (const TopoMeshEdge side : sidesOf(face)) {
        bool ok = false;
        const Point crossing =
            znLinear::intersect(Line(side->origin->point, endOf(side)->point), Line(line), ok, perpendicular2Tol);
        const double t = projectParam(crossing, line);
        if (!ok || !(t > 1.0 && t < nearest)) continue;
        nearest = t;
        place = crossing;
    }
    TopoMeshCoord coord;
    if (std::isfinite(nearest) && coord.setFromPoint(face, place)) end = TopoMeshPoint(coord, tolerance);
}

/// Whether a place can stand for a point: where its curves go on, they still have a face in common.
bool canStandFor(const TopoMeshPoint& place, const MeshCurveTopology::IPoint& nodeOfGraph)
{
    const TopoMeshPoint& present = *nodeOfGraph.point;
    const auto staysJoined = [&](const TopoMeshPoint& neighbour) {
        return &neighbour == &place || &neighbour == &present || place.adjacent(neighbour) ||
               !present.adjacent(neighbour);
    };
    for (const auto& [curve, node] : nodeOfGraph.uses) {
        if (!(node == curve->firstNode()) && !staysJoined(*node.prev().value())) return false;
        if (const Node next = node.next(); next && !staysJoined(*next.value())) return false;
    }
    return true;
}

} // namespace

void MeshCurveTopology::IPoint::addCurve(TopoMeshCurve& curve, bool atStart)
{
    addCurve(curve, atStart ? curve.firstNode() : lastNode(curve));
}

MeshCurveTopology::MeshCurveTopology(TopoMesh& mesh, TopoMeshCurves& curves, double tolerance,
                                     znUtil::Progress& progress)
    : m_mesh(&mesh), m_curves(&curves), m_tolerance(tolerance)
{
    build(progress);
}

MeshCurveTopology::MeshCurveTopology(TopoMesh& mesh, TopoMeshCurves& curves, double tolerance)
    : m_mesh(&mesh), m_curves(&curves), m_tolerance(tolerance)
{
    znUtil::Progress progress;
    build(progress);
}

void MeshCurveTopology::build(znUtil::Progress& progress)
{
    validateCurves();
    createIPoints();
    linkCurves();
    if (!progress.cancelled()) intersect(progress);
}

MeshCurveTopology::IPoint* MeshCurveTopology::getIPoint(const PointRef& point)
{
    const auto found = m_iPoints.findNode(point);
    return found ? &found.value().second : nullptr;
}

/// Whether a curve is a repeat depends on those after it alone, so one pass finds what any number would.
void MeshCurveTopology::validateCurves()
{
    const zn::vector<bool> isRepeat = internal::findRepeats(*m_curves, m_tolerance);
    auto curve = m_curves->firstNode();
    for (const bool goes : isRepeat) {
        if (!goes) {
            curve = curve.next();
            continue;
        }
        ++m_losses.numRepeated;
        m_losses.repeatedLength += lengthOf(curve.value());
        curve = m_curves->erase(curve);
    }
}

void MeshCurveTopology::createIPoints()
{
    for (TopoMeshCurve& curve : *m_curves) {
        if (curve.empty()) continue;
        // A point that ends several curves keeps the uses of the last one alone: sharing is for `linkCurves` to find.
        m_iPoints[curve.front()] = IPoint(curve.front());
        m_iPoints[curve.back()] = IPoint(curve.back());
        m_iPoints[curve.front()].addCurve(curve, true);
        m_iPoints[curve.back()].addCurve(curve, false);
    }
}

bool MeshCurveTopology::areEquivalent(const TopoMeshPoint& a, const TopoMeshPoint& b) const
{
    return equivalent(a.position, b.position, m_tolerance) && (a.adjacent(b) || a.equivalent(b));
}

void MeshCurveTopology::linkCurves()
{
    for (auto curve = m_curves->firstNode(); curve;)
        curve = closeOnItself(curve.value()) ? curve.next() : m_curves->erase(curve);
    if (m_tolerance > 0) linkOpenCurves();
}

/// Each curve is held against those after it; only such are looked at as end near its own ends.
void MeshCurveTopology::linkOpenCurves()
{
    internal::CurveEnds places(*m_curves, m_tolerance);
    zn::vector<TopoMeshCurve*> curves;
    for (TopoMeshCurve& curve : *m_curves) curves.append(&curve);
    PointRef ends[4];
    for (int first = 0; first < curves.size(); ++first) {
        if (curves[first]->empty()) continue;
        ends[0] = curves[first]->front(), ends[1] = curves[first]->back();
        for (int second = ends[0] == ends[1] ? -1 : first; second >= 0;) {
            int nearest = -1;
            for (const PointRef& end : {ends[0], ends[1]}) {
                const int candidate = end ? places.firstAfter(second, end->position) : -1;
                if (nearest < 0 || (candidate >= 0 && candidate < nearest)) nearest = candidate;
            }
            second = nearest;
            if (second >= 0) linkEnds(*curves[second], ends, places);
        }
    }
}

/// Joins the ends of a curve where they agree. \return false when nothing is left of it
bool MeshCurveTopology::closeOnItself(TopoMeshCurve& curve)
{
    if (curve.empty()) return true;
    const PointRef first = curve.front(), last = curve.back();
    if (!areEquivalent(*first, *last)) return true;
    if (curve.size() > 2) return merge(first, last), true;
    m_iPoints.eraseNodesMatching(first);
    m_iPoints.eraseNodesMatching(last);
    ++m_losses.numDegenerate;
    return false;
}

/// \param ends  those of the first curve, null once they are joined; the others are filled in here
void MeshCurveTopology::linkEnds(TopoMeshCurve& second, PointRef (&ends)[4], internal::CurveEnds& places)
{
    if (second.empty()) return;
    ends[2] = second.front(), ends[3] = second.back();
    if (ends[2] == ends[3]) return;
    for (const auto& [i, j] : {std::pair{0, 2}, {0, 3}, {1, 2}, {1, 3}}) {
        if (!ends[i] || !ends[j] || !areEquivalent(*ends[i], *ends[j])) continue;
        mergeEnds(ends[i], ends[j], places);
        ends[i] = nullptr, ends[j] = nullptr;
    }
}

/// Merges, and tells where ends of curves are now.
void MeshCurveTopology::mergeEnds(const PointRef& keep, const PointRef& drop, internal::CurveEnds& places)
{
    const IPoint* const dropped = getIPoint(drop);
    if (keep == drop || !dropped) return;
    int numMoved = dropped->getDegree();
    const Point before = keep->position;
    if (!merge(keep, drop)) return;
    IPoint& merged = *getIPoint(keep);
    if (!(keep->position == before)) numMoved = merged.getDegree();
    auto use = merged.uses.sentinel();
    for (; numMoved > 0; --numMoved) {
        use = use.prev();
        places.add(places.numberOf(*use.value().curve), keep->position);
    }
}

/// Makes the point of a node one of the graph, with this use.
void MeshCurveTopology::addUse(TopoMeshCurve& curve, Node node)
{
    IPoint& iPoint = m_iPoints.insertNodeUnique(node.value(), IPoint(node.value())).first.value().second;
    const auto isThisOne = [&](const Use& use) { return use.curve == &curve && use.node == node; };
    if (std::none_of(iPoint.uses.begin(), iPoint.uses.end(), isThisOne)) iPoint.addCurve(curve, node);
}

/// Puts one point of the graph in place of another at all its uses. The two get the place that suits the curves of
/// both; without one they stay apart.
/// \return whether they are one point now
bool MeshCurveTopology::merge(const PointRef& kept, const PointRef& dropped)
{
    if (kept == dropped) return true;
    const PointRef keep = kept, drop = dropped; // the arguments may be what is rewritten
    const auto dropNode = m_iPoints.findNode(drop);
    if (!dropNode) return false;
    IPoint& from = dropNode.value().second;
    IPoint& into = m_iPoints.insertNodeUnique(keep, IPoint(keep)).first.value().second;
    if (!canStandFor(*keep, from)) {
        if (!canStandFor(*drop, into)) return false;
        *keep = *drop;
    }
    for (Use& use : from.uses) use.node.value() = keep;
    into.uses.splice(into.uses.sentinel(), from.uses);
    m_iPoints.eraseNode(dropNode);
    return true;
}

/// \return the curve of the one use that is left, or null
TopoMeshCurve* MeshCurveTopology::removeUse(TopoMeshCurve& curve, Node node)
{
    IPoint* iPoint = getIPoint(node.value());
    if (!iPoint) return nullptr;
    for (auto use = iPoint->uses.firstNode(); use; use = use.next())
        if (use.value().curve == &curve && use.value().node == node) {
            iPoint->uses.erase(use);
            break;
        }
    if (iPoint->getDegree() == 1) return iPoint->uses.front().curve;
    if (iPoint->uses.empty()) m_iPoints.eraseNodesMatching(node.value());
    return nullptr;
}

bool MeshCurveTopology::isLoose(TopoMeshCurve& curve, Node node) const
{
    const auto found = m_iPoints.find(node.value());
    return !curve.empty() && found != m_iPoints.end() && found->second.getDegree() == 1 && !node.value()->onBoundary();
}

/// Always the first curve that has a loose end is trimmed. Those before it have been looked at, and are again when a
/// node of theirs is left with one use.
void MeshCurveTopology::trimInteriorEndPoints()
{
    zn::vector<TopoMeshCurves::Node> curves;
    std::unordered_map<const TopoMeshCurve*, int> numbers;
    std::set<int> suspects;
    for (auto curve = m_curves->firstNode(); curve; curve = curve.next()) {
        numbers.emplace(&curve.value(), curves.size());
        suspects.insert(suspects.end(), curves.size());
        curves.append(curve);
    }
    while (!suspects.empty()) {
        const int number = *suspects.begin();
        TopoMeshCurve& points = curves[number].value();
        const bool atStart = !points.empty() && isLoose(points, points.firstNode());
        const bool atEnd = !atStart && !points.empty() && isLoose(points, lastNode(points));
        if (!atStart && !atEnd) {
            suspects.erase(suspects.begin());
            continue;
        }
        const auto [atOneEnd, atOther] = trim(points, atStart);
        for (const TopoMeshCurve* const loosened : {atOneEnd, atOther})
            if (loosened) suspects.insert(numbers.at(loosened));
        if (!points.empty()) continue;
        suspects.erase(number);
        m_curves->erase(curves[number]);
    }
    dropPassedNodes();
}

/// Takes points off one end of a curve, up to the next node of the graph.
/// \return the curves at nodes that have one use left at either end of what was taken off, or null
std::pair<TopoMeshCurve*, TopoMeshCurve*> MeshCurveTopology::trim(TopoMeshCurve& curve, bool atStart)
{
    const auto endNode = [&] { return atStart ? curve.firstNode() : lastNode(curve); };
    ++m_losses.numTrimmed;
    TopoMeshCurve* const atOneEnd = removeUse(curve, endNode());
    do {
        const Point gone = endNode().value()->position;
        curve.erase(endNode());
        if (!curve.empty()) m_losses.trimmedLength += distance(gone, endNode().value()->position);
    } while (!curve.empty() && !getIPoint(endNode().value()));
    if (curve.size() != 1) return {atOneEnd, nullptr};
    TopoMeshCurve* const atOther = removeUse(curve, curve.firstNode());
    curve.eraseFront();
    return {atOneEnd, atOther};
}

/// What was a crossing until one of the two curves was taken off is a point like others.
void MeshCurveTopology::dropPassedNodes()
{
    for (auto at = m_iPoints.firstNode(); at;) {
        const IPoint& iPoint = at.value().second;
        const Use* const use = iPoint.getDegree() == 1 ? &*iPoint.uses.begin() : nullptr;
        const bool isPassed = use && !(use->node == use->curve->firstNode()) && use->node.next();
        at = isPassed ? m_iPoints.eraseNode(at) : at.next();
    }
}

void MeshCurveTopology::convert(TopoMeshCurves& curves, const std::deque<TopoMeshCoord>& coords, double tolerance)
{
    curves.append(TopoMeshCurve());
    PointRef before;
    for (const TopoMeshCoord& coord : coords) {
        const PointRef point(new TopoMeshPoint(coord, tolerance));
        if (before && !before->adjacent(*point) && !before->equivalent(*point)) curves.append(TopoMeshCurve());
        TopoMeshCurve& curve = *std::prev(curves.end());
        if (!before || curve.empty() || !repeats(*before, *point, tolerance)) curve.append(point);
        before = point;
    }
}

void MeshCurveTopology::extend(TopoMeshCurves& curves, double tolerance)
{
    const internal::EndsInFaces ends(curves);
    for (TopoMeshCurve& curve : curves) {
        if (curve.size() < 2) continue;
        const Node first = curve.firstNode(), last = lastNode(curve);
        for (const auto& [before, end] : {std::pair{first.next(), first}, {last.prev(), last}})
            if (end.value()->kind == TopoMeshPoint::InFace && !ends.meetsAnother(*end.value()))
                extendSegment(*before.value(), *end.value(), tolerance);
    }
}

MeshCurveTopologyIterator::MeshCurveTopologyIterator(TopoMeshCurves& curves) : m_curve(curves.firstNode())
{
    if (m_curve) m_point = m_curve.value().firstNode();
    nextIfInvalid();
}

void MeshCurveTopologyIterator::next()
{
    m_point = m_point.next();
    nextIfInvalid();
}

void MeshCurveTopologyIterator::nextIfInvalid()
{
    while (m_curve && !m_point) {
        m_curve = m_curve.next();
        if (m_curve) m_point = m_curve.value().firstNode();
    }
}

} // namespace znGeom
