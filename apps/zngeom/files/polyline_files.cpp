#include "apps/zngeom/files/polyline_files.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <string_view>

#include "apps/zngeom/files/line_files.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/files/text_lines.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/failure.h"

namespace tool {

namespace {

using znGeom::MeshFormat;
using znLinear::Point;

long whole(const TextLines& lines, std::string_view word)
{
    long value = 0;
    const std::string_view digits = word.substr(0, word.find('/'));
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size())
        lines.fail(quoted(word) + " is not a whole number");
    return value;
}

Point pointOf(const TextLines& lines, const std::vector<std::string_view>& words, std::size_t first)
{
    if (words.size() < first + 3) lines.fail("a point has fewer than three coordinates");
    return {lines.number(words[first]), lines.number(words[first + 1]), lines.number(words[first + 2])};
}

using Runs = std::vector<zn::vector<Point>>;
using Line = std::vector<std::string_view>;

Runs readObj(TextLines lines)
{
    Runs runs;
    std::vector<Point> points;
    while (lines.next()) {
        const Line& line = lines.words();
        if (line.empty()) continue;
        if (line[0] == "v") points.push_back(pointOf(lines, line, 1));
        if (line[0] != "l") continue;
        runs.emplace_back();
        for (std::size_t i = 1; i < line.size(); ++i) {
            const long number = whole(lines, line[i]), count = static_cast<long>(points.size());
            const long index = number < 0 ? count + number : number - 1;
            if (index < 0 || index >= count) lines.fail(quoted(line[i]) + " is not the number of a vertex above");
            runs.back().append(points[static_cast<std::size_t>(index)]);
        }
    }
    return runs;
}

/// What a PLY header says of one element: how many there are, and where the wanted properties stand.
struct PlyElement
{
    std::string name;
    long count = 0;
    std::vector<std::string> properties;

    std::size_t placeOf(const std::string& property) const
    {
        const auto found = std::find(properties.begin(), properties.end(), property);
        if (found == properties.end()) throw Failure("element " + name + " has no " + property);
        return static_cast<std::size_t>(found - properties.begin());
    }
};

std::vector<PlyElement> readPlyHeader(TextLines& lines)
{
    std::vector<PlyElement> elements;
    while (lines.next()) {
        const Line& line = lines.words();
        if (line.empty()) continue;
        if (line[0] == "end_header") return elements;
        if (line[0] == "format" && line.size() > 1 && line[1] != "ascii")
            throw Failure("polylines are read from PLY files as text, and this one is binary");
        if (line[0] == "element" && line.size() > 2)
            elements.push_back({std::string(line[1]), whole(lines, line[2]), {}});
        if (line[0] == "property" && line.size() > 2 && !elements.empty())
            elements.back().properties.emplace_back(line.back());
    }
    throw Failure("the PLY header has no end");
}

Runs readPly(TextLines lines)
{
    Runs runs;
    std::vector<Point> points;
    for (const PlyElement& element : readPlyHeader(lines)) {
        const bool isVertex = element.name == "vertex", isEdge = element.name == "edge";
        std::vector<std::size_t> places;
        if (isVertex) places = {element.placeOf("x"), element.placeOf("y"), element.placeOf("z")};
        if (isEdge) places = {element.placeOf("vertex1"), element.placeOf("vertex2")};
        Line wanted;
        for (long i = 0; i < element.count; ++i) {
            do
                if (!lines.next()) lines.fail("the file ends within element " + element.name);
            while (lines.words().empty());
            const Line& line = lines.words();
            wanted.clear();
            for (const std::size_t place : places) {
                if (place >= line.size()) lines.fail("element " + element.name + " has more values");
                wanted.push_back(line[place]);
            }
            if (isVertex) points.push_back(pointOf(lines, wanted, 0));
            if (!isEdge) continue;
            runs.emplace_back();
            for (const std::string_view word : wanted) {
                const long index = whole(lines, word);
                if (index < 0 || index >= static_cast<long>(points.size()))
                    lines.fail(quoted(word) + " is not the number of a vertex");
                runs.back().append(points[static_cast<std::size_t>(index)]);
            }
        }
    }
    return runs;
}

Runs readText(TextLines lines)
{
    Runs runs(1);
    while (lines.next()) {
        const Line& line = lines.words();
        if (!line.empty())
            runs.back().append(pointOf(lines, line, 0));
        else if (!runs.back().empty())
            runs.emplace_back();
    }
    return runs;
}

/// Joins segments where exactly two of them end at a point.
class Chains
{
public:
    explicit Chains(const Runs& segments) : m_segments(segments), m_isUsed(segments.size(), false)
    {
        for (std::size_t i = 0; i < segments.size(); ++i)
            for (const Point& end : segments[i]) m_at[keyOf(end)].push_back(i);
    }

    void appendTo(Runs& runs)
    {
        for (const bool openOnes : {true, false}) // those with an end first
            for (std::size_t i = 0; i < m_segments.size(); ++i)
                for (const int end : {0, 1})
                    if (!m_isUsed[i] && (!openOnes || m_at[keyOf(m_segments[i][end])].size() != 2))
                        runs.push_back(follow(i, end));
    }

private:
    using Key = std::array<double, 3>;
    static Key keyOf(const Point& point) { return {point.x, point.y, point.z}; }

    zn::vector<Point> follow(std::size_t segment, int end)
    {
        zn::vector<Point> run;
        run.append(m_segments[segment][end]);
        for (;;) {
            m_isUsed[segment] = true;
            const bool isBack = m_segments[segment][0] == run.back();
            run.append(m_segments[segment][isBack ? 1 : 0]);
            const std::vector<std::size_t>& here = m_at[keyOf(run.back())];
            if (here.size() != 2) return run;
            const std::size_t next = here[0] == segment ? here[1] : here[0];
            if (m_isUsed[next]) return run;
            segment = next;
        }
    }

    const Runs& m_segments;
    std::vector<bool> m_isUsed;
    std::map<Key, std::vector<std::size_t>> m_at;
};

std::vector<Polyline> asPolylines(const Runs& runs)
{
    Runs segments, whole;
    for (const auto& run : runs) {
        if (run.size() > 2) whole.push_back(run);
        if (run.size() == 2 && !(run[0] == run[1])) segments.push_back(run);
    }
    Chains(segments).appendTo(whole);
    std::vector<Polyline> polylines;
    for (const auto& run : whole) {
        const bool closed = run.size() > 3 && run.front() == run.back();
        polylines.push_back({{run.begin(), run.end() - (closed ? 1 : 0)}, closed});
    }
    return polylines;
}

Runs readRuns(const std::string& text, const FileFormat* format)
{
    if (!format || format->format == MeshFormat::Plain) return readText(TextLines(text));
    if (format->format == MeshFormat::Obj) return readObj(TextLines(text));
    if (format->format == MeshFormat::Ply) return readPly(TextLines(text));
    throw Failure(std::string(format->name) + " files have no polylines; .obj, .ply and texts do");
}

} // namespace

std::vector<Polyline> loadPolylines(const std::string& path, znUtil::Progress& progress, const std::string& word)
{
    try {
        progress.setCaption("reading");
        std::vector<Polyline> polylines = asPolylines(readRuns(readFile(path, progress), findFormat(path, word)));
        if (polylines.empty()) throw Failure("has no polyline of two points or more");
        return polylines;
    } catch (const Failure& failure) {
        throw Failure(inputName(path) + ": " + failure.what());
    }
}

namespace {

std::string asText(const Point& point)
{
    std::string text;
    for (const double value : {point.x, point.y, point.z}) {
        char digits[32];
        text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
        text += ' ';
    }
    text.back() = '\n';
    return text;
}

std::string asObj(const std::vector<Polyline>& polylines)
{
    std::string points, lines;
    int number = 0;
    for (const Polyline& polyline : polylines) {
        const int first = number + 1;
        lines += 'l';
        for (const Point& point : polyline.points) {
            points += "v " + asText(point);
            lines += ' ' + std::to_string(++number);
        }
        lines += (polyline.closed ? ' ' + std::to_string(first) : "") + '\n';
    }
    return points + lines;
}

std::string asPly(const std::vector<Polyline>& polylines)
{
    std::string points, edges;
    int numPoints = 0, numEdges = 0;
    for (const Polyline& polyline : polylines) {
        const int count = polyline.points.size();
        for (const Point& point : polyline.points) points += asText(point);
        for (int i = 0; i < count - (polyline.closed ? 0 : 1); ++i, ++numEdges)
            edges += std::to_string(numPoints + i) + ' ' + std::to_string(numPoints + (i + 1) % count) + '\n';
        numPoints += count;
    }
    return "ply\nformat ascii 1.0\nelement vertex " + std::to_string(numPoints) +
           "\nproperty double x\nproperty double y\nproperty double z\nelement edge " + std::to_string(numEdges) +
           "\nproperty int vertex1\nproperty int vertex2\nend_header\n" + points + edges;
}

} // namespace

void savePolylines(const std::vector<Polyline>& polylines, const std::string& path, const std::string& word)
{
    checkLineFormat(path, word);
    writeFile(formatOf(path, word).format == MeshFormat::Ply ? asPly(polylines) : asObj(polylines), path);
}

} // namespace tool
