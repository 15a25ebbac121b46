/// `znGeom::ArrayOfSets`: many sets of integers in two flat arrays.
#pragma once

#include <span>

#include "znGeom/foundation/mesh/array.h"

namespace znGeom {

/// Set i holds the elements from start[i] up to start[i + 1], the last set up to the number of elements. Code that
/// makes a table by size fills both arrays directly. Indices are trusted. Copies are deep; a moved-from table is empty.
class ZNGEOM_API ArrayOfSets
{
public:
    ArrayOfSets() = default;
    /// Makes room; starts and elements hold no particular value yet.
    ArrayOfSets(int numSets, int numElements) : start(numSets), elements(numElements) {}

    Array<int> start; ///< one per set, ascending
    Array<int> elements;

    int getNumSets() const { return start.size(); }
    int getSetSize(int set) const { return setEnd(set) - start[set]; }
    int* getSet(int set) { return elements.write() + start[set]; }
    const int* getSet(int set) const { return elements.read() + start[set]; }
    /// The elements of a set, for `for (int element : sets.members(set))`; good until the table changes.
    std::span<const int> members(int set) const { return {getSet(set), static_cast<size_t>(getSetSize(set))}; }

    void swap(ArrayOfSets& other)
    {
        start.swap(other.start);
        elements.swap(other.elements);
    }

    /// Builds the table from (set, element) pairs, stored interleaved; within a set the elements keep the pairs' order.
    /// Linear.
    void assignFromPairs(int numSets, int numPairs, const int* pairs);

    /// Builds the inverse relation: set e holds, ascending, the sets of `source` in which e is an element.
    /// \param numSets  at least one more than the largest element of `source`
    void assignInverse(int numSets, const ArrayOfSets& source);

private:
    int setEnd(int set) const { return set + 1 < start.size() ? start[set + 1] : elements.size(); }
};

} // namespace znGeom
