#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/mesh_route.h"
#include "apps/zngeom/files/mesh_files.h"

namespace tool {

namespace {

class ConvertCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("convert", "Write a mesh in another file format");
        sub->footer(
            "Vertices keep their numbers, and polygons their corners where the format has polygons: OBJ, PLY, OFF\n"
            "and plain files.");
        m_files.addFiles(*sub, "The mesh file to write; its extension chooses the format");
        m_files.addFormats(*sub);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        znUtil::Progress phase;
        LoadedMesh loaded;
        progress.subPhase(0.6, phase);
        m_files.load(loaded, phase);
        loaded.keepsPolygons = true;
        progress.subPhase(0.4, phase);
        const std::int64_t numBytes = m_files.save(loaded, phase);

        Report report = m_files.report();
        const FileFormat& format = formatOf(m_files.output, m_files.formats.ofOutput());
        report.add("format", format.name);
        report.add("vertices", loaded.mesh.getNumVertices());
        if (znGeom::hasPolygons(format.format)) {
            report.add("faces", loaded.numFaces);
            report.add("polygons", loaded.numPolygons);
        }
        report.add("triangles", loaded.mesh.getNumTriangles());
        report.add("bytes", numBytes);
        report.addNotes(loaded.notes);
        return report;
    }

private:
    MeshRoute m_files;
};

} // namespace

std::unique_ptr<Command> makeConvertCommand() { return std::make_unique<ConvertCommand>(); }

} // namespace tool
