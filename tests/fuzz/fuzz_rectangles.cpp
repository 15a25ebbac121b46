// Any bytes as a table of rectangles, which are then laid out in a square.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/planar/rectangle_layout.h"
#include "apps/zngeom/planar/rectangle_table.h"
#include "tests/fuzz/parse_both_ways.h"

namespace {

using znLinear::Range2d;

constexpr double rounding = 1e-8;

bool isInSquare(const Range2d& place)
{
    return std::min(place.x.min, place.y.min) >= -rounding && std::max(place.x.max, place.y.max) <= 1 + rounding;
}

bool areApart(const Range2d& a, const Range2d& b)
{
    const double x = std::max(a.x.min - b.x.max, b.x.min - a.x.max), y = std::max(a.y.min - b.y.max, b.y.min - a.y.max);
    return std::max(x, y) >= -rounding;
}

void layOut(const tool::RectangleTable& table, int iterations, double margin)
try {
    znUtil::Progress progress;
    const tool::RectangleLayout layout = tool::layOut(table.sizes, iterations, margin, progress);
    znFuzz::require(layout.places.size() == table.sizes.size());
    for (std::size_t i = 0; i < layout.places.size(); ++i) {
        znFuzz::require(isInSquare(layout.places[i]));
        for (std::size_t k = 0; k < i; ++k) znFuzz::require(areApart(layout.places[i], layout.places[k]));
    }
} catch (const tool::Failure&) {
    znFuzz::require(margin > 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
try {
    znUtil::Progress progress;
    const tool::RectangleTable table = tool::parseRectangles({reinterpret_cast<const char*>(data), size}, progress);
    znFuzz::require(table.sizes.size() == table.names.size() && table.sizes.size() <= size / 3 + 1);
    for (const znLinear::Point2& item : table.sizes)
        znFuzz::require(std::isfinite(item.x) && std::isfinite(item.y) && std::min(item.x, item.y) >= 0);
    if (table.sizes.size() > 100) return 0;
    layOut(table, 1 + data[0] % 16, 0);
    layOut(table, 4, 0.001 * data[size - 1]);
    return 0;
} catch (const tool::Failure&) {
    return 0;
}
