/// Sewing the boundaries of a mesh together.
#pragma once

#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/containers/reference.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/threads/thread_pool.h"

namespace znGeom {

/// What became of a boundary loop.
enum class StitchOutcome : int {
    Sewn,       ///< all of it
    SewnInPart, ///< some of it
    NotChosen,
    TooShort,      ///< fewer than ten samples, which is two tolerances or less, or shorter than the tolerance; or its
                   ///< vertices are no boundary
    NothingBeside, ///< no boundary runs beside it within the tolerance
    TooNarrow,     ///< what is beside it runs beside something else too, as at a surface that is hardly wider than the
                   ///< tolerance, or for less than the tolerance
    SameWay,       ///< what runs beside it runs the same way, and turning shells over can't help that
    NotSewn        ///< the seam came apart: the boundary touches itself or others there
};

/// Two stretches of boundaries that were found beside each other.
struct MeshStitchPair
{
    int loop, otherLoop; ///< which may be the same
    double length;       ///< of the stretch of `loop`, in world units
    bool isCircular;     ///< two whole loops
    bool isSewn;         ///< false also where a part of it stays open
};

/// What a stitch did.
struct MeshStitchAccount
{
    zn::vector<MeshStitchPair> pairs;
    zn::vector<StitchOutcome> outcomes; ///< one per boundary loop; empty when nothing was looked at
    zn::vector<int> turned;             ///< a triangle of each shell that was turned over
};

/// Sews boundaries together that run side by side within a tolerance: of different shells or of one, along a stretch or
/// all the way round.
///
/// \param adjacency, boundaries  built from the mesh by `meshAdjTris` and `meshComputeBoundary`; stale afterwards
/// \param chosen                 which of the boundaries, in any order; all by default. Numbers that are none, and
///                               repetitions, are ignored
/// \param tolerance              a distance in world units: boundaries nearer than this run together
/// \param seamTolerance          a fraction of an edge, see `MeshStitchSeam::stitch`; 0.05 suits most meshes
/// \param account                may be null; replaced
/// \return whether anything was sewn. Otherwise the mesh is as it was, but for shells that were turned over
///
/// Boundaries of less than ten samples a fifth of the tolerance apart are left out; fewer than two others give false,
/// and so do a tolerance that is not finite or not above 0 or so small that it would take more than 2^24 samples.
/// `MeshLineTopology` pairs the stretches, `MeshStitchSeam` sews them; triangles that lose their area by that are
/// swapped away, or contracted where they have next to no width. Where shells meet that are wound against each other,
/// those that are in the way are turned over first, each once, with their normals; that stays so whatever comes of the
/// seams. Selections stay.
///
/// The surface is edited around the boundaries; vertices and triangles are renumbered, and channels other than
/// positions have no values there, as after `MeshModifyRep::merge`. Costs what the boundaries cost, apart from that
/// merge and from turning shells over, which are linear in the mesh. There is no cancelling. The search for pairs runs
/// on the threads of the pool; the result is the same on any number.
ZNGEOM_API bool meshStitch(CompactMesh& mesh, zn::Reference<MeshAdjTris> adjacency,
                           zn::Reference<MeshBoundaries> boundaries, double tolerance, double seamTolerance);
ZNGEOM_API bool meshStitch(CompactMesh& mesh, zn::Reference<MeshAdjTris> adjacency,
                           zn::Reference<MeshBoundaries> boundaries, const zn::vector<int>& chosen, double tolerance,
                           double seamTolerance);
ZNGEOM_API bool meshStitch(CompactMesh& mesh, zn::Reference<MeshAdjTris> adjacency,
                           zn::Reference<MeshBoundaries> boundaries, const zn::vector<int>& chosen, double tolerance,
                           double seamTolerance, MeshStitchAccount* account,
                           znUtil::ThreadPool& pool = znUtil::ThreadPool::get());

} // namespace znGeom
