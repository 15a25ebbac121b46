#include "znGeom/shells/internal/flat_faces.h"

#include <algorithm>

#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

bool isFlat(const Point& a, const Point& b, const Point& c)
{
    constexpr double leastHeight = 1e-5; // by the longest side
    const double longest2 = std::max({(b - a).length2(), (c - b).length2(), (a - c).length2()});
    return !(cross(b - a, c - a).length() > leastHeight * longest2);
}

bool isFlat(TopoMeshFace face)
{
    const TopoMeshEdge e = face->edge;
    return isFlat(e->origin->point, endOf(e)->point, e->prev->origin->point);
}

TopoMeshEdge longestSide(TopoMeshFace face)
{
    const auto length2 = [](TopoMeshEdge e) { return (endOf(e)->point - e->origin->point).length2(); };
    TopoMeshEdge longest = face->edge;
    for (const TopoMeshEdge side : sidesOf(face))
        if (length2(side) > length2(longest)) longest = side;
    return longest;
}

/// Whether the two triangles at an edge both have area once it is swapped.
bool helps(TopoMeshEdge e)
{
    const Point &a = e->origin->point, &b = endOf(e)->point;
    const Point &c = e->prev->origin->point, &d = e->twin->prev->origin->point;
    return !isFlat(c, a, d) && !isFlat(d, b, c);
}

} // namespace

zn::vector<bool> flatFaces(const TopoMesh& mesh)
{
    zn::vector<bool> areFlat(mesh.faceNumbers(), false);
    for (const TopoMeshFace face : facesOf(mesh)) areFlat[face.number()] = isFlat(face);
    return areFlat;
}

void swapFlatFaces(TopoMesh& mesh, const zn::vector<bool>& wereFlat)
{
    constexpr int mostPasses = 4; // several vertices may have come to lie on one side
    bool hasSwapped = true;
    for (int pass = 0; pass < mostPasses && hasSwapped; ++pass) {
        hasSwapped = false;
        for (const TopoMeshFace face : facesOf(mesh)) {
            if ((face.number() < wereFlat.size() && wereFlat[face.number()]) || !isFlat(face)) continue;
            const TopoMeshEdge longest = longestSide(face);
            if (longest->twin && helps(longest)) hasSwapped = mesh.swapEdge(longest) || hasSwapped;
        }
    }
}

} // namespace znGeom::internal
