#include "znGeom/curves/curve_topology.h"

#include <algorithm>
#include <cmath>

#include "znGeom/curves/internal/pace.h"
#include "znGeom/foundation/linear/intersect.h"
#include "znGeom/foundation/linear/range.h"
#include "znGeom/foundation/threads/radix_sort.h"
#include "znGeom/topology/topo_walks.h"

/// The part of the building of the graph that looks for places where curves cross, face by face.
namespace znGeom {

using namespace znLinear;

using Node = TopoMeshCurve::Node;
using PointRef = zn::Reference<TopoMeshPoint>;

namespace {

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

    /// \return false after a cancel
    template <typename Visit>
    bool forEachPair(znUtil::Progress& progress, const Visit& visit) const
    {
        internal::Pace pace(progress);
        for (int i = 0; i < inFaces.size(); ++i)
            for (int j = i + 1; j < inFaces.size() && inFaces[j].face == inFaces[i].face; ++j) {
                if (!pace.goesOn(i, inFaces.size())) return false;
                visit(inFaces[i].segment, inFaces[j].segment, inFaces[i].face);
            }
        return !progress.cancelled();
    }

    /// For segments along edges those in the faces on both sides.
    /// \return false after a cancel
    template <typename Visit>
    bool forEachBeside(znUtil::Progress& progress, const Visit& visit) const
    {
        internal::Pace pace(progress);
        for (int i = 0; i < alongEdges.size(); ++i) {
            const auto& [edge, segment] = alongEdges[i];
            for (const TopoMeshFace face : {edge->face, edge->twin ? edge->twin->face : TopoMeshFace()}) {
                if (!pace.goesOn(i, alongEdges.size())) return false;
                if (!face) continue;
                auto at = std::lower_bound(inFaces.begin(), inFaces.end(), face,
                                           [](const InFace& a, TopoMeshFace wanted) { return a.face < wanted; });
                for (; at != inFaces.end() && at->face == face; ++at) visit(segment, at->segment, face);
            }
        }
        return !progress.cancelled();
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

void MeshCurveTopology::intersect(znUtil::Progress& progress)
{
    const Segments segments(*m_curves);
    const auto visit = [this](const Segment& first, const Segment& second, TopoMeshFace face) {
        intersect(first, second, face);
    };
    znUtil::Progress share;
    progress.subPhase(0.8, share);
    if (!segments.forEachPair(share, visit)) return;
    progress.subPhase(0.2, share);
    if (segments.forEachBeside(share, visit)) findVertexIntersections();
    progress.set(1);
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

} // namespace znGeom
