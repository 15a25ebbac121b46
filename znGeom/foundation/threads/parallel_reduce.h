/// A parallel loop that has a result.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/threads/parallel_for.h"

namespace znUtil {

/// Joins what the threads find in their slices of [0, count), in thread order: the result does not depend on
/// scheduling, and not on the number of threads either where `join` is associative to the last bit.
///
/// \param result  what nothing at all gives, and what is joined to
/// \param part    `T part(Slice slice)`, once per thread, for empty slices as well
/// \param join    `void join(T& result, T& part)`, on the calling thread; it may take the part's contents
template <typename T, typename Part, typename Join>
T parallelReduce(ThreadPool& pool, int count, T result, const Part& part, const Join& join)
{
    zn::vector<T> parts(pool.getNumThreads());
    parallelFor(pool, count, [&](Slice slice, int thread) { parts[thread] = part(slice); });
    for (T& found : parts) join(result, found);
    return result;
}

} // namespace znUtil
