/// An order of points in which the points of a run lie close together.
#pragma once

#include "znGeom/foundation/threads/thread_pool.h"

namespace znGeom::internal {

/// A point, and the number of what it stands for.
struct PointRecord
{
    float at[3];
    int number;
};

/// Orders points for a tree whose nodes have eight children each and whose leaves hold eight points: halves them along
/// the longest side of their box, again and again, at ranks that are multiples of what a subtree holds, until eight are
/// left. Only the last run of each size may be short.
///
/// \param records  `count` of finite points; used up
/// \param scratch  room for as many
/// \param order    receives the numbers
///
/// Each halving is linear; n log n in all. The first ones run on the calling thread, the rest on the pool; the order
/// depends on its size.
void orderByHalving(PointRecord* records, PointRecord* scratch, int count, int* order, znUtil::ThreadPool& pool);

} // namespace znGeom::internal
