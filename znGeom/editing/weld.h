/// Welding: merging vertices that are the same, so that triangles which only touch become connected.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// Decides when two positions are to be merged.
class ZNGEOM_API IMeshVertexEqualityChecker
{
public:
    virtual ~IMeshVertexEqualityChecker();
    /// \param a, b  three floats each
    virtual bool areEqual(const float* a, const float* b) const = 0;
};

/// Exact equality of x, y and z. +0 equals -0; a not-a-number equals nothing.
class ZNGEOM_API DefaultMeshVertexEqualityChecker : public IMeshVertexEqualityChecker
{
public:
    bool areEqual(const float* a, const float* b) const override;
};

/// Merges vertices that are the same.
///
/// \param progress  advanced, 0.8 of it for the sort; a cancel is not looked at, since half a renumbering would corrupt
///                  the mesh
/// \param remap     replaced: the map from old vertex numbers to new ones
/// \param checker   decides on positions; it is asked only about neighbours in sorted order, and each vertex is
///                  compared with the first one of its run, so that a tolerance cannot chain along
///
/// Vertices are sorted by position; by normal too where the mesh has normals that were not computed from it, and then
/// also by UV where it has any: computed normals say nothing about the surface, and UVs count only together with
/// trusted normals. Neighbours in that order are merged when the checker says so and normals and UVs that took part
/// are exactly equal. A mesh without duplicates stays as it is, numbers included, and nothing is told. Otherwise all
/// vertices are renumbered in the sorted order; of merged ones the highest old number gives the record that stays.
/// Positions, UVs, the normals that took part, strips and fans follow; the "sts" channel, named attributes, lines and
/// line strips do not. Triangles keep their places, also those that became degenerate. An empty mesh stays as it is.
///
/// n log n in the vertices; the sort runs on the process-wide pool.
ZNGEOM_API void meshCompact(CompactMesh& mesh, znUtil::Progress& progress);
ZNGEOM_API void meshCompact(CompactMesh& mesh, znUtil::Progress& progress, Remap& remap);
ZNGEOM_API void meshCompact(CompactMesh& mesh, znUtil::Progress& progress, Remap& remap,
                            IMeshVertexEqualityChecker& checker);

inline void meshCompact(CompactMesh& mesh)
{
    znUtil::Progress progress;
    meshCompact(mesh, progress);
}
inline void meshCompact(CompactMesh& mesh, Remap& remap)
{
    znUtil::Progress progress;
    meshCompact(mesh, progress, remap);
}
inline void meshCompact(CompactMesh& mesh, Remap& remap, IMeshVertexEqualityChecker& checker)
{
    znUtil::Progress progress;
    meshCompact(mesh, progress, remap, checker);
}

} // namespace znGeom
