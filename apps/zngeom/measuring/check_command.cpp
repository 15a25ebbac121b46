#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/fold_option.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/command/picture_option.h"
#include "apps/zngeom/defects/defect_report.h"
#include "apps/zngeom/defects/defect_scene.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/picture/png_file.h"

namespace tool {

namespace {

class CheckCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("check", "Tell what is wrong with a mesh, and where; draw it");
        sub->footer(
            "degenerate triangles repeat a vertex, collapsed ones have two corners in exactly the same place,\n"
            "duplicates have the same three vertices as an earlier triangle. At a non-manifold edge there are three\n"
            "triangles or more, at a non-manifold vertex several fans touch. flipped triangles are wound against\n"
            "their neighbours: where two sets disagree, the smaller one. One-sided triangles are those through\n"
            "which a strip runs that has no other side. Triangles that share a vertex are not said to cross.\n"
            "Boundary edges are counted, and are no defect.\n"
            "The first places of each kind are told; --json tells all. Vertices and triangles are counted from 0\n"
            "in the order of the file, a polygon by the triangles of its fan.\n"
            "The picture shows the mesh from where most is seen, with fronts grey and backs brown, and where\n"
            "defects are small a part of it from nearby.\n"
            "Exit status: 0 for a clean mesh, 2 when something is wrong with it, 1 when it can't be read.");
        sub->add_option("MESH", m_path, "The mesh file")->required();
        addFoldOption(*sub, m_options.foldAngle);
        addPictureOptions(*sub, m_picture);
        addFormatOption(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        if (!m_picture.path.empty()) checkPictureName(m_picture.path);
        znUtil::Progress phase;
        LoadedMesh loaded;
        progress.subPhase(0.5, phase);
        loadMesh(m_path, phase, loaded, m_formats.input);
        checkHasTriangles(loaded.mesh, m_path);
        progress.subPhase(0.4, phase);
        const MeshDefects defects = findDefects(loaded.mesh, m_options, phase);
        checkCancelled(progress);
        if (!m_picture.path.empty()) {
            progress.subPhase(0.1, phase);
            draw(loaded.mesh, defects, phase);
        }
        return describe(loaded, defects);
    }

private:
    void draw(const znGeom::CompactMesh& mesh, const MeshDefects& defects, znUtil::Progress& progress) const
    {
        progress.setCaption("drawing");
        const Image image = drawMesh(sceneOf(mesh, defects), m_picture.size);
        checkCancelled(progress);
        putInPlace(*writePngAside(image, m_picture.path), m_picture.path);
    }

    Report describe(const LoadedMesh& loaded, const MeshDefects& defects) const
    {
        Report report;
        report.add("file", m_path);
        report.add("vertices", loaded.mesh.getNumVertices());
        report.add("triangles", loaded.mesh.getNumTriangles());
        report.addNotes(loaded.notes);
        addDefects(loaded.mesh, defects, Kinds::All, report);
        if (!m_picture.path.empty()) report.add("picture", m_picture.path);
        return report;
    }

    std::string m_path;
    DefectOptions m_options;
    PictureOptions m_picture;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeCheckCommand() { return std::make_unique<CheckCommand>(); }

} // namespace tool
