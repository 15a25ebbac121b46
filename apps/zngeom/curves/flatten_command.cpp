#include <cmath>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/mesh_route.h"
#include "apps/zngeom/command/mesh_summary.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/command/picture_option.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/picture/chart_picture.h"
#include "apps/zngeom/picture/png_file.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/parameterize/cut_surface.h"
#include "znGeom/parameterize/reparameterize_mesh.h"
#include "znGeom/parameterize/uv_distortion.h"
#include "znGeom/repair/manifold.h"

namespace tool {

namespace {

std::string counted(int count, const std::string& one, const std::string& many)
{
    return count == 1 ? "1 " + one : std::to_string(count) + " " + many;
}

bool hasFiniteCorners(const znGeom::CompactMesh& mesh)
{
    for (int corner = 0; corner < 3 * mesh.getNumTriangles(); ++corner)
        if (!isFinite(mesh.getVertices()[mesh.getTrianglesRaw()[corner]])) return false;
    return true;
}

/// What keeps a mesh from being flattened, and what to do first; empty when nothing does.
std::string findObstacle(const znGeom::CompactMesh& mesh, const MeshSummary& summary)
{
    const znGeom::MeshEdgeCensus& edges = summary.edges;
    const std::string first = "; repair the mesh first";
    if (!hasFiniteCorners(mesh)) return "a corner of a triangle is not finite" + first;
    if (const std::string note = soupNote(edges, mesh.getNumVertices(), summary.duplicatePositions); !note.empty())
        return note;
    if (summary.degenerateTriangles > 0)
        return counted(summary.degenerateTriangles, "triangle repeats", "triangles repeat") + " a vertex" + first;
    if (edges.nonManifold > 0)
        return counted(edges.nonManifold, "edge has", "edges have") + " three triangles or more" + first;
    if (edges.unbalanced > 0)
        return "neighbours are wound in opposite directions at " + counted(edges.unbalanced, "edge", "edges") + first;
    if (summary.components > 1)
        return "the mesh has " + std::to_string(summary.components) +
               " components; split it and flatten each, or weld it if they belong together";
    znGeom::MeshAdjTris adjTris;
    znGeom::MeshManifoldResult manifold;
    znGeom::meshAdjTris(mesh, adjTris);
    znGeom::meshManifold(mesh, adjTris, manifold);
    const int numTouching = manifold.badVertices.getNumSetBits();
    if (numTouching > 0) return "the surface touches itself at " + counted(numTouching, "vertex", "vertices") + first;
    return {};
}

/// Of a mesh without obstacles.
int countHandles(const znGeom::CompactMesh& mesh, const MeshSummary& summary)
{
    const int numVertices = mesh.getNumVertices() - summary.vertices.unused;
    return (2 - (numVertices - summary.edges.edges + mesh.getNumTriangles() + summary.boundaryLoops.size())) / 2;
}

class FlattenCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("flatten", "Lay a surface flat, for texture coordinates");
        sub->footer(
            "Angles change as little as possible; sizes change more the farther a place is from the border. What is\n"
            "closed, or has handles, is cut open first, along short paths. The cut is a seam: positions stay shared,\n"
            "and the corners of triangles have texture coordinates of their own on either side. Holes stay holes.\n"
            "OUT is an OBJ, PLY or glTF file, with the triangles and normals of IN; OBJ files keep groups, and glTF\n"
            "files have the vertices of a seam several times. Coordinates lie between 0 and 1.\n"
            "stretch is how many times longer a triangle has become in one direction than across, scale how large\n"
            "triangles are beside one another, as a length: both are 1 where the surface could be laid flat.\n"
            "The picture shows the mesh under a checkerboard, and the chart.");
        m_files.addFiles(*sub, "The mesh file to write: .obj, .ply or .glb; may be the same");
        sub->add_flag("--no-cut", m_isKeptWhole, "Refuse a surface that is no disk, instead of cutting it");
        addPictureOptions(*sub, m_picture, "Draw the mesh under a checkerboard, and its chart: a PNG file");
        m_files.addFormats(*sub);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkOutput();
        Phases phases(progress);
        LoadedMesh loaded;
        m_files.load(loaded, phases.next(0.15));
        checkHasTriangles(loaded.mesh, m_files.input);
        Report report = m_files.report();
        report.add("vertices", loaded.mesh.getNumVertices());
        report.add("triangles", loaded.mesh.getNumTriangles());
        const bool isCut = describe(loaded.mesh, phases.next(0.1), report);

        znGeom::CompactMesh chart(loaded.mesh);
        zn::vector<int> originals;
        znUtil::Progress& cutting = phases.next(0.05);
        if (isCut) cutOpen(chart, originals, cutting);
        flatten(chart, phases.next(0.5));
        takeCoordinates(chart, originals, loaded);
        addDistortion(loaded, report);

        std::unique_ptr<PendingFile> picture;
        znUtil::Progress& drawing = phases.next(0.1);
        if (!m_picture.path.empty()) picture = draw(chart, drawing, report);
        m_files.save(loaded, phases.next(0.1));
        if (picture) putInPlace(*picture, m_picture.path);
        report.addNotes(loaded.notes);
        return report;
    }

private:
    void checkOutput() const
    {
        if (!m_picture.path.empty()) checkPictureName(m_picture.path);
        checkWritesUVs(m_files.output, m_files.formats.ofOutput());
    }

    [[noreturn]] void refuse(const std::string& reason) const
    {
        throw Failure(inputName(m_files.input) + ": can't be flattened: " + reason);
    }

    /// \return whether the mesh has to be cut
    bool describe(const znGeom::CompactMesh& mesh, znUtil::Progress& progress, Report& report) const
    {
        const MeshSummary summary = summarizeMesh(mesh, progress);
        if (const std::string obstacle = findObstacle(mesh, summary); !obstacle.empty()) refuse(obstacle);
        const int numHandles = countHandles(mesh, summary);
        const bool isClosed = summary.boundaryLoops.size() == 0, isCut = isClosed || numHandles > 0;
        if (isCut && m_isKeptWhole)
            refuse("the surface is no disk, it " + std::string(isClosed ? "is closed" : "") +
                   (isClosed && numHandles > 0 ? " and " : "") +
                   (numHandles > 0 ? "has " + counted(numHandles, "handle", "handles") : "") +
                   "; without --no-cut it is cut first");
        report.add("boundary_loops", summary.boundaryLoops.size());
        report.add("handles", numHandles);
        return isCut;
    }

    void cutOpen(znGeom::CompactMesh& mesh, zn::vector<int>& originals, znUtil::Progress& progress) const
    {
        progress.setCaption("cutting");
        const bool isDone = znGeom::cutSurface::makeDisk(mesh, originals, progress);
        checkCancelled(progress);
        if (!isDone) refuse("it can't be cut open");
    }

    void flatten(znGeom::CompactMesh& chart, znUtil::Progress& progress) const
    {
        znGeom::reparameterizeMesh flattening(chart);
        flattening.enableMeshWelding(false);
        flattening.enableMeshCutSurface(false);
        const bool isDone = flattening.flatten(progress);
        checkCancelled(progress);
        if (!isDone) refuse("all borders are points");
    }

    /// Coordinates per vertex where there is no seam, and per corner where there is one.
    static void takeCoordinates(const znGeom::CompactMesh& chart, const zn::vector<int>& originals, LoadedMesh& loaded)
    {
        znGeom::CompactMesh& mesh = loaded.mesh;
        std::erase_if(loaded.notes, [](const std::string& note) {
            return note.starts_with("texture coordinates") && note.ends_with(", kept per face corner");
        });
        if (mesh.getUVs() || !loaded.cornerUVs.empty()) loaded.notes.push_back("texture coordinates: replaced");
        mesh.deleteUVs();
        loaded.cornerUVs.clear();
        if (originals.empty()) {
            mesh.allocUVArray();
            std::copy_n(chart.getUVs(), mesh.getNumVertices(), mesh.getUVs());
            return;
        }
        for (int corner = 0; corner < 3 * chart.getNumTriangles(); ++corner)
            loaded.cornerUVs.append(chart.getUVs()[chart.getTrianglesRaw()[corner]]);
    }

    void addDistortion(LoadedMesh& loaded, Report& report)
    {
        const auto distortion =
            znGeom::meshUVDistortion(loaded.mesh, loaded.cornerUVs.empty() ? nullptr : loaded.cornerUVs.data());
        report.add("seam_length", rounded(distortion.seamLength));
        report.add("flipped_triangles", distortion.numFlipped);
        report.add("collapsed_triangles", distortion.numCollapsed);
        report.add("stretch_mean", rounded(distortion.meanStretch));
        report.add("stretch_largest", rounded(distortion.largestStretch));
        report.add("scale_smallest", rounded(distortion.smallestScale));
        report.add("scale_largest", rounded(distortion.largestScale));
        m_remark = "stretch mean " + shownNumber(distortion.meanStretch) + ", largest " +
                   shownNumber(distortion.largestStretch);
        if (distortion.numCollapsed == 0) return;
        loaded.notes.push_back("collapsed triangles are so far from the border, as the surface runs, that a texture "
                               "coordinate can't tell their corners apart");
        if (loaded.cornerUVs.empty()) loaded.notes.back() += "; with its holes filled the mesh is cut from end to end";
    }

    std::unique_ptr<PendingFile> draw(const znGeom::CompactMesh& chart, znUtil::Progress& progress,
                                      Report& report) const
    {
        progress.setCaption("drawing");
        const Image image = drawChart(chart, m_remark, m_picture.size);
        checkCancelled(progress);
        report.add("picture", m_picture.path);
        return writePngAside(image, m_picture.path);
    }

    MeshRoute m_files;
    bool m_isKeptWhole = false;
    PictureOptions m_picture;
    std::string m_remark; ///< for the picture
};

} // namespace

std::unique_ptr<Command> makeFlattenCommand() { return std::make_unique<FlattenCommand>(); }

} // namespace tool
