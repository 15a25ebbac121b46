#include "znGeom/spatial/internal/nearest_triangle.h"

#include <algorithm>

#include "znGeom/foundation/machine/prefetch.h"

namespace znGeom {

namespace {

constexpr int capacity = TriangleBounds::capacity;

/// How many triangles ahead the corners are asked for.
constexpr int cornersAhead = 12;

float lesser(float a, float b) { return a < b ? a : b; }
float greater(float a, float b) { return a > b ? a : b; }
float clamped(float t) { return lesser(greater(t, 0.0f), 1.0f); }

} // namespace

/// The corners of some triangles as seen from the point, coordinate by coordinate, so that the loops over them are
/// straight and the compiler takes several at once.
struct TriangleBounds::Corners
{
    float a[3][capacity], b[3][capacity], c[3][capacity];

    Corners(const TriangleBounds& bounds, const int* triangles, int count)
    {
        for (int i = 0; i < std::min(count, cornersAhead); ++i) znUtil::prefetch(&bounds.m_triangles[triangles[i]]);
        for (int i = 0; i < count; ++i) {
            if (i + cornersAhead < count) znUtil::prefetch(&bounds.m_triangles[triangles[i + cornersAhead]]);
            const MeshTriangle& triangle = bounds.m_triangles[triangles[i]];
            set(a, i, bounds.m_vertices[triangle[0]], bounds.m_point);
            set(b, i, bounds.m_vertices[triangle[1]], bounds.m_point);
            set(c, i, bounds.m_vertices[triangle[2]], bounds.m_point);
        }
    }

private:
    static void set(float (&corners)[3][capacity], int i, const MeshVertex& vertex, const znLinear::PointFlt& point)
    {
        corners[0][i] = vertex.x - point.x;
        corners[1][i] = vertex.y - point.y;
        corners[2][i] = vertex.z - point.z;
    }
};

void TriangleBounds::boundByBoxes(const int* triangles, int count, float* lower2) const
{
    const Corners corners(*this, triangles, count);
    for (int i = 0; i < count; ++i) lower2[i] = 0;
    for (int axis = 0; axis < 3; ++axis) {
        const float *a = corners.a[axis], *b = corners.b[axis], *c = corners.c[axis];
        for (int i = 0; i < count; ++i) {
            const float below = lesser(lesser(a[i], b[i]), c[i]), above = -greater(greater(a[i], b[i]), c[i]);
            const float outside = greater(greater(below, above), 0.0f);
            lower2[i] += outside * outside;
        }
    }
}

float TriangleBounds::nearestCorner2(const int* triangles, int count) const
{
    const Corners corners(*this, triangles, count);
    float least = std::numeric_limits<float>::infinity();
    for (int i = 0; i < count; ++i) {
        const auto length2 = [i](const float(&at)[3][capacity]) {
            return at[0][i] * at[0][i] + at[1][i] * at[1][i] + at[2][i] * at[2][i];
        };
        const float a2 = length2(corners.a), b2 = length2(corners.b), c2 = length2(corners.c);
        // No distance is known to a triangle with a corner that is no number.
        if (a2 + b2 + c2 < std::numeric_limits<float>::infinity()) least = std::min({least, a2, b2, c2});
    }
    return least;
}

namespace {

/// The products of a triangle's sides from its first corner, and of these with the way from there to the point: all
/// that it takes to find the nearest place.
struct SideProducts
{
    float bb, bc, cc; ///< of the sides to the second and the third corner
    float pb, pc;     ///< of these with the way to the point
};

/// About the nearest place, a + v (b - a) + w (c - a): the foot of the perpendicular when it lies within the triangle,
/// otherwise the best place of the three sides. Without branches; after Ericson, "Real-Time Collision Detection"
/// (2005).
inline void findPlace(const SideProducts& s, float& v, float& w)
{
    const auto excess = [&s](float atV, float atW) {
        return atV * (atV * s.bb + 2 * (atW * s.bc - s.pb)) + atW * (atW * s.cc - 2 * s.pc);
    };
    const float onB = clamped(s.pb / s.bb), onC = clamped(s.pc / s.cc);
    const float across = clamped((s.pc - s.pb + s.bb - s.bc) / (s.bb - 2 * s.bc + s.cc));
    const float excessB = excess(onB, 0), excessC = excess(0, onC), excessA = excess(1 - across, across);
    const bool cBest = excessC < excessB;
    v = cBest ? 0.0f : onB;
    w = cBest ? onC : 0.0f;
    const bool acrossBest = excessA < (cBest ? excessC : excessB);
    v = acrossBest ? 1 - across : v;
    w = acrossBest ? across : w;

    const float inverse = 1 / (s.bb * s.cc - s.bc * s.bc);
    const float footV = (s.cc * s.pb - s.bc * s.pc) * inverse, footW = (s.bb * s.pc - s.bc * s.pb) * inverse;
    const bool within = (footV >= 0) & (footW >= 0) & (footV + footW <= 1);
    v = within ? footV : v;
    w = within ? footW : w;
}

} // namespace

void TriangleBounds::boundByPlanes(const int* triangles, int count, float* lower2) const
{
    const Corners corners(*this, triangles, count);
    const auto& [a, b, c] = corners;
    for (int i = 0; i < count; ++i) {
        SideProducts s{0, 0, 0, 0, 0};
        for (int axis = 0; axis < 3; ++axis) {
            const float toB = b[axis][i] - a[axis][i], toC = c[axis][i] - a[axis][i];
            s.bb += toB * toB, s.bc += toB * toC, s.cc += toC * toC;
            s.pb -= a[axis][i] * toB, s.pc -= a[axis][i] * toC;
        }
        float v, w;
        findPlace(s, v, w);
        float length2 = 0, alongA = 0, alongB = 0, alongC = 0;
        for (int axis = 0; axis < 3; ++axis) {
            const float way = a[axis][i] + v * (b[axis][i] - a[axis][i]) + w * (c[axis][i] - a[axis][i]);
            length2 += way * way;
            alongA += way * a[axis][i], alongB += way * b[axis][i], alongC += way * c[axis][i];
        }
        const float before = greater(lesser(lesser(alongA, alongB), alongC), 0.0f);
        // Where a corner is no number, a product too large, or the point on the triangle, nothing is known.
        const float bound2 = before * (before / length2);
        const bool isKnown = (bound2 > 0) & (bound2 < std::numeric_limits<float>::infinity());
        lower2[i] = isKnown ? bound2 : 0.0f;
    }
}

int NearestTriangle::sift(const int* triangles, int count, float* lower2, int* kept) const
{
    int siftedTriangles[capacity];
    int numKept = 0;
    for (int i = 0; i < count; ++i) {
        kept[numKept] = i;
        siftedTriangles[numKept] = triangles[i];
        numKept += !isBeyond(lower2[i]);
    }
    if (numKept == 0) return 0;
    m_bounds.boundByPlanes(siftedTriangles, numKept, lower2);
    int numLeft = 0;
    for (int i = 0; i < numKept; ++i) {
        kept[numLeft] = kept[i];
        lower2[numLeft] = lower2[i];
        numLeft += !isBeyond(lower2[i]);
    }
    return numLeft;
}

} // namespace znGeom
