/// `znUtil::CountingSort`: a stable sort by small integer keys on all threads.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "znGeom/foundation/threads/parallel_for.h"

namespace znUtil {

/// Sorts items by their keys, 0 to numKeys - 1, wherever the items come from and wherever they go. Each thread of the
/// pool has a part of them; the parts count as standing one after the other in thread order, and items of equal keys
/// stay in that order. First `count`, then `place`; linear in items, and in keys times threads.
///
/// Both call `visit(threadIndex, take)` once per thread, which is to call `take(key, item)` for each item of that
/// thread's part: the same items in the same order both times.
class CountingSort
{
public:
    CountingSort(ThreadPool& pool, int numKeys)
        : m_pool(pool), m_numKeys(numKeys),
          m_places(std::make_unique_for_overwrite<int[]>(static_cast<size_t>(pool.getNumThreads()) *
                                                         static_cast<size_t>(numKeys)))
    {}

    /// Counts the items of each key.
    ///
    /// \param starts  null, or room for `numKeys`: the place at which each key begins
    /// \return how many items the most frequent key has
    template <typename Visit>
    int count(const Visit& visit, int* starts = nullptr)
    {
        forEachThread([&](int thread) {
            int* const counts = placesOf(thread);
            std::fill_n(counts, m_numKeys, 0);
            visit(thread, [counts](int key, const auto&) { ++counts[key]; });
        });
        const int numThreads = m_pool.getNumThreads();
        int place = 0, most = 0;
        for (int key = 0; key < m_numKeys; ++key) {
            const int first = place;
            for (int thread = 0; thread < numThreads; ++thread) place += std::exchange(placesOf(thread)[key], place);
            if (starts) starts[key] = first;
            most = std::max(most, place - first);
        }
        return most;
    }

    /// Calls `put(place, item)` for each item, places counting from 0 in sorted order; once after each `count`.
    template <typename Visit, typename Put>
    void place(const Visit& visit, const Put& put)
    {
        forEachThread([&](int thread) {
            int* const next = placesOf(thread);
            visit(thread, [next, &put](int key, const auto& item) { put(next[key]++, item); });
        });
    }

private:
    /// The counts of a thread's items by key; then where the next of them goes.
    int* placesOf(int thread) { return m_places.get() + static_cast<std::ptrdiff_t>(thread) * m_numKeys; }

    template <typename Body>
    void forEachThread(const Body& body)
    {
        parallelFor(m_pool, m_pool.getNumThreads(), [&body](Slice, int thread) { body(thread); });
    }

    ThreadPool& m_pool;
    int m_numKeys;
    std::unique_ptr<int[]> m_places;
};

} // namespace znUtil
