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
                const MeshAdjTris& adjacency, TopoMemory* memory = nullptr);
    ~ConvertImpl() override;

    virtual TopoMesh& extract();

    /// Null for none.
    TopoMeshVertex vertexOf(int compactVertex) const
    {
        return handleOf(compactVertex, m_known, m_vertexRanks, m_firstVertex);
    }
    TopoMeshFace faceOf(int compactTriangle) const
    {
        return handleOf(compactTriangle, triangles, m_triangleRanks, m_firstFace);
    }

    const CompactMesh& mesh;
    BitVector vertices, triangles; ///< the region; sized to the mesh
    const MeshAdjTris& adjacency;
    TopoMesh topoMesh;

protected:
    /// From now on the vertex has no handle.
    void forgetVertex(int compactVertex) { m_known.clearBit(compactVertex); }
    /// How many triangles of the region have lower numbers.
    int trianglesBelow(int compactTriangle) const { return m_triangleRanks(compactTriangle); }

    zn::vector<int> m_members; ///< the vertices of the region, by the numbers of their handles; -1 for those given up

private:
    zn::vector<MeshTriangle> renumberedTriangles() const;

    /// The elements of the region were made in the order of their numbers, before any others.
    template <typename Handle>
    static Handle handleOf(int index, const BitVector& set, const BitRanks& ranks, Handle first)
    {
        const bool isThere = first && index >= 0 && index < set.getSize() && set[index];
        return isThere ? Handle(TopoBlock::numbered(first.record(), ranks(index))) : Handle();
    }

    BitRanks m_vertexRanks, m_triangleRanks;
    BitVector m_known; ///< the vertices of the region but for those given up
    TopoMeshVertex m_firstVertex;
    TopoMeshFace m_firstFace;
};

} // namespace znGeom
