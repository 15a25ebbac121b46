// Sorting the vertices of a blown-up mesh by position: two halves on two threads, against one sort on one thread.
#include "bench/suite.h"
#include "znGeom/foundation/threads.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

namespace {

using bench::Input;

/// By x, then y, then z.
struct PositionLess
{
    const float* positions;

    bool operator()(int a, int b) const
    {
        const float* first = positions + 3 * static_cast<std::ptrdiff_t>(a);
        const float* second = positions + 3 * static_cast<std::ptrdiff_t>(b);
        for (int axis = 0; axis < 3; ++axis) {
            if (second[axis] > first[axis]) return true;
            if (first[axis] > second[axis]) return false;
        }
        return false;
    }
};

using Sort = void (*)(std::vector<int>&, PositionLess);

void sortTwoHalves(std::vector<int>& order, PositionLess less)
{
    static znUtil::ThreadPool twoThreads(2);
    int* const begin = order.data();
    int* const end = begin + order.size();
    znUtil::SMPSortPiecewise<int, PositionLess> halves(begin, end, less);
    twoThreads.run(halves);
    const auto scratch = std::make_unique_for_overwrite<int[]>(order.size());
    znUtil::SMPSortMerge<int, PositionLess> merge(begin, end, scratch.get(), less);
    twoThreads.run(merge);
}

void sortPlain(std::vector<int>& order, PositionLess less)
{
    znUtil::boundedSort(order.data(), order.data() + order.size(), less);
}

void sortStandard(std::vector<int>& order, PositionLess less) { std::sort(order.begin(), order.end(), less); }

std::vector<int> unsorted(const Input& input)
{
    std::vector<int> order(static_cast<std::size_t>(input.blownUp().numVertices()));
    std::iota(order.begin(), order.end(), 0);
    return order;
}

bool sortingAgrees(const Input& input, Sort sort)
{
    const PositionLess less{input.blownUp().positions.data()};
    std::vector<int> order = unsorted(input);
    sort(order, less);
    if (!std::is_sorted(order.begin(), order.end(), less)) return false;
    std::sort(order.begin(), order.end());
    return order == unsorted(input);
}

bool measureSort(const char* who, Sort sort)
{
    return bench::measure({"sort", who, [=](const Input& input) { return sortingAgrees(input, sort); },
                           [=](benchmark::State& state, const Input& input) {
                               const PositionLess less{input.blownUp().positions.data()};
                               std::vector<int> order;
                               bench::timeWork(
                                   state,
                                   [&] {
                                       order = unsorted(input);
                                       return &order;
                                   },
                                   [=](std::vector<int>* subject) {
                                       sort(*subject, less);
                                       return subject->data();
                                   });
                           }});
}

[[maybe_unused]] const bool listed[] = {
    measureSort("znGeom", sortTwoHalves),
    measureSort("plain", sortPlain),
    measureSort("std_sort", sortStandard),
};

} // namespace
