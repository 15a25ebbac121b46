/// What a chart does to the triangles of a surface.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom {

/// How a surface and its image in the plane differ. A triangle is stretched to `stretch` times its size relative to the
/// direction across; `scale` is the root of the area of its image by its own, relative to that of the whole mesh. Both
/// are 1 everywhere where the image is the surface laid flat, at whatever size.
struct MeshUVDistortion
{
    int numFlipped = 0;   ///< triangles whose image is turned over: it runs clockwise
    int numCollapsed = 0; ///< triangles whose image has no area, or is not finite; they count for nothing else
    double meanStretch = 0, largestStretch = 0; ///< the mean by area
    double smallestScale = 0, largestScale = 0;
    double seamLength =
        0; ///< the length of the edges of which the two sides have different images, in the mesh's units
};

/// Measures a chart.
///
/// \param cornerUVs  three per triangle; null for the mesh's own coordinates at vertices, which it then must have
/// \return all zeros for a mesh without triangles. Triangles without area on the surface are passed over
///
/// Linear, but for the search for edges, which sorts; in `double`, on the calling thread but for that search.
ZNGEOM_API MeshUVDistortion meshUVDistortion(const CompactMesh& mesh, const MeshUV* cornerUVs = nullptr);

} // namespace znGeom
