/// Packing of rectangles into the unit square: the islands of an atlas, the tiles of a texture.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/range.h"
#include "znGeom/foundation/threads/progress.h"
#include "znGeom/foundation/threads/thread_pool.h"

namespace znGeom {

/// Places rectangles in the unit square without overlap, at their sizes and in their order: one try.
///
/// \param items  where a rectangle lies is of no meaning, only its size counts. On success each has become its place in
///               the square. On failure those before the one that did not fit have, and the others are as they were
/// \return false when one does not fit: it is larger than every free part of the square by `epsilonTol` or more, or its
///         size is not a number. True without rectangles
///
/// The free part of the square is a binary tree of rectangles. Each item goes to the first leaf, in the order of the
/// tree, that it fits into; the leaf is cut at its far side along the axis of the greater slack, then, if need be,
/// along the other, which leaves up to two new leaves. This first fit decides, so the same items get the same bits in
/// every run. Sort by the larger side, descending, for a dense packing: the try gives up at once when the last item has
/// a side above 1, and fails for any other only when its turn has come.
///
/// Leaves stand in their order in blocks that know the widest of their leaves for each of a number of heights, and
/// leaves that are too small for all items to come are forgotten. So most items look at one block or two: some 0.2 us
/// an item among a thousand, 0.4 us among ten thousand. Runs on the calling thread.
ZNGEOM_API bool pack(zn::vector<znLinear::Range2d>& items);

/// What `pack` did to find a packing.
struct PackResult
{
    /// The tries made, the one that succeeded among them; 0 when nothing was packed. At most the largest `int`.
    int attempts = 0;
    /// What the sizes were multiplied by until they fitted.
    float coverage = 1;
    /// What the packing was multiplied by afterwards, to touch the far side of the square; 1 for an almost full square.
    double scale = 1;
};

/// Shrinks rectangles, all in the same ratio and a little at a time, until they fit into the unit square without
/// overlap, and scales the result up again when its greatest extent is below 1/1.01.
///
/// \param items       only sizes count. Each becomes its place, in the order given. Unchanged when there are none, or
///                    when a size is not a finite number, as then no packing exists
/// \param iterations  how many failed tries bring the sizes down to 0.499 of what they were: more give a tighter
///                    packing for more time. Nothing is done below 1. From some 24 million on all numbers mean the
///                    same, the smallest step that `float` can tell from none
///
/// Sizes never grow before a try: begin with some that fill the square or more, or all may come to lie in a row. Items
/// are tried by descending larger side, equal ones by index, so the result is the same on every number of threads. The
/// sort runs on the thread pool, the tries, which take the time, on the calling thread.
ZNGEOM_API void pack(zn::vector<znLinear::Range2d>& items, int iterations);

/// The same, telling what was done.
///
/// \param progress  asked before each try; a cancel leaves `items` unchanged and `attempts` at 0
ZNGEOM_API PackResult pack(zn::vector<znLinear::Range2d>& items, int iterations, znUtil::Progress& progress,
                           znUtil::ThreadPool& pool = znUtil::ThreadPool::get());

} // namespace znGeom
