/// A growing list of which element touches which leaf.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "znGeom/foundation/machine/internal/aligned_array.h"

namespace znGeom::internal {

struct LeafEntry
{
    int leafIndex, element;
};

/// Entries in blocks: none is ever moved, and where there are many the blocks are as large as a large page.
class LeafEntries
{
public:
    /// Announces how many entries are likely to be added; to be called before the first.
    void reserve(size_t count) { m_nextBlock = std::clamp<size_t>(count, 16, mostPerBlock); }

    void append(const LeafEntry& entry)
    {
        if (m_next == m_end) addBlock();
        *m_next++ = entry;
    }

    size_t size() const { return m_sizeBefore + static_cast<size_t>(m_next - m_begin); }

    /// Calls `visit(entry)` for each, from entry number `first` on.
    template <typename Visit>
    void forEach(size_t first, const Visit& visit) const
    {
        for (const Block& block : m_blocks) {
            const LeafEntry* const begin = block.entries.get();
            const LeafEntry* const end = begin + block.capacity == m_end ? m_next : begin + block.capacity;
            const size_t skipped = std::min(first, static_cast<size_t>(end - begin));
            first -= skipped;
            for (const LeafEntry* entry = begin + skipped; entry != end; ++entry) visit(*entry);
        }
    }

private:
    struct Block
    {
        AlignedArray<LeafEntry> entries;
        size_t capacity;
    };

    static constexpr size_t mostPerBlock = znUtil::hugePageBytes / sizeof(LeafEntry);

    void addBlock()
    {
        m_sizeBefore = size();
        m_blocks.push_back({makeAlignedArray<LeafEntry>(m_nextBlock), m_nextBlock});
        m_next = m_begin = m_blocks.back().entries.get();
        m_end = m_begin + m_nextBlock;
        m_nextBlock = std::min(2 * m_nextBlock, mostPerBlock);
    }

    std::vector<Block> m_blocks;
    LeafEntry *m_begin = nullptr, *m_next = nullptr, *m_end = nullptr; ///< in the last block
    size_t m_sizeBefore = 0;                                           ///< of all blocks before it
    size_t m_nextBlock = 16;
};

} // namespace znGeom::internal
