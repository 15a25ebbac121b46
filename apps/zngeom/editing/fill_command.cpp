#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <optional>
#include <set>

#include "apps/zngeom/command/change_command.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/editing/positions_only.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/usage.h"
#include "apps/zngeom/measuring/boundary_loops.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/census.h"
#include "znGeom/repair/hole_fill.h"

namespace tool {

namespace {

using znGeom::HoleOutcome;

/// What became of a loop, for programs and for people.
struct Fate
{
    const char* key = "not_asked_for";
    std::string text = "left open: not among --loops";
};

Fate fateOf(HoleOutcome outcome)
{
    switch (outcome) {
    case HoleOutcome::Filled:
        return {"filled", "filled"};
    case HoleOutcome::NoLoop:
        return {"no_loop", "not filled: it has fewer than three vertices"};
    case HoleOutcome::NotABoundary:
        return {"not_a_boundary", "not filled: it doesn't close"};
    case HoleOutcome::LooseTriangle:
        return {"loose_triangle", "not filled: a spike on it belongs to a triangle that nothing else holds"};
    case HoleOutcome::TooLong:
        return {"too_long", "not filled: it has more than 46 thousand vertices"};
    case HoleOutcome::EdgeInTheWay:
        return {"edge_in_the_way", "not filled: every way to fill it repeats an edge that is there"};
    case HoleOutcome::GivenUp:
        break;
    }
    return {"given_up", "not filled: given up"};
}

struct Loop : BoundaryLoop
{
    bool isWanted = false;
    Fate fate = {};
};

/// All loops for programs; those that failed and the longest ones for people.
void addLoops(const std::vector<Loop>& loops, Report& report)
{
    constexpr std::size_t mostShown = 10;
    std::size_t numShown = 0;
    Report::Value list = Report::Value::array();
    report.add("boundary_loops", loops.size());
    for (const Loop& loop : loops) {
        list.push_back({{"loop", list.size() + 1},
                        {"edges", loop.numEdges},
                        {"length", rounded(loop.length)},
                        {"outcome", loop.fate.key},
                        {"text", loop.fate.text}});
        const bool hasFailed = loop.isWanted && loop.fate.text != "filled";
        if (list.size() > mostShown && !hasFailed) continue;
        ++numShown;
        report.addForPeople("  loop " + std::to_string(list.size()), std::to_string(loop.numEdges) +
                                                                         (loop.numEdges == 1 ? " edge, " : " edges, ") +
                                                                         loop.fate.text);
    }
    if (numShown < loops.size())
        report.addForPeople("  and more", std::to_string(loops.size() - numShown) + " that are filled or left open");
    report.addForPrograms("loops", std::move(list));
}

constexpr Colour ofRim{220, 30, 45}, ofPatch{255, 178, 60};

Marking markRims(const znGeom::CompactMesh& mesh, const znGeom::MeshBoundaries& boundaries,
                 const std::vector<Loop>& loops)
{
    Marking marking{"holes", 0, ofRim, {}, {}, {}};
    for (const Loop& loop : loops) {
        if (!loop.isWanted) continue;
        ++marking.count;
        addLines(mesh, boundaries, loop.inMesh, marking);
    }
    return marking;
}

/// The triangles of a mesh that lie where there was none before.
Marking markNew(const znGeom::CompactMesh& before, const znGeom::CompactMesh& after)
{
    using Place = std::array<float, 3>;
    const auto placesOf = [](const znGeom::CompactMesh& mesh, int triangle) {
        std::array<Place, 3> places;
        for (std::size_t i = 0; i < 3; ++i) {
            const auto& vertex = mesh.getVertices()[mesh.getTriangles()[triangle].corners[i]];
            places[i] = {vertex.x, vertex.y, vertex.z};
        }
        std::sort(places.begin(), places.end());
        return places;
    };
    std::set<std::array<Place, 3>> old;
    for (int t = 0; t < before.getNumTriangles(); ++t) old.insert(placesOf(before, t));
    Marking marking{"new triangles", 0, ofPatch, {}, {}, {}};
    for (int t = 0; t < after.getNumTriangles(); ++t)
        if (!old.contains(placesOf(after, t))) marking.triangles.push_back(t);
    marking.count = marking.triangles.size();
    return marking;
}

class FillCommand : public ChangeCommand
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("fill", "Close the holes of a mesh");
        sub->footer(
            "Boundary loops are numbered from 1 as this command lists them, the longest first; --json lists all. A\n"
            "patch of quality 0 has no new vertices; 1 has as many as the surface around it, and 2 also bends them so\n"
            "that they continue it. Vertices that stay keep their positions. Vertices and triangles are renumbered;\n"
            "normals, texture coordinates and groups are not kept, polygons become triangles. The time grows with\n"
            "the cube of the longest loop: --max-length leaves long ones open.\n"
            "The picture shows the mesh before and after.\n"
            "Exit status: 0 when all loops are closed that should be, 2 when some stay open; OUT is written in both\n"
            "cases.");
        m_files.addFiles(*sub);
        sub->add_option("--quality", m_quality, "How much is done for a patch")
            ->check(CLI::IsMember({0, 1, 2}))
            ->option_text("0|1|2 [2]");
        sub->add_option("--max-length", m_maxLength, "Leave loops of more edges than this open")
            ->check(wholeNumberFrom(3))
            ->option_text("N");
        addLoopsOption(*sub, m_wanted, "The numbers of the loops to fill, all by default");
        addLastOptions(*sub);
        return sub;
    }

private:
    std::unique_ptr<PendingFile> change(LoadedMesh& loaded, znUtil::Progress& progress, Report& report) const override
    {
        znUtil::Progress phase;
        report.add("vertices_before", loaded.mesh.getNumVertices());
        report.add("triangles_before", loaded.mesh.getNumTriangles());
        progress.subPhase(0.2, phase);
        checkSurface(loaded, phase);
        progress.subPhase(0.8, phase);
        return fill(loaded, phase, report);
    }

    /// Fails where no vertices are shared, since each triangle would get a back. Notes what hides boundaries.
    void checkSurface(LoadedMesh& loaded, znUtil::Progress& progress) const
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
        progress.subPhase(0.3, phase);
        if (const std::string note = soupNote(loaded.mesh, sides, phase); !note.empty())
            throw Failure(inputName(m_files.input) + ": each triangle would be closed on its own: " + note);
        if (edges.nonManifold > 0 || !edges.isConsistentlyWound())
            loaded.notes.push_back("the surface is not manifold, or not consistently wound: boundaries may be missed "
                                   "or cut, unless the mesh is repaired first");
    }

    std::unique_ptr<PendingFile> fill(LoadedMesh& loaded, znUtil::Progress& progress, Report& report) const
    {
        znGeom::CompactMesh& mesh = loaded.mesh;
        const MeshBorders borders(mesh);
        checkCancelled(progress);
        std::vector<Loop> loops;
        for (const BoundaryLoop& loop : loopsByLength(mesh, borders.boundaries)) loops.push_back({loop});
        chooseLoops(loops);
        zn::list<int> holes;
        for (const Loop& loop : loops)
            if (loop.isWanted) holes.append(loop.inMesh);

        znGeom::CompactMesh original;
        if (isDrawn()) original = mesh;
        zn::vector<HoleOutcome> outcomes;
        if (holes.size() > 0) {
            keepPositionsOnly(loaded, "the filling");
            znGeom::meshHoleFill(mesh, borders.adjTris, borders.adjVertices, borders.boundaries, holes,
                                 static_cast<znGeom::HoleQuality>(m_quality), progress, &outcomes);
            checkCancelled(progress);
        }
        tellOutcomes(outcomes, loops, loaded, report);
        if (!isDrawn()) return nullptr;
        return draw({&original, {markRims(original, borders.boundaries, loops)}, ""},
                    {&mesh, {markNew(original, mesh)}, ""}, progress, report);
    }

    static void tellOutcomes(const zn::vector<HoleOutcome>& outcomes, std::vector<Loop>& loops, LoadedMesh& loaded,
                             Report& report)
    {
        for (int next = 0; Loop & loop : loops)
            if (loop.isWanted) loop.fate = fateOf(outcomes[next++]);
        addLoops(loops, report);
        const auto numFilled = std::count(outcomes.begin(), outcomes.end(), HoleOutcome::Filled);
        report.add("filled", numFilled, std::to_string(numFilled) + " of " + std::to_string(outcomes.size()));
        if (numFilled < outcomes.size()) report.setStatus(Report::Status::Broken);
        const auto isPiece = [](HoleOutcome outcome) {
            return outcome == HoleOutcome::NotABoundary || outcome == HoleOutcome::NoLoop;
        };
        if (std::any_of(outcomes.begin(), outcomes.end(), isPiece))
            loaded.notes.push_back("boundaries that touch come out in pieces, unless the mesh is repaired first");
        report.add("vertices", loaded.mesh.getNumVertices());
        report.add("triangles", loaded.mesh.getNumTriangles());
    }

    void chooseLoops(std::vector<Loop>& loops) const
    {
        for (Loop& loop : loops) loop.isWanted = m_wanted.empty();
        checkLoopNumbers(m_wanted, loops.size(), m_files.input);
        for (const int number : m_wanted) loops[static_cast<std::size_t>(number - 1)].isWanted = true;
        for (Loop& loop : loops) {
            if (!loop.isWanted || !m_maxLength || loop.numEdges <= *m_maxLength) continue;
            loop.isWanted = false;
            loop.fate = {"too_many_edges", "left open: more than " + std::to_string(*m_maxLength)};
        }
    }

    std::vector<int> m_wanted; ///< numbers from 1; empty for all
    std::optional<int> m_maxLength;
    int m_quality = znGeom::HoleFaired;
};

} // namespace

std::unique_ptr<Command> makeFillCommand() { return std::make_unique<FillCommand>(); }

} // namespace tool
