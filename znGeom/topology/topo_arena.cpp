#include "znGeom/topology/topo_arena.h"

#include <algorithm>

#include "znGeom/foundation/machine/huge_pages.h"

namespace znGeom {

namespace {

constexpr std::size_t mostBlocksPerSlab = 64;

} // namespace

void TopoBlockList::addSlab(std::size_t numBlocks)
{
    const std::size_t slabBytes = numBlocks * TopoBlock::bytes;
    const bool huge = slabBytes >= znUtil::hugePageBytes;
    const std::size_t alignment = huge ? znUtil::hugePageBytes : TopoBlock::bytes;
    auto* slab = static_cast<std::byte*>(::operator new(slabBytes, std::align_val_t(alignment)));
    m_slabs.emplace_back(slab, FreeSlab{alignment});
    if (huge) znUtil::adviseHugePages(slab, slabBytes);
    m_next = slab;
    m_blocksLeft = numBlocks;
}

std::byte* TopoBlockList::addBlock(int firstNumber)
{
    if (m_blocksLeft == 0) {
        addSlab(m_blocksPerSlab);
        m_blocksPerSlab = std::min(2 * m_blocksPerSlab, mostBlocksPerSlab);
    }
    --m_blocksLeft;
    std::byte* block = m_next;
    m_next += TopoBlock::bytes;
    new (block) TopoBlock(firstNumber, this);
    m_records.push_back(block + TopoBlock::headerBytes);
    return m_records.back();
}

std::byte* TopoBlockList::addFirstBlocks(int count, int recordsPerBlock)
{
    addSlab((static_cast<std::size_t>(count) - 1) / static_cast<std::size_t>(recordsPerBlock) + 1);
    std::byte* const first = m_next;
    for (int number = 0; m_blocksLeft > 0; number += recordsPerBlock) addBlock(number);
    return first;
}

BlindData* TopoBlockList::addColumn(TopoBlock& block, int slot, int numRecords)
{
    m_columns.push_back(std::make_unique<BlindData[]>(static_cast<std::size_t>(numRecords)));
    ++block.numColumns;
    return block.columns[slot] = m_columns.back().get();
}

} // namespace znGeom
