/// `znGeom::BoundingBox`: a box with sides along the axes, in mesh precision.
#pragma once

#include <algorithm>
#include <limits>
#include <type_traits>

#include "znGeom/foundation/linear/affine_matrix.h"

namespace znGeom {

/// Six floats, inclusive on every side. The invalid box has its minima at the largest float and its maxima at the most
/// negative one: it contains nothing, and extended by a point it is that point. A not-a-number never extends a box.
struct BoundingBox
{
    float minX, minY, minZ;
    float maxX, maxY, maxZ;

    static constexpr float largest = std::numeric_limits<float>::max();

    /// The invalid box.
    constexpr BoundingBox() { setInvalid(); }
    /// The box of the one point at three numbers.
    explicit constexpr BoundingBox(const float* point) { setPoint(point[0], point[1], point[2]); }
    /// The same, narrowed.
    explicit constexpr BoundingBox(const double* point)
    {
        setPoint(znLinear::narrow(point[0]), znLinear::narrow(point[1]), znLinear::narrow(point[2]));
    }
    /// The cube of edge 2 * `halfSize` about a point.
    constexpr BoundingBox(const float* centre, float halfSize) : BoundingBox(centre) { extend(halfSize); }

    constexpr void zero() { setPoint(0, 0, 0); }
    constexpr void setInvalid()
    {
        minX = minY = minZ = largest;
        maxX = maxY = maxZ = -largest;
    }
    /// Whether there is anything in the box.
    constexpr bool isValid() const { return minX <= maxX && minY <= maxY && minZ <= maxZ; }

    constexpr void extend(const znLinear::PointFlt& p) { extendBy(p.x, p.y, p.z); }
    /// By the point at three numbers.
    constexpr void extend(const float* p) { extendBy(p[0], p[1], p[2]); }
    constexpr void extend(const BoundingBox& box)
    {
        minX = std::min(minX, box.minX), minY = std::min(minY, box.minY), minZ = std::min(minZ, box.minZ);
        maxX = std::max(maxX, box.maxX), maxY = std::max(maxY, box.maxY), maxZ = std::max(maxZ, box.maxZ);
    }
    /// Moves every face outward by `d`.
    constexpr void extend(float d)
    {
        minX -= d, minY -= d, minZ -= d;
        maxX += d, maxY += d, maxZ += d;
    }
    /// Grows about its centre until all sides are as long as the longest. An invalid box stays as it is.
    void extendToCube();

    /// Becomes the box of its eight transformed corners. An invalid box stays invalid.
    void transform(const znLinear::AffineMatrix& matrix);
    void transform(const znLinear::AffineMatrixFlt& matrix);

    constexpr znLinear::PointFlt minPt() const { return {minX, minY, minZ}; }
    constexpr znLinear::PointFlt maxPt() const { return {maxX, maxY, maxZ}; }
    constexpr znLinear::PointFlt center() const
    {
        return {(minX + maxX) * 0.5f, (minY + maxY) * 0.5f, (minZ + maxZ) * 0.5f};
    }
    constexpr znLinear::VectorFlt halfDiagonal() const
    {
        return {(maxX - minX) * 0.5f, (maxY - minY) * 0.5f, (maxZ - minZ) * 0.5f};
    }
    float diagonalLength() const { return (maxPt() - minPt()).length(); }
    /// Corner i of 8 into three floats: bit 0 of i takes the maximum in x, bit 1 in y, bit 2 in z.
    constexpr void getPoint(int i, float* out) const
    {
        out[0] = (i & 1) ? maxX : minX;
        out[1] = (i & 2) ? maxY : minY;
        out[2] = (i & 4) ? maxZ : minZ;
    }

    /// The argument lies wholly inside, faces included.
    constexpr bool contains(const BoundingBox& box) const
    {
        return minX <= box.minX && minY <= box.minY && minZ <= box.minZ && box.maxX <= maxX && box.maxY <= maxY &&
               box.maxZ <= maxZ;
    }
    /// The boxes overlap or touch.
    constexpr bool intersects(const BoundingBox& box) const
    {
        return intersects2D(box) && minZ <= box.maxZ && box.minZ <= maxZ;
    }
    /// The same in x and y alone.
    constexpr bool intersects2D(const BoundingBox& box) const
    {
        return minX <= box.maxX && box.minX <= maxX && minY <= box.maxY && box.minY <= maxY;
    }

    /// The squared distance to the nearest point of the box; 0 inside. Huge, yet finite, for the invalid box.
    constexpr double distance2(const znLinear::PointFlt& p) const
    {
        const double dx = outside(p.x, minX, maxX), dy = outside(p.y, minY, maxY), dz = outside(p.z, minZ, maxZ);
        return dx * dx + dy * dy + dz * dz;
    }
    double distance(const znLinear::PointFlt& p) const { return std::sqrt(distance2(p)); }

    friend constexpr bool operator==(const BoundingBox&, const BoundingBox&) = default;

private:
    constexpr void setPoint(float x, float y, float z)
    {
        minX = maxX = x;
        minY = maxY = y;
        minZ = maxZ = z;
    }
    constexpr void extendBy(float x, float y, float z)
    {
        minX = std::min(minX, x), minY = std::min(minY, y), minZ = std::min(minZ, z);
        maxX = std::max(maxX, x), maxY = std::max(maxY, y), maxZ = std::max(maxZ, z);
    }
    static constexpr double outside(float value, float low, float high)
    {
        const double at = static_cast<double>(value);
        return std::max(std::max(static_cast<double>(low) - at, at - static_cast<double>(high)), 0.0);
    }
};
static_assert(sizeof(BoundingBox) == 6 * sizeof(float) && std::is_trivially_copyable_v<BoundingBox>);

/// The six values agree within the tolerance, strictly.
constexpr bool equivalent(const BoundingBox& a, const BoundingBox& b, float tol)
{
    return znLinear::equivalent(a.minPt(), b.minPt(), tol) && znLinear::equivalent(a.maxPt(), b.maxPt(), tol);
}

} // namespace znGeom
