// meshoptimizer's simplification: collapses by quadrics, to a number of triangles, and within an error of its own.
#include "bench/reduction.h"
#include "bench/suite.h"

#include <meshoptimizer.h>

#include <algorithm>
#include <cfloat>
#include <vector>

namespace {

using bench::Input;
using bench::Soup;

constexpr std::size_t stride = 3 * sizeof(float);

struct Target
{
    std::size_t numIndices = 0;
    float error = FLT_MAX;
};

/// A vertex for two triangles, as on any large closed mesh.
Target toFraction(const Soup& soup, double fraction)
{
    return {static_cast<std::size_t>(static_cast<double>(soup.triangles.size() / 3) * fraction) * 3, FLT_MAX};
}

Target toTolerance(const Soup& soup)
{
    const float extent =
        meshopt_simplifyScale(soup.positions.data(), static_cast<std::size_t>(soup.numVertices()), stride);
    return {0, static_cast<float>(bench::toleranceFor(soup)) / extent};
}

std::vector<unsigned> simplify(const Soup& soup, const std::vector<unsigned>& indices, const Target& target)
{
    std::vector<unsigned> result(indices.size());
    result.resize(meshopt_simplify(result.data(), indices.data(), indices.size(), soup.positions.data(),
                                   static_cast<std::size_t>(soup.numVertices()), stride, target.numIndices,
                                   target.error, 0, nullptr));
    return result;
}

Soup toSoup(const Soup& original, const std::vector<unsigned>& indices)
{
    Soup soup;
    std::vector<int> moved(static_cast<std::size_t>(original.numVertices()), -1);
    for (const unsigned index : indices) {
        if (moved[index] < 0) {
            moved[index] = soup.numVertices();
            soup.positions.insert(soup.positions.end(), original.positions.begin() + 3 * static_cast<long>(index),
                                  original.positions.begin() + 3 * static_cast<long>(index) + 3);
        }
        soup.triangles.push_back(moved[index]);
    }
    return soup;
}

template <class MakeTarget>
bool measureWork(const char* work, MakeTarget makeTarget)
{
    return bench::measure({work, "meshoptimizer", [](const Input&) { return true; },
                           [=](benchmark::State& state, const Input& input) {
                               const Soup& soup = input.soup();
                               const std::vector<unsigned> indices(soup.triangles.begin(), soup.triangles.end());
                               const Target target = makeTarget(soup);
                               std::vector<unsigned> result;
                               bench::timeWork(
                                   state, [&] { return &indices; },
                                   [&](const std::vector<unsigned>* subject) {
                                       result = simplify(soup, *subject, target);
                                       return result.size();
                                   });
                               bench::countQuality(state, soup, toSoup(soup, result));
                           },
                           1, bench::generatedInputs()});
}

[[maybe_unused]] const bool listed[] = {
    measureWork("reduce_half", [](const Soup& soup) { return toFraction(soup, 0.5); }),
    measureWork("reduce_tenth", [](const Soup& soup) { return toFraction(soup, 0.1); }),
    measureWork("reduce_tolerance", toTolerance),
};

} // namespace
