#include "apps/zngeom/command/mesh_summary.h"

#include <cmath>
#include <numbers>

#include "apps/zngeom/frame/pacer.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/areas.h"
#include "znGeom/analysis/components.h"
#include "znGeom/analysis/fold_angle.h"
#include "znGeom/analysis/triangle_components.h"
#include "znGeom/analysis/volume.h"
#include "znGeom/editing/duplicates.h"

namespace tool {

namespace {

std::optional<double> finite(double value) { return std::isfinite(value) ? std::optional(value) : std::nullopt; }

void countComponents(const znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides, znUtil::Progress& progress,
                     MeshSummary& summary)
{
    znGeom::MeshTriangleComponents components;
    znGeom::meshEdgeComponents(mesh, sides, progress, components);
    checkCancelled(progress);
    summary.components = components.count();
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    checkCancelled(progress);
    summary.vertexComponents = znGeom::meshComponents(mesh, adjTris, nullptr);
}

void measure(const znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides, MeshSummary& summary)
{
    const znGeom::MeshEdgeCensus& edges = summary.edges;
    summary.area = finite(double(znGeom::meshArea(mesh, znGeom::MeshChannelVertices)));
    if (edges.isClosed() && edges.isConsistentlyWound()) summary.volume = finite(znGeom::meshVolume(mesh));
    if (edges.edges > edges.boundary && edges.isConsistentlyWound())
        summary.largestDihedralAngle = znGeom::meshMaxFoldAngle(mesh, sides) * 180 / std::numbers::pi;
}

} // namespace

MeshSummary summarizeMesh(const znGeom::CompactMesh& mesh, znUtil::Progress& progress)
{
    progress.setCaption("counting");
    Phases phases(progress);
    MeshSummary summary;
    znGeom::MeshEdgeSides sides;
    summary.duplicatePositions = znGeom::meshCountDuplicates(mesh, phases.next(0.4));
    znGeom::meshEdgeSides(mesh, phases.next(0.2), sides);
    znGeom::meshCountVertices(mesh, sides, phases.next(0.05), summary.vertices);
    znGeom::meshCountEdges(mesh, sides, phases.next(0.05), summary.edges);
    znGeom::meshBorderLoops(mesh, sides, phases.next(0.1), summary.boundaryLoops);
    countComponents(mesh, sides, phases.next(0.1), summary);
    phases.next(0.1);
    summary.degenerateTriangles = znGeom::meshCountDegenerateTriangles(mesh);
    measure(mesh, sides, summary);
    checkCancelled(progress);
    return summary;
}

std::string soupNote(const znGeom::MeshEdgeCensus& edges, int numVertices, int duplicatePositions)
{
    const bool allApart = edges.edges > 3 && edges.boundary >= 0.9 * edges.edges;
    if (!allApart || duplicatePositions < 0.5 * numVertices) return {};
    return "the triangles share next to no vertices, but " + std::to_string(duplicatePositions) + " of " +
           std::to_string(numVertices) + " vertices are where another one is: weld the mesh first to connect them";
}

} // namespace tool
