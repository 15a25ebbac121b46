/// The edges of a mesh, each with the sides of triangles that lie along it.
#pragma once

#include <span>

#include "znGeom/foundation/mesh/array_of_sets.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// The edges of a mesh as they were when the object was built; see `meshEdgeSides`. Side 3 * triangle + i runs from
/// corner i of the triangle to its next corner. Holds no reference to the mesh; indices are trusted.
class ZNGEOM_API MeshEdgeSides : public zn::ReferenceCount
{
public:
    MeshEdgeSides() = default;
    /// Takes over the table, one set per edge, which is then empty.
    explicit MeshEdgeSides(ArrayOfSets& table) { m_table.swap(table); }

    int getNumEdges() const { return m_table.getNumSets(); }
    /// The sides along an edge, ascending; never none.
    std::span<const int> sides(int edge) const { return m_table.members(edge); }
    const ArrayOfSets& table() const { return m_table; }

    void swap(MeshEdgeSides& other) { m_table.swap(other.m_table); }

private:
    ArrayOfSets m_table;
};

/// A side starts at the corner of its own number, 3 * triangle + corner, and ends at this one.
constexpr int cornerAtSideEnd(int side) { return side % 3 == 2 ? side - 2 : side + 1; }

/// Finds the edges of a mesh. An edge joins two different vertices of a triangle; a triangle that repeats a vertex has
/// one edge or none, and where it has one lies along it with two sides.
///
/// \param progress  advanced; a cancel leaves `result` as it was
/// \param result    replaced: the edges in the order of their lower vertices, then of their higher ones
/// \return false after a cancel
///
/// Sides are grouped by their lower vertex in a counting sort on all threads: linear for bounded valence, n log n for a
/// vertex that is the lower end of very many edges. A mesh of more than 2^31 sides fails with std::length_error.
ZNGEOM_API bool meshEdgeSides(const CompactMesh& mesh, znUtil::Progress& progress, MeshEdgeSides& result);
inline void meshEdgeSides(const CompactMesh& mesh, MeshEdgeSides& result)
{
    znUtil::Progress progress;
    meshEdgeSides(mesh, progress, result);
}

} // namespace znGeom
