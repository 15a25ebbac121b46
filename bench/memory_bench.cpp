// What the memory alone costs: the input of a pass read once and as many bytes as its output written once.
#include "bench/suite.h"

#include <algorithm>
#include <memory>
#include <numeric>

namespace {

using bench::Input;

struct Written
{
    std::unique_ptr<int[]> starts;
    std::unique_ptr<int[]> elements;
};

/// The traffic of the triangles around vertices: corners in; one start per vertex and one element per corner out,
/// into fresh memory as a result is.
Written streamAdjTris(const bench::Soup& soup)
{
    const int sum = std::accumulate(soup.triangles.begin(), soup.triangles.end(), 0,
                                    [](int total, int vertex) { return total ^ vertex; });
    const auto numVertices = static_cast<std::size_t>(soup.numVertices());
    Written written{std::make_unique_for_overwrite<int[]>(numVertices),
                    std::make_unique_for_overwrite<int[]>(soup.triangles.size())};
    std::fill_n(written.starts.get(), numVertices, sum);
    std::fill_n(written.elements.get(), soup.triangles.size(), sum);
    return written;
}

void runAdjTris(benchmark::State& state, const Input& input)
{
    bench::timeWork(
        state, [&] { return &input.soup(); }, [](const bench::Soup* soup) { return streamAdjTris(*soup); });
}

[[maybe_unused]] const bool listed =
    bench::measure({"adj_tris", "memory", [](const Input&) { return true; }, runAdjTris});

} // namespace
