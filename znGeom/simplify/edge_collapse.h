/// Reducing a half-edge mesh by collapsing edges.
#pragma once

#include "znGeom/foundation/threads/progress.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

/// Reduces a mesh of triangles to a part of its faces. The cheapest edge collapses first; its two ends become one
/// vertex, placed where the sum of the squared distances from the planes of their triangles is least. Boundaries are
/// held by planes upright on them. Where that place is not determined, as on flat ground and along straight creases, it
/// is the middle or one of the ends. (Garland, Heckbert, "Surface Simplification Using Quadric Error Metrics", 1997.)
///
/// \param mesh      nothing is done when a face is not a triangle
/// \param fraction  of the faces, rounded down, at least one. Nothing is done when it is not a number. The mesh may end
///                  with one face fewer, or with more when no edge can collapse any further
/// \param progress  not used: a run neither tells how far it is nor can it be cancelled. Who needs that uses the
///                  reduction of `simplify/reduce.h`
///
/// The surface keeps its topology where every edge has two triangles at the most: boundary loops stay loops, and a
/// closed piece ends as two triangles back to back at the smallest; an open piece may vanish. Corners that lose their
/// last face stay as isolated vertices. Vertices at which fans only touch, edges whose halves run the same way, and
/// edges of which two join the same vertices are never collapsed. Triangles may turn over, above all on flat ground,
/// where every place costs the same; nothing guards against it.
///
/// A plane at a boundary weighs as much as the square of its edge's length, one of a triangle 1: boundaries are held
/// well where edges are longer than a unit, and hardly at all where they are much shorter. Scale such a mesh first, say
/// to a diagonal of 1000. Without boundaries the unit does not matter.
///
/// It leaves behind, for whoever continues, in slots 0 to 15 of each vertex its quadric, row by row; in slot 0 of each
/// half-edge the cost of its collapse, the largest `double` where it is not allowed, and in slot 1 true. Listeners are
/// not notified, nothing is printed.
///
/// The same result on any number of threads; edges of the same cost collapse in a fixed order. About 5 us for each
/// collapse, on the calling thread but for the first costs. Takes about 40 bytes a half-edge beside the mesh, at the
/// end up to 80 for the slots.
ZNGEOM_API void meshReduceByEdgeCollapse(TopoMesh& mesh, double fraction, znUtil::Progress& progress);

} // namespace znGeom
