#include "apps/zngeom/command.h"
#include "apps/zngeom/defects/defect_report.h"
#include "apps/zngeom/defects/defect_scene.h"
#include "apps/zngeom/defects/repair_steps.h"
#include "apps/zngeom/defects/triangle_data.h"
#include "apps/zngeom/fold_option.h"
#include "apps/zngeom/mesh_files.h"
#include "apps/zngeom/mesh_route.h"
#include "apps/zngeom/pacer.h"
#include "apps/zngeom/part_options.h"
#include "apps/zngeom/picture/png_file.h"
#include "apps/zngeom/picture_option.h"

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

class RepairCommand : public Command
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
        addPictureOptions(*sub, m_picture);
        m_files.addFormats(*sub);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        if (!m_picture.path.empty()) checkPictureName(m_picture.path);
        znUtil::Progress phase;
        LoadedMesh loaded;
        progress.subPhase(0.3, phase);
        m_files.load(loaded, phase);
        checkHasTriangles(loaded.mesh, m_files.input);
        // The polygons would not follow the repair; only triangles are written anyway.
        loaded.mesh.resizePolyArrays(0, 0);
        Report report = m_files.report();
        progress.subPhase(0.6, phase);
        const std::unique_ptr<PendingFile> picture = repair(loaded, phase, report);
        checkCancelled(progress);

        progress.subPhase(0.1, phase);
        m_files.save(loaded, phase);
        if (picture) putInPlace(*picture, m_picture.path);
        report.addNotes(loaded.notes);
        return report;
    }

private:
    /// Returns the picture, which waits for its place; null where none is wanted.
    std::unique_ptr<PendingFile> repair(LoadedMesh& loaded, znUtil::Progress& progress, Report& report) const
    {
        znUtil::Progress phase;
        znGeom::CompactMesh original;
        MeshDefects originalDefects;
        const bool isDrawn = !m_picture.path.empty();
        if (isDrawn) {
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
        if (!isDrawn) return nullptr;

        checkCancelled(progress);
        progress.setCaption("drawing");
        report.add("picture", m_picture.path);
        return writePngAside(drawChange(sceneOf(original, originalDefects), sceneOf(loaded.mesh, left), m_picture.size),
                             m_picture.path);
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

    MeshRoute m_files;
    DefectOptions m_options{false, {}};
    PictureOptions m_picture;
};

} // namespace

std::unique_ptr<Command> makeRepairCommand() { return std::make_unique<RepairCommand>(); }

} // namespace tool
