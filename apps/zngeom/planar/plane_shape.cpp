#include "apps/zngeom/planar/plane_shape.h"

#include "apps/zngeom/command/axis_option.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/point_reader.h"
#include "apps/zngeom/files/polyline_files.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/files/text_lines.h"
#include "apps/zngeom/frame/failure.h"

namespace tool {

namespace {

using znLinear::Point;
using znLinear::Point2;

/// How many words there are on each of the first lines that have some, of two at most.
std::vector<std::size_t> wordsAtTop(const std::string& text)
{
    std::vector<std::size_t> counts;
    for (TextLines lines(text); counts.size() < 2 && lines.next();)
        if (!lines.words().empty()) counts.push_back(lines.words().size());
    return counts;
}

PlaneShape parsePoints(const std::string& text, int axis, znUtil::Progress& progress)
{
    const std::vector<std::size_t> words = wordsAtTop(text);
    const std::size_t size = !words.empty() && words.front() == 2 ? 2 : 3;
    const std::vector<double> numbers = parseRows(text, size, "a point", "points", progress);
    PlaneShape shape;
    for (std::size_t i = 0; i < numbers.size(); i += size)
        shape.points.append(size == 2 ? Point2(numbers[i], numbers[i + 1]) : seenAlong(axis, Point(&numbers[i])));
    return shape;
}

PlaneShape shapeOf(const znGeom::CompactMesh& mesh, int axis, const std::string& path)
{
    const int count = mesh.getNumVertices();
    if (count == 0) throw Failure(inputName(path) + ": has no points");
    checkFinite(mesh.getVertices(), count, inputName(path));
    PlaneShape shape;
    for (int i = 0; i < count; ++i) {
        const znGeom::MeshVertex& v = mesh.getVertices()[i];
        shape.points.append(seenAlong(axis, Point(znLinear::PointFlt(v.x, v.y, v.z))));
    }
    return shape;
}

PlaneShape shapeOf(const std::vector<Polyline>& polylines, int axis)
{
    PlaneShape shape;
    for (const Polyline& polyline : polylines) {
        PlaneLine& line = shape.lines.emplace_back();
        line.closed = polyline.closed;
        for (const Point& p : polyline.points) {
            line.points.push_back(seenAlong(axis, p));
            shape.points.append(line.points.back());
        }
    }
    return shape;
}

/// A file without faces may have lines; where it has none, there still are its vertices.
std::vector<Polyline> linesOf(const std::string& path, znUtil::Progress& progress, const std::string& word)
{
    try {
        return loadPolylines(path, progress, word);
    } catch (const Failure&) {
        return {};
    }
}

PlaneShape loadFromMesh(const std::string& path, int axis, znUtil::Progress& progress, const std::string& word)
{
    LoadedMesh loaded;
    loadMesh(path, progress, loaded, word);
    std::vector<Polyline> polylines;
    if (loaded.mesh.getNumTriangles() == 0 && path != standardStream) polylines = linesOf(path, progress, word);
    return polylines.empty() ? shapeOf(loaded.mesh, axis, path) : shapeOf(polylines, axis);
}

} // namespace

PlaneShape loadPlaneShape(const std::string& path, int axis, znUtil::Progress& progress, const std::string& word)
{
    const FileFormat* format = findFormat(path, word);
    const bool isPlain = format && format->format == znGeom::MeshFormat::Plain;
    if (format && !isPlain) return loadFromMesh(path, axis, progress, word);
    LoadedMesh loaded;
    try {
        progress.setCaption("reading");
        const std::string text = readFile(path, progress);
        // A mesh in the plain format begins with two counts, and goes on with vertices of three coordinates.
        if (!isPlain || wordsAtTop(text) != std::vector<std::size_t>{2, 3}) return parsePoints(text, axis, progress);
        loadMesh(text, *format, "", progress, loaded);
    } catch (const Failure& failure) {
        throw Failure(inputName(path) + ": " + failure.what());
    }
    return shapeOf(loaded.mesh, axis, path);
}

void draw(const PlaneShape& shape, SvgDrawing& drawing)
{
    constexpr Colour grey{140, 148, 160};
    constexpr int mostDots = 10000;
    for (const PlaneLine& line : shape.lines) drawing.polyline(line.points, line.closed, {ink, {}, 1.5});
    if (!shape.lines.empty()) return;
    const int step = (shape.points.size() - 1) / mostDots + 1;
    for (int i = 0; i < shape.points.size(); i += step) drawing.dot(shape.points[i], 1.2, grey);
}

} // namespace tool
