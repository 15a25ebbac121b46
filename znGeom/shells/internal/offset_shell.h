/// The half-edge mesh of a surface, its offset copy, and the walls between them.
#pragma once

#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/linear/vector.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom::internal {

/// By the numbers of the source's vertices, which are those of their handles.
struct OffsetShell
{
    zn::vector<znLinear::VectorFlt> normals;
    zn::vector<TopoMeshVertex> copies;

    int size() const { return copies.size(); }
    bool isSource(TopoMeshVertex vertex) const { return vertex.number() < size(); }
    /// The vertex of which another one is the copy.
    int sourceOf(TopoMeshVertex copy) const { return copy.number() - size(); }
};

/// Adds to the mesh of a source, which is as it was built, the copy and the walls.
OffsetShell makeOffsetShell(TopoMesh& mesh, const MeshBoundaries& boundaries, double distance);

} // namespace znGeom::internal
