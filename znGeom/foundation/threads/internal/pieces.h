/// Loops that tell how far they are and can be cancelled.
#pragma once

#include <algorithm>

#include "znGeom/foundation/threads/progress.h"

namespace znGeom::internal {

/// Calls `body(begin, end)` for one piece of [0, count) after the other, and reports after each.
/// \return false after a cancel, which is looked for before each piece and at the end
template <typename Body>
bool forEachPiece(int count, znUtil::Progress& progress, const Body& body)
{
    constexpr int pieceSize = 1 << 14;
    for (int begin = 0, end = 0; begin < count && !progress.cancelled(); begin = end) {
        end = begin + std::min(pieceSize, count - begin);
        body(begin, end);
        progress.set(static_cast<double>(end) / count);
    }
    return !progress.cancelled();
}

} // namespace znGeom::internal
