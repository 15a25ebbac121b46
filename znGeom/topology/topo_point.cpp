#include "znGeom/topology/topo_point.h"

#include <atomic>

#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace znLinear;

namespace {

/// The corners of a triangular face in the order of its weights.
struct Corners
{
    TopoMeshEdge edges[3];

    explicit Corners(TopoMeshFace face) : edges{face->edge, face->edge->next, face->edge->prev} {}
    const Point& operator[](int corner) const { return edges[corner % 3]->origin->point; }
};

double& weight(TopoMeshCoord& coord, int corner) { return corner == 0 ? coord.w0 : corner == 1 ? coord.w1 : coord.w2; }
double weight(const TopoMeshCoord& coord, int corner)
{
    return corner == 0 ? coord.w0 : corner == 1 ? coord.w1 : coord.w2;
}

/// The weight of a vertex; 0 when it is not a corner of the face.
double weightOf(const TopoMeshCoord& coord, TopoMeshVertex vertex)
{
    const Corners corners(coord.face);
    for (int i = 0; i < 3; ++i)
        if (corners.edges[i]->origin == vertex) return weight(coord, i);
    return 0;
}

void setWeightOf(TopoMeshCoord& coord, TopoMeshVertex vertex, double value)
{
    const Corners corners(coord.face);
    for (int i = 0; i < 3; ++i)
        if (corners.edges[i]->origin == vertex) weight(coord, i) = value;
}

double distanceToCorner(const TopoMeshCoord& coord, const Corners& corners, int corner)
{
    const int second = (corner + 1) % 3, third = (corner + 2) % 3;
    return ((corners[second] - corners[corner]) * weight(coord, second) +
            (corners[third] - corners[corner]) * weight(coord, third))
        .length();
}

/// Side i runs from corner i to the next one.
double distanceToSide(const TopoMeshCoord& coord, const Corners& corners, int side)
{
    const Vector along = corners[side + 1] - corners[side];
    const double length = along.length();
    if (!(length > 0)) return distanceToCorner(coord, corners, side);
    const double height = cross(along, corners[side + 2] - corners[side]).length() / length;
    return std::fabs(weight(coord, (side + 2) % 3)) * height;
}

/// The corner or side that is nearest, the lowest of equally near ones; -1 when none is nearer than the tolerance.
template <typename Distance>
int nearestWithin(double tolerance, const TopoMeshCoord& coord, const Corners& corners, const Distance& distanceTo)
{
    int nearest = -1;
    for (int i = 0; i < 3; ++i) {
        const double distance = distanceTo(coord, corners, i);
        if (!(tolerance > distance)) continue;
        tolerance = distance;
        nearest = i;
    }
    return nearest;
}

bool sameEdge(TopoMeshEdge a, TopoMeshEdge b) { return a == b || (a->twin && a->twin == b); }

bool isOn(TopoMeshFace face, const TopoMeshPoint& point)
{
    switch (point.kind) {
    case TopoMeshPoint::AtVertex:
        return static_cast<bool>(face.adjacent(point.vertex));
    case TopoMeshPoint::OnEdge:
        return point.edge->face == face || (point.edge->twin && point.edge->twin->face == face);
    default:
        return point.coord.face == face;
    }
}

} // namespace

Point TopoMeshCoord::evaluate() const
{
    const Corners corners(face);
    return (corners[0].asVector() * w0 + corners[1].asVector() * w1 + corners[2].asVector() * w2).asPoint();
}

bool TopoMeshCoord::setFromPoint(TopoMeshFace onFace, const Point& point)
{
    *this = TopoMeshCoord();
    face = onFace;
    const Corners corners(face);
    const Vector ab = corners[1] - corners[0], ac = corners[2] - corners[0], ap = point - corners[0];
    const Vector normal = cross(ab, ac);
    const double area2 = normal.length2();
    if (face.numVertices() != 3 || !(area2 > 0) || !std::isfinite(area2)) return false;
    const double second = dot(cross(ap, ac), normal) / area2, third = dot(cross(ab, ap), normal) / area2;
    if (!std::isfinite(second) || !std::isfinite(third)) return false;
    w0 = 1.0 - second - third, w1 = second, w2 = third;
    return true;
}

TopoMeshPoint::TopoMeshPoint(TopoMeshVertex atVertex, TopoMeshFace face)
    : vertex(atVertex), position(atVertex->point), kind(AtVertex)
{
    coord.face = face;
    if (face) setWeightOf(coord, vertex, 1.0);
}

TopoMeshPoint::TopoMeshPoint(TopoMeshEdge onEdge, TopoMeshFace face, double originWeight, double endWeight)
    : edge(onEdge), position(combine(originWeight, onEdge->origin->point, endWeight, endOf(onEdge)->point)),
      kind(OnEdge)
{
    coord.face = face;
    setWeightOf(coord, edge->origin, originWeight);
    setWeightOf(coord, endOf(edge), endWeight);
}

TopoMeshPoint::TopoMeshPoint(const TopoMeshCoord& place, double tolerance) : coord(place), position(place.evaluate())
{
    const Corners corners(coord.face);
    if (const int corner = nearestWithin(tolerance, coord, corners, distanceToCorner); corner >= 0) {
        vertex = corners.edges[corner]->origin;
        kind = AtVertex;
    } else if (const int side = nearestWithin(tolerance, coord, corners, distanceToSide); side >= 0) {
        edge = corners.edges[side];
        kind = OnEdge;
    }
}

TopoMeshPoint::~TopoMeshPoint() = default;

TopoMeshPoint::Number::Number()
{
    static std::atomic<std::uint64_t> numMade{0};
    value = numMade.fetch_add(1, std::memory_order_relaxed);
}

bool TopoMeshPoint::equivalent(const TopoMeshPoint& other) const
{
    const auto agree = [](double a, double b) { return znLinear::equivalent(a, b, epsilonTol); };
    if (kind != other.kind) return false;
    if (kind == AtVertex) return vertex == other.vertex;
    if (kind == OnEdge) {
        double mine = 0, theirs = 0, end = 0;
        getEdgeWeights(mine, end);
        other.getEdgeWeights(theirs, end);
        return sameEdge(edge, other.edge) && agree(mine, edge == other.edge ? theirs : end);
    }
    return coord.face == other.coord.face && agree(coord.w0, other.coord.w0) && agree(coord.w1, other.coord.w1) &&
           agree(coord.w2, other.coord.w2);
}

bool TopoMeshPoint::onBoundary() const
{
    if (kind == AtVertex) return vertex.onBoundary();
    return kind == OnEdge && !edge->twin;
}

TopoMeshFace TopoMeshPoint::adjacent(const TopoMeshPoint& other) const
{
    if (coord.face && isOn(coord.face, other)) return coord.face;
    if (kind == OnEdge) {
        if (isOn(edge->face, other)) return edge->face;
        if (edge->twin && isOn(edge->twin->face, other)) return edge->twin->face;
    }
    if (kind != AtVertex) return {};
    for (const TopoMeshEdge e : fanOf(vertex))
        if (isOn(e->face, other)) return e->face;
    for (const TopoMeshEdge e : outgoingOf(vertex))
        if (isOn(e->face, other)) return e->face;
    return {};
}

void TopoMeshPoint::getEdgeWeights(double& originWeight, double& endWeight) const
{
    originWeight = weightOf(coord, edge->origin);
    endWeight = weightOf(coord, endOf(edge));
}

} // namespace znGeom
