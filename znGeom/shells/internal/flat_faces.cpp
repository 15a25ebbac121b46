#include "znGeom/shells/internal/flat_faces.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

constexpr double leastHeight = 1e-5;

/// How far a place may move when its coordinates are narrowed.
double grainAt(const Point& p)
{
    return 2 * static_cast<double>(std::numeric_limits<float>::epsilon()) *
           std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
}

/// Of a triangle, as a share of its longest side, less where that is not much beside the grain; 0 for a point.
double height(const Point& a, const Point& b, const Point& c)
{
    const double longest = std::sqrt(std::max({(b - a).length2(), (c - b).length2(), (a - c).length2()}));
    return longest > 0 ? cross(b - a, c - a).length() / (longest * (longest + grainAt(a) / leastHeight)) : 0;
}

double height(TopoMeshFace face)
{
    const TopoMeshEdge e = face->edge;
    return height(e->origin->point, endOf(e)->point, e->prev->origin->point);
}

bool isFlat(const Point& a, const Point& b, const Point& c) { return !(height(a, b, c) > leastHeight); }
bool isFlat(TopoMeshFace face) { return !(height(face) > leastHeight); }

double length2(TopoMeshEdge e) { return (endOf(e)->point - e->origin->point).length2(); }

struct Sides
{
    TopoMeshEdge shortest, longest;
};

Sides sidesByLength(TopoMeshFace face)
{
    Sides found{face->edge, face->edge};
    for (const TopoMeshEdge side : sidesOf(face)) {
        if (length2(side) < length2(found.shortest)) found.shortest = side;
        if (length2(side) > length2(found.longest)) found.longest = side;
    }
    return found;
}

/// Whether the two triangles at an edge both have area once it is swapped.
bool helps(TopoMeshEdge e)
{
    const Point &a = e->origin->point, &b = endOf(e)->point;
    const Point &c = e->prev->origin->point, &d = e->twin->prev->origin->point;
    return !isFlat(c, a, d) && !isFlat(d, b, c);
}

/// Whether the faces around the origin of an edge keep their area and their sense when it moves to the end.
bool collapsesWell(TopoMeshEdge e)
{
    const Point& place = endOf(e)->point;
    if (e->origin.onBoundary() || !TopoMesh::canCollapse(e)) return false;
    for (const TopoMeshEdge spoke : outgoingOf(e->origin)) {
        const TopoMeshVertex b = endOf(spoke), c = spoke->prev->origin;
        if (b == endOf(e) || c == endOf(e)) continue;
        const Vector before = cross(b->point - spoke->origin->point, c->point - spoke->origin->point);
        const bool isTurned = dot(before, cross(b->point - place, c->point - place)) < 0;
        if (isTurned || (isFlat(place, b->point, c->point) && !isFlat(spoke->face))) return false;
    }
    return true;
}

/// Contracts a side that is next to nothing beside the others. \return whether it did
bool collapse(const Sides& sides, const std::function<void(TopoMeshVertex)>& goes, TopoMesh& mesh)
{
    constexpr double mostShare = 1e-3, mostGrains = 2;
    const double most =
        std::max(mostShare * std::sqrt(length2(sides.longest)), mostGrains * grainAt(sides.shortest->origin->point));
    if (!(length2(sides.shortest) < most * most) || !sides.shortest->twin) return false;
    for (const TopoMeshEdge e : {sides.shortest, sides.shortest->twin}) {
        if (!collapsesWell(e)) continue;
        goes(e->origin);
        mesh.contractEdge(e);
        return true;
    }
    return false;
}

} // namespace

zn::vector<double> faceHeights(const TopoMesh& mesh)
{
    zn::vector<double> heights(mesh.faceNumbers(), 0);
    for (const TopoMeshFace face : facesOf(mesh)) heights[face.number()] = height(face);
    return heights;
}

void mendFlatFaces(TopoMesh& mesh, const zn::vector<double>& heights, const std::function<void(TopoMeshVertex)>& goes)
{
    constexpr int mostPasses = 4; // several vertices may have come to lie on one side
    zn::vector<TopoMeshFace> flat;
    bool hasChanged = true;
    for (int pass = 0; pass < mostPasses && hasChanged; ++pass) {
        hasChanged = false;
        flat.clear();
        for (const TopoMeshFace face : facesOf(mesh)) {
            constexpr double lower = 0.99;
            const double now = height(face);
            const bool isLower = face.number() >= heights.size() || !(now >= lower * heights[face.number()]);
            if (isLower && !(now > leastHeight)) flat.append(face);
        }
        for (const TopoMeshFace face : flat) {
            if (!face.isAlive() || !isFlat(face)) continue;
            const Sides sides = sidesByLength(face);
            const bool isSwapped = sides.longest->twin && helps(sides.longest) && mesh.swapEdge(sides.longest);
            hasChanged = isSwapped || collapse(sides, goes, mesh) || hasChanged;
        }
    }
}

} // namespace znGeom::internal
