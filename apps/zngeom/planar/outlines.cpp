#include "apps/zngeom/planar/outlines.h"

#include <algorithm>
#include <deque>

#include "apps/zngeom/command/axis_option.h"
#include "apps/zngeom/files/line_files.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/picture/svg_drawing.h"
#include "znGeom/planar/polylines/decimate.h"
#include "znGeom/planar/polylines/merge_segments.h"

namespace tool {

namespace {

using znLinear::Point;
using znLinear::Point2;

double lengthOf(const Polyline& line)
{
    double length = 0;
    for (int i = 0; i + 1 < line.points.size(); ++i) length += distance(line.points[i], line.points[i + 1]);
    return line.closed ? length + distance(line.points.back(), line.points.front()) : length;
}

std::string asTable(const std::vector<Polyline>& lines)
{
    std::string text = "line,closed,x,y,z\n";
    int number = 0;
    for (const Polyline& line : lines) {
        ++number;
        for (const Point& point : line.points) {
            text += std::to_string(number) + (line.closed ? ",1" : ",0");
            for (int axis = 0; axis < 3; ++axis) appendNumber(text += ',', point[axis]);
            text += '\n';
        }
    }
    return text;
}

std::string asDrawing(const std::vector<Polyline>& lines, int axis)
{
    constexpr Colour openColour{200, 60, 40};
    znLinear::Range2d bounds;
    for (const Polyline& line : lines)
        for (const Point& point : line.points) bounds.include(seenAlong(axis, point));
    if (bounds.isEmpty()) bounds = znLinear::Range2d::unitSquare;
    SvgDrawing drawing(bounds);
    for (const Polyline& line : lines) {
        std::vector<Point2> points;
        for (const Point& point : line.points) points.push_back(seenAlong(axis, point));
        SvgStyle style;
        if (!line.closed) style.line = openColour;
        drawing.polyline(points, line.closed, style);
    }
    return drawing.text();
}

} // namespace

znGeom::Polyline asLibraryLine(const Polyline& line)
{
    zn::vector<znGeom::Polyline::vertex> vertices;
    vertices.reserve(line.points.size() + 1);
    const auto append = [&](const Point& point) {
        const double before = vertices.empty() ? 0 : vertices.back().parameter;
        vertices.append({point, vertices.empty() ? 0 : before + distance(vertices.back().point, point)});
    };
    for (const Point& point : line.points) append(point);
    if (line.closed) append(line.points.front());
    return znGeom::Polyline(vertices.size(), vertices.data());
}

Polyline fromLibraryLine(const znGeom::Polyline& line, double tolerance)
{
    Polyline result;
    const int count = line.getNumVertices();
    const auto isNear = [=](double a, double b) { return std::fabs(a - b) <= tolerance; };
    const Point &first = line.getVertex(0).point, &last = line.getVertex(count - 1).point;
    result.closed = count > 3 && isNear(first.x, last.x) && isNear(first.y, last.y) && isNear(first.z, last.z);
    for (int i = 0; i < count - (result.closed ? 1 : 0); ++i) result.points.append(line.getVertex(i).point);
    return result;
}

int decimateLines(std::vector<Polyline>& lines, double tolerance)
{
    const std::size_t before = lines.size();
    std::erase_if(lines, [tolerance](Polyline& line) {
        znGeom::Polyline decimated = asLibraryLine(line);
        decimate(decimated, tolerance);
        const int count = decimated.getNumVertices() - (line.closed ? 1 : 0);
        line.points.clear();
        for (int i = 0; i < count; ++i) line.points.append(decimated.getVertex(i).point);
        return line.closed && count < 3;
    });
    return static_cast<int>(before - lines.size());
}

std::vector<Polyline> joinedLines(const std::vector<Polyline>& lines, double tolerance)
{
    std::deque<znGeom::Segment> segments;
    for (const Polyline& line : lines) {
        const int count = line.points.size();
        for (int i = 0; i < count - (line.closed ? 0 : 1); ++i)
            segments.emplace_back(&line.points[i].x, &line.points[(i + 1) % count].x);
    }
    zn::vector<zn::Reference<znGeom::Polyline>> joined;
    znGeom::MergeSegments()(joined, segments, static_cast<float>(tolerance));
    std::vector<Polyline> result;
    for (const auto& line : joined) result.push_back(fromLibraryLine(*line, tolerance));
    return result;
}

void checkOutlineFormat(const std::string& path, const std::string& word)
{
    if (path.ends_with(".svg") || path.ends_with(".csv")) return;
    const znGeom::MeshFormat format = formatOf(path, word).format;
    if (format != znGeom::MeshFormat::Obj && format != znGeom::MeshFormat::Ply)
        throw Failure(path + ": lines are written as .obj or .ply, .svg or .csv");
}

void saveOutlines(const std::vector<Polyline>& lines, const std::string& path, const std::string& word, int axis)
{
    if (path.ends_with(".svg"))
        writeFile(asDrawing(lines, axis), path);
    else if (path.ends_with(".csv"))
        writeFile(asTable(lines), path);
    else
        savePolylines(lines, path, word);
}

void addLines(const std::vector<Polyline>& lines, Report& report)
{
    int numClosed = 0, numPoints = 0;
    double length = 0;
    Report::Value list = Report::Value::array();
    for (const Polyline& line : lines) {
        const double own = lengthOf(line);
        numClosed += line.closed;
        numPoints += line.points.size();
        length += own;
        list.push_back({{"points", line.points.size()}, {"closed", line.closed}, {"length", rounded(own)}});
    }
    report.add("curves", lines.size());
    report.add("closed", numClosed);
    report.add("open", static_cast<int>(lines.size()) - numClosed);
    report.add("points", numPoints);
    report.add("length", rounded(length), shownNumber(length));
    report.addForPrograms("each_curve", std::move(list));
}

} // namespace tool
