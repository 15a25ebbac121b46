#include "znGeom/topology/topo_arena.h"

#include <algorithm>

namespace znGeom {

namespace {

constexpr std::size_t mostBlocksPerSlab = 64;
constexpr std::align_val_t blockAlignment{TopoBlock::bytes};

} // namespace

std::byte* TopoBlockList::addBlock(int firstNumber)
{
    if (m_blocksLeft == 0) {
        auto* slab = ::operator new(m_blocksPerSlab* TopoBlock::bytes, blockAlignment);
        m_slabs.emplace_back(static_cast<std::byte*>(slab));
        m_next = m_slabs.back().get();
        m_blocksLeft = m_blocksPerSlab;
        m_blocksPerSlab = std::min(2 * m_blocksPerSlab, mostBlocksPerSlab);
    }
    --m_blocksLeft;
    std::byte* block = m_next;
    m_next += TopoBlock::bytes;
    new (block) TopoBlock{firstNumber, &m_metadata};
    return block + TopoBlock::headerBytes;
}

void TopoBlockList::FreeSlab::operator()(std::byte* slab) const { ::operator delete(slab, blockAlignment); }

} // namespace znGeom
