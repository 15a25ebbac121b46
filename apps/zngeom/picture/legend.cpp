#include "apps/zngeom/picture/legend.h"

#include "apps/zngeom/picture/lettering.h"
#include "apps/zngeom/picture/painter.h"

namespace tool {

namespace {

constexpr int lineHeight = 30, sampleWidth = 22, sampleHeight = 16, space = 10, distance = 34, margin = 14;

/// Calls `visit(entry, left, top)` with the place of each entry relative to the legend; returns the number of lines.
template <typename Visit>
int layOut(const std::vector<LegendEntry>& entries, int width, const Visit& visit)
{
    int left = margin, line = 0;
    for (const LegendEntry& entry : entries) {
        const int needed =
            (entry.marking ? sampleWidth + space : 0) + letterWidth * static_cast<int>(entry.text.size());
        if (left > margin && left + needed > width - margin) left = margin, ++line;
        visit(entry, left, line * lineHeight + space);
        left += needed + distance;
    }
    return line + 1;
}

} // namespace

int legendHeight(const std::vector<LegendEntry>& entries, int width)
{
    return layOut(entries, width, [](const LegendEntry&, int, int) {}) * lineHeight + space;
}

void paintLegend(Canvas& canvas, const std::vector<LegendEntry>& entries, const Frame& frame)
{
    canvas.clipTo(frame);
    layOut(entries, frame.width(), [&](const LegendEntry& entry, int left, int top) {
        int x = frame.left + left;
        const int y = frame.top + top;
        if (entry.marking) {
            paintSample(canvas, {x, y, x + sampleWidth, y + sampleHeight}, *entry.marking);
            x += sampleWidth + space;
        }
        drawText(canvas, x, y, entry.text, ink);
    });
}

} // namespace tool
