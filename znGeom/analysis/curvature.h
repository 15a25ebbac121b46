/// How strongly a surface bends at each vertex.
#pragma once

#include "znGeom/foundation/linear/affine_matrix.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/threads/thread_pool.h"

namespace znGeom {

/// A measure of bending. Mean, minimum and maximum are in one over the mesh's unit and positive where the surface bends
/// away from its normals, as a sphere does that faces outward; Gaussian curvature is in one over its square.
enum MeshCurvature : int {
    MeanCurvature,     ///< half the sum of the two principal curvatures
    GaussianCurvature, ///< their product, from the angles alone; its sign does not depend on normals
    MinCurvature,      ///< the principal curvature of smaller magnitude
    MaxCurvature       ///< the principal curvature of larger magnitude
};

/// Measures a curvature at each vertex of a mesh.
///
/// \param adjTris      built from the mesh by `meshAdjTris`
/// \param adjVertices  built from these by `meshAdjVertices`
/// \param matrix       places the mesh: what is measured is the transformed surface; the mesh itself stays as it is
/// \param type         any other value gives 0 for interior vertices
/// \param output       room for one float per vertex
///
/// The mesh should have vertex normals: they determine the sign of all but Gaussian curvature. Without them mean
/// curvature is never negative. A vertex is interior where it has as many neighbours as triangles. One on a border
/// takes the mean of its interior neighbours; one with two neighbours, at a corner of the surface, then takes that of
/// the border vertices beside it; 0 where there is none to take from, or no triangle.
///
/// The principal curvatures solve a quadratic equation. Where noise makes its discriminant negative, its magnitude is
/// taken, so that they stay real.
///
/// A triangle without area has no angles: its vertices, and borders that take their mean from these, become infinite or
/// not a number. All others are unaffected.
///
/// Mean curvature by cotangent weights and Gaussian curvature by missing angles, each over a mixed Voronoi area, after
/// Meyer, Desbrun, Schroder and Barr, "Discrete Differential-Geometry Operators for Triangulated 2-Manifolds" (2003).
/// All of them are sums over the triangles at a vertex, so that their order and winding do not matter. Linear; on all
/// threads of the pool, with the same bits for any number of them. Takes half a megabyte a thread while it runs, or up
/// to 40 bytes a vertex where the order of the triangles does not follow that of the vertices at all; a matrix other
/// than the identity another 24 bytes a vertex. Prints four lines.
ZNGEOM_API void meshCurvature(const CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices,
                              const znLinear::AffineMatrixFlt& matrix, MeshCurvature type, float* output,
                              znUtil::ThreadPool& pool = znUtil::ThreadPool::get());

} // namespace znGeom
