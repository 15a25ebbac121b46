#include "apps/zngeom/command/part_options.h"

#include <CLI/App.hpp>

#include "apps/zngeom/command/mesh_summary.h"
#include "apps/zngeom/frame/pacer.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/editing/duplicates.h"

namespace tool {

CLI::Option* addAcrossOption(CLI::App& app, std::string& word)
{
    word = "edges";
    return app.add_option("--by", word, "What connects triangles: shared edges, or also single shared vertices")
        ->check(CLI::IsMember({"edges", "vertices"}))
        ->option_text("edges|vertices [edges]");
}

znGeom::MeshTriangleComponents findComponents(const znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides,
                                              const std::string& across, znUtil::Progress& progress)
{
    znGeom::MeshTriangleComponents components;
    if (across == "vertices") {
        znGeom::MeshAdjTris adjTris;
        znGeom::meshAdjTris(mesh, adjTris);
        znGeom::meshVertexComponents(mesh, adjTris, progress, components);
    } else {
        znGeom::meshEdgeComponents(mesh, sides, progress, components);
    }
    checkCancelled(progress);
    return components;
}

void checkHasTriangles(const znGeom::CompactMesh& mesh, const std::string& path)
{
    if (mesh.getNumTriangles() == 0) throw Failure(path + ": has no triangles");
}

std::string soupNote(const znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides, znUtil::Progress& progress)
{
    znUtil::Progress phase;
    progress.subPhase(0.2, phase);
    znGeom::MeshEdgeCensus edges;
    znGeom::meshCountEdges(mesh, sides, phase, edges);
    checkCancelled(progress);
    // Counting duplicates takes a sort, and most meshes are not soups.
    const int mostPossible = mesh.getNumVertices();
    if (soupNote(edges, mesh.getNumVertices(), mostPossible).empty()) return {};
    progress.subPhase(0.8, phase);
    const int duplicates = znGeom::meshCountDuplicates(mesh, phase);
    checkCancelled(progress);
    return soupNote(edges, mesh.getNumVertices(), duplicates);
}

} // namespace tool
