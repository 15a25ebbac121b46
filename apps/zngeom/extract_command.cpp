#include <cstddef>

#include "apps/zngeom/command.h"
#include "apps/zngeom/format_option.h"
#include "apps/zngeom/mesh_files.h"
#include "apps/zngeom/pacer.h"
#include "apps/zngeom/part_options.h"
#include "znGeom/editing/extract.h"
#include "znGeom/editing/select.h"

namespace tool {

namespace {

class ExtractCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("extract", "Write one component of a mesh, or the rim of a boundary loop");
        sub->footer(
            "Components are numbered as split numbers its files, boundary loops as info tells them: from 1, the\n"
            "component of most triangles first, the longest loop first. The first ring of a loop are the triangles\n"
            "at its vertices; each further ring adds those that share a vertex with the ones before. Vertices keep\n"
            "their order, normals and texture coordinates. Polygons become triangles.");
        sub->add_option("IN", m_input, "The mesh file to read")->required();
        sub->add_option("OUT", m_output, "The mesh file to write; may be the same")->required();
        CLI::Option* component = sub->add_option("--component", m_component, "The number of a component");
        CLI::Option* boundary = sub->add_option("--boundary", m_boundary, "The number of a boundary loop");
        component->check(CLI::PositiveNumber)->excludes(boundary);
        boundary->check(CLI::PositiveNumber);
        addAcrossOption(*sub, m_across)->needs(component);
        sub->add_option("--rings", m_rings, "How many rings of triangles around the loop")
            ->check(CLI::PositiveNumber)
            ->needs(boundary)
            ->capture_default_str();
        // The parser would name the missing one in no better words.
        sub->callback([component, boundary] {
            if (component->count() + boundary->count() == 0) throw CLI::RequiredError("--component or --boundary");
        });
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
        checkHasTriangles(loaded.mesh, m_input);

        progress.subPhase(0.3, phase);
        phase.setCaption("selecting");
        Report report;
        report.add("input", m_input);
        report.add("output", m_output);
        select(loaded.mesh, phase, report);
        checkCancelled(progress);

        znGeom::CompactMesh part;
        znGeom::meshExtract(part, loaded.mesh);
        progress.subPhase(0.2, phase);
        saveMesh(part, m_output, phase, m_formats.ofOutput());
        report.add("vertices", part.getNumVertices());
        report.add("triangles", part.getNumTriangles());
        noteUnwritten(loaded, m_output, m_formats.ofOutput());
        report.addNotes(loaded.notes);
        report.makeRoomFor(m_output);
        return report;
    }

private:
    void select(znGeom::CompactMesh& mesh, znUtil::Progress& progress, Report& report) const
    {
        const Surface surface(mesh, progress);
        znGeom::MeshSelect select(mesh, surface.adjTris());
        if (m_component > 0)
            selectComponent(surface, select, report);
        else
            selectRings(surface, select, report);
        select.selectVerticesFromTriangles();
    }

    void selectComponent(const Surface& surface, znGeom::MeshSelect& select, Report& report) const
    {
        const Components components = surface.components(acrossOf(m_across));
        checkNumber("component", m_component, components.sizes.size());
        for (std::size_t triangle = 0; triangle < components.ofTriangle.size(); ++triangle)
            if (components.ofTriangle[triangle] == m_component - 1)
                select.getSelectedTriangles().setBit(static_cast<int>(triangle));
        report.add("component", m_component);
    }

    void selectRings(const Surface& surface, znGeom::MeshSelect& select, Report& report) const
    {
        const std::vector<BoundaryLoop> loops = surface.boundaryLoops();
        checkNumber("boundary loop", m_boundary, loops.size());
        const BoundaryLoop& loop = loops[static_cast<std::size_t>(m_boundary) - 1];
        select.getSelectedVertices().setBits(static_cast<int>(loop.vertices.size()), loop.vertices.data());
        select.selectAllTrianglesFromVertices();
        int before = 0;
        for (int ring = 1; ring < m_rings && select.getSelectedTriangles().getNumSetBits() > before; ++ring) {
            before = select.getSelectedTriangles().getNumSetBits();
            select.selectTrianglesRecursive(true);
        }
        report.add("boundary_loop", m_boundary);
        report.add("boundary_loop_length", rounded(loop.length));
        report.add("boundary_loop_edges", loop.numEdges());
    }

    void checkNumber(const std::string& what, int number, std::size_t count) const
    {
        if (static_cast<std::size_t>(number) <= count) return;
        const std::string has = count == 0 ? "none" : std::to_string(count);
        throw Failure(m_input + ": there is no " + what + " " + std::to_string(number) + ", the mesh has " + has);
    }

    std::string m_input, m_output, m_across;
    StreamFormats m_formats;
    int m_component = 0, m_boundary = 0, m_rings = 1;
};

} // namespace

std::unique_ptr<Command> makeExtractCommand() { return std::make_unique<ExtractCommand>(); }

} // namespace tool
