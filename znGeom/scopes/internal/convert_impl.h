/// What the scopes know of a region and its half-edge mesh.
#pragma once

#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/mesh/bit_ranks.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

class ConvertImpl : public zn::ImplBase
{
public:
    ConvertImpl(const CompactMesh& mesh, const BitVector& triangles, const BitVector& vertices,
                const MeshAdjTris& adjacency);
    ~ConvertImpl() override;

    virtual TopoMesh& extract();

    /// Null for none.
    TopoMeshVertex vertexOf(int compactVertex) const
    {
        return handleOf(compactVertex, vertices, m_vertexRanks, m_vertices);
    }
    TopoMeshFace faceOf(int compactTriangle) const
    {
        return handleOf(compactTriangle, triangles, m_triangleRanks, m_faces);
    }

    const CompactMesh& mesh;
    BitVector vertices, triangles; ///< the region; sized to the mesh
    const MeshAdjTris& adjacency;
    TopoMesh topoMesh;

protected:
    /// From now on the vertex has no handle.
    void forgetVertex(int compactVertex) { m_vertices[m_vertexRanks(compactVertex)] = {}; }
    /// How many triangles of the region have lower numbers.
    int trianglesBelow(int compactTriangle) const { return m_triangleRanks(compactTriangle); }

private:
    template <typename Handle>
    static Handle handleOf(int index, const BitVector& set, const BitRanks& ranks, const zn::vector<Handle>& handles)
    {
        const bool isThere = index >= 0 && index < set.getSize() && set[index] && !handles.empty();
        return isThere ? handles[ranks(index)] : Handle();
    }
    BitRanks m_vertexRanks, m_triangleRanks;
    zn::vector<TopoMeshVertex> m_vertices; ///< by their places among the vertices of the region
    zn::vector<TopoMeshFace> m_faces;
};

} // namespace znGeom
