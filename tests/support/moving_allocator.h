/// An `ArrayAllocator` that keeps contents in a table of its own and moves a block whenever it is asked to write to it,
/// so that a pointer that is kept too long reads what was never written.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "znGeom/foundation/mesh/array.h"

namespace znTest {

class MovingAllocator : public znGeom::ArrayAllocator
{
public:
    void* read(znGeom::ArrayBase& array) override { return find(array).data(); }

    void* write(znGeom::ArrayBase& array) override
    {
        Block& block = find(array);
        Block moved = block;
        std::fill(block.begin(), block.end(), std::byte{0xEE});
        block.swap(moved);
        return block.data();
    }

    void resize(znGeom::ArrayBase& array, size_t bytes) override
    {
        if (!array.block) array.block = reinterpret_cast<void*>(++m_lastId);
        Block& block = m_blocks[reinterpret_cast<std::uintptr_t>(array.block)];
        Block resized(bytes, std::byte{0xEE});
        std::copy_n(block.begin(), std::min(block.size(), bytes), resized.begin());
        block.swap(resized);
    }

    void release(znGeom::ArrayBase& array) override
    {
        if (m_blocks.erase(reinterpret_cast<std::uintptr_t>(array.block)) != 1) ++m_faults;
        array.block = nullptr;
    }

    int numBlocks() const { return static_cast<int>(m_blocks.size()); }
    /// Calls for a block that is not there: released twice, or never made.
    int numFaults() const { return m_faults; }

private:
    using Block = std::vector<std::byte>;

    Block& find(znGeom::ArrayBase& array)
    {
        const auto at = m_blocks.find(reinterpret_cast<std::uintptr_t>(array.block));
        if (at != m_blocks.end()) return at->second;
        ++m_faults;
        return m_none;
    }

    std::uintptr_t m_lastId = 0;
    std::map<std::uintptr_t, Block> m_blocks;
    Block m_none;
    int m_faults = 0;
};

} // namespace znTest
