#include "apps/zngeom/picture/legend.h"

#include "apps/zngeom/picture/lettering.h"
#include "apps/zngeom/picture/painter.h"

namespace tool {

namespace {

constexpr int lineHeight = 30, sampleWidth = 22, sampleHeight = 16, space = 10, distance = 34, margin = 14;

/// Calls `visit(marking, left, top)` with the place of each entry relative to the legend; returns the number of lines.
template <typename Visit>
int layOut(const Scene& scene, int width, const Visit& visit)
{
    int left = margin, line = 0;
    for (const Marking& marking : scene.markings) {
        const int needed = sampleWidth + space + letterWidth * static_cast<int>(marking.label.size());
        if (left > margin && left + needed > width - margin) left = margin, ++line;
        visit(marking, left, line * lineHeight + space);
        left += needed + distance;
    }
    return line + 1;
}

} // namespace

int legendHeight(const Scene& scene, int width)
{
    return layOut(scene, width, [](const Marking&, int, int) {}) * lineHeight + space;
}

void paintLegend(Canvas& canvas, const Scene& scene, const Frame& frame)
{
    canvas.clipTo(frame);
    layOut(scene, frame.width(), [&](const Marking& marking, int left, int top) {
        const int x = frame.left + left, y = frame.top + top;
        paintSample(canvas, {x, y, x + sampleWidth, y + sampleHeight}, marking);
        drawText(canvas, x + sampleWidth + space, y, marking.label, ink);
    });
}

} // namespace tool
