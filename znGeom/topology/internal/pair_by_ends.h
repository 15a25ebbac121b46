/// Pairing half-edges that join the same two vertices.
#pragma once

#include <memory>
#include <utility>

#include "znGeom/foundation/containers/vector.h"

namespace znGeom::internal {

/// Calls `pair(first, second)` for half-edges with the same ends: for the first two of them, the next two, and so on.
///
/// \param visit  called twice; calls `take(low, high, edge)` for each half-edge, both times in the same order: with the
///               numbers of its ends, the lower one first. They are below `numVertices`
/// \return whether there was a pair
///
/// Linear, whatever the valences: half-edges are sorted by their lower ends, and those of one lower end meet in a table
/// by the upper ones.
template <typename Edge, typename Visit, typename Pair>
bool pairByEnds(int numVertices, const Visit& visit, const Pair& pair)
{
    struct Open
    {
        int high;
        Edge edge;
    };
    zn::vector<int> ends(numVertices, 0); // where the half-edges of each lower end end
    int numOpen = 0;
    visit([&](int low, int, Edge) { ++ends[low], ++numOpen; });
    if (numOpen == 0) return false;
    for (int low = 0, place = 0; low < numVertices; ++low) place += std::exchange(ends[low], place);
    const auto sorted = std::make_unique_for_overwrite<Open[]>(static_cast<size_t>(numOpen));
    visit([&](int low, int high, Edge edge) { sorted[static_cast<size_t>(ends[low]++)] = {high, edge}; });

    bool paired = false;
    zn::vector<int> waiting(numVertices, -1); // by upper end, the place of a half-edge that waits for its pair
    for (int low = 0, place = 0; low < numVertices; ++low)
        for (const int begin = place; place < ends[low]; ++place) {
            const Open& open = sorted[static_cast<size_t>(place)];
            int& other = waiting[open.high];
            if (other < begin) {
                other = place;
                continue;
            }
            pair(sorted[static_cast<size_t>(other)].edge, open.edge);
            other = -1;
            paired = true;
        }
    return paired;
}

} // namespace znGeom::internal
