#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/command/picture_option.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/point_reader.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/usage.h"
#include "apps/zngeom/measuring/boundary_loops.h"
#include "apps/zngeom/picture/png_file.h"
#include "apps/zngeom/shells/collar_walk.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/shells/collar_ribbon.h"

namespace tool {

namespace {

enum class Table { None, Text, Csv, Json };

/// What kind of table a path asks for.
Table tableFor(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char letter) { return letter >= 'A' && letter <= 'Z' ? char(letter - 'A' + 'a') : letter; });
    return extension == ".txt"    ? Table::Text
           : extension == ".csv"  ? Table::Csv
           : extension == ".json" ? Table::Json
                                  : Table::None;
}

std::string tableOf(const zn::vector<znGeom::MeshCollar::Point>& points, bool hasCurvature, Table kind)
{
    const bool isJson = kind == Table::Json;
    const char* const divider = kind == Table::Text ? " " : ",";
    std::string text;
    if (kind == Table::Csv)
        text = std::string("x,y,z,direction_x,direction_y,direction_z,normal_x,normal_y,normal_z") +
               (hasCurvature ? ",curvature\n" : "\n");
    const auto appendThree = [&](const char* name, const znLinear::Vector& three) {
        if (isJson) text.append("\"").append(name).append("\":[");
        for (int axis = 0; axis < 3; ++axis) appendNumber(text += axis == 0 ? "" : divider, three[axis]);
        if (isJson) text += ']';
    };
    for (int i = 0; i < points.size(); ++i) {
        if (isJson) text += i == 0 ? "[{" : ",\n{";
        appendThree("position", points[i].position.asVector());
        appendThree("direction", (text += divider, points[i].direction));
        appendThree("normal", (text += divider, points[i].normal));
        if (hasCurvature)
            appendNumber(text.append(divider).append(isJson ? "\"curvature\":" : ""), points[i].curvature);
        text += isJson ? "}" : "\n";
    }
    return isJson ? text + "]\n" : text;
}

int numStepsOf(const CollarWalk& walk) { return walk.points.size() - (walk.closed ? 0 : 1); }

/// The length of a mean step, halved until no quad is turned over: where a surface folds, strips have to be narrow.
double narrowEnough(const CollarWalk& walk)
{
    constexpr int mostHalvings = 10;
    double width = walk.length / numStepsOf(walk);
    for (int i = 0; i < mostHalvings && znGeom::meshCollarTurnedQuads(walk.points, width, walk.closed) > 0; ++i)
        width /= 2;
    return width;
}

constexpr Colour ofRibbon{255, 178, 60};

/// A mesh with its ribbon.
Image drawRibbon(const znGeom::CompactMesh& mesh, const znGeom::CompactMesh& ribbon, const PictureSize& size)
{
    znGeom::CompactMesh both;
    const int numVertices = mesh.getNumVertices(), numTriangles = mesh.getNumTriangles();
    both.resizeVertexArray(numVertices + ribbon.getNumVertices());
    std::copy_n(mesh.getVertices(), numVertices, both.getVertices());
    std::copy_n(ribbon.getVertices(), ribbon.getNumVertices(), both.getVertices() + numVertices);
    both.resizeTriangleArray(numTriangles + ribbon.getNumTriangles());
    std::copy_n(mesh.getTriangles(), numTriangles, both.getTriangles());
    Marking marking{"collar", static_cast<std::size_t>(ribbon.getNumTriangles() / 2), ofRibbon, {}, {}, {}};
    for (int t = 0; t < ribbon.getNumTriangles(); ++t) {
        const auto [a, b, c] = ribbon.getTriangles()[t].corners;
        both.getTriangles()[numTriangles + t] = {{a + numVertices, b + numVertices, c + numVertices}};
        marking.triangles.push_back(numTriangles + t);
    }
    return drawMesh({&both, {marking}, ""}, size);
}

class CollarCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("collar", "Write a strip that stands on a border of a mesh, or its frames");
        sub->footer(
            "Boundary loops are numbered as fill lists them: from 1, the longest first. The strip stands on the whole\n"
            "loop, or on the way from one of its vertices to another with the surface to its left; vertices are\n"
            "counted from 0. It has a quad for each edge, or --count equal steps. It goes to the back of the surface,\n"
            "square to it, and with a negative width to the front. It continues the surface: welded to the mesh, both\n"
            "are wound alike.\n"
            "OUT is the strip, in a mesh format; or, for .txt, .csv, .json and standard output without a format, a\n"
            "table of the places on the border with their frames: position, direction of the strip, direction in the\n"
            "surface away from the border, and with --curvature the curvature of the surface across the border.");
        sub->add_option("MESH", m_path, "The mesh file")->required();
        sub->add_option("OUT", m_output, "The file to write")->required();
        sub->add_option("--loop", m_loop, "The number of the boundary loop")->check(wholeNumberFrom(1))->required();
        CLI::Option* from = sub->add_option("--from", m_from, "The vertex where the strip begins");
        CLI::Option* to = sub->add_option("--to", m_to, "The vertex where it ends");
        from->check(wholeNumberFrom(0))->needs(to)->option_text("VERTEX");
        to->check(wholeNumberFrom(0))->needs(from)->option_text("VERTEX");
        sub->add_option("--count", m_count, "Equal steps, instead of the border's edges")
            ->check(wholeNumberFrom(1))
            ->option_text("N");
        sub->add_option("--width", m_width,
                        "In the units of the file; by default that of a step, or less where quads would turn over")
            ->option_text("WIDTH");
        sub->add_flag("--curvature", m_curvature, "Measure how the surface bends across the border");
        addPictureOptions(*sub, m_picture, "Draw the mesh with the strip: a PNG file");
        addFormatOptions(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkArguments();
        Phases phases(progress);
        LoadedMesh loaded;
        loadMesh(m_path, phases.next(0.6), loaded, m_formats.input);
        checkHasTriangles(loaded.mesh, m_path);
        checkFinite(loaded.mesh.getVertices(), loaded.mesh.getNumVertices(), inputName(m_path));
        const Strip strip = makeStrip(loaded.mesh, phases.next(0.2));
        std::unique_ptr<PendingFile> picture;
        znUtil::Progress& drawing = phases.next(0.1);
        if (!m_picture.path.empty()) {
            drawing.setCaption("drawing");
            picture = writePngAside(drawRibbon(loaded.mesh, strip.ribbon, m_picture.size), m_picture.path);
        }
        save(strip, phases.next(0.1));
        if (picture) putInPlace(*picture, m_picture.path);
        Report report = describe(strip);
        report.addNotes(loaded.notes);
        return report;
    }

private:
    struct Strip
    {
        CollarWalk walk;
        double width;
        znGeom::CompactMesh ribbon;
        std::string table; ///< empty where OUT is a mesh
    };

    /// That of the table, unless OUT is a mesh.
    Table table() const
    {
        const bool isUnnamed = m_output == standardStream && m_formats.output.empty();
        return isUnnamed ? Table::Text : m_output == standardStream ? Table::None : tableFor(m_output);
    }

    void checkArguments() const
    {
        if (table() == Table::None && !findFormat(m_output, m_formats.ofOutput()))
            throw Failure(m_output + ": is no mesh format for the strip, and not .txt, .csv or .json for its frames");
        if (table() == Table::None) checkOutputFormat(m_output, m_formats.ofOutput());
        if (!m_picture.path.empty()) checkPictureName(m_picture.path);
        checkIsOther(m_path, m_output);
        if (m_width && (!std::isfinite(*m_width) || *m_width == 0))
            throw Failure("--width: must be a number other than 0");
        if (m_from && *m_from == *m_to)
            throw Failure("--from and --to are the same vertex; the whole loop is walked without them");
        if (!m_from && m_count && *m_count < 3) throw Failure("--count: must be at least 3 for a whole loop");
        constexpr std::size_t mostSteps = maxElements / 2;
        if (m_count && static_cast<std::size_t>(*m_count) > mostSteps)
            throw Failure("--count: must be at most " + std::to_string(mostSteps));
    }

    CollarWalk walkBorder(const znGeom::CompactMesh& mesh) const
    {
        const MeshBorders borders(mesh);
        const std::vector<BoundaryLoop> loops = loopsByLength(mesh, borders.boundaries);
        checkLoopNumbers({m_loop}, loops.size(), m_path);
        const CollarLoop loop{mesh, borders.adjTris, borders.boundaries,
                              loops[static_cast<std::size_t>(m_loop - 1)].inMesh,
                              "boundary loop " + std::to_string(m_loop)};
        const int count = m_count ? *m_count : 0;
        try {
            return m_from ? walkPart(loop, *m_from, *m_to, count, m_curvature) : walkLoop(loop, count, m_curvature);
        } catch (const Failure& failure) {
            throw Failure(inputName(m_path) + ": " + failure.what());
        }
    }

    /// All that sees no progress: Ctrl-C ends the process there.
    Strip makeStrip(const znGeom::CompactMesh& mesh, znUtil::Progress& progress) const
    {
        progress.setCaption("walking");
        const EndOnSignal endOnSignal(progress);
        Strip strip{walkBorder(mesh), m_width.value_or(0), {}, {}};
        const CollarWalk& walk = strip.walk;
        if (!m_width) strip.width = narrowEnough(walk);
        znGeom::meshCollarRibbon(walk.points, strip.width, walk.closed, strip.ribbon);
        const float* const numbers = strip.ribbon.getVerticesRaw();
        if (!std::all_of(numbers, numbers + 3 * static_cast<std::ptrdiff_t>(strip.ribbon.getNumVertices()),
                         [](float number) { return std::isfinite(number); }))
            throw Failure("--width: the strip would be larger than numbers in files are");
        if (table() != Table::None) strip.table = tableOf(walk.points, m_curvature, table());
        return strip;
    }

    void save(const Strip& strip, znUtil::Progress& progress) const
    {
        progress.setCaption("writing");
        if (table() == Table::None)
            saveMesh(strip.ribbon, m_output, progress, m_formats.ofOutput());
        else
            writeFile(strip.table, m_output);
    }

    Report describe(const Strip& strip) const
    {
        const CollarWalk& walk = strip.walk;
        Report report;
        report.add("input", m_path);
        report.add("output", m_output);
        report.add("loop", m_loop);
        report.add("whole_loop", walk.closed, walk.closed ? "yes" : "no");
        report.add("length", rounded(walk.length));
        report.add("places", walk.points.size());
        report.add("quads", numStepsOf(walk));
        report.add("turned_quads", znGeom::meshCollarTurnedQuads(walk.points, strip.width, walk.closed));
        report.add("width", rounded(strip.width));
        if (m_curvature) {
            const auto [least, most] =
                std::minmax_element(walk.points.begin(), walk.points.end(),
                                    [](const auto& a, const auto& b) { return a.curvature < b.curvature; });
            report.add("curvature_least", rounded(least->curvature));
            report.add("curvature_largest", rounded(most->curvature));
        }
        if (!m_picture.path.empty()) report.add("picture", m_picture.path);
        report.makeRoomFor(m_output);
        return report;
    }

    std::string m_path, m_output;
    int m_loop = 0;
    std::optional<int> m_from, m_to, m_count;
    std::optional<double> m_width;
    bool m_curvature = false;
    PictureOptions m_picture;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeCollarCommand() { return std::make_unique<CollarCommand>(); }

} // namespace tool
