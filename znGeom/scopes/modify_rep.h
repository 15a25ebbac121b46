/// `znGeom::MeshModifyRep`: a region of a flat mesh taken out, edited, and merged back.
#pragma once

#include "znGeom/foundation/mesh/array.h"
#include "znGeom/scopes/array_map.h"
#include "znGeom/scopes/convert_rep.h"

namespace znGeom {

/// A scope in which connectivity is edited: made, `extract`, edits of the half-edge mesh, `merge`, destroyed. Destroyed
/// without a merge it leaves every bit of the mesh as it was: that is how an edit is given up.
///
/// Vertices of the region that have a triangle outside it, the frontier, link the edited part with the rest: they keep
/// their places in the mesh. All other vertices and all triangles of the region are replaced by those of the half-edge
/// mesh, edited or not; new ones follow the old ones that stay, in the order of the half-edge mesh's lists. Positions
/// are written for all, so a frontier vertex can be moved. New vertices and triangles have no values in other channels.
///
/// A scope costs as much as its region, except for the merge, which passes over the whole mesh: one scope for many
/// edits.
class ZNGEOM_API MeshModifyRep : public MeshConvertRep
{
public:
    /// The region is the mesh's selection of triangles and vertices.
    /// \param memory  lends the memory of the half-edge mesh, for scopes that follow one another; outlives this. May be
    ///                null
    MeshModifyRep(CompactMesh& mesh, const MeshAdjTris& adjacency, TopoMemory* memory = nullptr);
    /// As in `MeshConvertRep`.
    MeshModifyRep(CompactMesh& mesh, const BitVector& triangles, const BitVector& vertices,
                  const MeshAdjTris& adjacency, TopoMemory* memory = nullptr);
    ~MeshModifyRep() override;

    TopoMesh& extract() override;

    /// To be called before a vertex of the half-edge mesh is deleted, unless the edit had made it: it then goes from
    /// the mesh too. Suits the signals of algorithms that remove vertices. Others are ignored.
    void removeVertex(TopoMeshVertex vertex);

    /// Writes the edited region back. Once, after `extract`; all faces must be triangles (of a larger one the first
    /// three corners are taken).
    ///
    /// What the user has selected outside the region stays selected. The change is reported once, as that of
    /// `MeshDeleteSelected`, which takes out what was replaced.
    void merge();
    /// \param vertexRemap  replaced: for each old vertex, and for each new one counted from the old number of vertices,
    ///                     where it is now, or -1. A vertex of the region that survived the edit is followed
    /// \param newIndices   may be null; replaced: for every vertex of the half-edge mesh where it is now. Sorted
    void merge(Array<int>& vertexRemap, ArrayMap<TopoMeshVertex, int>* newIndices);

private:
    class ModifyImpl;
    ModifyImpl& impl() const;
};

} // namespace znGeom
