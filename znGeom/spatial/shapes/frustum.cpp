#include "znGeom/spatial/shapes/frustum.h"

#include <algorithm>

namespace znGeom {

using namespace znLinear;

namespace {

Point capMiddle(const Point* cap) { return combine(combine(cap[0], cap[2]), combine(cap[1], cap[3])); }

/// The plane of a face, with its normal pointing away from `inside`; `fallback` is the normal of a face without area.
Plane facePlane(const Point& a, const Point& b, const Point& c, const Point& d, const Point& inside,
                const Vector& fallback)
{
    const Point middle = combine(combine(a, c), combine(b, d));
    Normal normal(cross(c - a, d - b));
    if (!normal.valid) normal = Normal(fallback);
    return {middle, dot(normal, inside - middle) > 0 ? -normal : normal};
}

} // namespace

Frustum::Frustum(const Point (&corners_)[8], const Plane (&planes_)[6])
{
    std::copy_n(corners_, 8, corners);
    std::copy_n(planes_, 6, planes);
}

Frustum::Frustum(const Point (&corners_)[8])
{
    std::copy_n(corners_, 8, corners);
    const Vector view = getVector();
    const Point inside = combine(capMiddle(corners), capMiddle(corners + 4));
    const auto face = [&](int a, int b, int c, int d, const Vector& fallback) {
        return facePlane(corners[a], corners[b], corners[c], corners[d], inside, fallback);
    };
    planes[0] = face(0, 1, 2, 3, -view);
    planes[1] = face(4, 5, 6, 7, view);
    for (int i = 0; i < 4; ++i) {
        const int next = (i + 1) % 4;
        planes[2 + i] = face(i, next, next + 4, i + 4, Vector());
    }
}

Vector Frustum::getVector() const { return capMiddle(corners + 4) - capMiddle(corners); }
Line Frustum::getRay() const { return {capMiddle(corners), getVector()}; }

} // namespace znGeom
