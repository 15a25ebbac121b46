/// The boxes around triangles.
#pragma once

#include <span>

#include "znGeom/foundation/linear/bounding_box.h"
#include "znGeom/foundation/mesh/mesh_records.h"

namespace znGeom {

/// The box around the corners of triangles, named by their numbers; the invalid box for none.
/// \param vertices, triangles  the mesh's arrays
inline BoundingBox boxAround(const MeshVertex* vertices, const MeshTriangle* triangles, std::span<const int> numbers)
{
    BoundingBox box;
    for (const int number : numbers)
        for (const int corner : triangles[number].corners) box.extend(vertices[corner].asPointFlt());
    return box;
}

/// The box around the corners of one triangle.
inline BoundingBox boxAround(const MeshVertex* vertices, const MeshTriangle& triangle)
{
    BoundingBox box;
    for (const int corner : triangle.corners) box.extend(vertices[corner].asPointFlt());
    return box;
}

} // namespace znGeom
