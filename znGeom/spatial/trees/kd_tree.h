/// `znGeom::KDTree`: points that are added one by one and searched by boxes in between.
#pragma once

#include <vector>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/machine/export.h"

namespace znGeom {

/// An index of point numbers in three dimensions. It keeps no points: every call is given the same array, with three
/// floats a point. Insertions and searches may alternate. A point that is not a number is never found. Used by one
/// thread at a time.
///
/// Balanced blocks of doubling size, after Bentley and Saxe, "Decomposable searching problems" (1980): an insertion
/// costs log^2 n on average, a search no more than a search in each of log n trees.
class ZNGEOM_API KDTree
{
public:
    /// \param capacity  how many points to make room for; more may be added
    explicit KDTree(int capacity) { m_numbers.reserve(capacity); }

    void insert(const float* points, int index);
    /// \param box  six floats: minima, maxima; inclusive
    /// \return the number of some inserted point in the box, or -1
    int search(const float* points, const float* const box) const;
    /// Appends the numbers of all inserted points in the box, in ascending order.
    void searchAll(const float* points, const float* const box, std::vector<int>& out) const;

private:
    template <typename Visit>
    void visitBox(const float* points, const float* box, const Visit& visit) const;

    zn::vector<int> m_numbers;    ///< block after block, each in its tree's order, then the newest in insertion order
    zn::vector<int> m_blockSizes; ///< descending powers of two times the smallest
};

} // namespace znGeom
