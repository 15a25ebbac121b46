/// Normals of triangles and vertices.
#pragma once

#include <cstddef>

#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom {

/// The unit normal of the triangle a, b, c: the direction of (c - b) x (a - b), towards the side from which the corners
/// appear counter-clockwise. Always valid: (0, 0, 1) for a triangle without area, or with a corner that is not finite.
inline znLinear::Normal triNormal(const znLinear::Point& a, const znLinear::Point& b, const znLinear::Point& c)
{
    const znLinear::Normal normal(cross(c - b, a - b));
    return normal.isValid() ? normal : znLinear::Normal::z;
}

/// The same for a triangle of a mesh.
///
/// \param vertices  the mesh's raw vertex array
/// \param triangle  three vertex indices
inline znLinear::Normal meshTriNormal(const float* vertices, const int* triangle)
{
    using znLinear::Point, znLinear::PointFlt;
    const auto corner = [&](int i) { return Point(PointFlt(vertices + 3 * static_cast<std::ptrdiff_t>(triangle[i]))); };
    return triNormal(corner(0), corner(1), corner(2));
}

/// Gives each vertex the direction of the sum of its triangles' unit normals.
///
/// Every triangle counts the same, whatever its area and its angle at the vertex, and a degenerate one counts as
/// (0, 0, 1). A vertex without triangles gets (0, 0, 1), and so does one whose normals cancel out. Existing normals are
/// replaced and count as computed from now on; the change is reported as `AttributesChanged` with `normalsModified`. A
/// mesh without vertices stays as it is, and nothing is reported.
///
/// Linear; on all threads of the process-wide pool. The sums are `float`, added in the order of the triangles whatever
/// the number of threads, so that results are the same everywhere.
ZNGEOM_API void meshComputeNormals(CompactMesh& mesh);

/// Gives each triangle its unit normal, (0, 0, 1) to a degenerate one. The change is reported as `AttributesChanged`
/// with `triangleNormalsModified`. A mesh without triangles stays as it is, and nothing is reported. Linear; on all
/// threads.
ZNGEOM_API void meshComputeTriangleNormals(CompactMesh& mesh);

/// Scales the normals of a mesh to unit length; those close to zero become (0, 0, 1), those that are not
/// finite not-a-numbers. The change is reported as
/// `AttributesChanged` with `normalsModified`; a mesh without normals is left alone. Linear; on all threads.
ZNGEOM_API void meshNormalize(PointMesh& mesh);

/// The same for `count` vectors of three floats each; nothing is reported.
ZNGEOM_API void meshNormalize(float* normals, int count);

} // namespace znGeom
