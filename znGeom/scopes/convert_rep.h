/// `znGeom::MeshConvertRep`: a region of a flat mesh as a half-edge mesh, and a half-edge mesh as a flat one.
#pragma once

#include <memory>

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/foundation/signals/signal.h"
#include "znGeom/topology/topo_mesh.h"
#include "znGeom/topology/topo_point.h"

namespace znGeom {

class ConvertImpl;

/// A copy of a region of a mesh on which connectivity can be walked, with the way from the one to the other.
///
/// Made, `extract` once, any number of look-ups, destroyed: the half-edge mesh lives as long as this. Only positions
/// go across. The mesh and its adjacency are borrowed; the mesh stays as it is and must not change meanwhile. One
/// thread at a time.
class ZNGEOM_API MeshConvertRep : public znRTB::SignalClient
{
public:
    /// \param triangles  the region; copied
    /// \param vertices   those to be taken along; copied. The corners of all triangles of the region must be among
    ///                   them: a triangle with another corner is left out
    /// \param adjacency  built from the mesh by `meshAdjTris`
    MeshConvertRep(const CompactMesh& mesh, const BitVector& triangles, const BitVector& vertices,
                   const MeshAdjTris& adjacency);
    /// Takes the mesh's selection of triangles for the triangles and, on purpose, for the vertices too: a caller who
    /// does not have exactly this in mind uses the other form.
    MeshConvertRep(const CompactMesh& mesh, const MeshAdjTris& adjacency);
    MeshConvertRep(const MeshConvertRep&) = delete;
    MeshConvertRep& operator=(const MeshConvertRep&) = delete;
    virtual ~MeshConvertRep();

    /// Builds the half-edge mesh: vertices and triangles in ascending order of their numbers, then twins. An edge
    /// between the region and the rest of the mesh is a boundary there. Call it once. Cost: the region.
    virtual TopoMesh& extract();

    /// Null for a vertex that is not in the region.
    TopoMeshVertex getTopoMeshVertex(int vertexIndex) const;

    /// The same place on the half-edge mesh: the weights are copied. All zero and a null face where the triangle is not
    /// in the region.
    void copy(TopoMeshCoord& out, const MeshCoord& in) const;
    TopoMeshCoord copy(const MeshCoord& in) const
    {
        TopoMeshCoord out;
        copy(out, in);
        return out;
    }

protected:
    /// \param impl  owned from now on
    explicit MeshConvertRep(ConvertImpl* impl);
    ConvertImpl* getConvert() const { return m_impl.get(); }

private:
    std::unique_ptr<ConvertImpl> m_impl;
};

/// A flat mesh of a whole half-edge mesh: vertices and faces in the order of their lists, each face as a fan around the
/// origin of its `edge`, positions narrowed to `float`, no channels.
///
/// \return never null; the caller's to delete. Linear.
ZNGEOM_API CompactMesh* meshConvertRep(TopoMesh& mesh);

} // namespace znGeom
