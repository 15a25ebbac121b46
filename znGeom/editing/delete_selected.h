/// Deleting the selected triangles of a mesh, and the vertices that nothing needs any more.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"

namespace znGeom {

/// Deletes what is selected on a mesh; keeps the map of the last deletion.
class ZNGEOM_API MeshDeleteSelected
{
public:
    explicit MeshDeleteSelected(CompactMesh& mesh) : m_mesh(&mesh) {}

    /// Deletes the selected triangles, and those selected vertices that no remaining triangle uses. Vertices and
    /// triangles that stay keep their order.
    ///
    /// If no triangle is selected nothing happens; if all are, all vertices are deleted with them, selected or not.
    /// Positions and UVs follow their vertices; of the other channels the change drops those that depend on vertex
    /// numbers, and named attributes stay in their places. Both selections are empty, of size 0, afterwards. One
    /// `TopologyChanged` is reported, with the maps of vertices and triangles unless everything was deleted.
    ///
    /// Linear, in place; runs on the calling thread.
    void operator()();

    /// The same with another selection: these triangles and their corners, instead of what was selected.
    /// \param adjTris  built from the mesh by `meshAdjTris`
    void operator()(const MeshAdjTris& adjTris, const zn::vector<int>& triangles);

    /// From old to new vertex numbers, of the last run that deleted something; null until then.
    const zn::Reference<Remap>& vertexRemap() const { return m_vertexRemap; }

private:
    void deleteAll();
    void deleteVertices(const BitVector& deleted);
    void deleteTriangles(Remap& triangleRemap);

    CompactMesh* m_mesh;
    zn::Reference<Remap> m_vertexRemap;
};

} // namespace znGeom
