/// Bounds in `float` on the distance of a point from a triangle, as plain functions that compilers can vectorise.
#pragma once

#if defined(__GNUC__)
#define ZNGEOM_INLINE inline __attribute__((always_inline))
#else
#define ZNGEOM_INLINE inline
#endif

namespace znGeom::internal {

ZNGEOM_INLINE float lesser(float a, float b) { return a < b ? a : b; }
ZNGEOM_INLINE float greater(float a, float b) { return a > b ? a : b; }
ZNGEOM_INLINE float clamped(float t) { return lesser(greater(t, 0.0f), 1.0f); }

/// How far a number lies outside a range.
ZNGEOM_INLINE float outside(float value, float low, float high)
{
    return greater(greater(low - value, value - high), 0.0f);
}

/// The corners of a triangle as seen from the point.
struct SeenTriangle
{
    float a[3], b[3], c[3];
};

/// The products of a triangle's sides from its first corner, and of these with the vector from there to the point: all
/// that is needed to find the nearest place.
struct SideProducts
{
    float bb = 0, bc = 0, cc = 0; ///< of the sides to the second and the third corner
    float pb = 0, pc = 0;         ///< of these with the vector to the point
};

/// Approximately the nearest place, a + v (b - a) + w (c - a): the foot of the perpendicular when it lies within the
/// triangle, otherwise the best place of the three sides. Without branches; after Ericson, "Real-Time Collision
/// Detection" (2005).
ZNGEOM_INLINE void findPlace(const SideProducts& s, float& v, float& w)
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

/// Squared distances between which the triangle's lies, apart from rounding.
///
/// The lower one is that of a plane through approximately the nearest place, at right angles to the direction to it, in
/// front of which no corner lies; the upper one is that of the place. How well the place was found decides how sharp
/// they are, not whether they hold. The lower one is 0 where nothing is known: where the point lies on the triangle, or
/// a product is not a number. The upper one requires finite corners.
ZNGEOM_INLINE void boundTriangle(const SeenTriangle& seen, float& lower2, float& upper2)
{
    /// Squares below this have too few digits.
    constexpr float leastSquare = 1e-30f, mostSquare = 1e38f;
    SideProducts s;
    for (int axis = 0; axis < 3; ++axis) {
        const float toB = seen.b[axis] - seen.a[axis], toC = seen.c[axis] - seen.a[axis];
        s.bb += toB * toB, s.bc += toB * toC, s.cc += toC * toC;
        s.pb -= seen.a[axis] * toB, s.pc -= seen.a[axis] * toC;
    }
    float v, w;
    findPlace(s, v, w);
    float length2 = 0, alongA = 0, alongB = 0, alongC = 0;
    for (int axis = 0; axis < 3; ++axis) {
        const float way = seen.a[axis] + v * (seen.b[axis] - seen.a[axis]) + w * (seen.c[axis] - seen.a[axis]);
        length2 += way * way;
        alongA += way * seen.a[axis], alongB += way * seen.b[axis], alongC += way * seen.c[axis];
    }
    const float before = greater(lesser(lesser(alongA, alongB), alongC), 0.0f);
    const float bound2 = before * (before / length2);
    const bool isKnown = (length2 >= leastSquare) & (bound2 <= mostSquare);
    lower2 = isKnown ? bound2 : 0.0f;
    upper2 = length2;
}

} // namespace znGeom::internal
