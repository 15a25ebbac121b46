#include <CLI/App.hpp>
#include <array>
#include <cmath>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/mesh_route.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/usage.h"
#include "apps/zngeom/picture/svg_drawing.h"
#include "apps/zngeom/planar/rectangle_table.h"
#include "apps/zngeom/planar/uv_islands.h"

namespace tool {

namespace {

using znLinear::Point2;
using znLinear::Range2d;

/// Neighbours in a list have different ones.
Colour colourOf(std::size_t index)
{
    static constexpr std::array<Colour, 8> colours{{{141, 194, 233},
                                                    {249, 190, 121},
                                                    {158, 214, 158},
                                                    {232, 160, 165},
                                                    {200, 180, 222},
                                                    {240, 225, 140},
                                                    {150, 215, 205},
                                                    {215, 195, 175}}};
    return colours[index % colours.size()];
}

SvgStyle filled(const Colour& colour, double width) { return {ink, colour, width, 1}; }

std::string problemOfMargin(const std::string& word)
{
    const std::optional<double> margin = finiteNumber(word);
    return margin && *margin >= 0 && *margin < 1 ? "" : "must be a number from 0, below 1";
}

/// A drawing of places in the unit square, with the names that fit.
std::string drawPlaces(const RectangleLayout& layout, const std::vector<std::string>& names)
{
    SvgDrawing drawing(Range2d::unitSquare);
    drawing.rectangle(Range2d::unitSquare, {ink, std::nullopt, 1.5, 1});
    constexpr double letter = 12, letterWidth = 0.6 * letter / 800;
    for (std::size_t i = 0; i < layout.places.size(); ++i) {
        const Range2d& place = layout.places[i];
        drawing.rectangle(place, filled(colourOf(i), 0.5));
        const double length = letterWidth * static_cast<double>(names[i].size());
        if (length > 0 && length < place.x.size() && place.y.size() > 1.5 * letter / 800)
            drawing.label(place.mid(), names[i], letter);
    }
    return drawing.text();
}

/// The islands before and after, beside one another.
class AtlasDrawing
{
public:
    AtlasDrawing() : m_drawing({{0, 0}, {1 + shift, 1}}, 1600) {}

    /// The unit square, and what lies beyond it.
    void addBefore(const std::vector<UVIslands::Outline>& outlines)
    {
        Range2d bounds = Range2d::unitSquare;
        for (const UVIslands::Outline& outline : outlines)
            for (const Point2& point : outline.points) bounds.include(point);
        add(outlines, bounds, 0);
    }

    void addAfter(const std::vector<UVIslands::Outline>& outlines, const std::vector<Range2d>& places)
    {
        for (const Range2d& place : places) {
            const Range2d moved({place.x.min + shift, place.y.min}, {place.x.max + shift, place.y.max});
            m_drawing.rectangle(moved, {Colour{190, 190, 190}, std::nullopt, 0.5, 1});
        }
        add(outlines, Range2d::unitSquare, shift);
    }

    std::string text() const { return m_drawing.text(); }

private:
    static constexpr double shift = 1.04;

    void add(const std::vector<UVIslands::Outline>& outlines, const Range2d& bounds, double toTheRight)
    {
        const double size = std::max(bounds.x.size(), bounds.y.size());
        for (const UVIslands::Outline& outline : outlines) {
            std::vector<Point2> points;
            for (const Point2& point : outline.points)
                points.emplace_back(toTheRight + (point.x - bounds.x.min) / size, (point.y - bounds.y.min) / size);
            const auto island = static_cast<std::size_t>(outline.island);
            m_drawing.polyline(points, true, filled(outline.isHole ? white : colourOf(island), 0.5));
        }
        m_drawing.rectangle({{toTheRight, 0}, {toTheRight + 1, 1}}, {ink, std::nullopt, 1.5, 1});
    }

    SvgDrawing m_drawing;
};

class PackCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub =
            app.add_subcommand("pack", "Lay out rectangles, or islands of texture coordinates, in a square");
        sub->footer(
            "A table (.csv, or - without --format) has a width and a height on each line, and perhaps a name; OUT "
            "then\n"
            "has x, y, width and height of each in the unit square, and the name. A mesh has islands: triangles that\n"
            "have texture coordinates in common where they meet. They are laid out anew, all in the same scale and\n"
            "without overlap; OUT is an OBJ, PLY or glTF file. Positions stay shared, and the corners of triangles\n"
            "have texture coordinates of their own along the borders of islands. The drawing shows the places, or the\n"
            "islands before and after. density is the part of the square that rectangles take.\n\n"
            "Sizes begin with the area of the square, and shrink from try to try until all find a place.");
        sub->add_option("IN", m_files.input, "The table or the mesh file to read")->required();
        sub->add_option("OUT", m_files.output, "The table or the mesh file to write; may be the same")->required();
        sub->add_option("--margin", m_margin, "How much to leave free between two, as a part of the square's side [0]")
            ->check(CLI::Validator(problemOfMargin, ""))
            ->option_text("M");
        sub->add_option("--iterations", m_iterations, "How many tries halve the sizes: more pack tighter [1000]")
            ->check(wholeNumberFrom(1))
            ->option_text("N");
        CLI::Option* turn = sub->add_flag("--turn", m_isTurned, "Turn islands so that their rectangles become smaller");
        sub->add_option("--svg", m_drawing, "Draw what was laid out: an SVG file")->option_text("FILE");
        m_files.addFormats(*sub);
        sub->callback([this, turn] {
            if (isTable() && turn->count() > 0) throw CLI::ValidationError("--turn", "only for meshes");
        });
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        if (!m_drawing.empty()) checkSvgName(m_drawing);
        return isTable() ? packTable(progress) : packMesh(progress);
    }

private:
    bool isTable() const
    {
        return m_files.input.ends_with(".csv") || m_files.input.ends_with(".CSV") ||
               (m_files.input == "-" && m_files.formats.input.empty());
    }

    RectangleLayout layOut(const std::vector<Point2>& sizes, znUtil::Progress& progress) const
    try {
        return tool::layOut(sizes, m_iterations, m_margin, progress);
    } catch (const Failure& failure) {
        throw Failure(inputName(m_files.input) + ": " + failure.what());
    }

    void addLayout(const RectangleLayout& layout, Report& report) const
    {
        report.add("scale", rounded(layout.scale));
        report.add("density", rounded(layout.density));
        report.add("tries", layout.tries);
    }

    void draw(const std::string& drawing, Report& report) const
    {
        if (m_drawing.empty()) return;
        writeFile(drawing, m_drawing);
        report.add("drawing", m_drawing);
    }

    Report packTable(znUtil::Progress& progress) const
    {
        Phases phases(progress);
        const RectangleTable table = loadRectangles(m_files.input, phases.next(0.1));
        const RectangleLayout layout = layOut(table.sizes, phases.next(0.8));
        const std::string drawing = m_drawing.empty() ? "" : drawPlaces(layout, table.names);
        checkCancelled(progress);
        writeFile(placesAsText(layout.places, table.names), m_files.output);
        Report report = m_files.report();
        report.add("rectangles", table.sizes.size());
        addLayout(layout, report);
        draw(drawing, report);
        return report;
    }

    Report packMesh(znUtil::Progress& progress) const
    {
        checkWritesUVs(m_files.output, m_files.formats.ofOutput());
        Phases phases(progress);
        LoadedMesh loaded;
        m_files.load(loaded, phases.next(0.3));
        checkHasTriangles(loaded.mesh, m_files.input);
        if (!loaded.mesh.getUVs() && loaded.cornerUVs.empty())
            throw Failure(inputName(m_files.input) + ": has no texture coordinates; flatten makes some");
        UVIslands islands = findIslands(loaded, phases.next(0.1));

        AtlasDrawing atlas;
        znUtil::Progress& drawing = phases.next(0.1);
        if (!m_drawing.empty()) atlas.addBefore(islands.outlines(drawing));
        const int numTurned = m_isTurned ? islands.turn() : 0;
        const RectangleLayout layout = layOut(islands.sizes(), phases.next(0.2));
        islands.moveTo(layout);
        znUtil::Progress& drawingAgain = phases.next(0.1);
        if (!m_drawing.empty()) atlas.addAfter(islands.outlines(drawingAgain), layout.places);
        islands.putInto(loaded);
        loaded.keepsPolygons = true;
        m_files.save(loaded, phases.next(0.2));

        Report report = m_files.report();
        report.add("vertices", loaded.mesh.getNumVertices());
        report.add("triangles", loaded.mesh.getNumTriangles());
        report.add("islands", islands.count());
        if (m_isTurned) report.add("turned", numTurned);
        addLayout(layout, report);
        report.add("covered", rounded(islands.area()));
        draw(m_drawing.empty() ? "" : atlas.text(), report);
        if (layout.density == 0) report.addNote("no island has an area");
        report.addNotes(loaded.notes);
        return report;
    }

    UVIslands findIslands(const LoadedMesh& loaded, znUtil::Progress& progress) const
    try {
        progress.setCaption("islands");
        return UVIslands(loaded, progress);
    } catch (const Failure& failure) {
        throw Failure(inputName(m_files.input) + ": " + failure.what());
    }

    MeshRoute m_files;
    double m_margin = 0;
    int m_iterations = 1000;
    bool m_isTurned = false;
    std::string m_drawing;
};

} // namespace

std::unique_ptr<Command> makePackCommand() { return std::make_unique<PackCommand>(); }

} // namespace tool
