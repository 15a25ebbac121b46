#include "znGeom/foundation/mesh/array_of_sets.h"

#include <numeric>

#include "znGeom/foundation/containers/vector.h"

namespace znGeom {

namespace {

/// A counting sort: `visit` calls its argument with (set, element) for each pair, in the same order both times.
template <typename VisitPairs>
void buildTable(ArrayOfSets& table, int numSets, int numElements, const VisitPairs& visit)
{
    ArrayOfSets built(numSets, numElements);
    zn::vector<int> next(numSets + 1, 0); // one more, so that a table of no sets has a place to point to
    visit([&next](int set, int) { ++next[set]; });
    std::exclusive_scan(next.begin(), next.begin() + numSets, next.begin(), 0);
    std::copy_n(next.begin(), numSets, built.start.write());
    int* elements = built.elements.write();
    visit([&next, elements](int set, int element) { elements[next[set]++] = element; });
    table.swap(built);
}

} // namespace

void ArrayOfSets::assignFromPairs(int numSets, int numPairs, const int* pairs)
{
    buildTable(*this, numSets, numPairs, [numPairs, pairs](const auto& take) {
        for (int i = 0; i < numPairs; ++i) take(pairs[2 * i], pairs[2 * i + 1]);
    });
}

void ArrayOfSets::assignInverse(int numSets, const ArrayOfSets& source)
{
    buildTable(*this, numSets, source.elements.size(), [&source](const auto& take) {
        const int* from = source.elements.read();
        for (int set = 0; set < source.getNumSets(); ++set)
            for (int i = source.start[set]; i < source.setEnd(set); ++i) take(from[i], set);
    });
}

} // namespace znGeom
