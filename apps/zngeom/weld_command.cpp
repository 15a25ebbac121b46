#include "apps/zngeom/command.h"
#include "apps/zngeom/format_option.h"
#include "apps/zngeom/mesh_files.h"
#include "apps/zngeom/pacer.h"
#include "znGeom/analysis/census.h"
#include "znGeom/editing/weld.h"

namespace tool {

namespace {

class WeldCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("weld", "Merge vertices that are the same, and write the result");
        sub->footer(
            "Vertices are the same when their positions are exactly equal. Where the file has normals, these and\n"
            "the texture coordinates must be equal too; --positions leaves both out. Vertices are renumbered in\n"
            "the order of their positions if any are merged. Triangles stay, also those that lose their area;\n"
            "polygons become triangles.");
        sub->add_option("IN", m_input, "The mesh file to read")->required();
        sub->add_option("OUT", m_output, "The mesh file to write; may be the same")->required();
        sub->add_flag("--positions", m_positionsOnly, "Compare and keep positions alone");
        addFormatOptions(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkOutputFormat(m_output, m_formats.ofOutput());
        znUtil::Progress phase;
        LoadedMesh loaded;
        progress.subPhase(0.5, phase);
        loadMesh(m_input, phase, loaded, m_formats.input);

        progress.subPhase(0.3, phase);
        const int before = loaded.mesh.getNumVertices();
        weld(loaded, phase);
        checkCancelled(progress);

        progress.subPhase(0.2, phase);
        saveMesh(loaded, m_output, phase, m_formats.ofOutput());

        Report report;
        report.add("input", m_input);
        report.add("output", m_output);
        report.add("vertices_before", before);
        report.add("vertices", loaded.mesh.getNumVertices());
        report.add("merged", before - loaded.mesh.getNumVertices());
        report.add("triangles", loaded.mesh.getNumTriangles());
        report.add("degenerate_triangles", znGeom::meshCountDegenerateTriangles(loaded.mesh));
        report.addNotes(loaded.notes);
        report.makeRoomFor(m_output);
        return report;
    }

private:
    void weld(LoadedMesh& loaded, znUtil::Progress& progress) const
    {
        znGeom::CompactMesh& mesh = loaded.mesh;
        progress.setCaption("welding");
        // The polygons would keep their old vertex numbers; only triangles are written anyway.
        mesh.resizePolyArrays(0, 0);
        if (m_positionsOnly) {
            mesh.deleteNormals();
            mesh.deleteUVs();
            loaded.cornerNormals.clear();
            loaded.cornerUVs.clear();
        }
        if (mesh.getUVs() && !mesh.getNormals())
            loaded.notes.push_back("texture coordinates: not compared, since there are no normals");
        if (mesh.getNumVertices() > 0) znGeom::meshCompact(mesh, progress);
    }

    std::string m_input, m_output;
    StreamFormats m_formats;
    bool m_positionsOnly = false;
};

} // namespace

std::unique_ptr<Command> makeWeldCommand() { return std::make_unique<WeldCommand>(); }

} // namespace tool
