/// The full check of a half-edge mesh, and half-edge meshes to check.
#pragma once

#include <vector>

#include <gtest/gtest.h>

#include "znGeom/foundation/mesh.h"
#include "znGeom/topology.h"

namespace znTest {

/// Whether a mesh is whole: lists and counts, face cycles, twins, the `edge` of each vertex, handle order, and the walk
/// round each vertex against the half-edges that leave it. Says what is wrong first.
/// \param oppositeTwins  also that the two halves of a pair run opposite ways
testing::AssertionResult checkTopology(const znGeom::TopoMesh& mesh, bool oppositeTwins = true);

/// The triangles of a compact mesh, vertex by vertex and face by face; twins as `allocTriangle` finds them.
void fill(znGeom::TopoMesh& mesh, const znGeom::CompactMesh& source);

std::vector<znGeom::TopoMeshVertex> verticesOf(const znGeom::TopoMesh& mesh);
std::vector<znGeom::TopoMeshEdge> edgesOf(const znGeom::TopoMesh& mesh);
std::vector<znGeom::TopoMeshFace> facesOf(const znGeom::TopoMesh& mesh);
std::vector<znGeom::TopoMeshVertex> cornersOf(znGeom::TopoMeshFace face);
int countBoundary(const znGeom::TopoMesh& mesh);

} // namespace znTest
