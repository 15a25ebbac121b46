/// Boxes of what lies in the cells of an octree, for searches that rule out most of it.
#pragma once

#include <cstdint>

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/spatial/octree.h"

namespace znGeom {

/// For each cell the box of its triangles, which is smaller than the cell where the surface passes through it, and
/// larger where triangles reach out of it; and for each entry of the triangle sets the triangle's own box in six bytes.
/// Made by `computeOctreeTris` and kept in the `OctreeTris`: about 10 bytes an entry, in the order in which a search
/// reads them.
class SearchBoxes : public zn::ReferenceCount
{
public:
    /// The boxes of eight siblings, coordinate by coordinate.
    struct Siblings
    {
        float low[3][8], high[3][8];

        BoundingBox box(int child) const;
        void set(int child, const BoundingBox& box);
    };
    static_assert(sizeof(Siblings) == 48 * sizeof(float));

    /// What a byte of an entry means: `low[axis] + byte * step[axis]`, with the minima rounded down and the maxima up.
    struct Scale
    {
        float low[3], step[3];

        explicit Scale(const BoundingBox& box);
    };

    SearchBoxes(const CompactMesh& mesh, const Octree& octree, const ArrayOfSets& table, znUtil::ThreadPool& pool);

    /// Those of a table; null for a table that has none.
    static const SearchBoxes* of(const OctreeTris& tris) { return static_cast<const SearchBoxes*>(tris.searchData()); }

    /// The boxes of a cell's children. \param firstChild  the number of its first child's record
    const Siblings& siblings(int firstChild) const { return m_siblings.read()[blockOf(firstChild)]; }
    /// The box of a cell by the number of its record.
    BoundingBox box(int node) const { return node == 0 ? m_root : siblings(node).box((node - 1) % 8); }
    /// Six bytes an entry of a leaf with `count` entries that begin at `start` of the table: all minima in x, in y, in
    /// z, then all maxima.
    const std::uint8_t* entries(int start) const { return m_entries.read() + 6 * static_cast<std::ptrdiff_t>(start); }

private:
    /// Cells stand in the array of records after the root, eight siblings side by side.
    static int blockOf(int node) { return (node - 1) / 8; }

    BoundingBox m_root;
    Array<Siblings> m_siblings;
    Array<std::uint8_t> m_entries;
};

} // namespace znGeom
