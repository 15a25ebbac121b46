#include "znGeom/editing/internal/vertex_order.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

#include "znGeom/foundation/threads/bounded_sort.h"
#include "znGeom/foundation/threads/parallel_for.h"

namespace znGeom::internal {

using znUtil::KeyedIndex;
using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// From this length on a run is sorted by all threads together.
constexpr int largeRun = 1 << 16;
/// From this length on a run of one thread is sorted by digits; below, by comparing.
constexpr int digitRun = 1 << 11;
/// Up to this length, by insertion.
constexpr int insertionRun = 24;

/// Places [begin, end) whose vertices are the same in all keys before `level`.
struct Run
{
    int begin, end;
    int level;

    int size() const { return end - begin; }
};

void insertionSort(KeyedIndex* first, const KeyedIndex* last)
{
    for (KeyedIndex* next = first + 1; next < last; ++next) {
        const KeyedIndex record = *next;
        KeyedIndex* hole = next;
        for (; hole != first && record.key < (hole - 1)->key; --hole) *hole = *(hole - 1);
        *hole = record;
    }
}

bool isNaN(std::uint32_t key) { return key < znUtil::sortableKey(-INFINITY) || key > znUtil::sortableKey(INFINITY); }

class Sorter
{
public:
    Sorter(VertexOrder& order, int count, const zn::vector<VertexKey>& keys, ThreadPool& pool)
        : m_records(order.sorted.get()), m_startsRun(order.startsRun.get()),
          m_scratch(std::make_unique_for_overwrite<KeyedIndex[]>(static_cast<size_t>(count))), m_keys(keys),
          m_pool(pool)
    {}

    /// Sorts a run and, level by level, whatever runs it falls into.
    void sort(const Run& whole)
    {
        zn::vector<Run> pending{whole};
        while (!pending.empty()) {
            const Run run = pending.back();
            pending.eraseBack();
            if (run.size() < largeRun) {
                sortSmallRun(run);
            } else {
                sortLargeRun(run);
                if (run.level + 1 < m_keys.size()) sortParts(run, pending);
            }
        }
    }

private:
    /// By one key, on all threads.
    void sortLargeRun(const Run& run)
    {
        znUtil::parallelFor(m_pool, run.size(), [&](Slice slice, int) {
            loadKeys({run.begin + slice.begin, run.begin + slice.end, run.level});
        });
        radixSort(m_records + run.begin, m_scratch.get() + run.begin, run.size(), m_pool);
        znUtil::parallelFor(m_pool, run.size(), [&](Slice slice, int) {
            markStarts(run.begin, run.begin + slice.begin, run.begin + slice.end);
        });
    }

    /// Sorts the small runs into which a large one fell, spread over the threads, and keeps the large ones for later.
    void sortParts(const Run& run, zn::vector<Run>& pending)
    {
        const int numThreads = m_pool.getNumThreads();
        zn::vector<int> borders(numThreads + 1, run.end);
        for (int i = 0; i < numThreads; ++i)
            borders[i] = nextStart(run.begin + Slice(run.size(), i, numThreads).begin, run.end);
        zn::vector<zn::vector<Run>> large(numThreads);
        znUtil::parallelFor(m_pool, run.size(), [&](Slice, int threadIndex) {
            forEachPart({borders[threadIndex], borders[threadIndex + 1], run.level + 1}, [&](const Run& part) {
                if (part.size() < largeRun)
                    sortSmallRun(part);
                else
                    large[threadIndex].append(part);
            });
        });
        for (const zn::vector<Run>& found : large) pending.append(found);
    }

    /// By all keys that are left, on this thread: as deep as there are keys.
    void sortSmallRun(const Run& run)
    {
        if (run.size() < 2 || run.level == m_keys.size()) return;
        loadKeys(run);
        KeyedIndex *first = m_records + run.begin, *last = m_records + run.end;
        if (run.size() <= insertionRun)
            insertionSort(first, last);
        else if (run.size() < digitRun)
            znUtil::boundedSort(first, last, [](const KeyedIndex& a, const KeyedIndex& b) {
                return a.key != b.key ? a.key < b.key : a.index < b.index;
            });
        else
            radixSort(first, m_scratch.get() + run.begin, run.size(), ThreadPool::getSingleThreadedPool());
        markStarts(run.begin, run.begin, run.end);
        forEachPart({run.begin, run.end, run.level + 1}, [this](const Run& part) { sortSmallRun(part); });
    }

    /// Calls `visit` with each run that starts within [begin, end), both of which are borders of runs.
    template <typename Visit>
    void forEachPart(const Run& run, const Visit& visit)
    {
        for (int begin = run.begin, end; begin < run.end; begin = end) {
            end = nextStart(begin + 1, run.end);
            visit(Run{begin, end, run.level});
        }
    }

    /// The first place in [place, limit) where a run starts; `limit` if there is none.
    int nextStart(int place, int limit) const
    {
        while (place < limit && m_startsRun[place] == 0) ++place;
        return place;
    }

    void loadKeys(const Run& run)
    {
        const VertexKey key = m_keys[run.level];
        for (int i = run.begin; i < run.end; ++i) m_records[i].key = znUtil::sortableKey(key(m_records[i].index));
    }

    /// Marks the places of [begin, end) at which the key differs from the place before, within the run that starts at
    /// `runBegin`.
    void markStarts(int runBegin, int begin, int end)
    {
        for (int i = std::max(begin, runBegin + 1); i < end; ++i)
            m_startsRun[i] = m_records[i].key != m_records[i - 1].key || isNaN(m_records[i].key);
    }

    KeyedIndex* m_records;
    std::uint8_t* m_startsRun;
    std::unique_ptr<KeyedIndex[]> m_scratch;
    const zn::vector<VertexKey>& m_keys;
    ThreadPool& m_pool;
};

} // namespace

VertexOrder sortVertices(int count, const zn::vector<VertexKey>& keys, ThreadPool& pool)
{
    VertexOrder order(count);
    znUtil::parallelFor(pool, count, [&order](Slice slice, int) {
        for (int i = slice.begin; i < slice.end; ++i) order.sorted[static_cast<size_t>(i)].index = i;
        std::fill(order.startsRun.get() + slice.begin, order.startsRun.get() + slice.end, std::uint8_t{0});
    });
    if (count == 0) return order;
    order.startsRun[0] = 1;
    Sorter(order, count, keys, pool).sort({0, count, 0});
    return order;
}

} // namespace znGeom::internal
