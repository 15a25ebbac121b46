#include <cmath>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/mesh_route.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/curves/surface_lines.h"
#include "apps/zngeom/editing/positions_only.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/point_reader.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/measuring/boundary_loops.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/curves/mesh_cut.h"

namespace tool {

namespace {

using znGeom::CompactMeshCutResult;

constexpr double toleranceOfDiagonal = 1e-6;

std::string placeText(const znLinear::Point& place)
{
    return "(" + shownNumber(place.x) + ", " + shownNumber(place.y) + ", " + shownNumber(place.z) + ")";
}

std::string counted(int count, const std::string& one, const std::string& many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

/// What is wrong with a word for a tolerance; empty for nothing.
std::string complaintAbout(const std::string& word)
{
    const std::optional<double> tolerance = finiteNumber(word);
    return tolerance && *tolerance > 0 ? "" : "must be a distance above 0";
}

/// Why a mesh could not be cut.
std::string describe(const CompactMeshCutResult& result)
{
    switch (result.getStatus()) {
    case CompactMeshCutResult::CurveEndsInFace:
        return "a curve ends inside a triangle, at " + placeText(result.getProblemPoint());
    case CompactMeshCutResult::CurveLoopsInFace:
        return "curves cross twice within one triangle, at " + placeText(result.getProblemPoint()) +
               "; smaller triangles there help";
    case CompactMeshCutResult::NothingToCut:
        return "nothing to cut: all curves end inside the surface, and cross nothing";
    default:
        return "the curves are no curves on the surface";
    }
}

/// Parts and borders of a mesh. May be cancelled.
void addShape(const znGeom::CompactMesh& mesh, znUtil::Progress& progress, const std::string& suffix, Report& report)
{
    Phases phases(progress);
    znGeom::MeshEdgeSides sides;
    znGeom::meshEdgeSides(mesh, phases.next(0.4), sides);
    const int numPieces = findComponents(mesh, sides, "edges", phases.next(0.3)).count();
    checkCancelled(progress);
    const MeshBorders borders(mesh);
    report.add(("vertices" + suffix).c_str(), mesh.getNumVertices());
    report.add(("triangles" + suffix).c_str(), mesh.getNumTriangles());
    report.add(("pieces" + suffix).c_str(), numPieces);
    report.add(("borders" + suffix).c_str(), borders.boundaries.size());
}

class CutCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("cut", "Cut a mesh open along lines or planes");
        sub->footer(
            "LINES is a file as zngeom project takes it; its polylines are laid on the mesh first. A curve cuts from\n"
            "border to border, round a loop, and between crossings; what else ends inside the surface is taken off,\n"
            "and told as trimmed. Several planes and files of lines cut at once. The pieces stay in one file: zngeom\n"
            "split parts them. Places nearer than the tolerance to a vertex or an edge count as lying there.\n"
            "Vertices and triangles are renumbered; normals, texture coordinates and groups are not kept.");
        m_files.addFiles(*sub);
        sub->add_option("--along", m_along, "A file of lines")
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->option_text("LINES ...");
        addPlaneOption(*sub, m_planes, true);
        sub->add_option("--tolerance", m_tolerance, "In the units of the file; a millionth of the diagonal by default")
            ->check(complaintAbout)
            ->option_text("D");
        m_files.addFormats(*sub);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        if (m_along.empty() && m_planes.empty()) throw Failure("nothing to cut along: give --along or --plane");
        for (const std::string& plane : m_planes) planeFrom(plane);
        Phases phases(progress);
        LoadedMesh loaded;
        m_files.load(loaded, phases.next(0.2));
        znGeom::CompactMesh& mesh = loaded.mesh;
        checkHasTriangles(mesh, m_files.input);
        checkFinite(mesh.getVertices(), mesh.getNumVertices(), inputName(m_files.input));
        if (m_tolerance >= diagonalOf(mesh))
            throw Failure(inputName(m_files.input) + ": is no larger than the tolerance of " +
                          shownNumber(m_tolerance));
        const SurfaceCurves curves = findCurves(mesh, phases.next(0.2));
        Report report = m_files.report();
        addShape(mesh, phases.next(0.05), "_before", report);
        keepPositionsOnly(loaded, "the cut");
        cut(mesh, curves, phases.next(0.4), report);
        addShape(mesh, phases.next(0.05), "", report);
        m_files.save(loaded, phases.next(0.1));
        report.addNotes(loaded.notes);
        return report;
    }

private:
    SurfaceCurves findCurves(const znGeom::CompactMesh& mesh, znUtil::Progress& progress) const
    {
        Phases phases(progress);
        SurfaceCurves curves;
        for (const std::string& plane : m_planes)
            for (const auto& curve : cutByPlane(mesh, plane, m_files.input)) curves.push_back(curve);
        for (const std::string& path : m_along) {
            if (path == standardStream && m_files.input == standardStream)
                throw Failure("-: only one of mesh and lines can be standard input");
            const double share = 0.5 / static_cast<double>(m_along.size());
            const auto polylines =
                loadPolylines(path, phases.next(share), path == standardStream ? m_files.formats.input : "");
            double farthest = 0;
            for (const auto& curve : layOn(mesh, polylines, path, phases.next(share), farthest))
                curves.push_back(curve);
        }
        return curves;
    }

    void cut(znGeom::CompactMesh& mesh, const SurfaceCurves& curves, znUtil::Progress& progress, Report& report) const
    {
        progress.setCaption("cutting");
        std::deque<std::deque<znGeom::MeshCoord>> places;
        double length = 0;
        for (const auto& curve : curves) {
            length += curve->length(mesh);
            places.push_back(curve->coords);
            if (curve->closed) places.back().push_back(curve->coords.front());
        }
        const double tolerance = m_tolerance > 0 ? m_tolerance : toleranceOfDiagonal * diagonalOf(mesh);
        znGeom::MeshAdjTris adjTris;
        znGeom::meshAdjTris(mesh, adjTris);
        const CompactMeshCutResult result = znGeom::meshCut(mesh, adjTris, places, tolerance, progress);
        checkCancelled(progress);
        if (!result) throw Failure(inputName(m_files.input) + ": " + describe(result));
        report.add("curves", curves.size());
        report.add("tolerance", rounded(tolerance), shownNumber(tolerance));
        report.add("length_given", rounded(length), shownNumber(length));
        addAccount(result.account, report);
    }

    static void addAccount(const znGeom::MeshCutAccount& account, Report& report)
    {
        report.add("length_cut", rounded(account.openedLength), shownNumber(account.openedLength));
        const auto addLoss = [&report](const char* key, double length, int count, const std::string& why) {
            report.add(key, rounded(length), shownNumber(length) + (count > 0 ? ": " + why : ""));
        };
        addLoss("length_trimmed", account.curves.trimmedLength, account.curves.numTrimmed,
                counted(account.curves.numTrimmed, "end", "ends") + " inside the surface");
        addLoss("length_repeated", account.curves.repeatedLength, account.curves.numRepeated,
                counted(account.curves.numRepeated, "curve repeats", "curves repeat") + " another");
        addLoss("length_left_closed", account.unopenedLength, account.numUnopenedEdges,
                counted(account.numUnopenedEdges, "edge", "edges") + " that reach no opening");
        report.addForPrograms("ends_trimmed", account.curves.numTrimmed);
        report.addForPrograms("curves_repeated", account.curves.numRepeated);
        report.addForPrograms("edges_left_closed", account.numUnopenedEdges);
        report.addForPrograms("curves_without_length", account.curves.numDegenerate);
        report.addForPrograms("pieces_skipped", account.numSkippedRuns);
        if (account.numSkippedRuns > 0)
            report.addNote(counted(account.numSkippedRuns, "piece of a curve turns", "pieces of curves turn") +
                           " back on itself within a triangle, and cuts nothing");
    }

    MeshRoute m_files;
    std::vector<std::string> m_along, m_planes;
    double m_tolerance = 0;
};

} // namespace

std::unique_ptr<Command> makeCutCommand() { return std::make_unique<CutCommand>(); }

} // namespace tool
