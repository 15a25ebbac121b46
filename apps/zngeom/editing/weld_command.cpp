#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/mesh_route.h"
#include "apps/zngeom/frame/pacer.h"
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
        m_files.addFiles(*sub);
        sub->add_flag("--positions", m_positionsOnly, "Compare and keep positions alone");
        m_files.addFormats(*sub);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        znUtil::Progress phase;
        LoadedMesh loaded;
        progress.subPhase(0.5, phase);
        m_files.load(loaded, phase);

        progress.subPhase(0.3, phase);
        const int before = loaded.mesh.getNumVertices();
        weld(loaded, phase);
        checkCancelled(progress);

        progress.subPhase(0.2, phase);
        m_files.save(loaded, phase);

        Report report = m_files.report();
        report.add("vertices_before", before);
        report.add("vertices", loaded.mesh.getNumVertices());
        report.add("merged", before - loaded.mesh.getNumVertices());
        report.add("triangles", loaded.mesh.getNumTriangles());
        report.add("degenerate_triangles", znGeom::meshCountDegenerateTriangles(loaded.mesh));
        report.addNotes(loaded.notes);
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

    MeshRoute m_files;
    bool m_positionsOnly = false;
};

} // namespace

std::unique_ptr<Command> makeWeldCommand() { return std::make_unique<WeldCommand>(); }

} // namespace tool
