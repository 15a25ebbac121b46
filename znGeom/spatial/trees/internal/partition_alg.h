/// Finds the leaves of an octree that the elements of a mesh touch, on all threads.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/spatial/trees/internal/leaf_entries.h"
#include "znGeom/spatial/trees/internal/leaf_search.h"

namespace znGeom::internal {

/// Walks the elements in order and keeps the leaf at which the last search ended.
template <typename Elements>
class Partitioner
{
public:
    Partitioner(const Octree& octree, const Elements& elements, const Cell& lastLeaf = Cell())
        : m_search(octree), m_elements(elements), m_lastLeaf(lastLeaf)
    {}

    /// What follows depends on this and on nothing else that came before.
    const Cell& lastLeaf() const { return m_lastLeaf; }

    /// \param record  called with each entry
    /// \return whether the element was placed without a search
    template <typename Record>
    bool place(int element, const Record& record)
    {
        const typename Elements::Element placed = m_elements[element];
        const WideBox box = placed.box();
        if (m_lastLeaf.node && m_lastLeaf.box.contains(box)) {
            record(LeafEntry{m_lastLeaf.node->leafIndex, element});
            return true;
        }
        m_search.forEachLeaf(box, [&](const Cell& leaf) {
            m_lastLeaf = leaf;
            if (placed.touches(leaf.box)) record(LeafEntry{leaf.node->leafIndex, element});
        });
        return false;
    }

    /// Sets the last leaf to what it is after all elements before `element`, so that a slice begins as if one thread
    /// had done everything: steps back to an element that ends at the same leaf whatever came before it, usually a few
    /// steps, and goes forward from there. Where many in a row lie on the faces of cells, it gives up and sets the leaf
    /// that is likely to be the last one.
    void continueAt(int element)
    {
        const int farthest = std::max(element - mostStepsBack, 0);
        int from = element;
        while (from > farthest && !endsAtKnownLeaf(from - 1)) --from;
        for (; from < element; ++from) place(from, [](const LeafEntry&) {});
    }

private:
    static constexpr int mostStepsBack = 64;

    /// Whether the element determines the last leaf: it meets a single one, or lies wholly within none.
    bool endsAtKnownLeaf(int element)
    {
        const WideBox box = m_elements[element].box();
        int numMet = 0;
        bool withinOne = false;
        Cell last;
        m_search.forEachLeaf(box, [&](const Cell& leaf) {
            ++numMet;
            withinOne = withinOne || leaf.box.contains(box);
            last = leaf;
        });
        if (numMet == 0 || (numMet > 1 && withinOne)) return false;
        m_lastLeaf = last;
        return true;
    }

    LeafSearch m_search;
    const Elements& m_elements;
    Cell m_lastLeaf;
};

/// Finds the entries of each thread's slice.
template <typename Elements>
class PartitionAlg : public znUtil::ThreadedAlg
{
public:
    /// \param elements  must outlive this
    PartitionAlg(const Octree& octree, const Elements& elements) : m_octree(octree), m_elements(elements) {}

    void initialize(int numThreads) override { m_workers = std::vector<Worker>(static_cast<size_t>(numThreads)); }

    void execute(int threadIndex, int numThreads) override
    {
        const znUtil::Slice slice(m_elements.count, threadIndex, numThreads);
        if (slice.size() == 0) return;
        Partitioner<Elements> partitioner(m_octree, m_elements);
        partitioner.continueAt(slice.begin);
        Worker worker;
        worker.begin = partitioner.lastLeaf();
        worker.found.reserve(2 * static_cast<size_t>(slice.size()));
        for (int element = slice.begin; element < slice.end; ++element)
            worker.coherentCount +=
                partitioner.place(element, [&worker](const LeafEntry& entry) { worker.found.append(entry); });
        worker.end = partitioner.lastLeaf();
        m_workers[static_cast<size_t>(threadIndex)] = std::move(worker);
    }

    /// What a slice began with must be what the slice before it ended with.
    void finalize() override
    {
        const int numThreads = static_cast<int>(m_workers.size());
        Cell last;
        for (int thread = 0; thread < numThreads; ++thread) {
            const znUtil::Slice slice(m_elements.count, thread, numThreads);
            if (slice.size() == 0) continue;
            Worker& worker = m_workers[static_cast<size_t>(thread)];
            if (worker.begin.node != last.node) replaceBeginning(worker, slice, last);
            last = worker.end;
        }
    }

    /// Elements that were placed without a search.
    int coherentCount() const
    {
        int count = 0;
        for (const Worker& worker : m_workers) count += worker.coherentCount;
        return count;
    }
    std::int64_t numEntries() const
    {
        std::int64_t count = 0;
        for (const Worker& worker : m_workers)
            count += static_cast<std::int64_t>(worker.replaced.size() + worker.found.size() - worker.numOutdated);
        return count;
    }
    /// The entries that a thread found, element by element.
    template <typename Visit>
    void forEachEntry(int thread, const Visit& visit) const
    {
        const Worker& worker = m_workers[static_cast<size_t>(thread)];
        worker.replaced.forEach(0, visit);
        worker.found.forEach(worker.numOutdated, visit);
    }

private:
    struct Worker
    {
        LeafEntries found;
        Cell begin, end; ///< the last leaf before and after the slice
        int coherentCount = 0;
        size_t numOutdated = 0; ///< how many entries at the beginning no longer count
        LeafEntries replaced;   ///< what counts in their place
    };

    /// Goes through a slice once more, starting from another last leaf, until that no longer makes a difference.
    void replaceBeginning(Worker& worker, znUtil::Slice slice, const Cell& last)
    {
        Partitioner<Elements> outdated(m_octree, m_elements, worker.begin), actual(m_octree, m_elements, last);
        int element = slice.begin;
        for (; element < slice.end && outdated.lastLeaf().node != actual.lastLeaf().node; ++element) {
            worker.coherentCount -= outdated.place(element, [&worker](const LeafEntry&) { ++worker.numOutdated; });
            worker.coherentCount +=
                actual.place(element, [&worker](const LeafEntry& entry) { worker.replaced.append(entry); });
        }
        if (element == slice.end) worker.end = actual.lastLeaf();
    }

    const Octree& m_octree;
    const Elements& m_elements;
    std::vector<Worker> m_workers;
};

} // namespace znGeom::internal
