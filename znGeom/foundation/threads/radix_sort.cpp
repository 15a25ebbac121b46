#include "znGeom/foundation/threads/radix_sort.h"

#include <algorithm>
#include <array>
#include <utility>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/threads/parallel_for.h"

namespace znUtil {

namespace {

constexpr int digitBits = 11, numDigits = 3, numValues = 1 << digitBits;

/// Below this a second thread costs more than it brings.
constexpr int parallelCount = 1 << 14;

/// How many records of one slice have each value of a digit; later, where the next of them goes.
using Counts = std::array<int, numValues>;

int digitOf(std::uint32_t key, int digit) { return static_cast<int>(key >> (digitBits * digit) & (numValues - 1)); }

/// Turns the counts of all slices into places: values ascend, and within a value the slices follow one another.
/// Returns whether the pass would move anything.
bool countsToPlaces(zn::vector<Counts>& counts, int count)
{
    int place = 0;
    bool moves = true;
    for (size_t value = 0; value < numValues; ++value) {
        const int first = place;
        for (Counts& slice : counts) place += std::exchange(slice[value], place);
        moves = moves && place - first < count;
    }
    return moves;
}

/// One pass; returns false, having moved nothing, where all records have the same digit.
bool sortByDigit(const KeyedIndex* from, KeyedIndex* to, int count, int digit, ThreadPool& pool)
{
    zn::vector<Counts> counts(pool.getNumThreads());
    parallelFor(pool, count, [&](Slice slice, int threadIndex) {
        Counts& mine = counts[threadIndex];
        for (int i = slice.begin; i < slice.end; ++i) ++mine[static_cast<size_t>(digitOf(from[i].key, digit))];
    });
    if (!countsToPlaces(counts, count)) return false;
    parallelFor(pool, count, [&](Slice slice, int threadIndex) {
        Counts& next = counts[threadIndex];
        for (int i = slice.begin; i < slice.end; ++i)
            to[next[static_cast<size_t>(digitOf(from[i].key, digit))]++] = from[i];
    });
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
