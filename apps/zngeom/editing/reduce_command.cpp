#include <algorithm>
#include <cmath>
#include <optional>

#include "apps/zngeom/command/change_command.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/command/tolerance_option.h"
#include "apps/zngeom/editing/collapse_edges.h"
#include "apps/zngeom/editing/positions_only.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "znGeom/analysis/census.h"
#include "znGeom/simplify/reduce.h"

namespace tool {

namespace {

std::string problemOfAmount(const std::string& word)
{
    const std::optional<double> amount = positiveNumber(word);
    const bool isGood = amount && (*amount < 1 || *amount == std::floor(*amount));
    return isGood ? "" : "must be a fraction between 0 and 1, or a whole number from 1";
}

Scene sceneOf(const znGeom::CompactMesh& mesh)
{
    Scene scene;
    scene.mesh = &mesh;
    scene.markings.resize(2);
    scene.markings[0].name = "vertices";
    scene.markings[0].count = static_cast<std::size_t>(mesh.getNumVertices());
    scene.markings[1].name = "triangles";
    scene.markings[1].count = static_cast<std::size_t>(mesh.getNumTriangles());
    return scene;
}

class ReduceCommand : public ChangeCommand
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("reduce", "Remove vertices, those in flat places first");
        sub->footer(
            "--to 0.1 keeps a tenth of the vertices, --to 5000 as many as that. --tolerance 0.5 removes all that can\n"
            "go while every removed vertex stays within that distance of the surface, in the units of the file;\n"
            "--tolerance 0.1% is that part of the diagonal of the bounding box. Vertices that stay keep their\n"
            "positions, and those on a boundary, or where the surface is not manifold, always stay. Vertices and\n"
            "triangles are renumbered; normals, texture coordinates and groups are not kept, polygons become\n"
            "triangles. The picture shows the mesh before and after.\n\n"
            "--method collapse moves vertices: it collapses edges, those first that cost the least by the planes of\n"
            "their triangles. --to then counts triangles. It is two to three times as quick, and closer to the "
            "original\n"
            "for as many triangles, but triangles may turn over (they are counted), there is no tolerance, and it\n"
            "shows no progress.");
        m_files.addFiles(*sub);
        CLI::Option* to = sub->add_option("--to", m_amount, "How many vertices to keep: below 1 a part of them");
        CLI::Option* tolerance =
            addToleranceOption(*sub, m_tolerance, "How far the surface may move away from removed vertices");
        sub->add_option("--method", m_method, "removal, or collapse, as told below [removal]")
            ->check(CLI::IsMember({"removal", "collapse"}))
            ->option_text("NAME");
        to->check(CLI::Validator(problemOfAmount, ""))->option_text("FRACTION|COUNT")->excludes(tolerance);
        sub->callback([this, to, tolerance] {
            if (to->count() + tolerance->count() == 0) throw CLI::RequiredError("--to or --tolerance");
            if (isCollapse() && tolerance->count() > 0)
                throw CLI::ValidationError("--tolerance", "only with --method removal");
        });
        addLastOptions(*sub);
        return sub;
    }

private:
    std::unique_ptr<PendingFile> change(LoadedMesh& loaded, znUtil::Progress& progress, Report& report) const override
    {
        znUtil::Progress phase;
        keepPositionsOnly(loaded, "the reduction");
        znGeom::CompactMesh original;
        if (isDrawn()) original = loaded.mesh;
        report.add("vertices_before", loaded.mesh.getNumVertices());
        report.add("triangles_before", loaded.mesh.getNumTriangles());
        progress.subPhase(0.2, phase);
        addBoundary(loaded, phase, report);
        progress.subPhase(0.8, phase);
        phase.setCaption("reducing");
        if (m_amount.empty())
            reduceWithTolerance(loaded.mesh, phase, report);
        else if (isCollapse())
            collapseTo(loaded, phase, report);
        else
            reduceTo(loaded, phase);
        report.add("vertices", loaded.mesh.getNumVertices());
        report.add("triangles", loaded.mesh.getNumTriangles());
        return isDrawn() ? draw(sceneOf(original), sceneOf(loaded.mesh), progress, report) : nullptr;
    }

    void addBoundary(LoadedMesh& loaded, znUtil::Progress& progress, Report& report) const
    {
        progress.setCaption("looking for boundaries");
        znUtil::Progress phase;
        znGeom::MeshEdgeSides sides;
        progress.subPhase(0.5, phase);
        znGeom::meshEdgeSides(loaded.mesh, phase, sides);
        checkCancelled(progress);
        znGeom::MeshEdgeCensus edges;
        progress.subPhase(0.2, phase);
        znGeom::meshCountEdges(loaded.mesh, sides, phase, edges);
        checkCancelled(progress);
        const int count = edges.boundaryVertices;
        report.add("boundary_vertices", count,
                   std::to_string(count) + (count > 0 && !isCollapse() ? ", which stay" : ""));
        progress.subPhase(0.3, phase);
        if (const std::string hint = soupNote(loaded.mesh, sides, phase); !hint.empty()) loaded.notes.push_back(hint);
    }

    bool isCollapse() const { return m_method == "collapse"; }

    void reduceTo(LoadedMesh& loaded, znUtil::Progress& progress) const
    {
        const int before = loaded.mesh.getNumVertices();
        const double amount = *positiveNumber(m_amount);
        // Half a vertex more, so that a count comes out of the product as it went in.
        const double fraction = amount < 1 ? amount : (amount + 0.5) / before;
        zn::vector<znLinear::Point> removed;
        znGeom::meshReduceToFraction(loaded.mesh, fraction, progress, removed);

        const int after = loaded.mesh.getNumVertices(), wanted = static_cast<int>(before * std::min(fraction, 1.0));
        if (amount > before) loaded.notes.push_back("there are only " + std::to_string(before) + " vertices: all stay");
        if (after > wanted)
            loaded.notes.push_back("no more vertices can be removed: " + std::to_string(after) +
                                   " are left instead of " + std::to_string(wanted) +
                                   "; those on boundaries and where the surface is not manifold stay, and it ends "
                                   "where fewer than one in a hundred can go at a time");
    }

    void collapseTo(LoadedMesh& loaded, znUtil::Progress& progress, Report& report) const
    {
        const int before = loaded.mesh.getNumTriangles();
        const double amount = *positiveNumber(m_amount);
        const double fraction = amount < 1 ? amount : (amount + 0.5) / before;
        report.add("turned_triangles", collapseEdges(loaded.mesh, fraction, progress));
        if (amount > before)
            loaded.notes.push_back("there are only " + std::to_string(before) + " triangles: all stay");
        const int after = loaded.mesh.getNumTriangles(), wanted = std::max(1, static_cast<int>(before * fraction));
        if (after > wanted)
            loaded.notes.push_back("no more edges can collapse: " + std::to_string(after) +
                                   " triangles are left instead of " + std::to_string(wanted) +
                                   ", as the surface would fall together or touch itself");
    }

    void reduceWithTolerance(znGeom::CompactMesh& mesh, znUtil::Progress& progress, Report& report) const
    {
        const double tolerance = toleranceFor(m_tolerance, mesh, m_files.input);
        zn::vector<znLinear::Point> removed;
        const double deviation = znGeom::meshReduceWithTolerance(mesh, tolerance, progress, removed);
        report.add("tolerance", rounded(tolerance), shownNumber(tolerance));
        report.add("largest_deviation", rounded(deviation), shownNumber(deviation));
    }

    std::string m_amount, m_tolerance; ///< one is empty
    std::string m_method = "removal";
};

} // namespace

std::unique_ptr<Command> makeReduceCommand() { return std::make_unique<ReduceCommand>(); }

} // namespace tool
