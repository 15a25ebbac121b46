#include "znGeom/spatial/trees/octree_partition.h"

#include <type_traits>

#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/machine/huge_pages.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/counting_sort.h"
#include "znGeom/spatial/trees/internal/partition_alg.h"
#include "znGeom/spatial/trees/internal/partition_elements.h"
#include "znGeom/spatial/trees/internal/partition_on_pool.h"

namespace znGeom {

using znUtil::ThreadPool;

namespace {

/// What `assignFromPairs` would produce from the entries of all threads, one after the other.
/// \param pool  on which `alg` ran
template <typename Elements>
ArrayOfSets makeTable(int numLeaves, const internal::PartitionAlg<Elements>& alg, ThreadPool& pool)
{
    ArrayOfSets table(numLeaves, zn::checkedSize(alg.numEntries()));
    int* const elements = table.elements.write();
    znUtil::adviseHugePages(elements, sizeof(int) * static_cast<size_t>(table.elements.size()));
    const auto visit = [&alg](int thread, const auto& take) {
        alg.forEachEntry(thread, [&take](const internal::LeafEntry& entry) { take(entry.leafIndex, entry.element); });
    };
    znUtil::CountingSort sort(pool, numLeaves);
    sort.count(visit, table.start.write());
    sort.place(visit, [elements](int place, int element) { elements[place] = element; });
    return table;
}

template <typename Elements>
void partition(const CompactMesh& mesh, const Octree& octree, typename Elements::Table& result, ThreadPool& pool)
{
    znOS::StopWatch watch;
    if (octree.numLeaves() < 1) return;
    const Elements elements(mesh);
    internal::PartitionAlg<Elements> alg(octree, elements);
    pool.run(alg);
    ArrayOfSets sets = makeTable(octree.numLeaves(), alg, pool);
    const int numPairs = sets.elements.size();
    typename Elements::Table table(sets);
    result.swap(table);

    const float count = static_cast<float>(elements.count);
    const double seconds = watch.stop();
    debugChannel().print(Elements::message, elements.count, octree.numLeaves(), seconds,
                         static_cast<double>(static_cast<float>(alg.coherentCount()) / count),
                         static_cast<double>(static_cast<float>(numPairs) / count), elements.count / seconds);
}

} // namespace

void internal::computeOctreeTris(const CompactMesh& mesh, const Octree& octree, OctreeTris& result, ThreadPool& pool)
{
    partition<internal::TriangleElements>(mesh, octree, result, pool);
}

void computeOctreeTris(const CompactMesh& mesh, const Octree& octree, OctreeTris& result)
{
    internal::computeOctreeTris(mesh, octree, result, ThreadPool::get());
}

void internal::meshOctreeLines(const CompactMesh& mesh, const Octree& octree, OctreeLines& result, ThreadPool& pool)
{
    partition<internal::LineElements>(mesh, octree, result, pool);
}

void meshOctreeLines(const CompactMesh& mesh, const Octree& octree, OctreeLines& result)
{
    internal::meshOctreeLines(mesh, octree, result, ThreadPool::get());
}

} // namespace znGeom
