/// The ray primitive by one library or another: some rays against every triangle, without an index.
#pragma once

#include "bench/suite.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace bench {

constexpr int numRays = 100;

/// Lists the work: rays from points spread about the mesh to points near its surface, and beyond.
///
/// \tparam Triangles  is made from a `Soup`; has `std::size_t countHits(const float* from, const float* to) const`, the
///                    triangles that the ray meets
template <class Triangles>
bool measureRays(const std::string& who)
{
    const auto hits = [](const Input& input, const std::vector<float>& from, const std::vector<float>& to) {
        const Triangles& triangles = madeOnce<Triangles>(input);
        std::size_t sum = 0;
        for (std::size_t i = 0; i < from.size(); i += 3) sum += triangles.countHits(&from[i], &to[i]);
        return sum;
    };
    const auto points = [](const Input& input, Spread spread) { return queryPoints(input.soup(), spread, numRays); };
    return measure({"ray_triangles",
                    who,
                    [=](const Input& input) {
                        // A ray that starts outside a closed surface meets it an even number of times; few of the
                        // hundred pass so close to a side that rounding decides.
                        const std::vector<float> from = points(input, Spread::wide), to = points(input, Spread::near);
                        std::size_t odd = 0;
                        for (std::size_t i = 0; i < from.size(); i += 3)
                            odd += madeOnce<Triangles>(input).countHits(&from[i], &to[i]) % 2;
                        return odd < from.size() / 3 / 4 && hits(input, from, to) > from.size() / 3;
                    },
                    [=](benchmark::State& state, const Input& input) {
                        const auto subject = std::make_pair(points(input, Spread::wide), points(input, Spread::near));
                        timeWork(
                            state, [&] { return &subject; },
                            [&](const auto* rays) { return hits(input, rays->first, rays->second); });
                    },
                    2,
                    {"torus_small"}});
}

} // namespace bench
