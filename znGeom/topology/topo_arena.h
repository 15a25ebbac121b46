/// The storage of a half-edge mesh: records that never move, in blocks that know their order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "znGeom/foundation/machine/export.h"
#include "znGeom/topology/topo_blind_data.h"

namespace znGeom {

class TopoBlockList;

/// The header of a block. Blocks are aligned to their size, so that a record's address leads to it.
struct TopoBlock
{
    static constexpr std::size_t bytes = std::size_t(1) << 16;
    static constexpr std::size_t headerBytes = 192;
    static constexpr int maxSlots = 20;

    int firstNumber;                   ///< the creation number of the block's first record
    int numColumns = 0;                ///< how many of the columns exist
    TopoBlockList* list;               ///< the blocks of all records of this kind
    BlindData* columns[maxSlots] = {}; ///< per slot its values for all records of the block; null until one is written

    TopoBlock(int first, TopoBlockList* blocks) : firstNumber(first), list(blocks) {}

    template <typename Record>
    static constexpr int numRecords()
    {
        return static_cast<int>((bytes - headerBytes) / sizeof(Record));
    }
    /// The block in which a record, or a part of one, lies.
    static TopoBlock* of(const void* record)
    {
        return reinterpret_cast<TopoBlock*>(reinterpret_cast<std::uintptr_t>(record) & ~(bytes - 1));
    }
    /// Which record of its block this is, or the one of which it is a part.
    template <typename Record>
    static int indexOf(const void* record)
    {
        return static_cast<int>(((reinterpret_cast<std::uintptr_t>(record) & (bytes - 1)) - headerBytes) /
                                sizeof(Record));
    }
    /// How many records of its kind were made before this one.
    template <typename Record>
    static int numberOf(const Record* record)
    {
        return of(record)->firstNumber + indexOf<Record>(record);
    }
    /// The record of a creation number, given any other one of the same mesh and kind.
    template <typename Record>
    static Record* numbered(const Record* other, int number);
};
static_assert(sizeof(TopoBlock) <= TopoBlock::headerBytes);

/// A piece of memory for blocks, aligned to their size or to large pages.
struct TopoSlab
{
    struct Free
    {
        void operator()(std::byte* slab) const;
        std::size_t bytes;
    };
    using Pointer = std::unique_ptr<std::byte, Free>;

    static Pointer make(std::size_t atLeast);
};

/// Memory for half-edge meshes that follow one another: what one leaves when it dies the next one takes up, so that the
/// system need not find and clear fresh pages each time. For code that makes many large meshes, as with a scope for
/// each of many batches of edits.
///
///     TopoMemory memory; // outlives the meshes
///     for (...) MeshModifyRep scope(mesh, adjTris, &memory);
///
/// Keeps about as much as the meshes took that were alive at the same time. Used by one thread at a time.
class ZNGEOM_API TopoMemory
{
public:
    TopoMemory() = default;
    TopoMemory(const TopoMemory&) = delete;
    TopoMemory& operator=(const TopoMemory&) = delete;

    TopoSlab::Pointer take(std::size_t bytes);
    void giveBack(TopoSlab::Pointer slab) { m_free.push_back(std::move(slab)); }

private:
    std::vector<TopoSlab::Pointer> m_free;
};

/// Blocks for the records of one kind, taken from the system in slabs of growing size. They are freed when the arena
/// dies, and not before.
class ZNGEOM_API TopoBlockList
{
public:
    /// \param memory  from which to take slabs, and to which they go back; may be null
    explicit TopoBlockList(TopoMemory* memory) : m_memory(memory) {}
    TopoBlockList(const TopoBlockList&) = delete;
    TopoBlockList& operator=(const TopoBlockList&) = delete;
    ~TopoBlockList();

    /// A fresh block, its header filled in. \return its first byte for records
    std::byte* addBlock(int firstNumber);
    /// As many blocks as `count` records need, the first of their kind, in one piece. \return the first block
    std::byte* addFirstBlocks(int count, int recordsPerBlock);
    /// Gives a block room for a slot of `numRecords` records, all unwritten.
    BlindData* addColumn(TopoBlock& block, int slot, int numRecords);
    /// The first byte for records of a block.
    std::byte* recordsOf(int block) const { return m_records[static_cast<std::size_t>(block)]; }

private:
    void addSlab(std::size_t numBlocks);

    TopoMemory* m_memory;
    std::vector<std::byte*> m_records;
    std::vector<TopoSlab::Pointer> m_slabs;
    std::vector<std::unique_ptr<BlindData[]>> m_columns;
    std::byte* m_next = nullptr; ///< the first unused block of the newest slab
    std::size_t m_blocksLeft = 0;
    std::size_t m_blocksPerSlab = 1;
};

template <typename Record>
Record* TopoBlock::numbered(const Record* other, int number)
{
    constexpr int perBlock = numRecords<Record>();
    return reinterpret_cast<Record*>(of(other)->list->recordsOf(number / perBlock)) + number % perBlock;
}

/// Records that were made at once: they lie in one piece, by their numbers from 0 on.
template <typename Record>
class TopoRun
{
public:
    TopoRun() = default;
    explicit TopoRun(std::byte* firstBlock) : m_first(firstBlock) {}

    Record* operator[](int number) const
    {
        constexpr auto perBlock = static_cast<unsigned>(TopoBlock::numRecords<Record>());
        const auto place = static_cast<unsigned>(number);
        return reinterpret_cast<Record*>(m_first + (place / perBlock) * TopoBlock::bytes + TopoBlock::headerBytes +
                                         (place % perBlock) * sizeof(Record));
    }

private:
    std::byte* m_first = nullptr;
};

/// Makes records; none is ever made in the place of an earlier one, so that a handle never comes to name something
/// else.
template <typename Record>
class TopoArena
{
    static_assert(std::is_trivially_destructible_v<Record>);

public:
    explicit TopoArena(TopoMemory* memory) : m_blocks(memory) {}

    Record* make()
    {
        if (m_left == 0) {
            m_next = m_blocks.addBlock(m_numMade);
            m_left = TopoBlock::numRecords<Record>();
        }
        --m_left;
        ++m_numMade;
        auto* record = new (m_next) Record;
        m_next += sizeof(Record);
        return record;
    }
    /// Makes the first `count` records at once. It is for the caller to construct them.
    TopoRun<Record> makeFirst(int count)
    {
        constexpr int perBlock = TopoBlock::numRecords<Record>();
        if (count == 0) return {};
        const TopoRun<Record> run(m_blocks.addFirstBlocks(count, perBlock));
        m_next = reinterpret_cast<std::byte*>(run[count - 1]) + sizeof(Record);
        m_left = perBlock - 1 - (count - 1) % perBlock;
        m_numMade = count;
        return run;
    }
    /// How many records were made so far, deleted ones included: one more than the largest creation number.
    int numMade() const { return m_numMade; }

private:
    TopoBlockList m_blocks;
    std::byte* m_next = nullptr;
    int m_left = 0;
    int m_numMade = 0;
};

} // namespace znGeom
