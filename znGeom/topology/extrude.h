/// Extrusion: faces are copied, moved by a matrix, and joined to where they came from by a wall of quads.
///
///     zn::unordered_set<TopoMeshFace> region, cap;
///     ... // which faces
///     ExtrudeTopoFace extrude(mesh);
///     extrude(region, cap, matrix);
///
/// A single face goes through `extrudeFace`, a region of any shape through `ExtrudeTopoFace`. Where the faces have
/// neighbours they give their place to the walls; a sheet without neighbours stays, so that it becomes the bottom of a
/// closed shell. No operation moves a vertex that was there, and none looks at more of the mesh than the faces that it
/// is given. All run on the calling thread.
#pragma once

#include "znGeom/foundation/containers/hash_table.h"
#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/affine_matrix.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

/// Finds what is connected, across edges, to the first element of a set of faces, and walks along its perimeter.
///
/// \param in         living faces of the mesh; not changed, unless it is `out` itself
/// \param out        becomes the connected faces; stays as it is when it is the same object as `in`
/// \param perimeter  becomes half-edges of those faces, each followed by the one that begins at its end: one loop, with
///                   the region on its left. It begins at the first half-edge without a neighbour in the region, faces
///                   taken breadth-first. A region with several rims has further loops, which are not in it. Empty for
///                   a region without a rim. Where twins run the same way the walk ends early
/// \return whether `in` is connected. True for an empty set
///
/// Linear in the half-edges of the faces.
ZNGEOM_API bool expandRegion(TopoMesh& mesh, const zn::unordered_set<TopoMeshFace>& in,
                             zn::unordered_set<TopoMeshFace>& out, zn::vector<TopoMeshEdge>& perimeter);

/// Extrudes one face, of any number of sides.
///
/// A face with a neighbour is removed, and a quad stands on each of its sides, with the cap on top. A lone face stays
/// and becomes the bottom of a closed prism: walls and cap run against it, so that all face outward where the matrix
/// takes the copy behind the face, and inward where it takes it to the front. Notifies the listeners once. Linear in
/// the sides and in the valence of the corners.
///
/// \param matrix  takes the corners to those of the cap; any, also one that mirrors or flattens
/// \return the cap; its first half-edge begins at the copy of the first corner, with a lone face of the last one
ZNGEOM_API TopoMeshFace extrudeFace(TopoMesh& mesh, TopoMeshFace face, const znLinear::AffineMatrix& matrix);

class ExtrudeTopoFaceImpl;

/// Extrudes regions of faces. A copy of this shares the mesh, and must not outlive its source.
class ZNGEOM_API ExtrudeTopoFace
{
public:
    /// \param mesh  borrowed
    explicit ExtrudeTopoFace(TopoMesh& mesh);
    ExtrudeTopoFace(const ExtrudeTopoFace& other);
    ExtrudeTopoFace& operator=(const ExtrudeTopoFace&) = delete;
    ~ExtrudeTopoFace();

    /// Extrudes all patches of a region: what is connected across edges is one patch. Every vertex of the region gets
    /// a copy, every face one over the copies, and a wall of one quad for each half-edge stands along every rim.
    ///
    /// A patch that has a neighbour somewhere is removed. One without any, a whole sheet, stays: its walls run as its
    /// border does, and pairs of theirs run the same way, so that the shell is closed and still has to be oriented. Of
    /// a closed surface, which has no rim, a second one is made. Notifies the listeners once, if there is a face.
    ///
    /// \param in      living faces of the mesh; those that were removed are taken out of it
    /// \param out     another set, which becomes the new faces that are no walls
    /// \param matrix  takes the vertices to their copies; any, also one that mirrors or flattens
    ///
    /// New vertices follow the order of those that they are copies of, new faces that of `in`, then come the walls,
    /// patch by patch. Linear in the region, but for a sort of what has no neighbour yet; the size of the mesh does not
    /// matter. May be called again and again.
    void operator()(zn::unordered_set<TopoMeshFace>& in, zn::unordered_set<TopoMeshFace>& out,
                    const znLinear::AffineMatrix& matrix);

private:
    zn::ImplPointer<ExtrudeTopoFaceImpl> m_impl;
};

} // namespace znGeom
