/// The surroundings of a path as a half-edge mesh.
#pragma once

#include <optional>
#include <span>

#include "znGeom/foundation/mesh/bit_vector.h"
#include "znGeom/scopes/convert_rep.h"

namespace znGeom::internal {

class CollarRegion
{
public:
    /// \param seeds  vertices; in order of the loop if they are one. The region is made of the triangles with two of
    ///               them or more, and of two rings around these
    CollarRegion(const CompactMesh& mesh, const MeshAdjTris& adjTris, std::span<const int> seeds);

    /// Nothing for a place in no triangle of the region, or one that is not finite.
    std::optional<TopoMeshPoint> find(const MeshCoord& place) const;

    bool isSeed(TopoMeshVertex vertex) const { return m_isSeed[indexOf(vertex)]; }
    /// The one that comes after it in the loop, or before it; null for a vertex that is no seed. Linear in the seeds.
    TopoMeshVertex seedAfter(TopoMeshVertex vertex, bool forward) const;
    /// Whether a half-edge without a twin is on the border of the mesh, not just on that of the region.
    bool isOnMeshBorder(TopoMeshEdge edge) const;
    int numEdges() const { return m_topoMesh->numEdges(); }

private:
    int indexOf(TopoMeshVertex vertex) const { return m_indices[vertex.number()]; }

    const CompactMesh& m_mesh;
    const MeshAdjTris& m_adjTris;
    std::span<const int> m_seeds;
    BitVector m_isSeed; ///< by vertices of the mesh
    std::optional<MeshConvertRep> m_convert;
    TopoMesh* m_topoMesh = nullptr;
    zn::vector<int> m_indices; ///< in the mesh, by the number of the half-edge mesh's vertex
};

} // namespace znGeom::internal
