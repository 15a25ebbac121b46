/// Moving the geometry of a mesh by a matrix.
#pragma once

#include "znGeom/foundation/linear/affine_matrix.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom {

/// Transforms positions by a matrix and normals, where there are any, by its inverse transpose, after which they have
/// unit length. The change is reported as `GeometryChanged` with `normalsModified` when there are normals. A mesh
/// without vertices, and any mesh under a matrix whose entries are those of the identity within `epsilonTolFlt`, stays
/// as it is, and nothing is reported. Linear; from ten thousand vertices on, on all threads of the process-wide pool.
///
/// Winding stays as it is: a matrix that mirrors turns the surface inside out, while its normals go on pointing to the
/// same side of it. `meshReverseWinding` makes the two agree again.
ZNGEOM_API void meshTransform(PointMesh& mesh, const znLinear::AffineMatrixFlt& matrix);
/// The same, triangle normals included; with `triangleNormalsModified` in any case.
ZNGEOM_API void meshTransform(CompactMesh& mesh, const znLinear::AffineMatrixFlt& matrix);

/// The same for `count` positions of three floats each, whatever the matrix; nothing is reported. Computed in `double`
/// and narrowed once.
ZNGEOM_API void meshTransform(float* points, int count, const znLinear::AffineMatrixFlt& matrix);

/// The same for `count` normals of three floats each: multiplied with the inverse transpose of the linear part and
/// brought to unit length. One that has no length stays zero; a singular matrix leaves directions as they are.
ZNGEOM_API void meshTransformNormals(float* normals, int count, const znLinear::AffineMatrixFlt& matrix);

} // namespace znGeom
