#include "apps/zngeom/mesh_summary.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "apps/zngeom/pacer.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/editing/weld.h"

namespace tool {

namespace {

bool isFinite(const znGeom::MeshVertex& vertex)
{
    return std::isfinite(vertex.x) && std::isfinite(vertex.y) && std::isfinite(vertex.z);
}

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

/// Counts the triangles on each edge, from the lower one of its vertices.
class EdgeCounter
{
public:
    EdgeCounter(const znGeom::CompactMesh& mesh, const znGeom::MeshAdjTris& adjTris,
                const znGeom::MeshAdjVertices& adjVertices)
        : m_mesh(mesh), m_adjTris(adjTris), m_adjVertices(adjVertices),
          m_trianglesTo(static_cast<std::size_t>(mesh.getNumVertices())), m_onBoundary(mesh.getNumVertices())
    {}

    void countFrom(int vertex, MeshSummary& summary)
    {
        countTriangles(vertex);
        for (int i = 0; i < m_adjVertices.numNeighbours(vertex); ++i) {
            const int neighbour = m_adjVertices.neighbours(vertex)[i];
            if (neighbour < vertex) continue;
            int& triangles = m_trianglesTo[static_cast<std::size_t>(neighbour)];
            ++summary.edges;
            if (triangles >= 3) ++summary.nonManifoldEdges;
            if (triangles == 1) {
                ++summary.boundaryEdges;
                m_onBoundary.setBit(vertex);
                m_onBoundary.setBit(neighbour);
            }
            triangles = 0;
        }
    }

    int numBoundaryVertices() const { return m_onBoundary.getNumSetBits(); }

private:
    /// A triangle that has an edge twice, because a corner is repeated, counts once.
    void countTriangles(int vertex)
    {
        int previous = -1;
        for (int i = 0; i < m_adjTris.numTris(vertex); ++i) {
            const int triangle = m_adjTris.triIndices(vertex)[i];
            if (triangle == previous) continue;
            previous = triangle;
            int counted = vertex;
            for (const int corner : m_mesh.getTriangles()[triangle].corners) {
                if (corner == vertex || corner == counted) continue;
                ++m_trianglesTo[static_cast<std::size_t>(corner)];
                counted = corner;
            }
        }
    }

    const znGeom::CompactMesh& m_mesh;
    const znGeom::MeshAdjTris& m_adjTris;
    const znGeom::MeshAdjVertices& m_adjVertices;
    std::vector<int> m_trianglesTo; ///< per vertex, from the present one; zero between two
    znGeom::BitVector m_onBoundary;
};

void summarizeNeighbourhoods(const znGeom::CompactMesh& mesh, znUtil::Progress& progress, MeshSummary& summary)
{
    znGeom::MeshAdjTris adjTris;
    znGeom::MeshAdjVertices adjVertices;
    znGeom::meshAdjTris(mesh, adjTris);
    checkCancelled(progress);
    znGeom::meshAdjVertices(mesh, adjTris, adjVertices);

    Pacer pacer(progress, static_cast<std::size_t>(mesh.getNumVertices()));
    EdgeCounter counter(mesh, adjTris, adjVertices);
    for (int vertex = 0; vertex < mesh.getNumVertices(); ++vertex) {
        pacer.at(static_cast<std::size_t>(vertex));
        if (adjTris.numTris(vertex) == 0) {
            ++summary.unusedVertices;
            continue;
        }
        const int valence = adjVertices.numNeighbours(vertex);
        summary.valenceMin = std::min(summary.valenceMin.value_or(valence), valence);
        summary.valenceMax = std::max(summary.valenceMax.value_or(valence), valence);
        counter.countFrom(vertex, summary);
    }
    summary.boundaryVertices = counter.numBoundaryVertices();
    summary.closed = mesh.getNumTriangles() > 0 && summary.boundaryEdges == 0;
}

} // namespace

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
    summarizeNeighbourhoods(mesh, phase, summary);
    return summary;
}

} // namespace tool
