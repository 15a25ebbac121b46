#include "apps/zngeom/defects/mesh_defects.h"

#include <algorithm>
#include <deque>

#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/frame/pacer.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/edges.h"
#include "znGeom/repair/manifold.h"
#include "znGeom/spatial/queries/mesh_intersect.h"

namespace tool {

namespace {

void findNonFinite(const znGeom::CompactMesh& mesh, MeshDefects& defects)
{
    for (int vertex = 0; vertex < mesh.getNumVertices(); ++vertex)
        if (!isFinite(mesh.getVertices()[vertex])) defects.nonFiniteVertices.push_back(vertex);
}

void findBoundary(const znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides, MeshDefects& defects)
{
    const int* corners = mesh.getTrianglesRaw();
    for (int edge = 0; edge < sides.getNumEdges(); ++edge) {
        if (sides.sides(edge).size() != 1) continue;
        const int side = sides.sides(edge).front();
        defects.boundary.emplace_back(std::minmax(corners[side], corners[znGeom::cornerAtSideEnd(side)]));
    }
}

void findNonManifold(const znGeom::CompactMesh& mesh, const znGeom::MeshAdjTris& adjTris, MeshDefects& defects)
{
    znGeom::MeshManifoldResult result;
    znGeom::meshManifold(mesh, adjTris, result);
    defects.edges.assign(result.badEdges.begin(), result.badEdges.end());
    if (!defects.edges.empty()) return;
    defects.vertices.emplace();
    for (int vertex = 0; vertex < result.badVertices.getSize(); ++vertex)
        if (result.badVertices.isSet(vertex)) defects.vertices->push_back(vertex);
}

/// The segment lies on the first triangle, or on the second where the first has no area.
Crossing crossingOf(const znGeom::CompactMesh& mesh, const znGeom::MeshIntersectPair& first,
                    const znGeom::MeshIntersectPair& second)
{
    const znGeom::MeshIntersectPair& on = first.start.valid() && first.end.valid() ? first : second;
    return {{first.start.triangle, second.start.triangle},
            {on.start.evaluate(mesh.getVertices(), mesh.getTriangles()),
             on.end.evaluate(mesh.getVertices(), mesh.getTriangles())}};
}

void findCrossings(const znGeom::CompactMesh& mesh, znUtil::Progress& progress, MeshDefects& defects)
{
    progress.setCaption("looking for crossings");
    std::deque<znGeom::MeshIntersectPair> pairs;
    znGeom::MeshIntersect(mesh).selfIntersect(progress, pairs);
    checkCancelled(progress);
    defects.crossings.emplace();
    std::vector<int>& triangles = defects.crossingTriangles;
    for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) {
        defects.crossings->push_back(crossingOf(mesh, pairs[i], pairs[i + 1]));
        for (const int triangle : defects.crossings->back().triangles) triangles.push_back(triangle);
    }
    std::sort(triangles.begin(), triangles.end());
    triangles.erase(std::unique(triangles.begin(), triangles.end()), triangles.end());
}

void findFolds(const znGeom::CompactMesh& mesh, const znGeom::MeshAdjTris& adjTris, double degrees,
               MeshDefects& defects)
{
    znGeom::MeshDihedralAnglesResult result;
    znGeom::meshFindAnglesLessThan(mesh, adjTris, degrees, result);
    defects.folds.emplace();
    for (const auto& [from, to] : result.edges) defects.folds->emplace_back(std::minmax(from, to));
    std::sort(defects.folds->begin(), defects.folds->end());
    zn::vector<int> triangles;
    result.getAdjacentTriangles(mesh, adjTris, triangles);
    defects.foldedTriangles.assign(triangles.begin(), triangles.end());
}

} // namespace

bool MeshDefects::isClean() const
{
    return nonFiniteVertices.empty() && !triangles && edges.empty() && vertices && vertices->empty() &&
           winding.flipped.empty() && winding.oneSided.empty() && (!crossings || crossings->empty()) &&
           (!folds || folds->empty()) && soupNote.empty();
}

MeshDefects findDefects(const znGeom::CompactMesh& mesh, const DefectOptions& options, znUtil::Progress& progress)
{
    progress.setCaption("checking");
    Phases phases(progress);
    MeshDefects defects;
    znGeom::MeshEdgeSides sides;
    znGeom::MeshAdjTris adjTris;
    znGeom::meshEdgeSides(mesh, phases.next(0.1), sides);
    defects.soupNote = soupNote(mesh, sides, phases.next(0.1));
    findNonFinite(mesh, defects);
    findBoundary(mesh, sides, defects);
    znGeom::meshAdjTris(mesh, adjTris);
    phases.next(0.1);
    znGeom::meshDuplicateTris(mesh, defects.triangles);
    phases.next(0.1);
    findNonManifold(mesh, adjTris, defects);
    phases.next(0.1);
    defects.winding = findWindingDefects(mesh, sides, defects.triangles);
    phases.next(0.1);
    if (options.foldAngle) findFolds(mesh, adjTris, *options.foldAngle, defects);
    if (options.crossings && defects.soupNote.empty()) findCrossings(mesh, phases.next(0.4), defects);
    return defects;
}

} // namespace tool
