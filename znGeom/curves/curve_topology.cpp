#include "znGeom/curves/curve_topology.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "znGeom/foundation/linear/intersect.h"
#include "znGeom/foundation/linear/range.h"
#include "znGeom/foundation/threads/radix_sort.h"
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

/// The first two points of a curve, from one of its ends.
struct Tip
{
    const TopoMeshPoint *end, *next;

    Tip(TopoMeshCurve& curve, bool atStart)
    {
        const Node first = atStart ? curve.firstNode() : lastNode(curve);
        end = first.value().get();
        next = (atStart ? first.next() : first.prev()).value().get();
    }
    bool agrees(const Tip& other, double tolerance) const
    {
        return equivalent(end->position, other.end->position, tolerance) &&
               equivalent(next->position, other.next->position, tolerance);
    }
};

bool overlap(TopoMeshCurve& first, TopoMeshCurve& second, double tolerance)
{
    if (first.size() < 2 || second.size() < 2) return false;
    const Tip tips[2] = {{first, true}, {first, false}}, others[2] = {{second, true}, {second, false}};
    return tips[0].agrees(others[0], tolerance) || tips[0].agrees(others[1], tolerance) ||
           tips[1].agrees(others[0], tolerance) || tips[1].agrees(others[1], tolerance);
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

bool meetsAnotherEnd(const PointRef& point, TopoMeshCurves& curves)
{
    const auto meets = [&](const PointRef& end) { return end.get() != point.get() && end->equivalent(*point); };
    return std::any_of(curves.begin(), curves.end(), [&](TopoMeshCurve& curve) {
        return !curve.empty() && (meets(curve.front()) || meets(curve.back()));
    });
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

/// The edge along which a segment runs, or null. Two points on an edge name the same half of it.
TopoMeshEdge edgeAlong(const TopoMeshPoint& a, const TopoMeshPoint& b)
{
    if (a.kind == TopoMeshPoint::AtVertex && b.kind == TopoMeshPoint::AtVertex)
        return TopoMesh::findEdge(a.vertex, b.vertex);
    if (a.kind == TopoMeshPoint::OnEdge && b.kind == TopoMeshPoint::OnEdge)
        return a.edge == b.edge ? a.edge : TopoMeshEdge();
    if (a.kind == TopoMeshPoint::InFace || b.kind == TopoMeshPoint::InFace) return {};
    const TopoMeshPoint &corner = a.kind == TopoMeshPoint::AtVertex ? a : b, &other = &corner == &a ? b : a;
    const bool isEnd = other.edge->origin == corner.vertex || endOf(other.edge) == corner.vertex;
    return isEnd ? other.edge : TopoMeshEdge();
}

/// A segment in the frame in which two of them are intersected, lengthened a little at both ends.
ParamLine lengthened(const Point& start, const Point& end)
{
    const Vector whole = end - start;
    Vector along = whole;
    if (!along.normalize()) return {start, Vector()};
    return {start - along * epsilonTol, whole + along * (2 * epsilonTol)};
}

/// Where two segments cross, in a frame in which they are of about unit size.
/// \return false for those that don't, for parallel ones, and for those without length
bool crossing(const Point& a0, const Point& a1, const Point& b0, const Point& b1, Point& out)
{
    Range3d box(a0, a1), other(b0, b1);
    if (!box.intersects(other, 4 * epsilonTol * (box.size().length() + other.size().length()))) return false;
    box.include(other);
    const Point middle = box.mid();
    const double radius = 0.5 * box.size().length();
    if (!(radius > 0) || !std::isfinite(radius)) return false;
    const auto framed = [&](const Point& p) { return ((p - middle) / radius).asPoint(); };
    const ParamLine a = lengthened(framed(a0), framed(a1)), b = lengthened(framed(b0), framed(b1));
    bool ok = false;
    const Point place = znLinear::intersect(Line(a), Line(b), ok, perpendicular2Tol);
    const double onA = projectParam(place, a), onB = projectParam(place, b);
    if (!ok || !(onA > 0 && onA < 1 && onB > 0 && onB < 1)) return false;
    out = middle + place.asVector() * radius;
    return true;
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

/// A segment as it was drawn; crossings are inserted between its two nodes.
struct MeshCurveTopology::Segment
{
    TopoMeshCurve* curve;
    Node start, end;

    const TopoMeshPoint& first() const { return *start.value(); }
    const TopoMeshPoint& last() const { return *end.value(); }

    /// The node before a point that lies on the segment.
    Node before(const Point& point) const
    {
        const ParamLine line(first().position, last().position);
        const double t = projectParam(point, line);
        Node node = start;
        for (Node next = node.next(); !(next == end); next = next.next()) {
            if (!(projectParam(next.value()->position, line) < t)) break;
            node = next;
        }
        return node;
    }
};

/// The segments of all curves: those across faces, by faces in order, and those along edges.
class MeshCurveTopology::Segments
{
public:
    struct InFace
    {
        TopoMeshFace face;
        Segment segment;
    };
    struct AlongEdge
    {
        TopoMeshEdge edge;
        Segment segment;
    };
    zn::vector<InFace> inFaces;
    zn::vector<AlongEdge> alongEdges;

    explicit Segments(TopoMeshCurves& curves)
    {
        for (MeshCurveTopologyIterator at(curves); at.valid(); at.next()) {
            const Node start = at.getIterator(), end = start.next();
            if (!end) continue;
            const TopoMeshPoint &a = *start.value(), &b = *end.value();
            if (const TopoMeshEdge edge = edgeAlong(a, b))
                alongEdges.append({edge, {&at.getCurve(), start, end}});
            else if (const TopoMeshFace face = a.adjacent(b))
                inFaces.append({face, {&at.getCurve(), start, end}});
        }
        sortByFaces();
    }

    template <typename Visit>
    void forEachPair(const Visit& visit) const
    {
        for (int i = 0; i < inFaces.size(); ++i)
            for (int j = i + 1; j < inFaces.size() && inFaces[j].face == inFaces[i].face; ++j)
                visit(inFaces[i].segment, inFaces[j].segment, inFaces[i].face);
    }

    template <typename Visit>
    void forEachIn(TopoMeshFace face, const Visit& visit) const
    {
        auto at = std::lower_bound(inFaces.begin(), inFaces.end(), face,
                                   [](const InFace& a, TopoMeshFace wanted) { return a.face < wanted; });
        for (; at != inFaces.end() && at->face == face; ++at) visit(at->segment);
    }

private:
    /// Segments of one face stay in their order.
    void sortByFaces()
    {
        zn::vector<znUtil::KeyedIndex> order, scratch(inFaces.size());
        for (int i = 0; i < inFaces.size(); ++i)
            order.append({static_cast<std::uint32_t>(inFaces[i].face.number()), i});
        znUtil::radixSort(order.data(), scratch.data(), order.size(), znUtil::ThreadPool::get());
        zn::vector<InFace> sorted;
        sorted.reserve(inFaces.size());
        for (const znUtil::KeyedIndex& each : order) sorted.append(inFaces[each.index]);
        inFaces.swap(sorted);
    }
};

void MeshCurveTopology::IPoint::addCurve(TopoMeshCurve& curve, bool atStart)
{
    addCurve(curve, atStart ? curve.firstNode() : lastNode(curve));
}

MeshCurveTopology::MeshCurveTopology(TopoMesh& mesh, TopoMeshCurves& curves, double tolerance)
    : m_mesh(&mesh), m_curves(&curves), m_tolerance(tolerance)
{
    validateCurves();
    createIPoints();
    linkCurves();
    intersect();
}

MeshCurveTopology::IPoint* MeshCurveTopology::getIPoint(const PointRef& point)
{
    const auto found = m_iPoints.findNode(point);
    return found ? &found.value().second : nullptr;
}

/// Whether a curve is a repeat depends on those after it alone, so one pass finds what any number would.
void MeshCurveTopology::validateCurves()
{
    for (auto curve = m_curves->firstNode(); curve;) {
        auto later = curve.next();
        while (later && !overlap(curve.value(), later.value(), m_tolerance)) later = later.next();
        if (!later) {
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
    PointRef ends[4];
    for (auto first = m_curves->firstNode(); first; first = first.next()) {
        if (first.value().empty()) continue;
        ends[0] = first.value().front(), ends[1] = first.value().back();
        if (ends[0] == ends[1]) continue;
        for (auto second = first.next(); second; second = second.next()) linkEnds(second.value(), ends);
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
void MeshCurveTopology::linkEnds(TopoMeshCurve& second, PointRef (&ends)[4])
{
    if (second.empty()) return;
    ends[2] = second.front(), ends[3] = second.back();
    if (ends[2] == ends[3]) return;
    for (const auto& [i, j] : {std::pair{0, 2}, {0, 3}, {1, 2}, {1, 3}}) {
        if (!ends[i] || !ends[j] || !areEquivalent(*ends[i], *ends[j])) continue;
        merge(ends[i], ends[j]);
        ends[i] = nullptr, ends[j] = nullptr;
    }
}

void MeshCurveTopology::intersect()
{
    const Segments segments(*m_curves);
    segments.forEachPair(
        [this](const Segment& first, const Segment& second, TopoMeshFace face) { intersect(first, second, face); });
    for (const auto& [edge, along] : segments.alongEdges) {
        const Segment& segment = along;
        for (const TopoMeshFace face : {edge->face, edge->twin ? edge->twin->face : TopoMeshFace()})
            if (face) segments.forEachIn(face, [&](const Segment& other) { intersect(segment, other, face); });
    }
    findVertexIntersections();
}

/// Straight segments cross once at most, however many points have been inserted in them: so each pair is looked at
/// once, whole, and its pieces are found afterwards.
void MeshCurveTopology::intersect(const Segment& first, const Segment& second, TopoMeshFace face)
{
    const auto sharesEnd = [](const Node& a, const Node& b) {
        return a.value() == b.value() || a.value() == b.next().value() || a.next().value() == b.value() ||
               a.next().value() == b.next().value();
    };
    if (first.start.value() == second.start.value() || first.start.value() == second.end.value() ||
        first.end.value() == second.start.value() || first.end.value() == second.end.value())
        return;
    Point place;
    if (!crossing(first.first().position, first.last().position, second.first().position, second.last().position,
                  place))
        return;
    const Node onFirst = first.before(place), onSecond = second.before(place);
    TopoMeshCoord coord;
    if (sharesEnd(onFirst, onSecond) || !coord.setFromPoint(face, place)) return;
    const PointRef point(new TopoMeshPoint(coord, m_tolerance));
    m_iPoints.insertNodeUnique(point, IPoint(point));
    split(*first.curve, onFirst, point);
    split(*second.curve, onSecond, point);
    if (const IPoint* made = getIPoint(point); made && made->uses.empty()) m_iPoints.eraseNodesMatching(point);
}

/// Lets a curve pass through a crossing, after a node: at that node or the next one where they are as good as there,
/// otherwise in between.
void MeshCurveTopology::split(TopoMeshCurve& curve, Node before, const PointRef& crossing)
{
    const Node next = before.next();
    for (const Node& site : {before, next}) {
        const PointRef point = site.value();
        if (!equivalent(crossing->position, point->position, m_tolerance)) continue;
        const bool wasNode = getIPoint(point);
        addUse(curve, site);
        if (merge(crossing, point)) return;
        if (!wasNode) m_iPoints.eraseNodesMatching(point);
    }
    addUse(curve, curve.insert(next, crossing));
}

void MeshCurveTopology::findVertexIntersections()
{
    zn::vector<Use> firstUses(m_mesh->vertexNumbers(), Use{});
    for (MeshCurveTopologyIterator at(*m_curves); at.valid(); at.next()) {
        const TopoMeshVertex vertex = at.getIterator().value()->vertex;
        if (!vertex) continue;
        Use& earlier = firstUses[vertex.number()];
        if (!earlier.curve) {
            earlier = {&at.getCurve(), at.getIterator()};
            continue;
        }
        if (!getIPoint(earlier.node.value())) addUse(*earlier.curve, earlier.node);
        if (!getIPoint(at.getIterator().value())) addUse(at.getCurve(), at.getIterator());
        merge(earlier.node.value(), PointRef(at.getIterator().value()));
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

void MeshCurveTopology::removeUse(TopoMeshCurve& curve, Node node)
{
    IPoint* iPoint = getIPoint(node.value());
    if (!iPoint) return;
    for (auto use = iPoint->uses.firstNode(); use; use = use.next())
        if (use.value().curve == &curve && use.value().node == node) {
            iPoint->uses.erase(use);
            break;
        }
    if (iPoint->uses.empty()) m_iPoints.eraseNodesMatching(node.value());
}

bool MeshCurveTopology::isLoose(TopoMeshCurve& curve, Node node) const
{
    const auto found = m_iPoints.find(node.value());
    return !curve.empty() && found != m_iPoints.end() && found->second.getDegree() == 1 && !node.value()->onBoundary();
}

void MeshCurveTopology::trimInteriorEndPoints()
{
    for (auto curve = m_curves->firstNode(); curve;) {
        TopoMeshCurve& points = curve.value();
        const bool atStart = !points.empty() && isLoose(points, points.firstNode());
        const bool atEnd = !atStart && !points.empty() && isLoose(points, lastNode(points));
        if (!atStart && !atEnd) {
            curve = curve.next();
            continue;
        }
        trim(points, atStart);
        if (points.empty()) m_curves->erase(curve);
        curve = m_curves->firstNode();
    }
    dropPassedNodes();
}

/// Takes points off one end of a curve, up to the next node of the graph.
void MeshCurveTopology::trim(TopoMeshCurve& curve, bool atStart)
{
    const auto endNode = [&] { return atStart ? curve.firstNode() : lastNode(curve); };
    ++m_losses.numTrimmed;
    removeUse(curve, endNode());
    do {
        const Point gone = endNode().value()->position;
        curve.erase(endNode());
        if (!curve.empty()) m_losses.trimmedLength += distance(gone, endNode().value()->position);
    } while (!curve.empty() && !getIPoint(endNode().value()));
    if (curve.size() != 1) return;
    removeUse(curve, curve.firstNode());
    curve.eraseFront();
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
    for (TopoMeshCurve& curve : curves) {
        if (curve.size() < 2) continue;
        const Node first = curve.firstNode(), last = lastNode(curve);
        for (const auto& [before, end] : {std::pair{first.next(), first}, {last.prev(), last}})
            if (end.value()->kind == TopoMeshPoint::InFace && !meetsAnotherEnd(end.value(), curves))
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
