#include "apps/zngeom/mesh_summary.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "apps/zngeom/pacer.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/areas.h"
#include "znGeom/analysis/edges.h"
#include "znGeom/editing/weld.h"

namespace tool {

namespace {

std::vector<znGeom::MeshVertex> finiteVertices(const znGeom::CompactMesh& mesh)
{
    std::vector<znGeom::MeshVertex> result;
    std::copy_if(mesh.getVertices(), mesh.getVertices() + mesh.getNumVertices(), std::back_inserter(result), isFinite);
    return result;
}

std::optional<Bounds> computeBounds(const std::vector<znGeom::MeshVertex>& vertices)
{
    if (vertices.empty()) return std::nullopt;
    const znGeom::MeshVertex& first = vertices.front();
    Bounds bounds{{first.x, first.y, first.z}, {first.x, first.y, first.z}};
    for (const znGeom::MeshVertex& vertex : vertices) {
        const float position[3] = {vertex.x, vertex.y, vertex.z};
        for (int axis = 0; axis < 3; ++axis) {
            bounds.low[axis] = std::min(bounds.low[axis], position[axis]);
            bounds.high[axis] = std::max(bounds.high[axis], position[axis]);
        }
    }
    return bounds;
}

/// Welds the bare points and looks how many are left.
int countDuplicates(const std::vector<znGeom::MeshVertex>& vertices, znUtil::Progress& progress)
{
    if (vertices.empty()) return 0;
    const int count = static_cast<int>(vertices.size());
    znGeom::CompactMesh points;
    points.copyVertices(count, vertices.data());
    znGeom::Remap remap;
    znGeom::meshCompact(points, progress, remap);
    return count - remap.range;
}

void countNeighbours(const znGeom::CompactMesh& mesh, const znGeom::MeshAdjTris& adjTris, MeshSummary& summary)
{
    znGeom::MeshAdjVertices adjVertices;
    znGeom::meshAdjVertices(mesh, adjTris, adjVertices);
    for (int vertex = 0; vertex < mesh.getNumVertices(); ++vertex) {
        if (adjTris.numTris(vertex) == 0) {
            ++summary.unusedVertices;
            continue;
        }
        const int valence = adjVertices.numNeighbours(vertex);
        summary.valenceMin = std::min(summary.valenceMin.value_or(valence), valence);
        summary.valenceMax = std::max(summary.valenceMax.value_or(valence), valence);
    }
}

std::optional<double> finite(double value) { return std::isfinite(value) ? std::optional(value) : std::nullopt; }

/// Six times the volume is the sum of the parallelepipeds from any point to the triangles; one amid the mesh keeps
/// digits where the mesh lies far from the origin.
std::optional<double> computeVolume(const znGeom::CompactMesh& mesh, const Bounds& bounds)
{
    const auto middle = [&](int axis) { return (double(bounds.low[axis]) + double(bounds.high[axis])) / 2; };
    const znLinear::Point origin(middle(0), middle(1), middle(2));
    double sum = 0;
    for (int i = 0; i < mesh.getNumTriangles(); ++i) {
        const auto corner = [&](int which) {
            return mesh.getVertices()[mesh.getTriangles()[i][which]].asPoint() - origin;
        };
        sum += dot(corner(0), cross(corner(1), corner(2)));
    }
    return finite(sum / 6);
}

bool hasNormal(const znGeom::CompactMesh& mesh, const znGeom::MeshTriangle& triangle)
{
    const auto corner = [&](int which) { return mesh.getVertices()[triangle[which]].asPoint(); };
    return znLinear::Normal(cross(corner(2) - corner(1), corner(0) - corner(1))).isValid();
}

/// In degrees. Triangles without area have no direction and are left out.
double largestDihedralAngle(const znGeom::CompactMesh& mesh)
{
    std::vector<znGeom::MeshTriangle> triangles;
    std::copy_if(mesh.getTriangles(), mesh.getTriangles() + mesh.getNumTriangles(), std::back_inserter(triangles),
                 [&mesh](const znGeom::MeshTriangle& triangle) { return hasNormal(mesh, triangle); });
    znGeom::CompactMesh faces;
    faces.copyVertices(mesh.getNumVertices(), mesh.getVertices());
    faces.resizeTriangleArray(static_cast<int>(triangles.size()));
    std::copy(triangles.begin(), triangles.end(), faces.getTriangles());
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(faces, adjTris);
    return znGeom::meshMaxDihedralAngle(faces, adjTris) * 180 / std::numbers::pi;
}

void summarizeSurface(const znGeom::CompactMesh& mesh, znUtil::Progress& progress, MeshSummary& summary)
{
    znUtil::Progress phase;
    progress.subPhase(0.6, phase);
    const Surface surface(mesh, phase);
    countNeighbours(mesh, surface.adjTris(), summary);
    checkCancelled(progress);

    summary.edges = surface.edgeCounts();
    summary.closed = mesh.getNumTriangles() > 0 && summary.edges.boundary == 0;
    summary.components = surface.components(Across::Edges).count();
    summary.vertexComponents = surface.components(Across::Vertices).count();
    summary.boundaryLoops = surface.boundaryLoops();
    checkCancelled(progress);
    progress.set(0.8);

    summary.area = finite(double(znGeom::meshArea(mesh, znGeom::MeshChannelVertices)));
    if (summary.closed && summary.consistentlyWound() && summary.bounds)
        summary.volume = computeVolume(mesh, *summary.bounds);
    if (summary.edges.edges > summary.edges.boundary && summary.consistentlyWound())
        summary.largestDihedralAngle = largestDihedralAngle(mesh);
}

} // namespace

bool isFinite(const znGeom::MeshVertex& vertex)
{
    return std::isfinite(vertex.x) && std::isfinite(vertex.y) && std::isfinite(vertex.z);
}

int countDegenerateTriangles(const znGeom::CompactMesh& mesh)
{
    return static_cast<int>(std::count_if(
        mesh.getTriangles(), mesh.getTriangles() + mesh.getNumTriangles(), [](const znGeom::MeshTriangle& triangle) {
            return triangle[0] == triangle[1] || triangle[1] == triangle[2] || triangle[2] == triangle[0];
        }));
}

MeshSummary summarizeMesh(const znGeom::CompactMesh& mesh, znUtil::Progress& progress)
{
    progress.setCaption("counting");
    znUtil::Progress phase;
    MeshSummary summary;

    const std::vector<znGeom::MeshVertex> finite = finiteVertices(mesh);
    summary.nonFiniteVertices = mesh.getNumVertices() - static_cast<int>(finite.size());
    summary.bounds = computeBounds(finite);
    summary.degenerateTriangles = countDegenerateTriangles(mesh);

    progress.subPhase(0.5, phase);
    summary.duplicatePositions = countDuplicates(finite, phase);
    checkCancelled(progress);

    progress.subPhase(0.5, phase);
    summarizeSurface(mesh, phase, summary);
    return summary;
}

} // namespace tool
