#include <cmath>
#include <numbers>

#include "apps/zngeom/command/axis_option.h"
#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/planar/plane_shape.h"
#include "apps/zngeom/planar/point_table.h"
#include "znGeom/foundation/linear/range.h"
#include "znGeom/planar/shapes/convex_hull.h"
#include "znGeom/planar/shapes/min_area_bound.h"

namespace tool {

namespace {

using znGeom::Rect2;
using znLinear::Point2;
using znLinear::Range2d;

Rect2 boxOf(const PlaneShape& shape)
{
    Range2d box;
    for (const Point2& p : shape.points) box.include(p);
    const auto [x, y] = box;
    return {{x.min, y.min}, {x.max, y.min}, {x.min, y.max}, {x.max, y.max}};
}

Rect2 smallestOf(const PlaneShape& shape)
{
    Rect2 rect;
    znGeom::minAreaRect2d(shape.points, rect);
    return rect;
}

double widthOf(const Rect2& rect) { return distance(rect.c0, rect.c1); }
double heightOf(const Rect2& rect) { return distance(rect.c0, rect.c2); }
double areaOf(const Rect2& rect) { return widthOf(rect) * heightOf(rect); }

/// Of the base with the axis of the first coordinate, in degrees; where there is no base, of what is at right angles to
/// the side.
double angleOf(const Rect2& rect)
{
    const znLinear::Vector2 base = rect.c1 - rect.c0, side = rect.c2 - rect.c0;
    const double radians = widthOf(rect) > 0 ? std::atan2(base.dy, base.dx) : std::atan2(-side.dx, side.dy);
    constexpr double digits = 1e9; // of a degree; what is beyond them is rounding
    return std::round(radians * 180 / std::numbers::pi * digits) / digits + 0.0;
}

/// In the order of the border.
std::vector<Point2> cornersOf(const Rect2& rect) { return {rect.c0, rect.c1, rect.c3, rect.c2}; }

std::string drawingOf(const PlaneShape& shape, const Rect2& box, const Rect2& rect)
{
    constexpr Colour red{200, 60, 40}, blue{60, 120, 200}, pale{226, 236, 250}, faint{165, 170, 178};
    Range2d bounds;
    for (const Rect2& shown : {box, rect})
        for (const Point2& corner : cornersOf(shown)) bounds.include(corner);
    SvgDrawing drawing(bounds);
    drawing.polyline(cornersOf(box), true, {faint, {}, 1.5});
    drawing.polyline(cornersOf(rect), true, {blue, pale, 2.5});
    zn::vector<Point2> hull;
    if (znGeom::convexHull2d(shape.points, hull)) drawing.polyline({hull.begin(), hull.end()}, true, {red, {}, 2});
    draw(shape, drawing);
    return drawing.text();
}

class BoundsCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("bounds", "Tell the box around points, outlines or a mesh in the plane, or "
                                                     "the rectangle of smallest area");
        sub->footer(std::string(planeShapeRules) +
                    "The corners follow one another counter-clockwise. The angle is that of the base, from the first\n"
                    "corner to the second, in degrees. The ratio is the area over that of the box along the axes,\n"
                    "both with their margins. In a drawing the box is grey, the hull red and the rectangle blue.");
        sub->add_option("IN", m_input, "The points, outlines or mesh")->required();
        sub->add_flag("--minimal", m_isMinimal,
                      "The smallest rectangle that may be turned, not the box along the axes");
        addAlongOption(*sub, m_axis, "The axis along which it is seen");
        sub->add_option("--margin", m_margin, "How far each side moves outwards; inwards below 0")
            ->check(CLI::Validator([](const std::string& word) { return finiteNumber(word) ? "" : "must be a number"; },
                                   ""))
            ->option_text("NUMBER [0]");
        sub->add_option("--svg", m_drawing, "Draw it: a file to write, .svg");
        addFormatOption(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        if (!m_drawing.empty()) {
            checkSvgName(m_drawing);
            checkIsOther(m_input, m_drawing);
        }
        const PlaneShape shape = loadPlaneShape(m_input, axisFrom(m_axis), progress, m_formats.input);
        checkCancelled(progress);
        const Rect2 box = withMargin(boxOf(shape));
        const Rect2 rect = m_isMinimal ? withMargin(smallestOf(shape)) : box;
        if (!m_drawing.empty()) writeFile(drawingOf(shape, box, rect), m_drawing);
        return describe(shape, box, rect);
    }

private:
    Rect2 withMargin(const Rect2& given) const
    {
        const double least = -2 * m_margin;
        if (widthOf(given) < least || heightOf(given) < least)
            throw Failure(m_input + ": a margin of " + shownNumber(m_margin) + " leaves nothing of sides of " +
                          shownNumber(widthOf(given)) + " and " + shownNumber(heightOf(given)));
        Rect2 rect = given;
        znGeom::rectGrow(rect, m_margin);
        return rect;
    }

    Report describe(const PlaneShape& shape, const Rect2& box, const Rect2& rect) const
    {
        Report report;
        report.add("input", m_input);
        if (!m_drawing.empty()) report.add("output", m_drawing);
        report.add("points", shape.points.size());
        Report::Value corners = Report::Value::array();
        std::string shown;
        for (const Point2& corner : cornersOf(rect)) {
            corners.push_back({corner.x, corner.y});
            shown += (shown.empty() ? "" : ",  ") + shownNumber(corner.x) + " " + shownNumber(corner.y);
        }
        report.add("corners", corners, shown);
        add(report, "width", widthOf(rect));
        add(report, "height", heightOf(rect));
        add(report, "angle", angleOf(rect));
        add(report, "area", areaOf(rect));
        // Where both have no area, neither is smaller.
        add(report, "ratio", areaOf(box) > 0 ? areaOf(rect) / areaOf(box) : 1);
        return report;
    }

    static void add(Report& report, const char* key, double value)
    {
        report.add(key, rounded(value), shownNumber(value));
    }

    std::string m_input, m_axis, m_drawing;
    bool m_isMinimal = false;
    double m_margin = 0;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeBoundsCommand() { return std::make_unique<BoundsCommand>(); }

} // namespace tool
