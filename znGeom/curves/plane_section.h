/// Sections of a mesh by a plane.
#pragma once

#include "znGeom/curves/surface_curves.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/plane.h"

namespace znGeom {

/// The curves along which a plane cuts a surface.
///
/// \param plane  valid
/// \return open curves first, which end at the boundary or where more than two triangles share an edge, then closed
///         ones; both in the order of their first triangles. Nothing where the plane misses
///
/// Vertices on the plane count as above it: a plane along a flat part of the surface gives the rim of that part where
/// the surface goes on below it, and a plane that only touches a vertex gives nothing. Places at vertices have weights
/// of exactly 0 and 1. Triangles with a corner that is not finite are left out. Linear in the triangles.
ZNGEOM_API zn::vector<zn::Reference<MeshCurve>> meshPlaneSection(const CompactMesh& mesh, const znLinear::Plane& plane);

} // namespace znGeom
