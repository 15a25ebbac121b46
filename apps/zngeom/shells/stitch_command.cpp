#include <CLI/App.hpp>
#include <algorithm>
#include <cmath>
#include <memory>

#include "apps/zngeom/command/change_command.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/command/tolerance_option.h"
#include "apps/zngeom/editing/positions_only.h"
#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/measuring/boundary_loops.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/components.h"
#include "znGeom/analysis/edge_sides.h"
#include "znGeom/cache/mesh_cache.h"
#include "znGeom/repair/orient.h"
#include "znGeom/shells/mesh_stitch.h"

namespace tool {

namespace {

using znGeom::StitchOutcome;

/// What became of a loop, for programs and for people.
struct Fate
{
    const char* key;
    const char* text;
};

Fate fateOf(StitchOutcome outcome)
{
    switch (outcome) {
    case StitchOutcome::Sewn:
        return {"sewn", "sewn"};
    case StitchOutcome::SewnInPart:
        return {"sewn_in_part", "sewn in part: nothing runs beside the rest"};
    case StitchOutcome::TooShort:
        return {"too_short", "left open: shorter than twice the tolerance, or it doesn't close"};
    case StitchOutcome::NothingBeside:
        return {"nothing_beside", "left open: no boundary runs beside it within the tolerance"};
    case StitchOutcome::TooNarrow:
        return {"too_narrow", "left open: what is beside it runs beside something else too, or for less than the "
                              "tolerance; a smaller tolerance may help"};
    case StitchOutcome::SameWay:
        return {"same_way", "left open: the boundary beside it is wound the same way, and turning can't help that"};
    case StitchOutcome::NotSewn:
        return {"not_sewn", "left open: it touches itself or another boundary where the seam would be"};
    case StitchOutcome::NotChosen:
        break;
    }
    return {"not_asked_for", "left open: not among --loops"};
}

std::string problemOfFraction(const std::string& word)
{
    const std::optional<double> number = finiteNumber(word);
    return number && *number >= 0 && *number <= 1 ? "" : "must be a number from 0 to 1";
}

constexpr Colour ofBorder{220, 30, 45}, ofSeam{40, 110, 220};

/// How many triangles the shell of each triangle has.
std::vector<int> shellSizes(const znGeom::CompactMesh& mesh, const zn::vector<int>& triangles)
{
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    znGeom::Array<int> components;
    std::vector<int> counts(static_cast<std::size_t>(znGeom::meshComponents(mesh, adjTris, &components)));
    const auto shellOf = [&](int t) { return static_cast<std::size_t>(components[mesh.getTriangles()[t][0]]); };
    for (int t = 0; t < mesh.getNumTriangles(); ++t) ++counts[shellOf(t)];
    std::vector<int> sizes;
    for (const int t : triangles) sizes.push_back(counts[shellOf(t)]);
    return sizes;
}

class StitchCommand : public ChangeCommand
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("stitch", "Sew boundaries together that run side by side");
        sub->footer(
            "Boundaries of different shells, or of one, that are nearer to each other than the tolerance are joined\n"
            "edge by edge; vertices are added where one side has fewer, and the side with fewer is moved to the\n"
            "other. A vertex as near to the end of an edge across as --seam says, as a part of that edge, goes to\n"
            "that end. The mesh is oriented first; shells that are wound against those beside them are turned over.\n"
            "Boundary loops are numbered from 1 as this command lists them, the longest first. Vertices and\n"
            "triangles are renumbered; normals, texture coordinates and groups are not kept, polygons become\n"
            "triangles. The picture shows the mesh before and after.\n"
            "Exit status: 0 when everything is sewn that runs side by side, 2 when that is nothing, or some of it\n"
            "stays open; OUT is written in both cases.");
        m_files.addFiles(*sub);
        addToleranceOption(*sub, m_tolerance, "How far apart boundaries may be")->required();
        sub->add_option("--seam", m_seam, "The part of an edge within which a place counts as its end")
            ->check(CLI::Validator(problemOfFraction, ""))
            ->option_text("FRACTION [0.05]");
        addLoopsOption(*sub, m_wanted, "The numbers of the loops to sew, all by default");
        addLastOptions(*sub);
        return sub;
    }

private:
    std::unique_ptr<PendingFile> change(LoadedMesh& loaded, znUtil::Progress& progress, Report& report) const override
    {
        znGeom::CompactMesh& mesh = loaded.mesh;
        znUtil::Progress phase;
        progress.setCaption("looking for boundaries");
        report.add("vertices_before", mesh.getNumVertices());
        report.add("triangles_before", mesh.getNumTriangles());
        const double tolerance = toleranceFor(m_tolerance, mesh, m_files.input);
        report.add("tolerance", rounded(tolerance), shownNumber(tolerance));
        keepPositionsOnly(loaded, "the stitching");
        znGeom::CompactMesh original;
        if (isDrawn()) original = mesh;
        progress.subPhase(0.3, phase);
        noteSoup(loaded, phase);
        orient(loaded);
        checkCancelled(progress);

        znGeom::SimpleMeshCache cache;
        const zn::Reference<znGeom::MeshBoundaries> boundaries = cache.getBoundaries(mesh);
        const std::vector<BoundaryLoop> loops = loopsByLength(mesh, *boundaries);
        checkLoopNumbers(m_wanted, loops.size(), m_files.input);
        znGeom::CompactMesh oriented;
        oriented = mesh;
        znGeom::MeshStitchAccount account;
        progress.setCaption("stitching");
        bool isSewn;
        {
            const EndOnSignal endOnSignal(progress);
            isSewn = znGeom::meshStitch(mesh, cache.getAdjTris(mesh), boundaries, chosenOf(loops), tolerance, m_seam,
                                        &account);
        }
        tell(loops, account, oriented, isSewn, report);
        report.add("vertices", mesh.getNumVertices());
        report.add("triangles", mesh.getNumTriangles());
        if (!isDrawn()) return nullptr;
        return draw({&original, {markLoops(oriented, *boundaries, "boundaries", ofBorder)}, ""},
                    sceneAfter(mesh, oriented, *boundaries, account), progress, report);
    }

    static void noteSoup(LoadedMesh& loaded, znUtil::Progress& progress)
    {
        znUtil::Progress phase;
        znGeom::MeshEdgeSides sides;
        progress.subPhase(0.7, phase);
        znGeom::meshEdgeSides(loaded.mesh, phase, sides);
        checkCancelled(progress);
        progress.subPhase(0.3, phase);
        if (const std::string note = soupNote(loaded.mesh, sides, phase); !note.empty()) loaded.notes.push_back(note);
    }

    static void orient(LoadedMesh& loaded)
    {
        znGeom::MeshAdjTris adjTris;
        znGeom::meshAdjTris(loaded.mesh, adjTris);
        if (!znGeom::meshMakeOriented(loaded.mesh, adjTris))
            loaded.notes.push_back("the surface can't be wound consistently: boundaries may be missed or cut, unless "
                                   "the mesh is repaired first");
    }

    zn::vector<int> chosenOf(const std::vector<BoundaryLoop>& loops) const
    {
        zn::vector<int> chosen;
        for (std::size_t i = 0; i < loops.size(); ++i)
            if (m_wanted.empty() ||
                std::find(m_wanted.begin(), m_wanted.end(), static_cast<int>(i) + 1) != m_wanted.end())
                chosen.append(loops[i].inMesh);
        return chosen;
    }

    static void tell(const std::vector<BoundaryLoop>& loops, const znGeom::MeshStitchAccount& account,
                     const znGeom::CompactMesh& oriented, bool isSewn, Report& report)
    {
        std::vector<std::size_t> numberOf(loops.size());
        for (std::size_t i = 0; i < loops.size(); ++i) numberOf[static_cast<std::size_t>(loops[i].inMesh)] = i + 1;
        addLoops(loops, account, report);
        addPairs(account, numberOf, report);
        Report::Value shells = Report::Value::array();
        const std::vector<int> sizes = shellSizes(oriented, account.turned);
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            const int triangle = account.turned[static_cast<int>(i)] + 1;
            shells.push_back({{"triangle", triangle}, {"triangles", sizes[i]}});
            report.addForPeople("  turned over", "the shell of triangle " + std::to_string(triangle) + ", " +
                                                     std::to_string(sizes[i]) + " triangles");
        }
        report.addForPrograms("turned_shells", std::move(shells));
        const auto isOpen = [](const znGeom::MeshStitchPair& pair) { return !pair.isSewn; };
        if (!isSewn || std::any_of(account.pairs.begin(), account.pairs.end(), isOpen))
            report.setStatus(Report::Status::Broken);
    }

    /// All loops for programs; the longest ones, of those that stay open, for people.
    static void addLoops(const std::vector<BoundaryLoop>& loops, const znGeom::MeshStitchAccount& account,
                         Report& report)
    {
        constexpr std::size_t mostShown = 10;
        Report::Value list = Report::Value::array();
        std::size_t numOpen = 0;
        report.add("boundary_loops", loops.size());
        for (const BoundaryLoop& loop : loops) {
            const StitchOutcome outcome = account.outcomes[loop.inMesh];
            const Fate fate = fateOf(outcome);
            list.push_back({{"loop", list.size() + 1},
                            {"edges", loop.numEdges},
                            {"length", rounded(loop.length)},
                            {"outcome", fate.key},
                            {"text", fate.text}});
            if (outcome == StitchOutcome::Sewn || ++numOpen > mostShown) continue;
            report.addForPeople("  loop " + std::to_string(list.size()),
                                std::to_string(loop.numEdges) + " edges, " + fate.text);
        }
        if (numOpen > mostShown)
            report.addForPeople("  and more", std::to_string(numOpen - mostShown) + " that stay open");
        report.addForPrograms("loops", std::move(list));
    }

    static void addPairs(const znGeom::MeshStitchAccount& account, const std::vector<std::size_t>& numberOf,
                         Report& report)
    {
        constexpr int mostShown = 10;
        Report::Value list = Report::Value::array();
        const auto numSewn = std::count_if(account.pairs.begin(), account.pairs.end(),
                                           [](const znGeom::MeshStitchPair& pair) { return pair.isSewn; });
        report.add("seams", numSewn, std::to_string(numSewn) + " of " + std::to_string(account.pairs.size()));
        for (const znGeom::MeshStitchPair& pair : account.pairs) {
            const std::size_t loop = numberOf[static_cast<std::size_t>(pair.loop)];
            const std::size_t other = numberOf[static_cast<std::size_t>(pair.otherLoop)];
            list.push_back({{"loop", loop},
                            {"other_loop", other},
                            {"length", rounded(pair.length)},
                            {"circular", pair.isCircular},
                            {"sewn", pair.isSewn}});
            if (list.size() > mostShown) continue;
            const std::string with = loop == other ? " with itself" : " with loop " + std::to_string(other);
            report.addForPeople("  loop " + std::to_string(loop) + with, shownNumber(pair.length) +
                                                                             (pair.isCircular ? ", all round" : "") +
                                                                             (pair.isSewn ? "" : ", not sewn"));
        }
        if (list.size() > mostShown)
            report.addForPeople("  and more", std::to_string(list.size() - mostShown) + " seams");
        report.addForPrograms("pairs", std::move(list));
    }

    static Marking markLoops(const znGeom::CompactMesh& mesh, const znGeom::MeshBoundaries& boundaries,
                             const char* name, Colour colour)
    {
        Marking marking{name, static_cast<std::size_t>(boundaries.size()), colour, {}, {}, {}};
        for (int loop = 0; loop < boundaries.size(); ++loop) addLines(mesh, boundaries, loop, marking);
        return marking;
    }

    static Scene sceneAfter(const znGeom::CompactMesh& mesh, const znGeom::CompactMesh& before,
                            const znGeom::MeshBoundaries& boundaries, const znGeom::MeshStitchAccount& account)
    {
        Marking seams{"seams", 0, ofSeam, {}, {}, {}};
        seams.count = static_cast<std::size_t>(account.pairs.size());
        for (int loop = 0; loop < boundaries.size(); ++loop)
            if (account.outcomes[loop] == StitchOutcome::Sewn || account.outcomes[loop] == StitchOutcome::SewnInPart)
                addLines(before, boundaries, loop, seams);
        znGeom::SimpleMeshCache cache;
        return {&mesh, {seams, markLoops(mesh, *cache.getBoundaries(mesh), "boundaries", ofBorder)}, ""};
    }

    std::string m_tolerance;
    double m_seam = 0.05;
    std::vector<int> m_wanted; ///< numbers from 1; empty for all
};

} // namespace

std::unique_ptr<Command> makeStitchCommand() { return std::make_unique<StitchCommand>(); }

} // namespace tool
