#include "znGeom/analysis/internal/corner_terms.h"

#include <cmath>
#include <numbers>

#include "znGeom/foundation/machine/clones.h"

namespace znGeom::internal {

namespace {

/// What all terms of a triangle are made of.
struct TriangleMeasures
{
    double edges[3][3]; ///< from each corner to the next
    double dots[3];     ///< of the two edges that leave a corner
    double doubleArea;
};

inline TriangleMeasures measuresOf(const TriangleBlock& block, int i)
{
    TriangleMeasures m;
    for (int corner = 0; corner < 3; ++corner)
        for (int axis = 0; axis < 3; ++axis)
            m.edges[corner][axis] =
                double(block.corners[(corner + 1) % 3][axis][i]) - double(block.corners[corner][axis][i]);
    for (int corner = 0; corner < 3; ++corner) {
        const double *const out = m.edges[corner], *const in = m.edges[(corner + 2) % 3];
        m.dots[corner] = -(in[0] * out[0] + in[1] * out[1] + in[2] * out[2]);
    }
    const double *const u = m.edges[0], *const v = m.edges[1];
    const double x = u[1] * v[2] - u[2] * v[1], y = u[2] * v[0] - u[0] * v[2], z = u[0] * v[1] - u[1] * v[0];
    m.doubleArea = std::sqrt(x * x + y * y + z * z);
    return m;
}

/// The part of a triangle that is nearest to each corner; where it is obtuse, half of it belongs to the corner there
/// and a quarter to each of the others.
inline void setAreas(const TriangleMeasures& m, TriangleBlock& block, int i)
{
    const double d0 = m.dots[0], d1 = m.dots[1], d2 = m.dots[2];
    const double scale = 0.125 / m.doubleArea;
    const bool isObtuse = (d0 < 0) | (d1 < 0) | (d2 < 0);
    // The square of an edge is the sum of the dots at its ends; it is weighed with the cotangent of the angle opposite.
    const double part01 = (d0 + d1) * d2, part12 = (d1 + d2) * d0, part20 = (d2 + d0) * d1;
    block.terms[0][Area][i] = isObtuse ? m.doubleArea * (d0 < 0 ? 0.25 : 0.125) : (part01 + part20) * scale;
    block.terms[1][Area][i] = isObtuse ? m.doubleArea * (d1 < 0 ? 0.25 : 0.125) : (part12 + part01) * scale;
    block.terms[2][Area][i] = isObtuse ? m.doubleArea * (d2 < 0 ? 0.25 : 0.125) : (part20 + part12) * scale;
}

/// The angle of (x, y) from the x axis where y is not negative, to about the last bit. Unlike `std::atan2` it has no
/// branches, and gives the same bits everywhere.
inline double angleOf(double x, double y)
{
    const double width = std::fabs(x);
    const double most = y > width ? y : width, least = y > width ? width : y;
    // Above half of 45 degrees, measured from there.
    const bool isSteep = least > 0.41421356237309503 * most;
    const double tangent = (isSteep ? least - most : least) / (isSteep ? least + most : most);
    const double s = tangent * tangent;
    // The best polynomial of its degree for the arctangent where its argument is at most that of half of 45 degrees.
    double sum = -0.019176885636589053;
    sum = sum * s + 0.039231657085083686;
    sum = sum * s - 0.050854496960392584;
    sum = sum * s + 0.05858148904795124;
    sum = sum * s - 0.0666451144646022;
    sum = sum * s + 0.07692183190760651;
    sum = sum * s - 0.09090904578121085;
    sum = sum * s + 0.11111111015256292;
    sum = sum * s - 0.14285714284666542;
    sum = sum * s + 0.1999999999999552;
    sum = sum * s - 0.3333333333333333;
    const double angle = (isSteep ? std::numbers::pi / 4 : 0) + (tangent + tangent * (s * sum));
    const double upright = y > width ? std::numbers::pi / 2 - angle : angle;
    return x < 0 ? std::numbers::pi - upright : upright;
}

inline void setAngles(const TriangleMeasures& m, TriangleBlock& block, int i)
{
    const double first = angleOf(m.dots[0], m.doubleArea), second = angleOf(m.dots[1], m.doubleArea);
    block.terms[0][Angle][i] = first;
    block.terms[1][Angle][i] = second;
    block.terms[2][Angle][i] = std::numbers::pi - (first + second);
}

inline void setEdges(const TriangleMeasures& m, TriangleBlock& block, int i)
{
    const double scale = 1 / m.doubleArea;
    for (int axis = 0; axis < 3; ++axis) {
        const double from0 = m.edges[0][axis] * (m.dots[2] * scale), from1 = m.edges[1][axis] * (m.dots[0] * scale),
                     from2 = m.edges[2][axis] * (m.dots[1] * scale);
        block.terms[0][EdgeX + axis][i] = from2 - from0;
        block.terms[1][EdgeX + axis][i] = from0 - from1;
        block.terms[2][EdgeX + axis][i] = from1 - from2;
    }
}

} // namespace

ZNGEOM_CLONES void compute(Terms<Angle, Area>, TriangleBlock& block)
{
    for (int i = 0; i < TriangleBlock::width; ++i) {
        const TriangleMeasures m = measuresOf(block, i);
        setAreas(m, block, i);
        setAngles(m, block, i);
    }
}

ZNGEOM_CLONES void compute(Terms<Area, EdgeZ>, TriangleBlock& block)
{
    for (int i = 0; i < TriangleBlock::width; ++i) {
        const TriangleMeasures m = measuresOf(block, i);
        setAreas(m, block, i);
        setEdges(m, block, i);
    }
}

ZNGEOM_CLONES void compute(Terms<Angle, EdgeZ>, TriangleBlock& block)
{
    for (int i = 0; i < TriangleBlock::width; ++i) {
        const TriangleMeasures m = measuresOf(block, i);
        setAreas(m, block, i);
        setAngles(m, block, i);
        setEdges(m, block, i);
    }
}

} // namespace znGeom::internal
