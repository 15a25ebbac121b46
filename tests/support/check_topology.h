/// The full check of a half-edge mesh, and half-edge meshes to check.
#pragma once

#include <vector>

#include <gtest/gtest.h>

#include "znGeom/foundation/mesh.h"
#include "znGeom/topology.h"

namespace znTest {

/// Whether a mesh is whole: lists and counts, face cycles, twins, the `edge` of each vertex, handle order, and the
/// walks round each vertex against the half-edges that leave it. Says what is wrong first. \param oppositeTwins  that
/// the two halves of a pair run opposite ways, and not only between the same vertices
testing::AssertionResult checkTopology(const znGeom::TopoMesh& mesh, bool oppositeTwins = true);

/// The triangles of a compact mesh, vertex by vertex and face by face; twins as `allocTriangle` finds them.
void fill(znGeom::TopoMesh& mesh, const znGeom::CompactMesh& source);

/// What a walk or a list meets, to be indexed.
template <typename Handle, Handle (*Next)(Handle)>
std::vector<Handle> listed(const znGeom::TopoRange<Handle, Next>& range)
{
    std::vector<Handle> all;
    for (const Handle element : range) all.push_back(element);
    return all;
}

std::vector<znGeom::TopoMeshVertex> cornersOf(znGeom::TopoMeshFace face);
int countBoundary(const znGeom::TopoMesh& mesh);

} // namespace znTest
