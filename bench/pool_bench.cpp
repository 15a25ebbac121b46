// What it costs to hand work to the thread pool.
#include "bench/rendezvous.h"
#include "bench/suite.h"
#include "znGeom/foundation/threads.h"

namespace {

class EmptyAlg : public znUtil::ThreadedAlg
{
public:
    void execute(int threadIndex, int) override { benchmark::DoNotOptimize(threadIndex); }
};

class RendezvousAlg : public znUtil::ThreadedAlg
{
public:
    void execute(int, int) override { rendezvous_.meet(); }

private:
    bench::Rendezvous rendezvous_;
};

template <class Alg>
void measureRuns(benchmark::State& state, znUtil::ThreadPool& pool)
{
    const auto run = [&] {
        Alg alg;
        pool.run(alg);
    };
    for (int warming = 0; warming < 1000; ++warming) run();
    bench::timeTinyWork(state, run);
}

[[maybe_unused]] const bool listed[] = {
    bench::measureAlone("empty_run", "znGeom",
                        [](benchmark::State& state) { measureRuns<EmptyAlg>(state, znUtil::ThreadPool::get()); }),
    bench::measureAlone("rendezvous_run", "znGeom",
                        [](benchmark::State& state) {
                            znUtil::ThreadPool twoThreads(2);
                            measureRuns<RendezvousAlg>(state, twoThreads);
                        }),
};

} // namespace
