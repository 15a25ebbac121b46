#include <span>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/mesh_route.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/usage.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/border_loops.h"
#include "znGeom/editing/extract.h"
#include "znGeom/editing/extract_parts.h"
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
        m_files.addFiles(*sub);
        CLI::Option* component = sub->add_option("--component", m_component, "The number of a component");
        CLI::Option* boundary = sub->add_option("--boundary", m_boundary, "The number of a boundary loop");
        component->check(wholeNumberFrom(1))->excludes(boundary);
        boundary->check(wholeNumberFrom(1));
        addAcrossOption(*sub, m_across)->needs(component);
        sub->add_option("--rings", m_rings, "How many rings of triangles around the loop")
            ->check(wholeNumberFrom(1))
            ->needs(boundary)
            ->capture_default_str();
        // The parser's own words for a missing one would be no better.
        sub->callback([component, boundary] {
            if (component->count() + boundary->count() == 0) throw CLI::RequiredError("--component or --boundary");
        });
        m_files.addFormats(*sub);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        znUtil::Progress phase;
        LoadedMesh loaded;
        progress.subPhase(0.5, phase);
        m_files.load(loaded, phase);
        checkHasTriangles(loaded.mesh, m_files.input);

        progress.subPhase(0.3, phase);
        phase.setCaption("selecting");
        Report report = m_files.report();
        znGeom::CompactMesh part;
        takePart(loaded, phase, report, part);
        checkCancelled(progress);

        progress.subPhase(0.2, phase);
        m_files.save(part, phase);
        report.add("vertices", part.getNumVertices());
        report.add("triangles", part.getNumTriangles());
        noteUnwritten(loaded, m_files.output, m_files.formats.ofOutput());
        report.addNotes(loaded.notes);
        return report;
    }

private:
    void takePart(LoadedMesh& loaded, znUtil::Progress& progress, Report& report, znGeom::CompactMesh& part) const
    {
        znUtil::Progress phase;
        progress.subPhase(0.4, phase);
        znGeom::MeshEdgeSides sides;
        znGeom::meshEdgeSides(loaded.mesh, phase, sides);
        checkCancelled(progress);
        progress.subPhase(0.3, phase);
        if (const std::string hint = soupNote(loaded.mesh, sides, phase); !hint.empty()) loaded.notes.push_back(hint);
        progress.subPhase(0.3, phase);
        if (m_component > 0)
            takeComponent(loaded.mesh, sides, phase, report, part);
        else
            takeRings(loaded.mesh, sides, phase, report, part);
    }

    void takeComponent(const znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides, znUtil::Progress& progress,
                       Report& report, znGeom::CompactMesh& part) const
    {
        const znGeom::MeshTriangleComponents components = findComponents(mesh, sides, m_across, progress);
        checkNumber("component", m_component, components.count());
        znGeom::MeshExtractParts(mesh, components.ofTriangle.data(), components.count()).extract(m_component - 1, part);
        report.add("component", m_component);
    }

    void takeRings(znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides, znUtil::Progress& progress,
                   Report& report, znGeom::CompactMesh& part) const
    {
        znGeom::MeshBorderLoops loops;
        znGeom::meshBorderLoops(mesh, sides, progress, loops);
        checkCancelled(progress);
        checkNumber("boundary loop", m_boundary, loops.size());
        const int loop = m_boundary - 1;
        const EndOnSignal endOnSignal(progress);
        selectRings(mesh, loops.vertices(loop));
        znGeom::meshExtract(part, mesh);
        report.add("boundary_loop", m_boundary);
        report.add("boundary_loop_length", rounded(loops.length(loop)));
        report.add("boundary_loop_edges", loops.numEdges(loop));
    }

    void selectRings(znGeom::CompactMesh& mesh, std::span<const int> loop) const
    {
        znGeom::MeshAdjTris adjTris;
        znGeom::meshAdjTris(mesh, adjTris);
        znGeom::MeshSelect select(mesh, adjTris);
        select.getSelectedVertices().setBits(static_cast<int>(loop.size()), loop.data());
        select.selectAllTrianglesFromVertices();
        int before = 0;
        for (int ring = 1; ring < m_rings && select.getSelectedTriangles().getNumSetBits() > before; ++ring) {
            before = select.getSelectedTriangles().getNumSetBits();
            select.selectTrianglesRecursive(true);
        }
        select.selectVerticesFromTriangles();
    }

    void checkNumber(const std::string& what, int number, int count) const
    {
        if (number <= count) return;
        const std::string has = count == 0 ? "none" : std::to_string(count);
        throw Failure(m_files.input + ": there is no " + what + " " + std::to_string(number) + ", the mesh has " + has);
    }

    MeshRoute m_files;
    std::string m_across;
    int m_component = 0, m_boundary = 0, m_rings = 1;
};

} // namespace

std::unique_ptr<Command> makeExtractCommand() { return std::make_unique<ExtractCommand>(); }

} // namespace tool
