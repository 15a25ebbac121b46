#include "apps/zngeom/shells/offset_surface.h"
#include "apps/zngeom/measuring/boundary_loops.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <memory>

#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/measuring/mesh_index.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/editing/extract.h"
#include "znGeom/editing/reverse_winding.h"
#include "znGeom/editing/select.h"
#include "znGeom/spatial/queries/closest_point.h"
#include "znGeom/spatial/queries/mesh_intersect.h"

namespace tool {

namespace {

using znGeom::CompactMesh;

/// The triangles from a number on, with the vertices that they use.
template <typename IsWanted>
CompactMesh extracted(CompactMesh& mesh, const IsWanted& isWanted)
{
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    znGeom::MeshSelect select(mesh, adjTris);
    select.getSelectedTriangles().setWhere(isWanted);
    select.selectVerticesFromTriangles();
    CompactMesh part;
    znGeom::meshExtract(part, mesh);
    return part;
}

/// The shell; the mesh comes first in it.
std::unique_ptr<CompactMesh> shellOf(const CompactMesh& mesh, double outward, bool isShell, OffsetFindings& findings)
{
    const MeshBorders borders(mesh);
    znGeom::BoundingBox box;
    znGeom::meshBoundingBox(mesh, box);
    const znGeom::Octree octree(mesh.getNumVertices(), mesh.getVerticesRaw(), box, true, 16);
    znGeom::MeshOffset offset(mesh, octree, borders.boundaries, borders.adjTris, -outward);
    constexpr double backward = 0.7; // what merely stands across, at the tips of thin parts, is left as it is
    offset.setTurnedFrom(backward);
    std::unique_ptr<CompactMesh> result(offset.calculate(isShell));
    findings.pruning = offset.pruning();
    return result;
}

/// Widens the range by the distances of the vertices of one mesh from the surface of another.
void measure(const CompactMesh& from, const CompactMesh& to, OffsetFindings& findings, znUtil::Progress& progress)
{
    if (from.getNumVertices() == 0 || to.getNumTriangles() == 0) return;
    Phases phases(progress);
    const MeshIndex index(to, phases.next(0.3));
    std::vector<znLinear::Point> points;
    for (int i = 0; i < from.getNumVertices(); ++i) points.push_back(from.getVertices()[i].asPoint());
    std::vector<double> distances(points.size());
    znGeom::MeshClosestPoint closest(to, *index.octree, index.octreeTris, *index.tree);
    closest.compute(points.data(), from.getNumVertices(), nullptr, distances.data(), &phases.next(0.7));
    checkCancelled(progress);
    const auto [least, most] = std::minmax_element(distances.begin(), distances.end());
    findings.smallestWall = std::min(findings.smallestWall, *least);
    findings.largestWall = std::max(findings.largestWall, *most);
}

void measureWalls(const CompactMesh& source, const CompactMesh& copy, OffsetFindings& findings,
                  znUtil::Progress& progress)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    progress.setCaption("measuring");
    findings.smallestWall = infinity;
    findings.largestWall = -infinity;
    Phases phases(progress);
    measure(copy, source, findings, phases.next(0.5));
    measure(source, copy, findings, phases.next(0.5));
}

void findCrossings(const CompactMesh& mesh, OffsetFindings& findings, znUtil::Progress& progress)
{
    progress.setCaption("looking for crossings");
    std::deque<znGeom::MeshIntersectPair> pairs;
    znGeom::MeshIntersect(mesh).selfIntersect(progress, pairs);
    checkCancelled(progress);
    findings.crossings = pairs.size() / 2;
    for (const znGeom::MeshIntersectPair& pair : pairs) findings.crossing.push_back(pair.start.triangle);
    std::sort(findings.crossing.begin(), findings.crossing.end());
    findings.crossing.erase(std::unique(findings.crossing.begin(), findings.crossing.end()), findings.crossing.end());
}

/// The triangles of a shell that lie between copies alone.
CompactMesh copyIn(CompactMesh& shell, int numSourceVertices)
{
    return extracted(shell, [&shell, numSourceVertices](int t) {
        const auto [a, b, c] = shell.getTriangles()[t].corners;
        return std::min({a, b, c}) >= numSourceVertices;
    });
}

} // namespace

OffsetFindings offsetSurface(CompactMesh& mesh, double outward, bool isShell, znUtil::Progress& progress)
{
    Phases phases(progress);
    phases.next(0.5).setCaption("offsetting");
    const CompactMesh source = extracted(mesh, [](int) { return true; });
    OffsetFindings findings;
    std::unique_ptr<CompactMesh> result;
    {
        const EndOnSignal endOnSignal(progress);
        result = shellOf(source, outward, isShell, findings);
    }
    measureWalls(source, isShell ? copyIn(*result, source.getNumVertices()) : *result, findings, phases.next(0.3));
    if (!isShell || outward > 0) znGeom::meshReverseWinding(*result, false);
    result->deleteNormals();
    result->clearSelection();
    findCrossings(*result, findings, phases.next(0.2));
    mesh.swap(*result);
    return findings;
}

} // namespace tool
