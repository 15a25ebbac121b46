#include "znGeom/shells/internal/collar_path.h"

#include <algorithm>

#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

/// Places nearer to an end of a leg than this, as part of the leg, are at that end.
constexpr double atEnd = 1e-9;

class BorderWalk
{
public:
    BorderWalk(const CollarRegion& region, const TopoMeshPoint& a, const TopoMeshPoint& b, bool forward)
        : m_region(region), m_a(a), m_b(b), m_forward(forward)
    {}

    BorderPath findPath() const
    {
        BorderPath path;
        if (!isOnBorder(m_a) || !isOnBorder(m_b) || (m_a.vertex && m_a.vertex == m_b.vertex)) return path;
        const TopoMeshEdge first = m_a.edge ? m_a.edge : legFrom(m_a.vertex);
        if (first && follow(first, path)) return path;
        path.places.clear();
        return path;
    }

private:
    bool isOnBorder(const TopoMeshPoint& place) const
    {
        if (place.vertex) return m_region.isSeed(place.vertex);
        const TopoMeshEdge edge = place.edge;
        return edge && m_region.isSeed(edge->origin) && m_region.isSeed(endOf(edge)) && m_region.isOnMeshBorder(edge);
    }

    /// Null where the border ends against triangles that are wound the other way. Where borders touch, the leg that the
    /// loop takes; null if it is cut there.
    TopoMeshEdge legFrom(TopoMeshVertex vertex) const
    {
        zn::vector<TopoMeshEdge> legs;
        for (const TopoMeshEdge spoke : outgoingOf(vertex))
            if (const TopoMeshEdge leg = m_forward ? spoke : spoke->prev; m_region.isOnMeshBorder(leg))
                legs.append(leg);
        if (legs.size() < 2) return legs.empty() ? TopoMeshEdge() : legs.front();
        const TopoMeshVertex wanted = m_region.seedAfter(vertex, m_forward);
        const auto isWanted = [&](TopoMeshEdge leg) { return farEndOf(leg) == wanted; };
        const auto found = std::find_if(legs.begin(), legs.end(), isWanted);
        return found == legs.end() ? TopoMeshEdge() : *found;
    }

    bool follow(TopoMeshEdge first, BorderPath& path) const
    {
        path.forward = m_forward;
        path.places.append(placeOf(m_a, first));
        bool isArriving = !m_a.edge || isAfterStart();
        TopoMeshEdge leg = first;
        for (int steps = m_region.numEdges(); steps >= 0; --steps) {
            const TopoMeshVertex corner = farEndOf(leg);
            if (m_b.edge ? leg == m_b.edge && isArriving : corner == m_b.vertex) {
                path.places.append(placeAtEnd(leg));
                return true;
            }
            const TopoMeshEdge next = legFrom(corner);
            if (!next || (leg == first && path.places.size() > 1)) return false;
            path.places.append(placeAt(corner, leg, next));
            leg = next;
            isArriving = true;
        }
        return false;
    }

    TopoMeshVertex farEndOf(TopoMeshEdge leg) const { return m_forward ? endOf(leg) : leg->origin; }

    /// Both within edges: whether the one comes strictly later on the edge of the other.
    bool isAfterStart() const
    {
        if (m_a.edge != m_b.edge) return true;
        const double weightOfA = originWeightOf(m_a), weightOfB = originWeightOf(m_b);
        return m_forward ? weightOfA > weightOfB : weightOfA < weightOfB;
    }

    static double originWeightOf(const TopoMeshPoint& place)
    {
        double origin = 0, end = 0;
        place.getEdgeWeights(origin, end);
        return origin / (origin + end);
    }

    BorderPlace placeAt(TopoMeshVertex vertex, TopoMeshEdge before, TopoMeshEdge after) const
    {
        return {vertex, m_forward ? before : after, m_forward ? after : before, 1, vertex->point};
    }
    static BorderPlace placeWithin(const TopoMeshPoint& place)
    {
        return {{}, place.edge, place.edge, originWeightOf(place), place.position};
    }
    BorderPlace placeOf(const TopoMeshPoint& start, TopoMeshEdge leg) const
    {
        if (start.edge) return placeWithin(start);
        return placeAt(start.vertex, m_forward ? boundaryIn(leg) : boundaryOut(leg->next), leg);
    }
    BorderPlace placeAtEnd(TopoMeshEdge leg) const
    {
        if (m_b.edge) return placeWithin(m_b);
        return placeAt(m_b.vertex, leg, legFrom(farEndOf(leg)));
    }

    const CollarRegion& m_region;
    const TopoMeshPoint &m_a, &m_b;
    bool m_forward;
};

/// The weight that the origin of a leg has at one of its places.
double originWeightOn(TopoMeshEdge leg, const BorderPlace& place, bool isAtOrigin)
{
    if (!place.vertex) return place.originWeight;
    return isAtOrigin && place.vertex == leg->origin ? 1 : 0;
}

/// The place at a part of the leg between two.
BorderPlace placeBetween(const BorderPath& path, int leg, double part)
{
    const BorderPlace &from = path.places[leg], &to = path.places[leg + 1];
    if (!(part > atEnd)) return from;
    if (!(part < 1 - atEnd)) return to;
    const TopoMeshEdge edge = path.legFrom(from);
    const double weightFrom = originWeightOn(edge, from, path.forward);
    const double weightTo = originWeightOn(edge, to, !path.forward);
    return {
        {}, edge, edge, (1 - part) * weightFrom + part * weightTo, combine(1 - part, from.position, part, to.position)};
}

} // namespace

double BorderPath::length() const
{
    double sum = 0;
    for (int i = 1; i < places.size(); ++i) sum += distance(places[i - 1].position, places[i].position);
    return sum;
}

BorderPath findBorderPath(const CollarRegion& region, const TopoMeshPoint& a, const TopoMeshPoint& b, bool forward)
{
    return BorderWalk(region, a, b, forward).findPath();
}

void divideEvenly(BorderPath& path, int count)
{
    const double length = path.length();
    if (path.places.size() < 2 || !(length > 0) || count < 1) return;
    const int numLegs = path.places.size() - 1;
    const auto lengthOf = [&](int leg) { return distance(path.places[leg].position, path.places[leg + 1].position); };
    zn::vector<BorderPlace> divided;
    divided.reserve(count);
    int leg = 0;
    double walked = 0, ofLeg = lengthOf(0);
    divided.append(path.places[0]);
    for (int i = 1; i < count; ++i) {
        const double wanted = length * i / count;
        while (leg + 1 < numLegs && !(walked + ofLeg > wanted)) {
            walked += ofLeg;
            ofLeg = lengthOf(++leg);
        }
        divided.append(placeBetween(path, leg, ofLeg > 0 ? (wanted - walked) / ofLeg : 0));
    }
    path.places.swap(divided);
    path.endsAtLast = false;
}

} // namespace znGeom::internal
