/// Collars as meshes.
#pragma once

#include "znGeom/shells/collar.h"

namespace znGeom {

/// The strip between framed places and the points at a width along their directions.
///
/// \param width   in world units; negative to the other side
/// \param closed  joins the last place to the first
/// \param result  replaced: vertices 2 i and 2 i + 1 are place i and the point beside it, and each quad is two
///                triangles; nothing for fewer than two places. Along a forward walk on a border the strip continues
///                the surface, wound as it is
ZNGEOM_API void meshCollarRibbon(const zn::vector<MeshCollar::Point>& points, double width, bool closed,
                                 CompactMesh& result);

/// The number of quads of such a strip that are turned over: the far side runs against the near one, or the triangle
/// at the far side faces against what it does in a narrow strip, or against the other one where it doesn't do so there.
/// A strip that is narrow enough has none but where a direction runs along its step.
ZNGEOM_API int meshCollarTurnedQuads(const zn::vector<MeshCollar::Point>& points, double width, bool closed);

} // namespace znGeom
