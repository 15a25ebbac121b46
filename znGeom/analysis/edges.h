/// Edge lengths, and the angles at which triangles meet along edges.
#pragma once

#include <utility>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"

namespace znGeom {

/// The length of the longest edge of a mesh's triangles, from which search radii are derived; 0 without triangles.
///
/// Lengths are compared in `float`. The third side of a triangle, from its last corner to its first, is not measured as
/// the other two are: with d = first - last corner, the square root of dz is taken instead of its square, and where dz
/// is negative the side does not count. The result can therefore be too small, or too large where triangles are small
/// and steep, and changes when the corners of a triangle are rotated. Linear; on all threads.
ZNGEOM_API double meshLongestEdge(const CompactMesh& mesh);

/// The length of the longest edge in the plane of texture coordinates; here all three sides are measured alike.
///
/// \param uvs  two floats per vertex
ZNGEOM_API double meshLongestEdge2D(const CompactMesh& mesh, const float* uvs);

/// The largest angle between the normals of two triangles that share an edge, whatever their winding.
///
/// \param adjTris  built from this mesh by `meshAdjTris`
/// \return radians: 0 for a flat mesh and for one without inner edges, pi where a triangle is folded back on another
///
/// Looks around the end of each edge that has fewer triangles: linear for bounded valence, and where hubs of any size
/// have neighbours of bounded valence; on all threads.
ZNGEOM_API double meshMaxDihedralAngle(const CompactMesh& mesh, const MeshAdjTris& adjTris);

/// The edges that `meshFindAnglesLessThan` found.
class ZNGEOM_API MeshDihedralAnglesResult
{
public:
    /// The two vertices of an edge, in the direction in which the triangle of lower number runs along it.
    using Edge = std::pair<int, int>;

    zn::vector<Edge> edges;

    /// The triangles on these edges, those wound the other way included.
    ///
    /// \param mesh, adjTris  those with which the edges were found
    /// \param triangles      replaced: each triangle once, ascending
    void getAdjacentTriangles(const CompactMesh& mesh, const MeshAdjTris& adjTris, zn::vector<int>& triangles) const;
};

/// Finds the edges at which the surface is folded sharply.
///
/// \param adjTris  built from this mesh by `meshAdjTris`
/// \param degrees  the interior angle between two faces: 180 where they are flat, 0 where one lies on the other. Edges
///                 whose angle is this or less are found
/// \param result   replaced: an edge once for each pair of triangles on it, in the order of the lower triangle, of its
///                 corners, and of the higher triangle
///
/// Only triangles that are consistently wound, and so run along their edge in opposite directions, are considered.
/// Costs what `meshMaxDihedralAngle` does; on all threads, the result the same for any number of them.
ZNGEOM_API void meshFindAnglesLessThan(const CompactMesh& mesh, const MeshAdjTris& adjTris, double degrees,
                                       MeshDihedralAnglesResult& result);

} // namespace znGeom
