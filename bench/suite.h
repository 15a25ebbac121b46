/// How a benchmark is listed, checked and timed.
///
/// Names read work/who/mesh, for example "weld/znGeom/torus"; `scripts/bench` sets those with the same work and mesh
/// against one another. Each source file lists its own benchmarks at start-up, so that a peer is in the run exactly
/// when its file was built.
#pragma once

#include "bench/inputs.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Benchmark
{
    std::string work;
    std::string who;
    /// Does the work once, before any timing, and says whether the result is right; a wrong one isn't timed.
    std::function<bool(const Input&)> agrees;
    std::function<void(benchmark::State&, const Input&)> run;
    /// At most this many repetitions, for work that takes seconds; 0 for as many as the run is asked for.
    int mostRepetitions = 0;
    /// The names of the inputs to run on; empty for all.
    std::vector<std::string> onInputs = {};
};

/// Lists a benchmark to run on its inputs; the result is meaningless and only lets a namespace-scope constant call it.
bool measure(Benchmark benchmark);

/// Lists a benchmark that needs no mesh, of a fixed number of turns: of tiny work, timed with `timeTinyWork`, many.
/// Repetitions as in `Benchmark`.
bool measureAlone(const std::string& work, const std::string& who, std::function<void(benchmark::State&)> run,
                  int turns = 200, int mostRepetitions = 0);

/// Names a peer and its version in the output.
bool usesPeer(const std::string& name, const std::string& version);

/// Hands the allocator's free pages back, so that results are written to fresh memory as in the first call of a
/// program; without this the order of the benchmarks decides. Does nothing under `--memory=reused`.
void releaseFreeMemory();

/// The bytes that are allocated now, what the allocator adds to each block included; 0 where it doesn't report them.
std::size_t heapInUse();

/// Reports what a half-edge mesh takes: bytes per half-edge, including the vertices and faces that go with it.
void countBytesPerHalfedge(benchmark::State& state, std::size_t bytes, std::size_t halfedges);

/// Reports what an index over triangles takes.
void countBytesPerTriangle(benchmark::State& state, std::size_t bytes, std::size_t triangles);

/// Times `work(prepare())` alone: what `prepare` costs, and what destroying the result costs, is left out.
template <class Prepare, class Work>
void timeWork(benchmark::State& state, Prepare&& prepare, Work&& work)
{
    using Clock = std::chrono::steady_clock;
    for ([[maybe_unused]] auto _ : state) {
        auto subject = prepare();
        releaseFreeMemory();
        const Clock::time_point start = Clock::now();
        auto result = work(subject);
        benchmark::DoNotOptimize(result);
        benchmark::ClobberMemory();
        const Clock::time_point stop = Clock::now();
        state.SetIterationTime(std::chrono::duration<double>(stop - start).count());
    }
}

/// Times `build(soup)` of a half-edge mesh, and reports what the mesh takes.
template <class Build>
void timeHalfedgeBuild(benchmark::State& state, const Input& input, Build&& build)
{
    std::size_t before = 0, built = 0;
    timeWork(
        state,
        [&] {
            before = heapInUse();
            return &input.soup();
        },
        [&](const Soup* soup) {
            auto mesh = build(*soup);
            built = heapInUse();
            return mesh;
        });
    countBytesPerHalfedge(state, built - before, input.soup().triangles.size());
}

/// Times work of less than a microsecond: `work` runs `batch` times between two looks at the clock.
template <class Work>
void timeTinyWork(benchmark::State& state, Work&& work)
{
    using Clock = std::chrono::steady_clock;
    constexpr int batch = 64;
    for ([[maybe_unused]] auto _ : state) {
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < batch; ++i) work();
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count() / batch);
    }
}

} // namespace bench
