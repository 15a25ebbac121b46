/// Closing the holes of a mesh.
#pragma once

#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/containers/list.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// How much is done for a patch. Each includes those before it.
enum HoleQuality : int {
    HoleTriangulated = 0, ///< triangles between the vertices of the rim
    HoleRefined = 1,      ///< new vertices as dense as around the hole
    HoleFaired = 2        ///< moved so that the patch continues the surface around it
};

/// What became of a hole.
enum class HoleOutcome : int {
    Filled,
    NoLoop,        ///< there is no such loop, or it has fewer than three vertices
    NotABoundary,  ///< two neighbours in the loop are not the ends of a boundary edge; loops end like this where fans
                   ///< touch
    LooseTriangle, ///< a spike on the rim belongs to a triangle that nothing else holds
    TooLong,       ///< more than 46 thousand vertices
    EdgeInTheWay,  ///< every triangulation would repeat an edge that is there
    GivenUp        ///< cancelled
};

/// Fills holes with patches that are oriented like their rims.
///
/// \param adjTris, adjVertices  built from the mesh
/// \param boundaries            its loops, by `meshComputeBoundary`
/// \param holes                 which of these are to be closed; others stay open
/// \param progress              advanced over all holes, in proportion to nothing but their number; its caption counts
///                              them
/// \param outcomes              may be null; replaced: one for each of `holes`
/// \return how many were filled; 0, with every bit of the mesh as it was, after a cancel
///
/// A loop is triangulated for flatness first and area second; then triangles are split until they are as small as those
/// around the hole, and edges swapped, after Liepa, "Filling Holes in Meshes" (2003); then the new vertices are moved
/// to where the uniform bi-Laplacian vanishes, with the vertices around the hole fixed; beside places that are not
/// finite they stay. Spikes, triangles that hang on the rim by a corner at the place of another vertex of the rim, are
/// taken off first, and stay off.
///
/// The mesh around the holes keeps its positions. All holes share one scope: vertices and triangles near the holes are
/// renumbered, channels other than positions have no values there. Adjacency and boundaries are stale afterwards. Cubic
/// in the longest loop; for a patch of n vertices n log n, or n sqrt(n) with fairing; linear in the number of holes and
/// once in the mesh. Runs on the calling thread.
ZNGEOM_API int meshHoleFill(CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices,
                            const MeshBoundaries& boundaries, const zn::list<int>& holes, HoleQuality quality,
                            znUtil::Progress& progress);
ZNGEOM_API int meshHoleFill(CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices,
                            const MeshBoundaries& boundaries, const zn::list<int>& holes, HoleQuality quality,
                            znUtil::Progress& progress, zn::vector<HoleOutcome>* outcomes);

} // namespace znGeom
