/// The parallel sort: two halves at a time, then one merge from both ends.
#pragma once

#include <algorithm>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/threads/bounded_sort.h"
#include "znGeom/foundation/threads/thread_pool.h"

namespace znUtil {

/// Sorts the two halves of [begin, end), the first half one element longer when their number is odd. However many
/// threads the pool has, threads 0 and 1 do the work.
template <typename T, typename Compare>
class SMPSortPiecewise : public ThreadedAlg
{
public:
    SMPSortPiecewise(T* begin, T* end, const Compare& less) : m_begin(begin), m_end(end), m_less(less) {}

    void execute(int threadIndex, int) override
    {
        if (threadIndex > 1) return;
        const Slice half(static_cast<int>(m_end - m_begin), threadIndex, 2);
        boundedSort(m_begin + half.begin, m_begin + half.end, m_less);
    }

private:
    T* m_begin;
    T* m_end;
    Compare m_less;
};

/// Merges the two sorted halves of [begin, end) by way of a scratch array of the same length. Thread 0 merges forward
/// into the first half of the scratch, thread 1 backward into the second; equal elements of the first half stay in
/// front.
template <typename T, typename Compare>
class SMPSortMerge : public ThreadedAlg
{
public:
    SMPSortMerge(T* begin, T* end, T* scratch, const Compare& less)
        : m_begin(begin), m_end(end), m_middle(begin + Slice(static_cast<int>(end - begin), 0, 2).end),
          m_scratch(scratch), m_less(less)
    {}

    void execute(int threadIndex, int) override
    {
        if (threadIndex == 0) mergeForward(m_scratch + (m_middle - m_begin));
        if (threadIndex == 1) mergeBackward();
    }

    void finalize() override
    {
        // The two merges meet where the first half is divided. With a comparator that is not an order they may not, and
        // would lose elements: then one merge does it all.
        if (m_firstForward != m_firstBackward) mergeForward(m_scratch + (m_end - m_begin));
        std::copy(m_scratch, m_scratch + (m_end - m_begin), m_begin);
    }

private:
    void mergeForward(T* outEnd)
    {
        const T *first = m_begin, *second = m_middle;
        for (T* out = m_scratch; out != outEnd; ++out)
            *out = first == m_middle || (second != m_end && m_less(*second, *first)) ? *second++ : *first++;
        m_firstForward = first;
    }

    void mergeBackward()
    {
        const T *first = m_middle, *second = m_end; // one past the next element of each half
        T* const outBegin = m_scratch + (m_middle - m_begin);
        for (T* out = m_scratch + (m_end - m_begin); out != outBegin;)
            *--out = first != m_begin && m_less(*(second - 1), *(first - 1)) ? *--first : *--second;
        m_firstBackward = first;
    }

    T* m_begin;
    T* m_end;
    T* m_middle;
    T* m_scratch;
    Compare m_less;
    const T* m_firstForward = nullptr; ///< where each merge left the first half
    const T* m_firstBackward = nullptr;
};

/// Sorts [begin, end) by `less`: with the plain sort on a pool of one thread, otherwise in two halves and a merge with
/// a scratch array that lives for this call. Equal elements come in no particular order.
template <typename T, typename Compare>
void parallelSort(T* begin, T* end, const Compare& less, ThreadPool& pool = ThreadPool::get())
{
    if (pool.getNumThreads() == 1) {
        boundedSort(begin, end, less);
        return;
    }
    SMPSortPiecewise<T, Compare> pieces(begin, end, less);
    pool.run(pieces);
    zn::vector<T> scratch(static_cast<int>(end - begin));
    SMPSortMerge<T, Compare> merge(begin, end, scratch.data(), less);
    pool.run(merge);
}

} // namespace znUtil
