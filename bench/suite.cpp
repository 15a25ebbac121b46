#include "bench/suite.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace bench {
namespace {

struct Alone
{
    std::string name;
    std::function<void(benchmark::State&)> run;
    int turns;
    int mostRepetitions;
};

/// Built on first use: source files list their benchmarks in no fixed order.
std::vector<Benchmark>& listed()
{
    static std::vector<Benchmark> list;
    return list;
}

std::vector<Alone>& listedAlone()
{
    static std::vector<Alone> list;
    return list;
}

benchmark::internal::Benchmark* enlist(const std::string& name, std::function<void(benchmark::State&)> run)
{
    return benchmark::RegisterBenchmark(name.c_str(), std::move(run))->UseManualTime()->Unit(benchmark::kMillisecond);
}

void enlist(const Benchmark& listedBenchmark, const Input& input, int repetitions)
{
    auto verdict = std::make_shared<std::optional<bool>>();
    benchmark::internal::Benchmark* entry =
        enlist(listedBenchmark.work + "/" + listedBenchmark.who + "/" + input.name(),
               [&listedBenchmark, &input, verdict](benchmark::State& state) {
                   if (!verdict->has_value()) *verdict = listedBenchmark.agrees(input);
                   if (verdict->value())
                       listedBenchmark.run(state, input);
                   else
                       state.SkipWithError("the result differs from what it must be");
               });
    const int most = listedBenchmark.mostRepetitions;
    if (most > 0 && most < repetitions) entry->Repetitions(most);
}

/// A fixed number of iterations: each is a batch, and one chosen on a quiet machine takes minutes on a busy one.
void enlist(const Alone& alone, int repetitions)
{
    benchmark::internal::Benchmark* entry = enlist(alone.name, alone.run)->Iterations(alone.turns);
    if (alone.mostRepetitions > 0 && alone.mostRepetitions < repetitions) entry->Repetitions(alone.mostRepetitions);
}

bool runsOn(const Benchmark& benchmark, const Input& input)
{
    const std::vector<std::string>& names = benchmark.onInputs;
    return names.empty() || std::find(names.begin(), names.end(), input.name()) != names.end();
}

/// What `--benchmark_repetitions=...` asks for; the argument stays for Google Benchmark.
int repetitionsAskedFor(int argc, char** argv)
{
    constexpr char option[] = "--benchmark_repetitions=";
    constexpr std::size_t length = sizeof(option) - 1;
    int repetitions = 1;
    for (int i = 0; i < argc; ++i)
        if (std::strncmp(argv[i], option, length) == 0) repetitions = std::atoi(argv[i] + length);
    return repetitions;
}

bool reuseMemory = false;

/// Keeps every page that was ever touched: after the first iteration no benchmark waits for new ones.
void keepMemory()
{
    reuseMemory = true;
#ifdef __GLIBC__
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, 0x7fffffff);
    mallopt(M_TOP_PAD, 64 << 20);
#endif
}

/// Takes `--memory=...` out of the arguments, of which the rest are Google Benchmark's; false if its value is unknown.
bool takeMemoryOption(int& argc, char** argv)
{
    int kept = 0;
    bool known = true;
    for (int i = 0; i < argc; ++i) {
        if (std::strncmp(argv[i], "--memory=", 9) != 0)
            argv[kept++] = argv[i];
        else if (std::strcmp(argv[i], "--memory=reused") == 0)
            keepMemory();
        else if (std::strcmp(argv[i], "--memory=fresh") != 0)
            known = false;
    }
    argc = kept;
    return known;
}

} // namespace

void releaseFreeMemory()
{
#ifdef __GLIBC__
    if (!reuseMemory) malloc_trim(0);
#endif
}

std::size_t heapInUse()
{
#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 33)
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#else
    return 0;
#endif
}

void countBytesPerHalfedge(benchmark::State& state, std::size_t bytes, std::size_t halfedges)
{
    state.counters["bytes_per_halfedge"] = static_cast<double>(bytes) / static_cast<double>(halfedges);
}

void countBytesPerTriangle(benchmark::State& state, std::size_t bytes, std::size_t triangles)
{
    state.counters["bytes_per_triangle"] = static_cast<double>(bytes) / static_cast<double>(triangles);
}

bool measure(Benchmark benchmark)
{
    listed().push_back(std::move(benchmark));
    return true;
}

bool measureAlone(const std::string& work, const std::string& who, std::function<void(benchmark::State&)> run,
                  int turns, int mostRepetitions)
{
    listedAlone().push_back({work + "/" + who, std::move(run), turns, mostRepetitions});
    return true;
}

bool usesPeer(const std::string& name, const std::string& version)
{
    benchmark::AddCustomContext("peer " + name, version);
    return true;
}

} // namespace bench

int main(int argc, char** argv)
{
    if (!bench::takeMemoryOption(argc, argv)) {
        std::fprintf(stderr, "--memory is fresh or reused\n");
        return 1;
    }
    const int repetitions = bench::repetitionsAskedFor(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
#ifdef __clang__
    benchmark::AddCustomContext("compiler", "Clang " __clang_version__);
#elif defined(__GNUC__)
    benchmark::AddCustomContext("compiler", "GCC " __VERSION__);
#endif
    benchmark::AddCustomContext("memory", bench::reuseMemory ? "reused" : "fresh");
    for (const bench::Benchmark& benchmark : bench::listed())
        for (const bench::Input& input : bench::inputs())
            if (bench::runsOn(benchmark, input)) bench::enlist(benchmark, input, repetitions);
    for (const bench::Alone& alone : bench::listedAlone()) bench::enlist(alone, repetitions);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
