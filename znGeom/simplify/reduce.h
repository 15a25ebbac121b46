/// Reducing a mesh by removing vertices.
///
/// Flat places go first: in every iteration vertices are ordered by how far they and their neighbours lie from a common
/// plane, and removed in that order, no two neighbours in one iteration. A vertex is removed by swapping edges away
/// from it until three are left; where edges were swapped, the triangles around it are then improved. All vertices that
/// stay keep their exact positions, and those on a boundary always stay: a closed surface stays closed, and an oriented
/// one oriented. No triangle is doubled, so that a closed piece ends as a tetrahedron at the smallest. After Schroeder,
/// Zarge and Lorensen, "Decimation of Triangle Meshes" (1992), with swaps instead of triangulation.
///
/// Vertices and triangles are renumbered; channels other than positions are not computed anew; the mesh's selection is
/// empty afterwards. Vertices at which the surface is not manifold stay. The result is the same on any number of
/// threads.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// Reduces a mesh to a part of its vertices, or as far as it gets: an iteration that removes fewer than one vertex in a
/// hundred is the last.
///
/// \param fraction  of the vertices; their number is rounded down. 1 and above, and not-a-number, leave the mesh alone
/// \param progress  advanced; a cancel is seen after 100 removals at the latest. What has been done by then stays done
/// \param removed   gets the positions of the removed vertices appended, in that order; where part of the work was done
///                  over, a position may be there twice
///
/// About 10 us for each removed vertex; mostly on the calling thread.
ZNGEOM_API void meshReduceToFraction(CompactMesh& mesh, double fraction, znUtil::Progress& progress,
                                     zn::vector<znLinear::Point>& removed);

/// Reduces a mesh as far as a tolerance allows: every removed vertex, and every vertex removed before it that depends
/// on the same triangles, lies within the tolerance of the triangles that take their place.
///
/// \param tolerance  a distance in the mesh's units; 0 and below, and not-a-number, leave the mesh alone
/// \param progress   advanced; a cancel is seen after a batch of 65 thousand vertices at the latest. What has been done
///                   by then stays done
/// \param removed    as above
/// \return the largest distance from a removed vertex to the surface, measured at the end of each batch
ZNGEOM_API double meshReduceWithTolerance(CompactMesh& mesh, double tolerance, znUtil::Progress& progress,
                                          zn::vector<znLinear::Point>& removed);

} // namespace znGeom
