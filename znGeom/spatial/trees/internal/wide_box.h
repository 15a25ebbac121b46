/// A box that is compared on all axes at once.
#pragma once

#include "znGeom/foundation/linear/bounding_box.h"
#include "znGeom/spatial/trees/internal/float4.h"

namespace znGeom::internal {

/// A box in two registers; what their fourth numbers are does not matter.
struct WideBox
{
    Float4 low, high;

    static WideBox of(const BoundingBox& box)
    {
        return {Float4{box.minX, box.minY, box.minZ, 0}, Float4{box.maxX, box.maxY, box.maxZ, 0}};
    }
    BoundingBox narrow() const
    {
        BoundingBox box;
        box.minX = low[0], box.minY = low[1], box.minZ = low[2];
        box.maxX = high[0], box.maxY = high[1], box.maxZ = high[2];
        return box;
    }

    /// Like the functions of `BoundingBox` of the same names.
    bool isValid() const { return placesLessOrEqual(low, high) == 7; }
    bool intersects(const WideBox& box) const { return places((low <= box.high) & (box.low <= high)) == 7; }
    bool contains(const WideBox& box) const { return places((low <= box.low) & (box.high <= high)) == 7; }
    bool contains(Float4 point) const { return places((low <= point) & (point <= high)) == 7; }
    /// Without touching a face, beyond which there may be another cell.
    bool containsStrictly(const WideBox& box) const { return places((low < box.low) & (box.high < high)) == 7; }
    void extend(Float4 point)
    {
        low = lesser(point, low);
        high = greater(point, high);
    }
};

} // namespace znGeom::internal
