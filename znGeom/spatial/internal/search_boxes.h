/// Boxes of what lies in the cells of an octree, for searches that rule out most of it.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/spatial/octree.h"

namespace znGeom {

/// For each cell the box of its triangles, which is smaller than the cell where the surface passes through it, and
/// larger where triangles reach out of it; and for each entry of the triangle sets the triangle's own box in six bytes.
/// Made by `computeOctreeTris` and kept in the `OctreeTris`: about 12 bytes an entry, in the order in which a search
/// reads them, so that it needs neither the records of the cells nor the starts of the sets.
class SearchBoxes : public zn::ReferenceCount
{
public:
    /// What a search needs to go on from a cell. A cell's number is that of its record, less one: eight siblings begin
    /// at a multiple of eight, and the root is -1.
    struct Cell
    {
        int first; ///< the entry with which a leaf begins, or an eighth of the number of the first child
        int count; ///< the entries of a leaf; -1 for a cell that is split

        bool isLeaf() const { return count >= 0; }
    };

    /// Eight siblings, coordinate by coordinate.
    struct alignas(64) Siblings
    {
        float low[3][8], high[3][8];
        Cell cells[8];

        BoundingBox box(int child) const;
        void set(int child, const BoundingBox& box);
    };
    static_assert(sizeof(Siblings) == 256);

    /// What a byte of an entry means: `low[axis] + byte * step[axis]`, with the minima rounded down and the maxima up.
    struct Scale
    {
        float low[3], step[3];

        explicit Scale(const BoundingBox& box);
    };

    /// Whether so many entries can be counted in bytes; a table of more does without boxes.
    static constexpr bool canHold(int numEntries) { return numEntries <= std::numeric_limits<int>::max() / 6; }

    SearchBoxes(const CompactMesh& mesh, const Octree& octree, const ArrayOfSets& table, znUtil::ThreadPool& pool);

    /// Those of a table; null for a table that has none.
    static const SearchBoxes* of(const OctreeTris& tris) { return static_cast<const SearchBoxes*>(tris.searchData()); }

    Cell root() const { return m_root; }
    const Siblings& siblings(int eighth) const { return m_siblings[static_cast<size_t>(eighth)]; }
    /// The box of what lies in a cell.
    BoundingBox box(int cell) const { return cell < 0 ? m_rootBox : siblings(cell / 8).box(cell % 8); }
    /// The box of the cell itself. Walks up to the root and down again.
    BoundingBox cellBox(int cell) const;
    /// Six bytes an entry of a leaf: all minima in x, in y, in z, then all maxima.
    const std::uint8_t* entries(int first) const { return m_entries.read() + 6 * static_cast<std::ptrdiff_t>(first); }

private:
    Cell m_root;
    BoundingBox m_rootBox, m_rootCellBox;
    zn::vector<int> m_parents; ///< the number of the cell to which eight siblings belong
    std::unique_ptr<Siblings[]> m_siblings;
    Array<std::uint8_t> m_entries;
};

} // namespace znGeom
