/// Copying the parts of a divided mesh into meshes of their own.
#pragma once

#include <span>

#include "znGeom/analysis/triangle_components.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/array_of_sets.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// Takes the parts of a mesh one by one, so that a caller who is done with each in turn holds but one of them. All
/// parts together cost as much as one copy of the mesh, however many there are. A vertex that triangles of several
/// parts use is in each of them; one that no triangle uses is in none.
///
/// The mesh must outlive this and stay as it is. On the calling thread.
class ZNGEOM_API MeshExtractParts
{
public:
    /// \param partOf  per triangle the number of its part, 0 to numParts - 1, or -1 where it is in none. Such are
    ///                `MeshTriangleComponents::ofTriangle` and what `meshTriSubsetMembership` finds. Copied
    MeshExtractParts(const CompactMesh& mesh, const int* partOf, int numParts);

    int getNumParts() const { return m_triangles.getNumSets(); }
    /// The numbers in the mesh of a part's triangles, and of its vertices, in its own order, which is ascending.
    std::span<const int> triangles(int part) const { return m_triangles.members(part); }
    std::span<const int> vertices(int part) const { return m_vertices.members(part); }

    /// Copies a part, as `meshExtract` does. Linear in the part.
    void extract(int part, CompactMesh& target);

private:
    const CompactMesh* m_mesh;
    ArrayOfSets m_triangles, m_vertices; ///< per part
    zn::vector<int> m_newVertices;       ///< per vertex of the mesh its number in the part it was last extracted into
};

/// A part of a mesh, and where it comes from.
struct MeshPart
{
    CompactMesh mesh;
    zn::vector<int> vertices;  ///< per vertex its number in the whole mesh, ascending
    zn::vector<int> triangles; ///< per triangle its number in the whole mesh, ascending
};

/// Copies every component of a mesh into a mesh of its own, with all channels.
///
/// \param components  of this mesh, over edges or over vertices: see `meshEdgeComponents`, `meshVertexComponents`
/// \param progress    advanced; a cancel leaves `parts` as it was
/// \param parts       replaced: one per component, the largest first
/// \return false after a cancel
///
/// Linear in the mesh, however many components it has.
ZNGEOM_API bool meshExtractComponents(const CompactMesh& mesh, const MeshTriangleComponents& components,
                                      znUtil::Progress& progress, zn::vector<MeshPart>& parts);
inline void meshExtractComponents(const CompactMesh& mesh, const MeshTriangleComponents& components,
                                  zn::vector<MeshPart>& parts)
{
    znUtil::Progress progress;
    meshExtractComponents(mesh, components, progress, parts);
}

} // namespace znGeom
