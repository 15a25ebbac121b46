#include "znGeom/foundation/containers/block_allocator.h"

#include <algorithm>

namespace zn {

namespace {

size_t roundedUp(size_t size)
{
    constexpr size_t alignment = __STDCPP_DEFAULT_NEW_ALIGNMENT__;
    return (size + alignment - 1) / alignment * alignment;
}

} // namespace

BlockAllocator::BlockAllocator(size_t elementSize, int elementsPerBlock)
    : m_pieceSize(roundedUp(std::max(elementSize, sizeof(FreePiece)))),
      m_piecesPerBlock(static_cast<size_t>(std::max(elementsPerBlock, 1)))
{}

void BlockAllocator::addBlock()
{
    m_blocks.push_back(std::make_unique_for_overwrite<std::byte[]>(m_pieceSize * m_piecesPerBlock));
    m_unused = m_piecesPerBlock;
}

void* BlockAllocator::allocate()
{
    if (FreePiece* piece = m_free) {
        m_free = piece->next;
        return piece;
    }
    if (m_unused == 0) addBlock();
    --m_unused;
    return m_blocks.back().get() + m_unused * m_pieceSize;
}

void BlockAllocator::free(void* element) { m_free = new (element) FreePiece{m_free}; }

} // namespace zn
