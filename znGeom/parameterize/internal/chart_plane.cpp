#include "znGeom/parameterize/internal/chart_plane.h"

#include <cmath>

namespace znGeom::internal {

namespace {

using znLinear::Normal;
using znLinear::Point;
using znLinear::Vector;

Point placeOf(const CompactMesh& mesh, int vertex) { return mesh.getVertices()[vertex].asPoint(); }

Vector chordOf(const CompactMesh& mesh, const ChartPins& pins)
{
    return placeOf(mesh, pins.low) - placeOf(mesh, pins.high);
}

/// The ends of a loop along each axis, where they are reached first.
struct Extremes
{
    int low[3], high[3];
    Vector size;

    Extremes(const CompactMesh& mesh, const zn::vector<int>& loop)
    {
        for (int axis = 0; axis < 3; ++axis) {
            const auto at = [&](int vertex) { return placeOf(mesh, vertex)[axis]; };
            low[axis] = high[axis] = loop[0];
            for (const int vertex : loop) {
                if (at(vertex) < at(low[axis])) low[axis] = vertex;
                if (at(vertex) > at(high[axis])) high[axis] = vertex;
            }
            size[axis] = at(high[axis]) - at(low[axis]);
        }
    }

    int longestAxis() const
    {
        if (size.dx >= size.dy && size.dx >= size.dz) return 0;
        return size.dy >= size.dz ? 1 : 2;
    }
};

/// The turns of a loop, added up; where it is convex this is against the surface that it borders. What goes and comes
/// back has none.
Vector normalSum(const CompactMesh& mesh, const zn::vector<int>& loop)
{
    Vector sum;
    for (int i = 0; i < loop.size(); ++i) {
        const Point previous = placeOf(mesh, loop[i == 0 ? loop.size() - 1 : i - 1]);
        const Point current = placeOf(mesh, loop[i]);
        const Point next = placeOf(mesh, loop[i + 1 == loop.size() ? 0 : i + 1]);
        sum += cross(next - current, current - previous);
    }
    return sum;
}

} // namespace

int findOuterLoop(const CompactMesh& mesh, const zn::vector<zn::vector<int>>& loops, ChartPins& pins)
{
    double largest = 0;
    int outer = -1;
    for (int i = 0; i < loops.size(); ++i) {
        const Extremes extremes(mesh, loops[i]);
        const int axis = extremes.longestAxis();
        if (!(extremes.size[axis] > largest)) continue;
        largest = extremes.size[axis];
        pins = {extremes.low[axis], extremes.high[axis]};
        outer = i;
    }
    return outer;
}

znLinear::AffineMatrix chartRotation(const CompactMesh& mesh, const zn::vector<int>& loop, const ChartPins& pins,
                                     znOS::AppOutput& output)
{
    const Normal chord(chordOf(mesh, pins));
    Normal normal;
    if (loop.size() >= 3) normal = Normal(normalSum(mesh, loop));
    const bool isFound = normal.isValid();
    if (!isFound) {
        output.info("Parameterization: failed to calculateD planeNormal.  Choosing Z-axis instead.\n");
        normal = Normal::z; // which may be parallel to the chord, as any other
    }
    const auto isAlong = [&normal](const Normal& line) { return isParallel(line, normal, znLinear::parallelTol); };
    if (isAlong(chord) || isAlong(-chord)) {
        output.info("Parameterization: calculated planeNormal is (anti-)parallel to the vector between the fixed "
                    "vertices of the 3D-boundary.  Choosing a random orthogonal vector instead.\n");
        normal = Normal(chord.asVector().orthogonalVector());
    } else {
        if (isFound) output.info("Parameterization: calculated planeNormal is good.  Using orthogonal component.\n");
        normal = Normal(normal.asVector() - project(normal.asVector(), chord));
    }
    znLinear::AffineMatrix rotation;
    rotation.rotate(normal, Normal::z);
    return rotation;
}

double chartScale(const CompactMesh& mesh, const ChartPins& pins)
{
    constexpr int bits = 24;
    return std::ldexp(1.0, bits - std::ilogb(chordOf(mesh, pins).length()));
}

} // namespace znGeom::internal
