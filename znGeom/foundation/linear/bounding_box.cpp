#include "znGeom/foundation/linear/bounding_box.h"

namespace znGeom {

using namespace znLinear;

namespace {

template <typename T>
BoundingBox transformed(const BoundingBox& box, const AffineMatrixT<T>& matrix)
{
    BoundingBox result;
    if (!box.isValid()) return result;
    for (int i = 0; i < 8; ++i) {
        float corner[3];
        box.getPoint(i, corner);
        result.extend(PointFlt(PointT<T>(PointFlt(corner)) * matrix));
    }
    return result;
}

/// Widens a range to `extent` about its middle; never narrows it.
void widen(float& low, float& high, float extent)
{
    const float middle = (low + high) * 0.5f, half = extent * 0.5f;
    low = std::min(low, middle - half);
    high = std::max(high, middle + half);
}

} // namespace

void BoundingBox::extendToCube()
{
    if (!isValid()) return;
    const float extent = std::max({maxX - minX, maxY - minY, maxZ - minZ});
    widen(minX, maxX, extent);
    widen(minY, maxY, extent);
    widen(minZ, maxZ, extent);
}

void BoundingBox::transform(const AffineMatrix& matrix) { *this = transformed(*this, matrix); }
void BoundingBox::transform(const AffineMatrixFlt& matrix) { *this = transformed(*this, matrix); }

} // namespace znGeom
