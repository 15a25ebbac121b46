#include "apps/zngeom/command.h"
#include "apps/zngeom/mesh_files.h"
#include "apps/zngeom/mesh_summary.h"

namespace tool {

namespace {

Report::Value corner(const std::optional<Bounds>& bounds, const float (Bounds::*which)[3])
{
    if (!bounds) return nullptr;
    const float* values = (*bounds).*which;
    return {shortest(values[0]), shortest(values[1]), shortest(values[2])};
}

Report::Value orNull(const std::optional<int>& value) { return value ? Report::Value(*value) : Report::Value(nullptr); }

Report::Value channelNames(const znGeom::CompactMesh& mesh)
{
    Report::Value names = Report::Value::array();
    for (int i = 0; const znGeom::MeshAttributes* channel = mesh.getAttributes(i); ++i)
        names.push_back(channel->getName().asChar());
    return names;
}

class InfoCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("info", "Tell what is in a mesh: counts, bounds, channels, duplicates, "
                                                   "boundaries, non-manifold edges");
        sub->footer(
            "polygons are faces of more than three corners; triangles counts a polygon by the triangles of its fan.\n"
            "duplicate_positions are vertices at exactly the place of an earlier one: weld merges them.\n"
            "A boundary edge has one triangle, a non-manifold edge three or more; the surface is closed if it has\n"
            "no boundary edge. The valence of a vertex is the number of its neighbours; unused vertices have none\n"
            "and don't count. Bounds leave out vertices whose coordinates are infinite or not numbers.");
        sub->add_option("MESH", m_path, "The mesh file")->required();
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        znUtil::Progress phase;
        LoadedMesh loaded;
        progress.subPhase(0.7, phase);
        loadMesh(m_path, phase, loaded);
        progress.subPhase(0.3, phase);
        return describe(loaded, summarizeMesh(loaded.mesh, phase));
    }

private:
    Report describe(const LoadedMesh& loaded, const MeshSummary& summary) const
    {
        Report report;
        report.add("file", m_path);
        report.add("format", formatOf(m_path).name);
        report.add("vertices", loaded.mesh.getNumVertices());
        report.add("unused_vertices", summary.unusedVertices);
        report.add("duplicate_positions", summary.duplicatePositions);
        report.add("non_finite_vertices", summary.nonFiniteVertices);
        report.add("faces", loaded.numFaces);
        report.add("polygons", loaded.numPolygons);
        report.add("triangles", loaded.mesh.getNumTriangles());
        report.add("degenerate_triangles", summary.degenerateTriangles);
        report.add("edges", summary.edges);
        report.add("boundary_edges", summary.boundaryEdges);
        report.add("boundary_vertices", summary.boundaryVertices);
        report.add("non_manifold_edges", summary.nonManifoldEdges);
        report.add("closed", summary.closed);
        report.add("valence_min", orNull(summary.valenceMin));
        report.add("valence_max", orNull(summary.valenceMax));
        report.add("min", corner(summary.bounds, &Bounds::low));
        report.add("max", corner(summary.bounds, &Bounds::high));
        report.add("channels", channelNames(loaded.mesh));
        report.add("memory_bytes", loaded.mesh.getSizeInBytes());
        report.addNotes(loaded.notes);
        return report;
    }

    std::string m_path;
};

} // namespace

std::unique_ptr<Command> makeInfoCommand() { return std::make_unique<InfoCommand>(); }

} // namespace tool
