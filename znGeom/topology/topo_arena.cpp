#include "znGeom/topology/topo_arena.h"

#include <algorithm>

#include "znGeom/foundation/machine/huge_pages.h"

namespace znGeom {

namespace {

constexpr std::size_t mostBlocksPerSlab = 64;

std::align_val_t alignmentOf(std::size_t slabBytes)
{
    return std::align_val_t(slabBytes >= znUtil::hugePageBytes ? znUtil::hugePageBytes : TopoBlock::bytes);
}

} // namespace

TopoSlab::Pointer TopoSlab::make(std::size_t atLeast)
{
    const std::size_t bytes = znUtil::wholePages(atLeast);
    auto* slab = static_cast<std::byte*>(::operator new(bytes, alignmentOf(bytes)));
    znUtil::adviseHugePages(slab, bytes);
    return Pointer(slab, Free{bytes});
}

void TopoSlab::Free::operator()(std::byte* slab) const { ::operator delete(slab, alignmentOf(bytes)); }

/// Takes the smallest slab that will do, unless most of it would lie idle. If there is none, those that only just won't
/// do make room for one that has something to spare: meshes that grow slowly don't leave a slab each.
TopoSlab::Pointer TopoMemory::take(std::size_t bytes)
{
    const auto bytesOf = [](const TopoSlab::Pointer& slab) { return slab.get_deleter().bytes; };
    std::sort(m_free.begin(), m_free.end(), [&](const auto& a, const auto& b) { return bytesOf(a) < bytesOf(b); });
    const auto enough = std::find_if(m_free.begin(), m_free.end(), [&](const auto& s) { return bytesOf(s) >= bytes; });
    if (enough != m_free.end() && bytesOf(*enough) / 2 <= bytes) {
        TopoSlab::Pointer taken = std::move(*enough);
        m_free.erase(enough);
        return taken;
    }
    m_free.erase(std::remove_if(m_free.begin(), enough, [&](const auto& s) { return bytesOf(s) > bytes / 2; }), enough);
    const std::size_t spare = bytes / 8 / TopoBlock::bytes * TopoBlock::bytes;
    return TopoSlab::make(bytes + spare);
}

TopoBlockList::~TopoBlockList()
{
    if (m_memory)
        for (TopoSlab::Pointer& slab : m_slabs) m_memory->giveBack(std::move(slab));
}

void TopoBlockList::addSlab(std::size_t numBlocks)
{
    const std::size_t bytes = numBlocks * TopoBlock::bytes;
    m_slabs.push_back(m_memory ? m_memory->take(bytes) : TopoSlab::make(bytes));
    m_next = m_slabs.back().get();
    m_blocksLeft = m_slabs.back().get_deleter().bytes / TopoBlock::bytes;
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
    const int numBlocks = (count - 1) / recordsPerBlock + 1;
    addSlab(static_cast<std::size_t>(numBlocks));
    std::byte* const first = m_next;
    for (int block = 0; block < numBlocks; ++block) addBlock(block * recordsPerBlock);
    return first;
}

BlindData* TopoBlockList::addColumn(TopoBlock& block, int slot, int numRecords)
{
    m_columns.push_back(std::make_unique<BlindData[]>(static_cast<std::size_t>(numRecords)));
    ++block.numColumns;
    return block.columns[slot] = m_columns.back().get();
}

} // namespace znGeom
