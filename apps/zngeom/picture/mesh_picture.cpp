#include "apps/zngeom/picture/mesh_picture.h"

#include <algorithm>
#include <optional>

#include "apps/zngeom/picture/close_up.h"
#include "apps/zngeom/picture/legend.h"
#include "apps/zngeom/picture/lettering.h"
#include "apps/zngeom/picture/painter.h"
#include "apps/zngeom/picture/panels.h"
#include "apps/zngeom/picture/viewpoint.h"

namespace tool {

namespace {

constexpr int samplesPerPixel = 3;
constexpr Colour ofWhole{225, 228, 232}, ofCloseUp{30, 110, 200};

/// What can't be shown is told alone.
LegendEntry entryOf(const Marking& marking, const std::string& text)
{
    const bool isShown = !marking.triangles.empty() || !marking.lines.empty() || !marking.points.empty();
    return {isShown ? &marking : nullptr, text};
}

std::vector<LegendEntry> entriesOf(const Scene& scene)
{
    std::vector<LegendEntry> entries;
    for (const Marking& marking : scene.markings)
        entries.push_back(entryOf(marking, marking.name + ' ' + std::to_string(marking.count)));
    if (!scene.remark.empty()) entries.push_back({nullptr, scene.remark});
    return entries;
}

/// Each kind once, with both counts.
std::vector<LegendEntry> entriesOf(const Scene& before, const Scene& after)
{
    const auto find = [](const Scene& scene, const std::string& name) -> const Marking* {
        for (const Marking& marking : scene.markings)
            if (marking.name == name) return &marking;
        return nullptr;
    };
    const auto text = [&](const std::string& name) {
        const Marking *first = find(before, name), *second = find(after, name);
        return name + ' ' + std::to_string(first ? first->count : 0) + ", then " +
               std::to_string(second ? second->count : 0);
    };
    std::vector<LegendEntry> entries;
    for (const Marking& marking : before.markings) entries.push_back(entryOf(marking, text(marking.name)));
    for (const Marking& marking : after.markings)
        if (!find(before, marking.name)) entries.push_back(entryOf(marking, text(marking.name)));
    if (entries.empty()) entries.push_back({nullptr, before.remark});
    return entries;
}

/// A white picture with a legend at its foot, and panels above.
class Sheet
{
public:
    Sheet(const std::vector<LegendEntry>& entries, const PictureSize& size)
        : m_canvas(size.width, size.height, samplesPerPixel)
    {
        const int legend = std::min(legendHeight(entries, size.width), size.height / 2); // the rest is cut off
        m_whole = {panelGap, panelGap, size.width - panelGap, size.height - legend};
        paintLegend(m_canvas, entries, {0, size.height - legend, size.width, size.height});
    }

    const Canvas& canvas() const { return m_canvas; }
    const Frame& whole() const { return m_whole; }

    void clear() { m_canvas.fillFrame(m_whole, white); }

    void paint(const Painter& painter, const View& view, const Frame& frame, const Colour& border = ofWhole)
    {
        painter.paint(m_canvas, view, frame);
        outlinePanel(m_canvas, frame, border);
    }

    void paintPlace(const CloseUp& closeUp, const Frame& frame)
    {
        m_canvas.clipTo(frame);
        outline(m_canvas, closeUp.corner, closeUp.opposite, 2, ofCloseUp);
    }

    void paintTitle(const std::string& title, const Frame& frame)
    {
        m_canvas.clipTo(frame);
        drawText(m_canvas, frame.left + 2 * panelGap, frame.top + 2 * panelGap, title, ink);
    }

private:
    Canvas m_canvas;
    Frame m_whole;
};

/// Moved, if need be, so that nothing of it is cut off.
CloseUp within(CloseUp closeUp, const Frame& frame)
{
    const auto move = [](double& low, double& high, double least, double most) {
        const double by = std::max(least - low, 0.0) + std::min(most - high, 0.0);
        low += by, high += by;
    };
    move(closeUp.corner.x, closeUp.opposite.x, frame.left, frame.right);
    move(closeUp.corner.y, closeUp.opposite.y, frame.top, frame.bottom);
    return closeUp;
}

View closer(View view, const CloseUp& closeUp, const Frame& frame)
{
    view.zoom(closeUp.corner, closeUp.opposite, frame);
    return view;
}

} // namespace

Image drawMesh(const Scene& scene, const PictureSize& size)
{
    Sheet sheet(entriesOf(scene), size);
    const Painter painter(scene);
    std::vector<View> views = chooseViews(scene);
    // Whether a close-up is worth while is seen in the picture that leaves room for it.
    std::vector<Frame> frames = divideByWeight(sheet.whole(), views.size() + 1);
    fitToFrame(views[0], *scene.mesh, frames[0]);
    sheet.paint(painter, views[0], frames[0]);
    std::optional<CloseUp> closeUp = findCloseUp(scene, sheet.canvas(), views[0], frames.back());
    if (closeUp) {
        closeUp = within(*closeUp, frames[0]);
        sheet.paintPlace(*closeUp, frames[0]);
        sheet.paint(painter, closer(views[0], *closeUp, frames.back()), frames.back(), ofCloseUp);
    } else {
        sheet.clear();
        frames = divideByWeight(sheet.whole(), views.size());
    }
    for (std::size_t i = closeUp ? 1 : 0; i < views.size(); ++i) {
        fitToFrame(views[i], *scene.mesh, frames[i]);
        sheet.paint(painter, views[i], frames[i]);
    }
    return sheet.canvas().image();
}

Image drawChange(const Scene& before, const Scene& after, const PictureSize& size)
{
    Sheet sheet(entriesOf(before, after), size);
    const Painter painters[] = {Painter(before), Painter(after)};
    const char* const titles[] = {"before", "after"};
    View view = chooseViews(before).front();
    std::vector<Frame> frames = divideInPairs(sheet.whole(), 4);
    fitToFrame(view, *before.mesh, frames[0]);
    sheet.paint(painters[0], view, frames[0]);
    std::optional<CloseUp> closeUp = findCloseUp(before, sheet.canvas(), view, frames[2]);
    if (closeUp) {
        closeUp = within(*closeUp, frames[0]);
    } else {
        sheet.clear();
        frames = divideInPairs(sheet.whole(), 2);
    }
    for (std::size_t i = 0; i < 2; ++i) {
        fitToFrame(view, *before.mesh, frames[i]);
        if (i > 0 || !closeUp) sheet.paint(painters[i], view, frames[i]);
        sheet.paintTitle(titles[i], frames[i]);
        if (!closeUp) continue;
        // The two are of the same size.
        const double moved = frames[i].left - frames[0].left;
        CloseUp place = *closeUp;
        place.corner.x += moved, place.opposite.x += moved;
        sheet.paintPlace(place, frames[i]);
        sheet.paint(painters[i], closer(view, place, frames[i + 2]), frames[i + 2], ofCloseUp);
    }
    return sheet.canvas().image();
}

} // namespace tool
