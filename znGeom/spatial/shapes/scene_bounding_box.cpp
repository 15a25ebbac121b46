#include "znGeom/spatial/shapes/scene_bounding_box.h"

namespace znGeom {

namespace {

void removeItemRange(float& low, float& high, float itemLow, float itemHigh)
{
    if (low > high || low > itemHigh || itemLow > high) return;
    if (itemLow == low && itemHigh == high) {
        low = BoundingBox::largest;
        high = -BoundingBox::largest;
    } else if (itemLow == low) {
        low = high;
    } else if (itemHigh == high) {
        high = low;
    }
}

} // namespace

void SceneBoundingBox::addItemBox(const BoundingBox& item)
{
    workingBox.extend(item);
    sceneBox.extend(item);
}

void SceneBoundingBox::removeItemBox(const BoundingBox& item)
{
    removeItemRange(workingBox.minX, workingBox.maxX, item.minX, item.maxX);
    removeItemRange(workingBox.minY, workingBox.maxY, item.minY, item.maxY);
    removeItemRange(workingBox.minZ, workingBox.maxZ, item.minZ, item.maxZ);
}

} // namespace znGeom
