#include <memory>

#include "apps/zngeom/command/change_command.h"
#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/usage.h"
#include "apps/zngeom/shells/polygon_mesh.h"
#include "znGeom/topology/subdivide.h"

namespace tool {

namespace {

class SubdivideCommand : public ChangeCommand
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("subdivide", "Smooth a mesh by Catmull-Clark subdivision");
        sub->footer(
            "Each level makes a quad of each corner of each face, and moves the vertices towards a smooth surface;\n"
            "boundaries become smooth curves of their own. Faces are taken as they stand in the file, and all of the\n"
            "result are quads: OBJ, PLY, OFF and plain files keep them, other formats have their triangles. Normals,\n"
            "texture coordinates and groups are not kept. Where triangles share no vertices, weld first: each would\n"
            "shrink on its own. The picture shows the mesh before and after.");
        m_files.addFiles(*sub);
        sub->add_option("--levels", m_levels, "How often")->check(wholeNumberFrom(1))->option_text("N [1]");
        addLastOptions(*sub);
        return sub;
    }

private:
    std::unique_ptr<PendingFile> change(LoadedMesh& loaded, znUtil::Progress& progress, Report& report) const override
    {
        progress.setCaption("subdividing");
        const znGeom::CompactMesh original = isDrawn() ? loaded.mesh : znGeom::CompactMesh();
        report.add("vertices_before", loaded.mesh.getNumVertices());
        report.add("faces_before", countFaces(loaded.mesh));
        subdivide(loaded, progress);
        report.add("levels", m_levels);
        report.add("vertices", loaded.mesh.getNumVertices());
        report.add("faces", countFaces(loaded.mesh));
        return isDrawn() ? draw(sceneOfFaces(original), sceneOfFaces(loaded.mesh), progress, report) : nullptr;
    }

    void subdivide(LoadedMesh& loaded, znUtil::Progress& progress) const
    {
        const EndOnSignal endOnSignal(progress);
        auto mesh = std::make_unique<znGeom::TopoMesh>();
        takePolygons(loaded, "the subdivision", *mesh);
        checkSize(mesh->numEdges());
        for (int level = 1; level <= m_levels; ++level) {
            mesh.reset(znGeom::computeSubdivMesh(*mesh));
            progress.set(static_cast<double>(level) / m_levels);
        }
        putPolygons(*mesh, loaded);
    }

    /// Each level has a quad for each corner of the one before, and four corners for each quad.
    void checkSize(int numCorners) const
    {
        std::size_t numQuads = static_cast<std::size_t>(numCorners);
        for (int level = 1; level <= m_levels; ++level, numQuads *= 4)
            if (4 * numQuads > maxElements)
                throw Failure(inputName(m_files.input) + ": too large for level " + std::to_string(level) +
                              ", which would have " + std::to_string(numQuads) + " quads");
    }

    int m_levels = 1;
};

} // namespace

std::unique_ptr<Command> makeSubdivideCommand() { return std::make_unique<SubdivideCommand>(); }

} // namespace tool
