#include <algorithm>
#include <cmath>
#include <optional>

#include "apps/zngeom/command/change_command.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/editing/positions_only.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/shells/offset_surface.h"
#include "znGeom/analysis/census.h"
#include "znGeom/analysis/volume.h"

namespace tool {

namespace {

constexpr Colour ofCrossings{220, 30, 45};

std::string problemOfDistance(const std::string& word)
{
    return finiteNumber(word).value_or(0) != 0 ? "" : "must be a distance other than 0";
}

std::string problemOfThickness(const std::string& word)
{
    return finiteNumber(word).value_or(0) > 0 ? "" : "must be a distance above 0";
}

const std::string aboutPruning =
    "In front of the surface is where its triangles appear counter-clockwise. Vertices of the copy that come too\n"
    "near to the mesh, and those where it turns over, are removed; those that can't be are counted as left. Only\n"
    "distances between vertices count: where edges are longer than the distance the copy may cross the mesh, or\n"
    "itself, and of parts without room for the copy little is left. The wall is measured from the vertices of each\n"
    "surface to the other; crossings are pairs of triangles of OUT, in a shell also those that the mesh had.\n"
    "Normals, texture coordinates and groups are not kept, polygons become triangles. Ctrl-C ends the command with\n"
    "OUT as it was. The picture shows the mesh before and after, and what crosses in red.\n"
    "Exit status: 0, or 2 when something crosses or is left that should have gone; OUT is written in both cases.";

/// What the two commands have in common.
class SurfaceCommand : public ChangeCommand
{
protected:
    struct Request
    {
        double outward;
        bool isShell;
    };
    virtual Request request(Report& report) const = 0;

private:
    std::unique_ptr<PendingFile> change(LoadedMesh& loaded, znUtil::Progress& progress, Report& report) const override
    {
        Phases phases(progress);
        znGeom::CompactMesh& mesh = loaded.mesh;
        keepPositionsOnly(loaded, "the offset");
        report.add("vertices_before", mesh.getNumVertices());
        report.add("triangles_before", mesh.getNumTriangles());
        const Request wanted = request(report);
        const bool isClosed = checkSurface(loaded, wanted, phases.next(0.2));
        znGeom::CompactMesh original;
        if (isDrawn()) original = mesh;

        const OffsetFindings findings = offsetSurface(mesh, wanted.outward, wanted.isShell, phases.next(0.7));
        checkResult(mesh);
        tell(findings, report);
        report.add("vertices", mesh.getNumVertices());
        report.add("triangles", mesh.getNumTriangles());
        addNotes(findings, wanted, isClosed, loaded);
        if (!isDrawn()) return nullptr;
        const Marking crossings{"crossing triangles", findings.crossing.size(), ofCrossings, findings.crossing, {}, {}};
        return draw({&original, {}, ""}, {&mesh, {crossings}, ""}, phases.next(0.1), report);
    }

    /// \return whether the surface is closed
    bool checkSurface(LoadedMesh& loaded, const Request& wanted, znUtil::Progress& progress) const
    {
        progress.setCaption("looking at edges");
        Phases phases(progress);
        znGeom::MeshEdgeSides sides;
        znGeom::MeshEdgeCensus edges;
        znGeom::MeshVertexCensus vertices;
        znGeom::meshEdgeSides(loaded.mesh, phases.next(0.5), sides);
        znGeom::meshCountEdges(loaded.mesh, sides, phases.next(0.2), edges);
        znGeom::meshCountVertices(loaded.mesh, sides, phases.next(0.2), vertices);
        if (vertices.nonFinite > 0) refuse("some of its vertices are not finite; repair the mesh first");
        if (const std::string note = soupNote(loaded.mesh, sides, phases.next(0.1)); !note.empty())
            refuse("each triangle would get a copy of its own: " + note);
        if (edges.nonManifold > 0 || !edges.isConsistentlyWound())
            loaded.notes.push_back("the surface is not manifold, or not consistently wound: parts of the copy may lie "
                                   "on the wrong side, unless the mesh is repaired first");
        else if (edges.isClosed() && znGeom::meshVolume(loaded.mesh) < 0)
            loaded.notes.push_back(std::string("the mesh is wound inside out: ") +
                                   (wanted.outward > 0 ? "outward" : "inward") +
                                   " is to its other side, unless the mesh is repaired first");
        return edges.isClosed();
    }

    void checkResult(const znGeom::CompactMesh& mesh) const
    {
        if (mesh.getNumTriangles() == 0) refuse("nothing is left of the surface at that distance");
        const float* const numbers = mesh.getVerticesRaw();
        if (!std::all_of(numbers, numbers + 3 * mesh.getNumVertices(),
                         [](float number) { return std::isfinite(number); }))
            refuse("the result would be larger than numbers in files are");
    }

    [[noreturn]] void refuse(const std::string& reason) const
    {
        throw Failure(inputName(m_files.input) + ": can't be offset: " + reason);
    }

    static void tell(const OffsetFindings& findings, Report& report)
    {
        const znGeom::MeshOffsetPruning& pruning = findings.pruning;
        report.add("removed_too_close", pruning.tooClose);
        report.add("removed_turned", pruning.turned);
        report.add("left_too_close", pruning.tooCloseLeft);
        report.add("left_turned", pruning.turnedLeft);
        report.add("wall_smallest", rounded(findings.smallestWall), shownNumber(findings.smallestWall));
        report.add("wall_largest", rounded(findings.largestWall), shownNumber(findings.largestWall));
        report.add("crossings", findings.crossings);
        if (pruning.tooCloseLeft + pruning.turnedLeft > 0 || findings.crossings > 0)
            report.setStatus(Report::Status::Broken);
    }

    static void addNotes(const OffsetFindings& findings, const Request& wanted, bool isClosed, LoadedMesh& loaded)
    {
        if (findings.crossings > 0)
            loaded.notes.push_back("triangles cross: a smaller distance, or a mesh with shorter edges, may avoid it");
        if (isClosed && wanted.outward < 0 && loaded.mesh.getNumVertices() > 0 && findings.pruning.tooCloseLeft > 0)
            loaded.notes.push_back("the mesh is thinner than the distance somewhere: what is left of the copy there "
                                   "has no inside");
        constexpr double far = 2; // in distances
        if (findings.largestWall > far * std::fabs(wanted.outward))
            loaded.notes.push_back("where parts of the copy went, the mesh is up to " +
                                   shownNumber(findings.largestWall) + " away from what is left of it");
    }
};

class OffsetCommand : public SurfaceCommand
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("offset", "Make the surface that lies at a distance from a mesh");
        sub->footer("A positive distance goes outward, in front of the surface, a negative one inward. OUT is the\n"
                    "copy alone, wound as the mesh is.\n\n" +
                    aboutPruning);
        m_files.addFiles(*sub);
        sub->add_option("--distance", m_distance, "How far, in the units of the file")
            ->required()
            ->check(CLI::Validator(problemOfDistance, ""))
            ->option_text("D");
        addLastOptions(*sub);
        return sub;
    }

private:
    Request request(Report& report) const override
    {
        const double distance = *finiteNumber(m_distance);
        report.add("distance", distance, shownNumber(distance));
        return {distance, false};
    }

    std::string m_distance;
};

class ShellCommand : public SurfaceCommand
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("shell", "Give a surface a thickness: a closed shell");
        sub->footer("OUT is the mesh, its copy at the distance, wound the other way, and walls between the two along\n"
                    "every border; the whole is wound so that it faces away from what it encloses.\n\n" +
                    aboutPruning);
        m_files.addFiles(*sub);
        sub->add_option("--thickness", m_thickness, "How thick, in the units of the file")
            ->required()
            ->check(CLI::Validator(problemOfThickness, ""))
            ->option_text("D");
        sub->add_option("--side", m_side, "Where the copy goes: in or out (in unless given)")
            ->check(CLI::IsMember({"in", "out"}))
            ->option_text("in|out");
        addLastOptions(*sub);
        return sub;
    }

private:
    Request request(Report& report) const override
    {
        const double thickness = *finiteNumber(m_thickness);
        report.add("thickness", thickness, shownNumber(thickness));
        report.add("side", m_side);
        return {m_side == "in" ? -thickness : thickness, true};
    }

    std::string m_thickness, m_side = "in";
};

} // namespace

std::unique_ptr<Command> makeOffsetCommand() { return std::make_unique<OffsetCommand>(); }
std::unique_ptr<Command> makeShellCommand() { return std::make_unique<ShellCommand>(); }

} // namespace tool
