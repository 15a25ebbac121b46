#include <algorithm>
#include <cmath>

#include "znGeom/shells/internal/collar_frames.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

/// Points of a cut nearer than this, as part of how far it reaches, are one.
constexpr double sameAs = 1e-8;

/// A corner of a triangle whose height over the plane is this part of the highest one's lies in it.
constexpr double inPlane = 1e-5;

/// The faces at the corners of some faces, each once.
zn::vector<TopoMeshFace> withNeighbours(const zn::vector<TopoMeshFace>& faces)
{
    zn::vector<TopoMeshFace> around;
    for (const TopoMeshFace face : faces)
        for (const TopoMeshEdge side : sidesOf(face))
            for (const TopoMeshEdge spoke : fanOf(side)) around.append(spoke->face);
    std::sort(around.begin(), around.end());
    return {around.begin(), std::unique(around.begin(), around.end())};
}

/// Appends the ends of the segment along which the plane through the origin cuts a triangle; what it only touches at a
/// corner, and a triangle that lies in it, have none.
void appendCut(const Vector (&corners)[3], const Vector& planeNormal, zn::vector<Vector>& ends)
{
    double heights[3], highest = 0;
    for (int i = 0; i < 3; ++i) {
        heights[i] = dot(planeNormal, corners[i]);
        highest = std::max(highest, std::fabs(heights[i]));
    }
    for (double& height : heights)
        if (std::fabs(height) < inPlane * highest) height = 0;
    Vector found[3];
    int numFound = 0;
    for (int i = 0; i < 3; ++i) {
        const double from = heights[i], to = heights[(i + 1) % 3];
        if (from == 0)
            found[numFound++] = corners[i];
        else if (from < 0 ? to > 0 : to < 0)
            found[numFound++] = corners[i] + (corners[(i + 1) % 3] - corners[i]) * (from / (from - to));
    }
    if (numFound != 2) return;
    ends.append(found[0]);
    ends.append(found[1]);
}

/// Where the plane across the path cuts the surface around a place, as seen from there: in order along the surface,
/// each point once.
zn::vector<Vector> cutAcross(const FramedPlace& place)
{
    const Vector planeNormal = cross(place.point.direction, place.point.normal);
    zn::vector<Vector> points{Vector()};
    for (const TopoMeshFace face : withNeighbours(place.faces)) {
        const TopoMeshEdge edge = face->edge;
        appendCut({edge->origin->point - place.point.position, endOf(edge)->point - place.point.position,
                   edge->prev->origin->point - place.point.position},
                  planeNormal, points);
    }
    std::stable_sort(points.begin(), points.end(), [&](const Vector& a, const Vector& b) {
        return dot(a, place.acrossPath) < dot(b, place.acrossPath);
    });
    double reach = 0;
    for (const Vector& point : points) reach = std::max(reach, point.length());
    const auto isSame = [&](const Vector& a, const Vector& b) { return equivalent(a, b, sameAs * reach); };
    return {points.begin(), std::unique(points.begin(), points.end(), isSame)};
}

} // namespace

/// The first difference of three points of the cut is twice the step from the first to the middle one, d1; the second
/// one is taken for steps of two lengths, d2. Their |d1 x d2| / |d1|^3 is then what stands here.
double curvatureAcross(const FramedPlace& place)
{
    const zn::vector<Vector> points = cutAcross(place);
    if (points.size() < 3) return 0;
    const Vector step = points[points.size() / 2] - points.front();
    const Vector nextStep = points.back() - points[points.size() / 2];
    const double length = step.length(), nextLength = nextStep.length();
    const double divisor = length * nextLength * (length + nextLength);
    return divisor > 0 ? 2 * cross(step, nextStep).length() / divisor : 0;
}

} // namespace znGeom::internal
