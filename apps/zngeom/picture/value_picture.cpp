#include "apps/zngeom/picture/value_picture.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "apps/zngeom/picture/lettering.h"
#include "apps/zngeom/picture/panels.h"
#include "apps/zngeom/picture/projection.h"
#include "apps/zngeom/picture/viewpoint.h"

namespace tool {

namespace {

constexpr int samplesPerPixel = 3, footHeight = 46;

/// A place in a triangle of a picture, with the value there.
struct ValueSpot
{
    Spot spot;
    double value;
};

ValueSpot between(const ValueSpot& a, const ValueSpot& b, double part)
{
    const auto mix = [part](double from, double to) { return from + part * (to - from); };
    return {{mix(a.spot.x, b.spot.x), mix(a.spot.y, b.spot.y), mix(a.spot.depth, b.spot.depth)}, mix(a.value, b.value)};
}

class ValuePainter
{
public:
    ValuePainter(Canvas& canvas, const ValueScale& scale) : m_canvas(canvas), m_scale(scale) {}

    void paint(const SeenTriangle& seen, const double* values)
    {
        m_light = 0.7 + 0.33 * seen.light;
        ValueSpot corners[3];
        for (int i = 0; i < 3; ++i) corners[i] = {seen.corners[i], values[i]};
        const int parts = partsFor(seen, values);
        // Rows of small triangles, from the first corner on.
        for (int row = 0; row < parts; ++row) {
            const double from = row / double(parts), to = (row + 1) / double(parts);
            const ValueSpot left = between(corners[0], corners[1], from), right = between(corners[0], corners[2], from);
            const ValueSpot lowLeft = between(corners[0], corners[1], to),
                            lowRight = between(corners[0], corners[2], to);
            const auto upper = [&](int i) { return row == 0 ? left : between(left, right, i / double(row)); };
            const auto lower = [&](int i) { return between(lowLeft, lowRight, i / double(row + 1)); };
            for (int i = 0; i <= row; ++i) {
                fill(upper(i), lower(i), lower(i + 1));
                if (i < row) fill(upper(i), lower(i + 1), upper(i + 1));
            }
        }
    }

private:
    /// Into how many parts the sides of a triangle are divided, so that colours change little within each.
    int partsFor(const SeenTriangle& seen, const double* values) const
    {
        constexpr double pixelsPerPart = 3, partsPerScale = 48, mostParts = 64;
        const auto [least, most] = std::minmax({values[0], values[1], values[2]});
        const double length = m_scale.high - m_scale.low;
        if (!std::isfinite(most - least) || !(length > 0)) return 1;
        const double wanted = std::min(std::sqrt(seen.area) / pixelsPerPart, (most - least) / length * partsPerScale);
        return static_cast<int>(std::clamp(std::ceil(wanted), 1.0, mostParts));
    }

    void fill(const ValueSpot& a, const ValueSpot& b, const ValueSpot& c)
    {
        const Colour colour = m_scale.at((a.value + b.value + c.value) / 3);
        m_canvas.fillTriangle(a.spot, b.spot, c.spot, shaded(colour, m_light));
    }

    Canvas& m_canvas;
    const ValueScale& m_scale;
    double m_light = 1;
};

std::string fewDigits(double value)
{
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 4).ptr};
}

/// The colours between their two numbers, and what they mean.
void paintScale(Canvas& canvas, const ValueScale& scale, const std::string& title, const Frame& frame)
{
    constexpr int margin = 14, barWidth = 260, gap = 12, barHeight = 18;
    canvas.clipTo(frame);
    const int top = frame.top + (frame.height() - barHeight) / 2;
    int left = frame.left + margin;
    const auto write = [&](const std::string& text) {
        drawText(canvas, left, top, text, ink);
        left += letterWidth * static_cast<int>(text.size()) + gap;
    };
    write(fewDigits(scale.low));
    const ValueScale bar{0, barWidth - 1.0};
    for (int x = 0; x < barWidth; ++x) canvas.fillFrame({left + x, top, left + x + 1, top + barHeight}, bar.at(x));
    left += barWidth + gap;
    write(fewDigits(scale.high));
    left += gap;
    write(title);
}

} // namespace

Image drawValues(const znGeom::CompactMesh& mesh, const std::vector<float>& values, const ValueScale& scale,
                 const std::string& title, const PictureSize& size)
{
    Canvas canvas(size.width, size.height, samplesPerPixel);
    const Frame frame{panelGap, panelGap, size.width - panelGap, size.height - footHeight};
    Scene scene;
    scene.mesh = &mesh;
    View view = chooseViews(scene).front();
    fitToFrame(view, mesh, frame);
    canvas.clipTo(frame);
    ValuePainter painter(canvas, scale);
    Projection(mesh, view).forEachTriangle([&](int triangle, const SeenTriangle& seen) {
        double atCorners[3];
        for (int i = 0; i < 3; ++i)
            atCorners[i] = static_cast<double>(values[static_cast<std::size_t>(mesh.getTriangles()[triangle][i])]);
        painter.paint(seen, atCorners);
    });
    outlinePanel(canvas, frame, {225, 228, 232});
    paintScale(canvas, scale, title, {0, size.height - footHeight, size.width, size.height});
    return canvas.image();
}

} // namespace tool
