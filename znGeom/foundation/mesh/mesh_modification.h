/// `znGeom::MeshModification`: what a change to a mesh did.
///
/// Code that changes a mesh reports the change afterwards, once, through `modified`. What the mutators declare, both
/// those that this library has today and those that are planned:
///
// clang-format off
/// | Function                                  | Type                | Remap               | Flags |
/// |-------------------------------------------|---------------------|---------------------|-------|
/// | `meshCompact`                             | `TopologyChanged`   | vertices            | `normalsModified` when normals were compared, `uvsModified` when UVs exist, `stripsAndFansModified` when strips or fans exist, `triangleNormalsValid` |
/// | `meshTriangulate`                         | `TopologyChanged`   |                     | `normalsValid`, `uvsValid`, `stsValid`, `coloursValid` |
/// | `meshRead`, `meshReadObj`                 | `TopologyChanged`   |                     | none |
/// | `meshLoad`                                | `TopologyChanged`   |                     | `normalsModified`, `uvsModified`, `polysModified` |
/// | `meshComputeNormals`, `meshNormalize`     | `AttributesChanged` |                     | `normalsModified` |
/// | `meshComputeTriangleNormals`              | `AttributesChanged` |                     | `triangleNormalsModified` |
/// | `MeshOrient::orient`, `meshMakeOriented`  | `TopologyChanged`   |                     | `uvsValid`, `stsValid`, `coloursValid` |
/// | `meshReverseWinding`                      | `TopologyChanged`   |                     | `normalsValid` or `normalsModified`, `triangleNormalsModified`, `uvsValid`, `stripsAndFansModified` |
/// | `meshReverseSelectedWinding`              | `TopologyChanged`   |                     | `normalsModified`, `triangleNormalsModified`, `uvsValid` |
/// | `MeshDeleteSelected`                      | `TopologyChanged`   | vertices, triangles | `uvsValid` when the mesh has UVs |
/// | `meshConcatenate`                         | `TopologyChanged`   |                     | `vertexAttribsModified` per attribute, `stripsAndFansModified` when strips were merged |
/// | `meshExtract`                             | `TopologyChanged`   |                     | `vertexAttribsModified` per attribute |
/// | `meshRemapStripsAndFans`                  | `TopologyChanged`   |                     | `stripsAndFansModified`, `normalsModified`, `uvsModified` |
/// | `meshSwap`                                | `TopologyChanged`   |                     | on both meshes, per channel on either: `vertexAttribsModified`, `polysModified`, `stripsAndFansModified`, `triangleNormalsModified`, `linesModified`, `lineStripsModified` |
/// | `meshTransform`                           | `GeometryChanged`   |                     | `normalsModified` when normals exist, for a `CompactMesh` also `triangleNormalsModified` |
/// | `meshTransform2d`                         | `AttributesChanged` |                     | `uvsModified` for "uvs", `stsModified` for "sts" |
/// | `meshSmoothLaplacian`, `meshSmoothBilateral` | `GeometryChanged` |                    | none |
/// | `meshMakeManifold`, `MeshMerge`           | `TopologyChanged`   |                     | none |
/// | triangle strip building                   | `AttributesChanged` |                     | `stripsAndFansModified` |
/// | `cutSurface::makeDisk`                    | `TopologyChanged`   |                     | `vertexAttribsModified` per attribute, `triangleNormalsValid` |
/// | `reparameterizeMesh`                      | `AttributesChanged` |                     | `uvsModified` |
// clang-format on
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/entity.h"
#include "znGeom/foundation/mesh/remap.h"
#include "znGeom/foundation/text/c_string.h"

namespace znGeom {

class PointMesh;

/// One change. Its kind makes every channel that depends on it invalid by default; the `...Modified` calls name a
/// channel that the change rewrote, the `...Valid` calls one that stays correct in spite of it. Lives for the duration
/// of the `modified` call; may be made before the change, since it records only flags and pointers.
class ZNGEOM_API MeshModification : public EntityModification
{
public:
    enum Type : int {
        GeometryChanged = 0,  ///< vertices moved, connectivity stayed
        TopologyChanged = 1,  ///< triangles or the number of vertices changed
        AttributesChanged = 2 ///< only a named channel did
    };

    /// The channels that the flags refer to.
    enum Channel : int {
        Normals,
        TriangleNormals,
        UVs,
        STs,
        Colours,
        StripsAndFans,
        Lines,
        LineStrips,
        Polys,
        numChannels
    };

    /// \param remap  new vertex and triangle numbers, or null where none changed; not owned
    MeshModification(const PointMesh* mesh, Type type, MeshRemap* remap = nullptr);

    Type getType() const { return m_type; }
    MeshRemap* getRemap() const { return m_remap; }

    void normalsModified() { m_modified |= bit(Normals); }
    void normalsValid() { m_valid |= bit(Normals); }
    void triangleNormalsModified() { m_modified |= bit(TriangleNormals); }
    void triangleNormalsValid() { m_valid |= bit(TriangleNormals); }
    void uvsModified() { m_modified |= bit(UVs); }
    void uvsValid() { m_valid |= bit(UVs); }
    void stsModified() { m_modified |= bit(STs); }
    void stsValid() { m_valid |= bit(STs); }
    void coloursValid() { m_valid |= bit(Colours); }
    void stripsAndFansModified() { m_modified |= bit(StripsAndFans); }
    void linesModified() { m_modified |= bit(Lines); }
    void lineStripsModified() { m_modified |= bit(LineStrips); }
    void polysModified() { m_modified |= bit(Polys); }
    /// Positions, normals and texture channels by their attribute names set the flags above as well.
    void vertexAttribsModified(const znString::CString& name);

    /// Whether the change rewrote a channel.
    bool isModified(Channel channel) const { return (m_modified & bit(channel)) != 0; }
    /// Whether a channel stays correct in spite of the change.
    bool isValid(Channel channel) const { return (m_valid & bit(channel)) != 0; }
    /// Either of the two.
    bool keeps(Channel channel) const { return isModified(channel) || isValid(channel); }
    /// The attributes that were named, in order of naming.
    const zn::vector<znString::CString>& modifiedAttributes() const { return m_attributes; }

private:
    static constexpr unsigned bit(Channel channel) { return 1u << channel; }

    Type m_type;
    MeshRemap* m_remap;
    unsigned m_modified = 0;
    unsigned m_valid = 0;
    zn::vector<znString::CString> m_attributes;
};

} // namespace znGeom
