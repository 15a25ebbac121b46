/// The storage of a half-edge mesh: records that never move, in blocks that know their order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

#include "znGeom/foundation/containers/block_allocator.h"
#include "znGeom/foundation/machine/export.h"

namespace znGeom {

/// The header of a block. Blocks are aligned to their size, so that a record's address leads to it.
struct TopoBlock
{
    static constexpr std::size_t bytes = std::size_t(1) << 16;
    static constexpr std::size_t headerBytes = 64;

    int firstNumber;              ///< the creation number of the block's first record
    zn::BlockAllocator* metadata; ///< where the records of the block take their slots from

    /// The block in which a record, or a part of one, lies.
    static TopoBlock* of(const void* record)
    {
        return reinterpret_cast<TopoBlock*>(reinterpret_cast<std::uintptr_t>(record) & ~(bytes - 1));
    }
    /// How many records of its kind were made before this one.
    template <typename Record>
    static int numberOf(const Record* record)
    {
        const TopoBlock* block = of(record);
        const auto* first = reinterpret_cast<const std::byte*>(block) + headerBytes;
        return block->firstNumber + static_cast<int>(record - reinterpret_cast<const Record*>(first));
    }
};
static_assert(sizeof(TopoBlock) <= TopoBlock::headerBytes);

/// Blocks for the records of one kind, taken from the system in slabs of growing size. They are freed when the arena
/// dies, none before.
class ZNGEOM_API TopoBlockList
{
public:
    explicit TopoBlockList(std::size_t metadataBytes) : m_metadata(metadataBytes, 64) {}
    TopoBlockList(const TopoBlockList&) = delete;
    TopoBlockList& operator=(const TopoBlockList&) = delete;

    /// A fresh block, its header filled in. \return its first byte for records
    std::byte* addBlock(int firstNumber);

private:
    struct FreeSlab
    {
        std::size_t alignment;
        void operator()(std::byte* slab) const { ::operator delete(slab, std::align_val_t(alignment)); }
    };

    zn::BlockAllocator m_metadata;
    std::vector<std::unique_ptr<std::byte, FreeSlab>> m_slabs;
    std::byte* m_next = nullptr; ///< the first unused block of the newest slab
    std::size_t m_blocksLeft = 0;
    std::size_t m_blocksPerSlab = 1;
};

/// Makes records; none is ever made anew in the place of another, so that a handle never names a second thing.
template <typename Record>
class TopoArena
{
    static_assert(std::is_trivially_destructible_v<Record>);
    static constexpr std::size_t recordsPerBlock = (TopoBlock::bytes - TopoBlock::headerBytes) / sizeof(Record);

public:
    explicit TopoArena(std::size_t metadataBytes) : m_blocks(metadataBytes) {}

    Record* make()
    {
        if (m_left == 0) {
            m_next = m_blocks.addBlock(m_numMade);
            m_left = recordsPerBlock;
        }
        --m_left;
        ++m_numMade;
        auto* record = new (m_next) Record;
        m_next += sizeof(Record);
        return record;
    }
    /// How many records were made so far, deleted ones included: one more than the largest creation number.
    int numMade() const { return m_numMade; }

private:
    TopoBlockList m_blocks;
    std::byte* m_next = nullptr;
    std::size_t m_left = 0;
    int m_numMade = 0;
};

} // namespace znGeom
