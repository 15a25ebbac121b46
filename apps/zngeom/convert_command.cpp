#include "apps/zngeom/command.h"
#include "apps/zngeom/format_option.h"
#include "apps/zngeom/mesh_files.h"

namespace tool {

namespace {

class ConvertCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("convert", "Write a mesh in another file format");
        sub->footer("Vertices keep their numbers; polygons are written as triangles.");
        sub->add_option("IN", m_input, "The mesh file to read")->required();
        sub->add_option("OUT", m_output, "The mesh file to write; its extension chooses the format")->required();
        addFormatOptions(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkOutputFormat(m_output, m_formats.ofOutput());
        znUtil::Progress phase;
        LoadedMesh loaded;
        progress.subPhase(0.6, phase);
        loadMesh(m_input, phase, loaded, m_formats.input);
        progress.subPhase(0.4, phase);
        const std::int64_t numBytes = saveMesh(loaded, m_output, phase, m_formats.ofOutput());

        Report report;
        report.add("input", m_input);
        report.add("output", m_output);
        report.add("format", formatOf(m_output, m_formats.ofOutput()).name);
        report.add("vertices", loaded.mesh.getNumVertices());
        report.add("triangles", loaded.mesh.getNumTriangles());
        report.add("bytes", numBytes);
        report.addNotes(loaded.notes);
        report.makeRoomFor(m_output);
        return report;
    }

private:
    std::string m_input, m_output;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeConvertCommand() { return std::make_unique<ConvertCommand>(); }

} // namespace tool
