#include "apps/zngeom/editing/collapse_edges.h"

#include <cmath>
#include <memory>
#include <vector>

#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/pacer.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/scopes/convert_rep.h"
#include "znGeom/simplify/edge_collapse.h"
#include "znGeom/spatial/queries/closest_point.h"
#include "znGeom/spatial/trees/octree_partition.h"
#include "znGeom/topology/topo_walks.h"

namespace tool {

namespace {

using znGeom::CompactMesh;
using znLinear::Point;
using znLinear::Vector;

struct Corners
{
    Point at[3];

    Corners(const CompactMesh& mesh, int triangle)
    {
        for (int i = 0; i < 3; ++i) at[i] = mesh.getVertices()[mesh.getTriangles()[triangle][i]].asPoint();
    }
    Vector normal() const { return cross(at[1] - at[0], at[2] - at[0]); }
    Point middle() const { return ((at[0].asVector() + at[1].asVector() + at[2].asVector()) / 3.0).asPoint(); }
};

/// The power of two that brings the mean length of the sides of all triangles to between 1 and 2. Borders weigh as the
/// square of the lengths of their edges: so they weigh about as much as faces, whatever the unit of the file.
double scaleOf(const CompactMesh& mesh)
{
    double sum = 0;
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        const Corners corners(mesh, t);
        for (int i = 0; i < 3; ++i) sum += (corners.at[(i + 1) % 3] - corners.at[i]).length();
    }
    const double mean = sum / (3.0 * mesh.getNumTriangles());
    return std::isfinite(mean) && mean > 0 ? std::ldexp(1.0, -std::ilogb(mean)) : 1;
}

void scale(znGeom::TopoMesh& mesh, double factor)
{
    for (const znGeom::TopoMeshVertex v : verticesOf(mesh)) mesh.setPoint(v, (v.point().asVector() * factor).asPoint());
}

/// The mesh that is left, as a flat one.
std::unique_ptr<CompactMesh> collapsed(const CompactMesh& mesh, const znGeom::MeshAdjTris& adjTris, double fraction,
                                       znUtil::Progress& progress)
{
    znGeom::BitVector triangles, vertices;
    triangles.resize(mesh.getNumTriangles());
    triangles.setAllBits();
    vertices.resize(mesh.getNumVertices());
    vertices.setAllBits();
    znGeom::MeshConvertRep whole(mesh, triangles, vertices, adjTris);
    znGeom::TopoMesh& topology = whole.extract();
    const EndOnSignal endOnSignal(progress);
    const double factor = scaleOf(mesh);
    scale(topology, factor);
    znGeom::meshReduceByEdgeCollapse(topology, fraction, progress);
    scale(topology, 1 / factor);
    // Vertices come in the order of their numbers.
    std::vector<znGeom::TopoMeshVertex> lost;
    for (const znGeom::TopoMeshVertex v : verticesOf(topology))
        if (!v->edge && adjTris.numTris(v.number()) > 0) lost.push_back(v);
    for (const znGeom::TopoMeshVertex v : lost) topology.deleteVertex(v);
    return std::unique_ptr<CompactMesh>(znGeom::meshConvertRep(topology));
}

int countTurned(const CompactMesh& before, const CompactMesh& after, znUtil::Progress& progress)
{
    znGeom::BoundingBox box;
    znGeom::meshBoundingBox(before, box);
    const znGeom::Octree octree(before.getNumVertices(), before.getVerticesRaw(), box, true, 16);
    znGeom::OctreeTris octreeTris;
    znGeom::computeOctreeTris(before, octree, octreeTris);
    std::vector<Point> middles;
    for (int t = 0; t < after.getNumTriangles(); ++t) middles.push_back(Corners(after, t).middle());
    std::vector<znGeom::MeshCoord> places(middles.size());
    znGeom::MeshClosestPoint closest(before, octree, octreeTris);
    closest.compute(middles.data(), after.getNumTriangles(), places.data(), nullptr, &progress);
    checkCancelled(progress);
    int numTurned = 0;
    for (int t = 0; t < after.getNumTriangles(); ++t) {
        const znGeom::MeshCoord& place = places[static_cast<std::size_t>(t)];
        numTurned += place.valid() && dot(Corners(after, t).normal(), Corners(before, place.triangle).normal()) < 0;
    }
    return numTurned;
}

} // namespace

int collapseEdges(CompactMesh& mesh, double fraction, znUtil::Progress& progress)
{
    Phases phases(progress);
    znUtil::Progress& collapse = phases.next(0.7);
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    const std::unique_ptr<CompactMesh> result = collapsed(mesh, adjTris, fraction, collapse);
    const int numTurned = countTurned(mesh, *result, phases.next(0.3));
    mesh = *result;
    return numTurned;
}

} // namespace tool
