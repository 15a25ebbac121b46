#include "znGeom/foundation/mesh/remap.h"

#include <numeric>

namespace znGeom {

void Remap::resize(int domain, int newRange)
{
    const int kept = std::min(m_map.size(), domain);
    m_map.resize(domain);
    if (domain > kept) std::fill_n(m_map.write() + kept, domain - kept, -1);
    range = newRange;
}

void Remap::operator()(int* values, int count) const
{
    const int* map = m_map.read();
    for (int i = 0; i < count; ++i) values[i] = map[values[i]];
}

void Remap::setSequential()
{
    std::iota(m_map.write(), m_map.write() + m_map.size(), 0);
    range = m_map.size();
}

void Remap::setDeleteMap(const BitVector& deleted)
{
    m_map.resize(deleted.getSize());
    int* map = m_map.write();
    // Without a branch, which would be mispredicted half the time on ragged sets.
    const std::uint32_t* words = deleted.getWords();
    int next = 0;
    for (int i = 0; i < deleted.getSize(); ++i) {
        const int bit = static_cast<int>(words[i >> 5] >> (i & 31) & 1u);
        map[i] = next | -bit;
        next += 1 - bit;
    }
    range = next;
}

} // namespace znGeom
