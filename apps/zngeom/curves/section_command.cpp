#include <filesystem>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/curves/surface_lines.h"
#include "apps/zngeom/files/line_files.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/point_reader.h"
#include "apps/zngeom/frame/pacer.h"

namespace tool {

namespace {

class SectionCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("section", "Write the lines along which a plane cuts a mesh");
        sub->footer("LINES is an OBJ or PLY file of lines, one for each curve; a closed one comes back to its first\n"
                    "point. Open ones end at the boundary of the mesh, or at an edge of more than two triangles. Flat\n"
                    "parts of the surface that lie in the plane give their rim, where the surface goes on below.");
        sub->add_option("MESH", m_mesh, "The mesh file")->required();
        sub->add_option("LINES", m_lines, "The file to write, .obj or .ply")->required();
        addPlaneOption(*sub, m_planes, false)->required();
        addFormatOptions(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkLineFormat(m_lines, m_formats.ofOutput());
        planeFrom(m_planes.front());
        std::error_code error;
        if (std::filesystem::equivalent(m_mesh, m_lines, error))
            throw Failure(m_lines + ": is read, and not overwritten by lines");
        Phases phases(progress);
        LoadedMesh loaded;
        loadMesh(m_mesh, phases.next(0.7), loaded, m_formats.input);
        checkHasTriangles(loaded.mesh, m_mesh);
        phases.next(0.3).setCaption("cutting");
        const SurfaceCurves curves = cutByPlane(loaded.mesh, m_planes.front(), m_mesh);
        checkCancelled(progress);
        savePolylines(asPolylines(loaded.mesh, curves), m_lines, m_formats.ofOutput());
        Report report;
        report.add("input", m_mesh);
        report.add("output", m_lines);
        addCurves(loaded.mesh, curves, report);
        report.addNotes(loaded.notes);
        report.makeRoomFor(m_lines);
        return report;
    }

private:
    std::string m_mesh, m_lines;
    std::vector<std::string> m_planes;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeSectionCommand() { return std::make_unique<SectionCommand>(); }

} // namespace tool
