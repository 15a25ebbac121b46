/// Meshes from triangle lists, among them lists that no surface has. Vertex v lies at (v, 0, 0).
#pragma once

#include <array>
#include <vector>

#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "znGeom/analysis/adjacency.h"

namespace znTest {

inline znGeom::CompactMesh makeMesh(int numVertices, const std::vector<std::array<int, 3>>& triangles)
{
    znGeom::CompactMesh mesh;
    mesh.resizeVertexArray(numVertices);
    for (int v = 0; v < numVertices; ++v) mesh.getVertices()[v].set(static_cast<float>(v), 0, 0);
    mesh.copyTriangles(static_cast<int>(triangles.size()), triangles.empty() ? nullptr : triangles[0].data());
    return mesh;
}

/// By turns: a tangle of triangles among few vertices, degenerate, doubled and non-manifold ones among them, the last
/// vertices unused; a torus with holes; loose triangles.
inline znGeom::CompactMesh makeAnyMesh(Random& random, int round)
{
    znGeom::CompactMesh torus, soup;
    makeTorus(torus, 9, 7);
    makeSoup(soup, torus);
    std::vector<std::array<int, 3>> triangles;
    const int numVertices = 3 + random.below(20), keptPercent = 50 + random.below(51);
    for (int i = random.below(50); round % 3 == 0 && i >= 0; --i)
        triangles.push_back({random.below(numVertices), random.below(numVertices), random.below(numVertices)});
    const znGeom::CompactMesh& source = round % 3 == 1 ? torus : soup;
    for (int t = 0; round % 3 != 0 && t < source.getNumTriangles(); ++t)
        if (const auto [a, b, c] = source.getTriangles()[t].corners; random.below(100) < keptPercent)
            triangles.push_back({a, b, c});
    return makeMesh(round % 3 == 0 ? numVertices + 2 : source.getNumVertices(), triangles);
}

inline znGeom::MeshAdjTris adjTrisOf(const znGeom::CompactMesh& mesh)
{
    znGeom::MeshAdjTris adjTris;
    meshAdjTris(mesh, adjTris);
    return adjTris;
}

inline std::vector<int> toVector(const int* values, int count) { return {values, values + count}; }

} // namespace znTest
