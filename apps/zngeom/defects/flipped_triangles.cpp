#include "apps/zngeom/defects/flipped_triangles.h"

#include <algorithm>

#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/triangle_components.h"
#include "znGeom/editing/extract_parts.h"
#include "znGeom/repair/orient.h"

namespace tool {

namespace {

/// For each triangle 0, or -1 where its winding can't be judged.
std::vector<int> partOfJudged(const znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides,
                              const znGeom::MeshDuplicateTrisResult& bad)
{
    std::vector<int> partOf(static_cast<std::size_t>(mesh.getNumTriangles()), 0);
    zn::vector<int> badTriangles;
    bad.getBadTriangles(mesh, badTriangles);
    for (const int triangle : badTriangles) partOf[static_cast<std::size_t>(triangle)] = -1;
    std::vector<int> crowded;
    for (int edge = 0; edge < sides.getNumEdges(); ++edge) {
        const auto ofEdge = sides.sides(edge);
        const auto isGood = [&](int side) { return partOf[static_cast<std::size_t>(side / 3)] == 0; };
        if (std::count_if(ofEdge.begin(), ofEdge.end(), isGood) > 2)
            crowded.insert(crowded.end(), ofEdge.begin(), ofEdge.end());
    }
    for (const int side : crowded) partOf[static_cast<std::size_t>(side / 3)] = -1;
    return partOf;
}

} // namespace

void takeSmallerSets(const znGeom::CompactMesh& mesh, std::vector<bool>& isTurned)
{
    znGeom::MeshEdgeSides sides;
    znGeom::meshEdgeSides(mesh, sides);
    znGeom::MeshTriangleComponents pieces;
    znGeom::meshEdgeComponents(mesh, sides, pieces);
    std::vector<int> numTurned(static_cast<std::size_t>(pieces.count()), 0);
    const auto pieceOf = [&](std::size_t triangle) { return pieces.ofTriangle[static_cast<int>(triangle)]; };
    for (std::size_t i = 0; i < isTurned.size(); ++i)
        numTurned[static_cast<std::size_t>(pieceOf(i))] += isTurned[i] ? 1 : 0;
    for (std::size_t i = 0; i < isTurned.size(); ++i)
        if (2 * numTurned[static_cast<std::size_t>(pieceOf(i))] > pieces.sizes[pieceOf(i)]) isTurned[i] = !isTurned[i];
}

WindingDefects findWindingDefects(const znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides,
                                  const znGeom::MeshDuplicateTrisResult& bad)
{
    znGeom::MeshExtractParts parts(mesh, partOfJudged(mesh, sides, bad).data(), 1);
    znGeom::CompactMesh judged;
    parts.extract(0, judged);
    const std::vector<znGeom::MeshTriangle> before(judged.getTriangles(),
                                                   judged.getTriangles() + judged.getNumTriangles());
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(judged, adjTris);
    znGeom::MeshOrient orient(judged, adjTris);
    if (orient.isOriented()) return {};
    orient.orient();

    WindingDefects defects;
    const auto numbers = parts.triangles(0);
    if (!orient.isOrientable()) {
        for (std::size_t i = 0; i < before.size(); ++i)
            if (orient.getAffectedTriangles().isSet(static_cast<int>(i))) defects.oneSided.push_back(numbers[i]);
        return defects;
    }
    std::vector<bool> isTurned;
    for (std::size_t i = 0; i < before.size(); ++i) isTurned.push_back(before[i][1] != judged.getTriangles()[i][1]);
    takeSmallerSets(judged, isTurned);
    for (std::size_t i = 0; i < before.size(); ++i)
        if (isTurned[i]) defects.flipped.push_back(numbers[i]);
    return defects;
}

} // namespace tool
