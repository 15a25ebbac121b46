#include <algorithm>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/listing.h"
#include "apps/zngeom/files/point_reader.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/measuring/mesh_index.h"
#include "znGeom/analysis/census.h"
#include "znGeom/analysis/normals.h"
#include "znGeom/analysis/volume.h"
#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/spatial/queries/point_inside.h"

namespace tool {

namespace {

using Result = znGeom::MeshPtInside::Result;

void evaluateAll(const MeshIndex& index, double tolerance, const znGeom::MeshVertex* points, int count, Result* results)
{
    znUtil::parallelFor(znUtil::ThreadPool::get(), count, [&](znUtil::Slice slice, int) {
        znGeom::MeshPtInside inside(index.mesh, *index.octree, index.octreeTris, *index.tree, tolerance);
        for (int i = slice.begin; i < slice.end; ++i) results[i] = inside.evaluate(points[i].asPoint());
    });
}

/// What keeps a surface from having an inside; empty where nothing does.
std::string noteOn(const znGeom::CompactMesh& mesh)
{
    znGeom::MeshEdgeSides sides;
    znGeom::meshEdgeSides(mesh, sides);
    const znGeom::MeshEdgeCensus edges = znGeom::meshCountEdges(mesh, sides);
    if (!edges.isClosed()) return "the surface is not closed: answers near its borders mean little";
    if (!edges.isConsistentlyWound())
        return "triangles are wound against their neighbours: answers near them are wrong";
    if (znGeom::meshVolume(mesh) < 0) return "the surface is inside out: inside and outside are exchanged";
    return {};
}

std::string problemOfTolerance(const std::string& word)
{
    const std::optional<double> tolerance = finiteNumber(word);
    return tolerance && *tolerance >= 0 ? "" : "must be a distance, 0 or more";
}

class InsideCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("inside", "Tell for each of some points whether a mesh contains it");
        sub->footer(
            "Writes one line for each point, in their order: inside, outside, or surface for one that is nearer to\n"
            "the surface than the tolerance. --json writes an array of these words. With -o the lines go to a file,\n"
            "and their numbers are printed.\n"
            "The normal of the surface at the nearest place decides, between those of the corners around it: the\n"
            "mesh should be closed and wound consistently, and near a narrow fold the answer may be wrong. What lies\n"
            "beyond the bounding box is outside. Without a tolerance a point on the surface is inside.\n"
            "Points are given as to zngeom closest.");
        m_files.addTo(*sub, "POINTS", "A text file with points, or a mesh file for its vertices");
        sub->add_option("--tolerance", m_tolerance, "How far from the surface a point is still on it")
            ->check(CLI::Validator(problemOfTolerance, ""))
            ->option_text("D [0]");
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        Phases phases(progress);
        LoadedMesh loaded;
        m_files.load(loaded, phases.next(0.3));
        const std::vector<znGeom::MeshVertex> points = m_files.loadPoints(phases.next(0.1));
        znGeom::meshComputeNormals(loaded.mesh);
        const MeshIndex index(loaded.mesh, phases.next(0.2));
        std::vector<Result> results(points.size());
        znUtil::Progress& phase = phases.next(0.4);
        phase.setCaption("looking");
        answerInPieces(points.size(), phase, [&](std::size_t begin, std::size_t end) {
            evaluateAll(index, m_tolerance, &points[begin], static_cast<int>(end - begin), &results[begin]);
        });
        Report report = m_files.answer(results.size(), [&](std::string& text, std::size_t i, bool json) {
            constexpr const char* words[] = {"inside", "outside", "surface"};
            text.append(json ? "\"" : "").append(words[results[i]]).append(json ? "\"" : "");
        });
        if (m_files.isToFile()) describe(results, loaded, report);
        return report;
    }

private:
    static void describe(const std::vector<Result>& results, const LoadedMesh& loaded, Report& report)
    {
        report.add("points", results.size());
        const auto add = [&](const char* key, Result kind) {
            report.add(key, std::count(results.begin(), results.end(), kind));
        };
        add("inside", Result::Inside), add("outside", Result::Outside), add("surface", Result::OnSurface);
        report.addNotes(loaded.notes);
        if (const std::string note = noteOn(loaded.mesh); !note.empty()) report.addNote(note);
    }

    Listing m_files;
    double m_tolerance = 0;
};

} // namespace

std::unique_ptr<Command> makeInsideCommand() { return std::make_unique<InsideCommand>(); }

} // namespace tool
