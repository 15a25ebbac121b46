#include "apps/zngeom/command/change_command.h"
#include "apps/zngeom/command/fold_option.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/defects/defect_report.h"
#include "apps/zngeom/defects/defect_scene.h"
#include "apps/zngeom/defects/repair_steps.h"
#include "apps/zngeom/defects/triangle_data.h"
#include "apps/zngeom/frame/pacer.h"

namespace tool {

namespace {

void addSteps(const std::vector<RepairStep>& steps, Report& report)
{
    Report::Value list = Report::Value::array();
    for (const RepairStep& step : steps) {
        list.push_back({{"kind", step.kind},
                        {"text", step.text},
                        {"removed_triangles", step.removedTriangles},
                        {"turned_triangles", step.turnedTriangles},
                        {"added_vertices", step.addedVertices}});
        report.addForPeople("step " + std::to_string(list.size()), step.text);
    }
    if (steps.empty()) report.addForPeople("steps", "none, there is nothing to repair");
    report.addForPrograms("steps", std::move(list));
}

class RepairCommand : public ChangeCommand
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("repair", "Remove, split and turn over what is wrong with a mesh");
        sub->footer(
            "In this order, each step followed by a new look at the mesh: triangles with corners that are not finite\n"
            "are removed, then those that repeat another one or a vertex, or have two corners in one place; edges of "
            "three triangles or more keep two;\n"
            "vertices of several fans are split; triangles are turned over until neighbours agree, the smaller set\n"
            "where two disagree; a strip that makes the surface one-sided is cut out, unless it is all of it;\n"
            "if asked for, triangles that cross others, and triangles at folds, are removed.\n"
            "What is removed leaves holes. Vertices that nothing uses any more go with their triangles; what stays\n"
            "keeps its order. What is left is told as check tells it, crossings and folds only if asked for.\n"
            "The picture shows the mesh before and after.\n"
            "Exit status: 0 when nothing is left, 2 when something is; OUT is written in both cases.");
        m_files.addFiles(*sub);
        sub->add_flag("--self-intersections", m_options.crossings, "Also remove triangles that cross others");
        addFoldOption(*sub, m_options.foldAngle);
        addLastOptions(*sub);
        return sub;
    }

private:
    std::unique_ptr<PendingFile> change(LoadedMesh& loaded, znUtil::Progress& progress, Report& report) const override
    {
        // The polygons would not follow the repair; only triangles are written anyway.
        loaded.mesh.resizePolyArrays(0, 0);
        znUtil::Progress phase;
        znGeom::CompactMesh original;
        MeshDefects originalDefects;
        if (isDrawn()) {
            original = loaded.mesh;
            progress.subPhase(0.2, phase);
            originalDefects = findDefects(original, m_options, phase);
        }
        progress.subPhase(0.4, phase);
        report.add("triangles_before", loaded.mesh.getNumTriangles());
        addSteps(repairFile(loaded, phase), report);
        progress.subPhase(0.2, phase);
        const MeshDefects left = findDefects(loaded.mesh, m_options, phase);
        report.add("vertices", loaded.mesh.getNumVertices());
        report.add("triangles", loaded.mesh.getNumTriangles());
        addDefects(loaded.mesh, left, Kinds::Found, report);
        return isDrawn() ? draw(sceneOf(original, originalDefects), sceneOf(loaded.mesh, left), progress, report)
                         : nullptr;
    }

    std::vector<RepairStep> repairFile(LoadedMesh& loaded, znUtil::Progress& progress) const
    {
        const bool hasNormals = loaded.mesh.getNormals(), hasUVs = loaded.mesh.getUVs();
        checkIsWelded(loaded.mesh, progress);
        const TriangleDataKeeper keeper(loaded);
        const std::vector<RepairStep> steps = repairMesh(loaded.mesh, m_options, progress);
        if (loaded.mesh.getNumTriangles() == 0) loaded.notes.push_back("no triangle was left by the repair");
        if (hasNormals && !loaded.mesh.getNormals()) loaded.notes.push_back("normals: not kept by the repair");
        if (hasUVs && !loaded.mesh.getUVs()) loaded.notes.push_back("texture coordinates: not kept by the repair");
        return steps;
    }

    /// Where no vertices are shared all neighbours cross, and nothing would be left.
    void checkIsWelded(const znGeom::CompactMesh& mesh, znUtil::Progress& progress) const
    {
        if (!m_options.crossings) return;
        znUtil::Progress phase;
        progress.subPhase(0.1, phase);
        znGeom::MeshEdgeSides sides;
        znGeom::meshEdgeSides(mesh, phase, sides);
        checkCancelled(progress);
        if (const std::string note = soupNote(mesh, sides, phase); !note.empty())
            throw Failure(inputName(m_files.input) + ": --self-intersections would remove all triangles: " + note);
    }

    DefectOptions m_options{false, {}};
};

} // namespace

std::unique_ptr<Command> makeRepairCommand() { return std::make_unique<RepairCommand>(); }

} // namespace tool
