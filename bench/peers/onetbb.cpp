// oneTBB runs a small body on its threads, as many iterations as threads.
#include "bench/rendezvous.h"
#include "bench/suite.h"

#include <tbb/blocked_range.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>
#include <tbb/version.h>

#include <string>

namespace {

template <class Partitioner, class Body>
void runOnce(int numThreads, const Body& body)
{
    tbb::parallel_for(tbb::blocked_range<int>(0, numThreads, 1), body, Partitioner());
}

template <class Partitioner>
void runEmpty(benchmark::State& state)
{
    const int numThreads = tbb::this_task_arena::max_concurrency();
    const auto run = [=] {
        runOnce<Partitioner>(numThreads,
                             [](const tbb::blocked_range<int>& range) { benchmark::DoNotOptimize(range.begin()); });
    };
    for (int warming = 0; warming < 1000; ++warming) run();
    bench::timeTinyWork(state, run);
}

void runRendezvous(benchmark::State& state)
{
    const tbb::global_control twoThreads(tbb::global_control::max_allowed_parallelism, 2);
    const auto run = [] {
        bench::Rendezvous rendezvous;
        runOnce<tbb::static_partitioner>(2, [&](const tbb::blocked_range<int>&) { rendezvous.meet(); });
    };
    for (int warming = 0; warming < 100; ++warming) run();
    bench::timeTinyWork(state, run);
}

[[maybe_unused]] const bool listed[] = {
    bench::usesPeer("oneTBB", std::to_string(TBB_VERSION_MAJOR) + "." + std::to_string(TBB_VERSION_MINOR)),
    bench::measureAlone("empty_run", "oneTBB_static", runEmpty<tbb::static_partitioner>),
    bench::measureAlone("empty_run", "oneTBB_simple", runEmpty<tbb::simple_partitioner>),
    bench::measureAlone("rendezvous_run", "oneTBB", runRendezvous),
};

} // namespace
