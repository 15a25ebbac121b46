/// `znGeom::reparameterizeMesh`: texture coordinates for a surface, laid flat with its angles kept.
#pragma once

#include "znGeom/cache/mesh_cache.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/output/app_output.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// Flattens a mesh and writes the result as its texture coordinates. The map is discretely conformal: the vertices of
/// the longest border that lie farthest apart along an axis are pinned to their places in a plane, and all others go to
/// where angles change least, after Lévy, Petitjean, Ray, Maillot, "Least Squares Conformal Maps for Automatic Texture
/// Atlas Generation" (2002), with cotangents as weights.
///
///     znGeom::reparameterizeMesh flattening(mesh);
///     if (flattening.flatten()) use(mesh.getUVs());
///
/// The mesh must be one piece, without handles, with a border; holes in it are bridged as if they were filled, but for
/// those of more than 1500 edges, and stay holes. What is no such disk is cut open first, in a copy. The mesh is not:
/// where the copy was cut a vertex has the coordinates of one side, and triangles on the other side reach across the
/// whole chart. Cut the mesh itself with `cutSurface::makeDisk` to have coordinates for both sides.
///
/// The result does not depend on the mesh's unit or place: scaled by a power of two, it gets the same bits. An object
/// is for one flattening, since its copy changes. It must not outlive the mesh, and is used by one thread.
class ZNGEOM_API reparameterizeMesh
{
public:
    /// Copies the mesh; what is changed in it afterwards is not seen.
    explicit reparameterizeMesh(CompactMesh& mesh);
    reparameterizeMesh(const reparameterizeMesh&) = delete;
    reparameterizeMesh& operator=(const reparameterizeMesh&) = delete;
    ~reparameterizeMesh();

    // All to be set before `flatten`.
    /// Whether vertices at the same position are merged in any case, as at first; otherwise only where the mesh has as
    /// many borders afterwards as before.
    void enableMeshCompact(bool enable) { m_enableMeshCompact = enable; }
    /// Whether vertices at the same position may be merged at all, as at first. Without it a seam stays open: for a
    /// mesh that has been cut.
    void enableMeshWelding(bool enable) { m_enableMeshWelding = enable; }
    /// Whether a mesh that is no disk is cut open, as at first; otherwise it is not flattened.
    void enableMeshCutSurface(bool enable) { m_enableMeshCutSurface = enable; }

    /// Writes coordinates in [0, 1], which touch 0 in both directions and 1 in the longer one, with one `modified`.
    /// Vertices that no triangle uses get (0, 0).
    ///
    /// \return false, with the mesh as it was, after a cancel; for a triangle that repeats a vertex; for a mesh of
    ///         several pieces, or one that is not manifold, as far as its Euler number tells; for a position that is
    ///         infinite or NaN; and for one that is no disk and may not be cut, or can't be
    ///
    /// Why, and what was found on the way, goes to `znOS::AppOutput`. The coordinates are those that the solver ended
    /// with, converged or not. For n vertices elimination takes the time of n^1.5 and n log n memory, 800 MB for a
    /// quarter of a million; beyond a million vertices, and where elimination comes to no solution, conjugate gradients
    /// do all of it, in up to as many steps as there are unknowns. On the calling thread, but for welding and cutting.
    bool flatten();
    /// \param progress  advanced, its caption names the phase; may be cancelled at any time
    bool flatten(znUtil::Progress& progress);

private:
    using Loops = zn::vector<zn::vector<int>>; ///< the vertices of each border, in order

    void prepareMesh(znUtil::Progress& progress, Remap& remap);
    void weldMesh(znUtil::Progress& progress, Remap& remap);
    void dropUnusedVertices(Remap& remap);
    bool hasFinitePositions();
    bool findLoops(znUtil::Progress& progress, Loops& loops);
    int getMeshGenus(Loops& loops);
    int logGenus(int numLoops, int numBorderEdges);
    bool reportDegenerate();
    bool flattenDisk(const Loops& loops, znUtil::Progress& progress, znUtil::Progress& phase,
                     zn::vector<znLinear::Point2>& uvs);
    void applyUvsToMesh(const zn::vector<znLinear::Point2>& uvs, const Remap& remap);

    CompactMesh& m_mesh;
    CompactMesh m_working;
    SimpleMeshCache m_cache;
    znOS::AppOutput& m_output;
    bool m_enableMeshCompact = true;
    bool m_enableMeshWelding = true;
    bool m_enableMeshCutSurface = true;
};

} // namespace znGeom
