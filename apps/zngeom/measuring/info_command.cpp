#include <new>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/command/mesh_summary.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/frame/failure.h"

namespace tool {

namespace {

Report::Value cornerOf(const znGeom::BoundingBox& bounds, float x, float y, float z)
{
    return bounds.isValid() ? Report::Value{shortest(x), shortest(y), shortest(z)} : Report::Value(nullptr);
}

Report::Value orNullBelowZero(int count) { return count < 0 ? Report::Value(nullptr) : Report::Value(count); }

Report::Value channelNames(const znGeom::CompactMesh& mesh)
{
    Report::Value names = Report::Value::array();
    for (int i = 0; const znGeom::MeshAttributes* channel = mesh.getAttributes(i); ++i)
        names.push_back(channel->getName().asChar());
    return names;
}

Report::Value orNull(const std::optional<double>& value) { return value ? rounded(*value) : Report::Value(nullptr); }

std::string orWhyNot(const std::optional<double>& value, const std::string& whyNot)
{
    return value ? shownNumber(*value) : "none: " + whyNot;
}

const char* const notWound = "the triangles are not consistently wound";
const char* const notFinite = "it is not finite";

void addComponents(const MeshSummary& summary, Report& report)
{
    const std::string overEdges = std::to_string(summary.components);
    const std::string overVertices = std::to_string(summary.vertexComponents);
    report.add("components", summary.components,
               overEdges == overVertices ? overEdges : overEdges + ", over shared vertices " + overVertices);
    report.addForPrograms("vertex_components", summary.vertexComponents);
}

/// All loops for programs, the longest ones for people.
void addLoops(const znGeom::MeshBorderLoops& loops, Report& report)
{
    constexpr int mostShown = 10;
    Report::Value lengths = Report::Value::array(), edges = Report::Value::array();
    report.add("boundary_loops", loops.size());
    int open = 0;
    for (int i = 0; i < loops.size(); ++i) {
        lengths.push_back(rounded(loops.length(i)));
        edges.push_back(loops.numEdges(i));
        if (!loops.isClosed(i)) ++open;
        if (i < mostShown)
            report.addForPeople("  loop " + std::to_string(i + 1), "length " + shownNumber(loops.length(i)) + ", " +
                                                                       std::to_string(loops.numEdges(i)) + " edges");
    }
    if (loops.size() > mostShown)
        report.addForPeople("  and more", std::to_string(loops.size() - mostShown) + " shorter ones");
    report.addForPrograms("boundary_loop_lengths", std::move(lengths));
    report.addForPrograms("boundary_loop_edges", std::move(edges));
    if (open > 0)
        report.addNote("boundary loops that don't close: " + std::to_string(open) +
                       ", they end at edges of three triangles or more");
}

void addMeasures(const MeshSummary& summary, Report& report)
{
    report.add("area", orNull(summary.area), orWhyNot(summary.area, notFinite));
    report.add("volume", orNull(summary.volume),
               orWhyNot(summary.volume, !summary.edges.isClosed()              ? "the surface is not closed"
                                        : !summary.edges.isConsistentlyWound() ? notWound
                                                                               : notFinite));
    const std::optional<double> longest =
        summary.edges.longest < 0 ? std::nullopt : std::optional(summary.edges.longest);
    report.add("longest_edge", orNull(longest), orWhyNot(longest, "there is no edge"));
    const std::optional<double>& angle = summary.largestDihedralAngle;
    report.addForPrograms("largest_dihedral_angle", orNull(angle));
    report.addForPeople(
        "largest dihedral",
        angle ? shownNumber(*angle) + " degrees"
              : orWhyNot(angle, summary.edges.isConsistentlyWound() ? "no two triangles share an edge" : notWound));
}

void addCounts(const LoadedMesh& loaded, const MeshSummary& summary, Report& report)
{
    report.add("vertices", loaded.mesh.getNumVertices());
    report.add("unused_vertices", summary.vertices.unused);
    report.add("duplicate_positions", summary.duplicatePositions);
    report.add("non_finite_vertices", summary.vertices.nonFinite);
    report.add("faces", loaded.numFaces);
    report.add("polygons", loaded.numPolygons);
    report.add("triangles", loaded.mesh.getNumTriangles());
    report.add("degenerate_triangles", summary.degenerateTriangles);
    report.add("edges", summary.edges.edges);
    report.add("boundary_edges", summary.edges.boundary);
    report.add("boundary_vertices", summary.edges.boundaryVertices);
    report.add("non_manifold_edges", summary.edges.nonManifold);
    report.add("unbalanced_edges", summary.edges.unbalanced);
    report.add("closed", summary.edges.isClosed());
}

class InfoCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("info", "Tell what is in a mesh: counts, bounds, area, volume, components, "
                                                   "boundary loops, duplicates, non-manifold edges");
        sub->footer(
            "polygons are faces of more than three corners; triangles counts a polygon by the triangles of its fan.\n"
            "duplicate_positions are vertices at exactly the place of an earlier one: weld merges them.\n"
            "A boundary edge has one triangle, a non-manifold edge three or more; the surface is closed if it has\n"
            "no boundary edge. The valence of a vertex is the number of its neighbours; unused vertices have none\n"
            "and don't count. Bounds leave out vertices whose coordinates are infinite or not numbers.\n"
            "An unbalanced edge is one of several triangles, of which not as many run along it one way as the other.\n"
            "components are triangles connected over shared edges; vertex_components over shared vertices. Boundary\n"
            "loops are told the longest first, the first ten; --json tells all. The volume is that of a closed mesh\n"
            "without unbalanced edges, and negative when it is inside out. The dihedral angle is the one between the\n"
            "normals of two triangles with a common edge, in degrees: 0 where they are flat. Lengths are in the\n"
            "units of the file, areas and volumes in their squares and cubes.");
        sub->add_option("MESH", m_paths, "The mesh files, a report for each")->required();
        addFormatOption(*sub, m_formats);
        return sub;
    }

    /// Where one of several meshes fails, the others are still reported.
    Report run(znUtil::Progress& progress) override
    {
        if (m_paths.size() == 1) return reportOn(m_paths.front(), progress);
        Report report;
        znUtil::Progress phase;
        for (const std::string& path : m_paths) {
            progress.subPhase(1.0 / static_cast<double>(m_paths.size()), phase);
            try {
                report.addPart(reportOn(path, phase));
            } catch (const Failure& failure) {
                report.addFailedPart(path, failure.what());
            } catch (const std::bad_alloc&) {
                report.addFailedPart(path, path + ": not enough memory");
            }
        }
        return report;
    }

private:
    Report reportOn(const std::string& path, znUtil::Progress& progress) const
    {
        znUtil::Progress phase;
        LoadedMesh loaded;
        progress.subPhase(0.7, phase);
        loadMesh(path, phase, loaded, m_formats.input);
        progress.subPhase(0.3, phase);
        return describe(path, loaded, summarizeMesh(loaded.mesh, phase));
    }

    Report describe(const std::string& path, const LoadedMesh& loaded, const MeshSummary& summary) const
    {
        Report report;
        report.add("file", path);
        report.add("format", formatOf(path, m_formats.input).name);
        addCounts(loaded, summary, report);
        addComponents(summary, report);
        addLoops(summary.boundaryLoops, report);
        report.add("valence_min", orNullBelowZero(summary.vertices.minValence));
        report.add("valence_max", orNullBelowZero(summary.vertices.maxValence));
        const znGeom::BoundingBox& bounds = summary.vertices.bounds;
        report.add("min", cornerOf(bounds, bounds.minX, bounds.minY, bounds.minZ));
        report.add("max", cornerOf(bounds, bounds.maxX, bounds.maxY, bounds.maxZ));
        addMeasures(summary, report);
        report.add("channels", channelNames(loaded.mesh));
        report.add("memory_bytes", loaded.mesh.getSizeInBytes());
        report.addNotes(loaded.notes);
        const std::string hint = soupNote(summary.edges, loaded.mesh.getNumVertices(), summary.duplicatePositions);
        if (!hint.empty()) report.addNote(hint);
        return report;
    }

    std::vector<std::string> m_paths;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeInfoCommand() { return std::make_unique<InfoCommand>(); }

} // namespace tool
