/// `znUtil::CircularRange`: an arc of indices on a cycle.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/machine/export.h"

namespace znUtil {

/// The half-open range [begin, end) of indices on a cycle of known size. `begin` lies in [0, cycle), `end` in
/// [begin, begin + cycle]: begin == end is empty, begin + cycle is full. On a cycle below 1 every range is empty.
class ZNGEOM_API CircularRange
{
public:
    /// `begin` is reduced to the cycle and `end` moved along with it; an `end` before `begin` lies one turn later; the
    /// range is never longer than the cycle.
    CircularRange(int begin, int end, int cycleSize);

    int begin() const { return m_begin; }
    int end() const { return m_begin + m_size; }
    int cycleSize() const { return m_cycle; }
    int size() const { return m_size; }

    /// The index may be on any turn of the cycle.
    bool contains(int index) const;
    /// Every index of `other`, which lies on the same cycle; an empty range is contained in all.
    bool contains(const CircularRange& other) const;

    /// The common part with `other` on the same cycle. Where two arcs meet twice, the piece that starts first from
    /// this range's begin; a caller that needs both uses `subtract`.
    CircularRange intersect(const CircularRange& other) const;

    /// The smallest range from this one's begin that covers both where they overlap or touch; of separate arcs, from
    /// this begin to the other's end. An empty range adds nothing.
    CircularRange merge(const CircularRange& other) const;

    /// The first size / 2 indices, rounded down, and the rest.
    CircularRange firstHalf() const;
    CircularRange secondHalf() const;

    friend bool operator==(const CircularRange&, const CircularRange&) = default;

private:
    /// How far an index lies after `begin`, from 0 to cycle - 1.
    int offset(int index) const;

    int m_begin = 0;
    int m_size = 0;
    int m_cycle = 0;
};

/// Sorts by begin and joins ranges that overlap or touch, also across the end of the cycle. Empty ranges are dropped.
ZNGEOM_API void merge(zn::vector<CircularRange>& ranges);

/// Removes the indices of `removed` from every range, in their order; a range may be split in two.
ZNGEOM_API void subtract(zn::vector<CircularRange>& ranges, const CircularRange& removed);

} // namespace znUtil
