#include "apps/zngeom/command/axis_option.h"
#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/files/line_files.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/polyline_files.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/planar/plane_shape.h"
#include "apps/zngeom/planar/point_table.h"
#include "apps/zngeom/planar/polygon_area.h"
#include "znGeom/planar/shapes/convex_hull.h"

namespace tool {

namespace {

using znLinear::Point2;
using Corners = std::vector<Point2>;

Corners hullOf(const PlaneShape& shape)
{
    zn::vector<Point2> hull;
    // In one place they have no hull with more than a corner.
    if (!znGeom::convexHull2d(shape.points, hull)) return {shape.points[0]};
    return {hull.begin(), hull.end()};
}

double lengthOf(const Corners& hull)
{
    double length = 0;
    for (std::size_t i = 0; i < hull.size(); ++i) length += distance(hull[i], hull[(i + 1) % hull.size()]);
    return length;
}

std::string drawingOf(const PlaneShape& shape, const Corners& hull)
{
    constexpr Colour red{200, 60, 40}, pale{250, 234, 226};
    znLinear::Range2d bounds;
    for (const Point2& corner : hull) bounds.include(corner);
    SvgDrawing drawing(bounds);
    drawing.polyline(hull, true, {red, pale, 2});
    draw(shape, drawing);
    for (const Point2& corner : hull) drawing.dot(corner, 3, red);
    return drawing.text();
}

std::vector<Polyline> asPolylines(const Corners& hull)
{
    Polyline line;
    line.closed = true;
    for (const Point2& corner : hull) line.points.append(znLinear::Point(corner));
    return {line};
}

class HullCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("hull", "Write the convex hull of points, outlines or a mesh in the plane");
        sub->footer(std::string(planeShapeRules) +
                    "OUT is a table of the corners, counter-clockwise from the lowest one; or a closed line, .obj or\n"
                    ".ply; or a drawing, .svg. No point is outside, and points along a side are no corners.");
        sub->add_option("IN", m_input, "The points, outlines or mesh")->required();
        sub->add_option("OUT", m_output, "The file to write")->required();
        addAlongOption(*sub, m_axis, "The axis along which it is seen");
        addFormatOption(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkIsOther(m_input, m_output);
        const bool isDrawing = m_output.ends_with(".svg");
        const FileFormat* format = isDrawing ? nullptr : findFormat(m_output);
        const bool isLine = format && format->format != znGeom::MeshFormat::Plain;
        if (isLine) checkLineFormat(m_output, "");
        const PlaneShape shape = loadPlaneShape(m_input, axisFrom(m_axis), progress, m_formats.input);
        checkCancelled(progress);
        const Corners hull = hullOf(shape);
        if (isLine)
            savePolylines(asPolylines(hull), m_output, "");
        else
            writeFile(isDrawing ? drawingOf(shape, hull) : tableOf(hull, m_output), m_output);
        Report report;
        report.add("input", m_input);
        report.add("output", m_output);
        report.add("points", shape.points.size());
        report.add("corners", hull.size());
        report.add("length", rounded(lengthOf(hull)), shownNumber(lengthOf(hull)));
        report.add("area", rounded(signedArea(hull)), shownNumber(signedArea(hull)));
        report.makeRoomFor(m_output);
        return report;
    }

private:
    std::string m_input, m_output, m_axis;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeHullCommand() { return std::make_unique<HullCommand>(); }

} // namespace tool
