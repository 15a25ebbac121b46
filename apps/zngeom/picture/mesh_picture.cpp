#include "apps/zngeom/picture/mesh_picture.h"

#include <limits>

#include "apps/zngeom/picture/close_up.h"
#include "apps/zngeom/picture/legend.h"
#include "apps/zngeom/picture/painter.h"
#include "apps/zngeom/picture/viewpoint.h"

namespace tool {

namespace {

constexpr int samplesPerPixel = 3, gap = 8;
constexpr double shareOfFirst = 0.6;

/// The first picture on the left, the others below one another on its right.
std::vector<Frame> divide(const Frame& whole, std::size_t count)
{
    if (count == 1) return {whole};
    const int middle = whole.left + static_cast<int>(whole.width() * shareOfFirst);
    std::vector<Frame> frames{{whole.left, whole.top, middle - gap / 2, whole.bottom}};
    const int rest = static_cast<int>(count) - 1;
    for (int i = 0; i < rest; ++i)
        frames.push_back({middle + gap / 2, whole.top + i * whole.height() / rest + (i > 0 ? gap / 2 : 0), whole.right,
                          whole.top + (i + 1) * whole.height() / rest - (i + 1 < rest ? gap / 2 : 0)});
    return frames;
}

void outline(Canvas& canvas, const Spot& corner, const Spot& opposite, double width, const Colour& colour)
{
    constexpr double foremost = -std::numeric_limits<float>::max();
    const Spot corners[] = {{corner.x, corner.y, foremost},
                            {opposite.x, corner.y, foremost},
                            {opposite.x, opposite.y, foremost},
                            {corner.x, opposite.y, foremost}};
    for (int i = 0; i < 4; ++i) canvas.drawLine(corners[i], corners[(i + 1) % 4], width, colour);
}

void outline(Canvas& canvas, const Frame& frame, const Colour& colour)
{
    canvas.clipTo(frame);
    outline(canvas, {double(frame.left), double(frame.top), 0}, {double(frame.right), double(frame.bottom), 0}, 3,
            colour);
}

class PictureMaker
{
public:
    PictureMaker(const Scene& scene, const PictureSize& size)
        : m_scene(scene), m_painter(scene), m_canvas(size.width, size.height, samplesPerPixel)
    {
        const int legend = legendHeight(scene, size.width);
        m_whole = {gap, gap, size.width - gap, size.height - legend};
        paintLegend(m_canvas, scene, {0, size.height - legend, size.width, size.height});
    }

    Image make()
    {
        std::vector<View> views = chooseViews(m_scene);
        const std::vector<Frame> frames = divide(m_whole, views.size() + 1);
        paintWhole(views[0], frames[0]);
        const std::optional<CloseUp> closeUp = findCloseUp(m_scene, m_canvas, views[0], frames[0], frames.back());
        if (closeUp) {
            if (views.size() > 1) paintWhole(views[1], frames[1]);
            paintCloseUp(*closeUp, views[0], frames[0], frames.back());
        } else {
            m_canvas.fillFrame(m_whole, white);
            const std::vector<Frame> fewer = divide(m_whole, views.size());
            for (std::size_t i = 0; i < views.size(); ++i) paintWhole(views[i], fewer[i]);
        }
        return m_canvas.image();
    }

private:
    void paintWhole(View& view, const Frame& frame)
    {
        fitToFrame(view, *m_scene.mesh, frame);
        m_painter.paint(m_canvas, view, frame);
        outline(m_canvas, frame, {225, 228, 232});
    }

    void paintCloseUp(const CloseUp& closeUp, View view, const Frame& whole, const Frame& frame)
    {
        constexpr Colour ofCloseUp{30, 110, 200};
        m_canvas.clipTo(whole);
        outline(m_canvas, closeUp.corner, closeUp.opposite, 2, ofCloseUp);
        view.zoom(closeUp.corner, closeUp.opposite, frame);
        m_painter.paint(m_canvas, view, frame);
        outline(m_canvas, frame, ofCloseUp);
    }

    const Scene& m_scene;
    Painter m_painter;
    Canvas m_canvas;
    Frame m_whole;
};

} // namespace

Image drawMesh(const Scene& scene, const PictureSize& size) { return PictureMaker(scene, size).make(); }

} // namespace tool
