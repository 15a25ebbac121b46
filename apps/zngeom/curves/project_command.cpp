#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/curves/surface_lines.h"
#include "apps/zngeom/files/line_files.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/point_reader.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/pacer.h"

namespace tool {

namespace {

class ProjectCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("project", "Lay polylines on a mesh");
        sub->footer(
            "Each point goes to the nearest place of the surface; each piece between two points is traced over the\n"
            "triangles in the plane that stands upright on the surface there. POLYLINES is an OBJ file (l), a PLY\n"
            "file as text (edges), or a text with the x y z of a point on each line and empty lines between the\n"
            "polylines. One that comes back to its first point is closed. LINES is an OBJ or PLY file.");
        sub->add_option("MESH", m_mesh, "The mesh file")->required();
        sub->add_option("POLYLINES", m_polylines, "The polylines to lay on it")->required();
        sub->add_option("LINES", m_lines, "The file to write, .obj or .ply")->required();
        addFormatOptions(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkLineFormat(m_lines, m_formats.ofOutput());
        checkFiles();
        Phases phases(progress);
        LoadedMesh loaded;
        loadMesh(m_mesh, phases.next(0.5), loaded, m_formats.input);
        checkHasTriangles(loaded.mesh, m_mesh);
        checkFinite(loaded.mesh.getVertices(), loaded.mesh.getNumVertices(), m_mesh);
        const auto polylines =
            loadPolylines(m_polylines, phases.next(0.1), m_polylines == standardStream ? m_formats.input : "");
        double farthest = 0;
        const SurfaceCurves curves = layOn(loaded.mesh, polylines, m_polylines, phases.next(0.4), farthest);
        checkCancelled(progress);
        savePolylines(asPolylines(loaded.mesh, curves), m_lines, m_formats.ofOutput());
        Report report;
        report.add("mesh", m_mesh);
        report.add("polylines", m_polylines);
        report.add("output", m_lines);
        addCurves(loaded.mesh, curves, report);
        report.add("farthest_point", rounded(farthest));
        report.addNotes(loaded.notes);
        report.makeRoomFor(m_lines);
        return report;
    }

private:
    void checkFiles() const
    {
        if (m_mesh == standardStream && m_polylines == standardStream)
            throw Failure("-: only one of mesh and polylines can be standard input");
        for (const std::string& input : {m_mesh, m_polylines}) checkIsOther(input, m_lines);
    }

    std::string m_mesh, m_polylines, m_lines;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeProjectCommand() { return std::make_unique<ProjectCommand>(); }

} // namespace tool
