/// Vertices in the same place, counted and left where they are.
#pragma once

#include "znGeom/foundation/mesh/point_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// The number of vertices at exactly the place of an earlier one; +0 equals -0. Vertices with a coordinate that is not
/// finite are in no place. As many are merged by `meshCompact` where it compares positions alone.
///
/// \param progress  advanced; a cancel is looked for before the sort and after it
/// \return 0 after a cancel
///
/// n log n; the sort runs on the process-wide pool.
ZNGEOM_API int meshCountDuplicates(const PointMesh& mesh, znUtil::Progress& progress);
inline int meshCountDuplicates(const PointMesh& mesh)
{
    znUtil::Progress progress;
    return meshCountDuplicates(mesh, progress);
}

} // namespace znGeom
