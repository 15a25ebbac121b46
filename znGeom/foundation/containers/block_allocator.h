/// `zn::BlockAllocator`: equal pieces of memory cut from larger blocks.
#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>
#include <vector>

#include "znGeom/foundation/machine/export.h"

namespace zn {

/// Hands out pieces of one size. A freed piece is reused by the next `allocate`; the blocks themselves are freed when
/// the allocator dies, whatever is still in use. Not for use by two threads at a time.
class ZNGEOM_API BlockAllocator
{
public:
    /// \param elementSize       bytes per piece; aligned as `new` aligns
    /// \param elementsPerBlock  pieces per block; below 1 counts as 1
    BlockAllocator(size_t elementSize, int elementsPerBlock);

    BlockAllocator(const BlockAllocator&) = delete;
    BlockAllocator& operator=(const BlockAllocator&) = delete;

    void* allocate();
    void free(void* element);

private:
    struct FreePiece
    {
        FreePiece* next;
    };

    void addBlock();

    size_t m_pieceSize;
    size_t m_piecesPerBlock;
    size_t m_unused = 0; ///< pieces at the end of the last block that were never handed out
    FreePiece* m_free = nullptr;
    std::vector<std::unique_ptr<std::byte[]>> m_blocks;
};

/// Lets the standard node containers take their nodes from a `BlockAllocator`: one allocator per container, ten nodes
/// to a block, created with the first node. Whatever is not a single node (a hash table's buckets), or needs a stricter
/// alignment than `new` gives, comes from the heap.
template <typename T>
class NodeAllocator
{
public:
    using value_type = T;
    using propagate_on_container_move_assignment = std::true_type;
    using propagate_on_container_swap = std::true_type;

    NodeAllocator() : m_blocks(std::make_shared<Blocks>()) {}
    template <typename U>
    NodeAllocator(const NodeAllocator<U>& other) : m_blocks(other.m_blocks)
    {}
    NodeAllocator(const NodeAllocator&) = default;
    NodeAllocator& operator=(const NodeAllocator&) = default;

    /// A copied container gets blocks of its own.
    NodeAllocator select_on_container_copy_construction() const { return NodeAllocator(); }

    T* allocate(size_t count)
    {
        if (!isNode(count)) return std::allocator<T>().allocate(count);
        if (!*m_blocks) *m_blocks = std::make_unique<BlockAllocator>(sizeof(T), nodesPerBlock);
        return static_cast<T*>((*m_blocks)->allocate());
    }
    void deallocate(T* piece, size_t count)
    {
        if (isNode(count))
            (*m_blocks)->free(piece);
        else
            std::allocator<T>().deallocate(piece, count);
    }

    template <typename U>
    friend bool operator==(const NodeAllocator& a, const NodeAllocator<U>& b)
    {
        return a.m_blocks == b.m_blocks;
    }

private:
    template <typename>
    friend class NodeAllocator;

    static constexpr int nodesPerBlock = 10;

    using Blocks = std::unique_ptr<BlockAllocator>;

    static constexpr bool isNode(size_t count)
    {
        return count == 1 && !std::is_pointer_v<T> && alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__;
    }

    std::shared_ptr<Blocks> m_blocks;
};

} // namespace zn
