#include "apps/zngeom/picture/panels.h"

#include <limits>

namespace tool {

namespace {

/// One of several equal parts of a range, with gaps between them.
std::pair<int, int> partOf(int begin, int end, std::size_t part, std::size_t count)
{
    const int index = static_cast<int>(part), number = static_cast<int>(count);
    const int size = (end - begin - (number - 1) * panelGap) / number;
    const int first = begin + index * (size + panelGap);
    return {first, index + 1 == number ? end : first + size};
}

} // namespace

std::vector<Frame> divideByWeight(const Frame& whole, std::size_t count)
{
    constexpr double shareOfFirst = 0.6;
    if (count == 1) return {whole};
    const int middle = whole.left + static_cast<int>(whole.width() * shareOfFirst);
    std::vector<Frame> frames{{whole.left, whole.top, middle, whole.bottom}};
    for (std::size_t i = 0; i + 1 < count; ++i) {
        const auto [top, bottom] = partOf(whole.top, whole.bottom, i, count - 1);
        frames.push_back({middle + panelGap, top, whole.right, bottom});
    }
    return frames;
}

std::vector<Frame> divideInPairs(const Frame& whole, std::size_t count)
{
    std::vector<Frame> frames;
    for (std::size_t i = 0; i < count; ++i) {
        const auto [left, right] = partOf(whole.left, whole.right, i % 2, 2);
        const auto [top, bottom] = partOf(whole.top, whole.bottom, i / 2, (count + 1) / 2);
        frames.push_back({left, top, right, bottom});
    }
    return frames;
}

void outlinePanel(Canvas& canvas, const Frame& frame, const Colour& colour)
{
    constexpr double width = 3; // half of it is cut off
    canvas.clipTo(frame);
    outline(canvas, {double(frame.left), double(frame.top), 0}, {double(frame.right), double(frame.bottom), 0}, width,
            colour);
}

void outline(Canvas& canvas, const Spot& corner, const Spot& opposite, double width, const Colour& colour)
{
    constexpr double foremost = -double(std::numeric_limits<float>::max());
    const Spot corners[] = {{corner.x, corner.y, foremost},
                            {opposite.x, corner.y, foremost},
                            {opposite.x, opposite.y, foremost},
                            {corner.x, opposite.y, foremost}};
    for (int i = 0; i < 4; ++i) canvas.drawLine(corners[i], corners[(i + 1) % 4], width, colour);
}

} // namespace tool
