#include "znGeom/foundation/threads/radix_sort.h"

#include <algorithm>
#include <utility>

#include "znGeom/foundation/threads/counting_sort.h"

namespace znUtil {

namespace {

constexpr int digitBits = 11, numDigits = 3, numValues = 1 << digitBits;

/// Below this a second thread costs more than it brings.
constexpr int parallelCount = 1 << 14;

int digitOf(std::uint32_t key, int digit) { return static_cast<int>(key >> (digitBits * digit) & (numValues - 1)); }

/// One pass; returns false, having moved nothing, where all records have the same digit.
bool sortByDigit(const KeyedIndex* from, KeyedIndex* to, int count, int digit, ThreadPool& pool)
{
    const int numThreads = pool.getNumThreads();
    const auto visit = [=](int thread, const auto& take) {
        const Slice slice(count, thread, numThreads);
        for (int i = slice.begin; i < slice.end; ++i) take(digitOf(from[i].key, digit), from[i]);
    };
    CountingSort sort(pool, numValues);
    if (sort.count(visit) == count) return false;
    sort.place(visit, [to](int place, const KeyedIndex& record) { to[place] = record; });
    return true;
}

} // namespace

void radixSort(KeyedIndex* records, KeyedIndex* scratch, int count, ThreadPool& pool)
{
    ThreadPool& used = count < parallelCount ? ThreadPool::getSingleThreadedPool() : pool;
    KeyedIndex *from = records, *to = scratch;
    for (int digit = 0; digit < numDigits; ++digit)
        if (sortByDigit(from, to, count, digit, used)) std::swap(from, to);
    if (from != records) std::copy_n(from, count, records);
}

} // namespace znUtil
