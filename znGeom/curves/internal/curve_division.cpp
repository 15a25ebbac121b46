#include "znGeom/curves/internal/curve_division.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "znGeom/curves/internal/pace.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using namespace znLinear;

using PointRef = zn::Reference<TopoMeshPoint>;

namespace {

/// A point on an edge, told on the half of the pair that was made first.
struct PointOnEdge
{
    TopoMeshEdge edge;
    double endWeight; ///< 0 to 1
    PointRef point;

    explicit PointOnEdge(const PointRef& onEdge) : edge(onEdge->edge), point(onEdge)
    {
        double originWeight = 0;
        point->getEdgeWeights(originWeight, endWeight);
        // What the third corner weighs is within the tolerance, and would move the point along the edge.
        endWeight = std::clamp(endWeight / (originWeight + endWeight), 0.0, 1.0);
        const TopoMeshEdge twin = edge->twin;
        if (!twin || !(twin < edge)) return;
        if (twin->origin != edge->origin) endWeight = 1.0 - endWeight;
        edge = twin;
    }
    auto key() const { return std::tuple(edge, endWeight, point->number()); }
};

zn::vector<PointOnEdge> collectPointsOnEdges(TopoMeshCurves& curves)
{
    zn::vector<PointOnEdge> points;
    for (MeshCurveTopologyIterator at(curves); at.valid(); at.next())
        if (const PointRef& point = at.getIterator().value(); point->kind == TopoMeshPoint::OnEdge)
            points.append(PointOnEdge(point));
    std::sort(points.begin(), points.end(),
              [](const PointOnEdge& a, const PointOnEdge& b) { return a.key() < b.key(); });
    return points;
}

/// The edge along which a segment runs, told on the half that was made first; null for none.
TopoMeshEdge edgeAlong(const TopoMeshPoint& a, const TopoMeshPoint& b)
{
    const auto firstHalf = [](TopoMeshEdge e) { return e && e->twin && e->twin < e ? e->twin : e; };
    if (a.kind == TopoMeshPoint::InFace || b.kind == TopoMeshPoint::InFace) return {};
    if (a.kind == TopoMeshPoint::AtVertex && b.kind == TopoMeshPoint::AtVertex) {
        const TopoMeshEdge edge = TopoMesh::findEdge(a.vertex, b.vertex);
        return firstHalf(edge ? edge : TopoMesh::findEdge(b.vertex, a.vertex));
    }
    const TopoMeshPoint &on = a.kind == TopoMeshPoint::OnEdge ? a : b, &other = &on == &a ? b : a;
    const TopoMeshEdge edge = firstHalf(on.edge);
    const bool isAlong = other.kind == TopoMeshPoint::OnEdge
                             ? firstHalf(other.edge) == edge
                             : edge->origin == other.vertex || endOf(edge) == other.vertex;
    return isAlong ? edge : TopoMeshEdge();
}

/// How far along an edge a point lies on it, 0 to 1.
double weightOn(TopoMeshEdge edge, const PointRef& point)
{
    if (point->kind == TopoMeshPoint::OnEdge) return PointOnEdge(point).endWeight;
    return point->vertex == edge->origin ? 0 : 1;
}

/// Lets curves that run along an edge pass through the points that others, or they themselves, have on it.
void passThroughPointsOnEdges(TopoMeshCurves& curves)
{
    const zn::vector<PointOnEdge> points = collectPointsOnEdges(curves);
    for (TopoMeshCurve& curve : curves)
        for (auto node = curve.firstNode(), next = node; node; node = next) {
            next = node.next();
            const TopoMeshEdge edge = next ? edgeAlong(*node.value(), *next.value()) : TopoMeshEdge();
            if (!edge) continue;
            const double from = weightOn(edge, node.value()), to = weightOn(edge, next.value());
            auto first = std::partition_point(points.begin(), points.end(),
                                              [&](const PointOnEdge& at) { return at.edge < edge; });
            for (TopoMeshCurve::Node site = next; first != points.end() && first->edge == edge; ++first) {
                if (!(std::min(from, to) < first->endWeight && first->endWeight < std::max(from, to))) continue;
                const TopoMeshCurve::Node made = curve.insert(site, first->point);
                if (to < from) site = made;
            }
        }
}

/// Twice the area of a face, as a vector along its normal.
Vector areaOf(TopoMeshFace face)
{
    Vector area;
    const Point first = face->edge->origin->point;
    for (const TopoMeshEdge side : sidesOf(face))
        area += cross(side->origin->point - first, endOf(side)->point - first);
    return area;
}

/// A plane seen along the axis nearest to its normal.
class Seen
{
public:
    explicit Seen(const Vector& normal)
    {
        const double x = std::fabs(normal.dx), y = std::fabs(normal.dy), z = std::fabs(normal.dz);
        const int away = x > y && x > z ? 0 : y > z ? 1 : 2;
        m_across = (away + 1) % 3, m_up = (away + 2) % 3;
    }

    /// Whether a point is inside a face: by crossings of a ray.
    bool contains(TopoMeshFace face, const Point& point) const
    {
        bool isInside = false;
        for (const TopoMeshEdge side : sidesOf(face)) {
            const Point &a = side->origin->point, &b = endOf(side)->point;
            if ((a[m_up] > point[m_up]) == (b[m_up] > point[m_up])) continue;
            const double t = (point[m_up] - a[m_up]) / (b[m_up] - a[m_up]);
            if (point[m_across] < a[m_across] + t * (b[m_across] - a[m_across])) isInside = !isInside;
        }
        return isInside;
    }

    /// Whether two segments have a point in common. True as well for some that lie on one line.
    bool meet(const Point& a, const Point& b, const Point& c, const Point& d) const
    {
        return turn(a, b, c) * turn(a, b, d) <= 0 && turn(c, d, a) * turn(c, d, b) <= 0;
    }

private:
    double turn(const Point& a, const Point& b, const Point& c) const
    {
        return (b[m_across] - a[m_across]) * (c[m_up] - a[m_up]) - (b[m_up] - a[m_up]) * (c[m_across] - a[m_across]);
    }

    int m_across, m_up;
};

/// Whether a closed way is wider than a tolerance.
bool isWide(const zn::vector<Point>& loop, double tolerance)
{
    Vector area;
    double length = 0;
    for (int i = 0; i < loop.size(); ++i) {
        const Point &from = loop[i], &to = loop[(i + 1) % loop.size()];
        area += cross(from - loop[0], to - loop[0]);
        length += distance(from, to);
    }
    return area.length() > tolerance * length;
}

/// A straight way from a point of a loop to a corner of the face around it.
struct Bridge
{
    int from = -1;
    TopoMeshVertex to;
};

/// The shortest bridge that crosses neither the loop nor the sides of the face. \param loop  begins at a corner
Bridge shortestBridge(TopoMeshFace face, const zn::vector<Point>& loop)
{
    const Seen seen(areaOf(face));
    const int count = loop.size();
    const auto isFree = [&](int from, TopoMeshVertex to) {
        for (int i = 0; i < count; ++i)
            if (const int next = (i + 1) % count; i != from && next != from)
                if (seen.meet(loop[i], loop[next], loop[from], to->point)) return false;
        for (const TopoMeshEdge side : sidesOf(face))
            if (side->origin != to && endOf(side) != to &&
                seen.meet(side->origin->point, endOf(side)->point, loop[from], to->point))
                return false;
        return true;
    };
    Bridge shortest;
    double length = 0;
    for (const TopoMeshEdge side : sidesOf(face))
        for (int from = 1; from < count && side->origin->point != loop[0]; ++from) {
            const double own = distance(loop[from], side->origin->point);
            if ((shortest.from >= 0 && own >= length) || !isFree(from, side->origin)) continue;
            shortest = {from, side->origin};
            length = own;
        }
    return shortest;
}

} // namespace

CurveDivision::CurveDivision(TopoMesh& mesh, MeshCurveTopology& topology) : m_mesh(mesh), m_topology(topology)
{
    passThroughPointsOnEdges(topology.getCurves());
    for (TopoMeshCurve& curve : topology.getCurves())
        for (Node node = curve.firstNode(); node; node = node.next()) {
            const Node next = node.next();
            m_faceAfter.append(next ? node.value()->adjacent(*next.value()) : TopoMeshFace());
        }
}

/// First vertices are put at all points on edges, then two arms are joined of the curves that end at a crossing within
/// a face, then what is left is, run by run.
bool CurveDivision::divide(znUtil::Progress& progress)
{
    znUtil::Progress share;
    const auto next = [&](double fraction) -> znUtil::Progress& {
        progress.subPhase(fraction, share);
        return share;
    };
    return divideEdges(next(0.5)) && divideAtCrossings(next(0.1)) && divideAlongRuns(next(0.4));
}

/// From the far end of each edge to its origin: what is left of it keeps its handle. Points nearer to each other than
/// the tolerance share a vertex: curves that go the same way there are one cut, without a sliver in between.
bool CurveDivision::divideEdges(znUtil::Progress& progress)
{
    const zn::vector<PointOnEdge> points = collectPointsOnEdges(m_topology.getCurves());
    TopoMeshVertex made;
    double madeAt = 0, length = 0;
    Pace pace(progress);
    for (int i = points.size() - 1; i >= 0; --i) {
        if (!pace.goesOn(points.size() - i, points.size())) return false;
        const TopoMeshEdge edge = points[i].edge;
        const double at = points[i].endWeight;
        if (i == points.size() - 1 || points[i + 1].edge != edge) {
            made = endOf(edge);
            madeAt = 1;
            length = distance(edge->origin->point, made->point);
        }
        if (at <= 0) {
            made = edge->origin;
        } else if (at < madeAt && !(m_topology.getTolerance() > (madeAt - at) * length)) {
            for (const TopoMeshEdge half : {edge, edge->twin})
                if (half) m_touched.append(half->face);
            made =
                m_mesh.subdivideEdge(edge, combine(1.0 - at / madeAt, edge->origin->point, at / madeAt, made->point));
            madeAt = at;
        }
        *points[i].point = TopoMeshPoint(made, edge->face);
    }
    return !progress.cancelled();
}

bool CurveDivision::divideAtCrossings(znUtil::Progress& progress)
{
    Pace pace(progress);
    int numDone = 0;
    for (TopoMeshCurve& curve : m_topology.getCurves()) {
        if (!pace.goesOn(numDone++, m_topology.getCurves().size())) return false;
        if (curve.empty()) continue;
        for (const PointRef& end : {PointRef(curve.front()), PointRef(curve.back())})
            if (const auto* const crossing = m_topology.getIPoint(end); crossing && end->kind == TopoMeshPoint::InFace)
                divideAtCrossing(*crossing);
    }
    return !progress.cancelled();
}

/// The points of a curve from a crossing to the side of its face; none where it ends before.
CurveDivision::Run CurveDivision::armFrom(const MeshCurveTopology::Use& use, bool forward) const
{
    Run arm;
    for (Node node = use.node; forward || !(node == use.curve->firstNode());) {
        node = forward ? node.next() : node.prev();
        if (!node) break;
        arm.append(node);
        if (node.value()->kind != TopoMeshPoint::InFace) return arm;
    }
    return {};
}

void CurveDivision::divideAtCrossing(const MeshCurveTopology::IPoint& crossing)
{
    zn::vector<Run> arms;
    for (const MeshCurveTopology::Use& use : crossing.uses)
        for (const bool forward : {true, false})
            if (Run arm = armFrom(use, forward); !arm.empty() && arms.size() < 2) arms.append(std::move(arm));
    if (arms.size() < 2) return;
    Run run(std::move(arms[0]));
    std::reverse(run.begin(), run.end());
    run.append(crossing.uses.begin()->node);
    for (const Node& node : arms[1]) run.append(node);
    divideAlong(run, crossing.point->coord.face);
}

bool CurveDivision::divideAlongRuns(znUtil::Progress& progress)
{
    Pace pace(progress);
    int place = 0;
    for (TopoMeshCurve& curve : m_topology.getCurves()) {
        Run run;
        TopoMeshFace face;
        for (Node node = curve.firstNode(); node; node = node.next(), ++place) {
            if (!pace.goesOn(place, m_faceAfter.size())) return false;
            const bool isVertex = node.value()->kind == TopoMeshPoint::AtVertex;
            if (run.empty() && !isVertex) continue;
            run.append(node);
            if (!isVertex) continue;
            if (run.size() > 1) divideAlong(run, face);
            run = Run();
            run.append(node);
            face = m_faceAfter[place];
        }
        if (curve.empty()) continue;
        for (const PointRef& end : {curve.front(), curve.back()})
            if (end->kind != TopoMeshPoint::AtVertex) ++m_numSkipped;
    }
    return !progress.cancelled();
}

/// Brings a run on edges: its ends are vertices of a face, or of a piece of one, and its other points lie inside.
void CurveDivision::divideAlong(const Run& run, TopoMeshFace whole)
{
    const TopoMeshVertex u = (*run.begin()).value()->vertex, w = run[run.size() - 1].value()->vertex;
    const int numInside = run.size() - 2;
    if (numInside == 0 && (u == w || areJoined(u, w))) return;
    const Point inside = numInside > 0 ? run[1].value()->position : combine(u->point, w->point);
    const TopoMeshFace piece = whole && u && w ? pieceOf(whole, u, w, inside) : TopoMeshFace();
    if (!piece || (u == w && !divideAlongLoop(run, piece, whole))) ++m_numSkipped;
    if (!piece || u == w) return;
    if (numInside == 0) {
        if (const TopoMeshEdge made = m_mesh.subdivideFace(piece, u, w)) addPiece(made->twin->face, piece);
        return;
    }
    cutThrough(piece, run, numInside, w);
}

/// Divides a piece along the first points of a run, from its beginning to a corner.
void CurveDivision::cutThrough(TopoMeshFace piece, const Run& run, int numPoints, TopoMeshVertex to)
{
    const TopoMeshVertex from = run[0].value()->vertex;
    zn::vector<Point> places;
    for (int i = 1; i <= numPoints; ++i) places.append(run[i].value()->position);
    addPiece(m_mesh.subdivideFace(piece, from, to, places), piece);
    TopoMeshEdge along = piece.adjacent(from);
    for (int i = 1; i <= numPoints; ++i) {
        along = along->next;
        *run[i].value() = TopoMeshPoint(along->origin, piece);
    }
}

/// A run that comes back to the vertex where it began: a bridge to another corner makes two runs of it.
/// \return false for one that is no wider than the tolerance, and where no bridge leads off
bool CurveDivision::divideAlongLoop(const Run& run, TopoMeshFace piece, TopoMeshFace whole)
{
    zn::vector<Point> loop{run[0].value()->vertex->point};
    for (int i = 1; i + 1 < run.size(); ++i) loop.append(run[i].value()->position);
    if (!isWide(loop, m_topology.getTolerance())) return false;
    const Bridge bridge = shortestBridge(piece, loop);
    if (bridge.from < 0) return false;
    cutThrough(piece, run, bridge.from, bridge.to);
    Run rest;
    for (int i = bridge.from; i < run.size(); ++i) rest.append(run[i]);
    divideAlong(rest, whole);
    return true;
}

/// The piece of a face that holds two vertices; of several the one in which a point lies. Null for none.
TopoMeshFace CurveDivision::pieceOf(TopoMeshFace whole, TopoMeshVertex u, TopoMeshVertex w, const Point& inside) const
{
    zn::vector<TopoMeshFace> pieces;
    Vector normal;
    for (const TopoMeshEdge spoke : outgoingOf(u))
        if (wholeOf(spoke->face) == whole && spoke->face.adjacent(w)) {
            pieces.append(spoke->face);
            normal += areaOf(spoke->face);
        }
    const Seen seen(normal);
    for (const TopoMeshFace piece : pieces)
        if (pieces.size() > 1 && seen.contains(piece, inside)) return piece;
    return pieces.empty() ? TopoMeshFace() : pieces[0];
}

TopoMeshFace CurveDivision::wholeOf(TopoMeshFace piece) const
{
    const auto found = m_wholes.find(piece.number());
    return found == m_wholes.end() ? piece : found->second;
}

void CurveDivision::addPiece(TopoMeshFace made, TopoMeshFace from)
{
    m_wholes.emplace(made.number(), wholeOf(from));
    m_touched.append(made);
    m_touched.append(from);
}

zn::vector<TopoMeshFace> CurveDivision::touchedFaces() const
{
    zn::vector<TopoMeshFace> faces = m_touched;
    std::sort(faces.begin(), faces.end());
    return {faces.begin(), std::unique(faces.begin(), faces.end())};
}

} // namespace znGeom::internal
