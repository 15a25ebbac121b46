/// Bounds of the stretches of a line.
#pragma once

#include <algorithm>
#include <bit>
#include <utility>

#include "znGeom/foundation/containers/vector.h"

namespace znGeom::internal {

/// What bounds consecutive blocks of a line, pairs of blocks, pairs of pairs, and so on.
template <typename Bound>
class StretchTree
{
public:
    /// \param blocks   the bound of each block in order
    /// \param unite    Bound(const Bound&, const Bound&)
    template <typename Unite>
    StretchTree(zn::vector<Bound> blocks, const Unite& unite)
    {
        while (!blocks.empty()) {
            zn::vector<Bound> pairs;
            pairs.reserve(blocks.size() / 2);
            for (int i = 0; i + 1 < blocks.size(); i += 2) pairs.append(unite(blocks[i], blocks[i + 1]));
            m_levels.append(std::move(blocks));
            blocks = std::move(pairs);
        }
    }

    /// Walks over blocks in order, without those that are ruled out.
    /// \param isRuledOut  bool(const Bound&): of a stretch of one block or several
    /// \param visit       bool(int block): false ends the walk
    template <typename RuledOut, typename Visit>
    void walk(int firstBlock, int endBlock, const RuledOut& isRuledOut, const Visit& visit) const
    {
        for (int block = firstBlock; block < endBlock;) {
            int level = std::bit_width(static_cast<unsigned>(endBlock - block)) - 1;
            if (block > 0) level = std::min(level, std::countr_zero(static_cast<unsigned>(block)));
            bool isOut = isRuledOut(m_levels[level][block >> level]);
            while (!isOut && level > 0) {
                --level;
                isOut = isRuledOut(m_levels[level][block >> level]);
            }
            if (!isOut && !visit(block)) return;
            block += 1 << level;
        }
    }

private:
    zn::vector<zn::vector<Bound>> m_levels; ///< of 1, 2, 4 ... blocks; only whole ones
};

} // namespace znGeom::internal
