/// Casts by one library or another: the same rays, split over threads in the same way.
#pragma once

#include "bench/suite.h"

#include <cstddef>
#include <functional>
#include <thread>
#include <vector>

namespace bench {

/// Rays from points spread about the mesh to points near its surface, and beyond: six numbers each.
struct Casts
{
    std::vector<float> from, to;

    std::size_t count() const { return from.size() / 3; }
};
Casts makeCasts(const Input& input, int count);

/// Whether the answers to the first of some casts are those of tests of all triangles, but for a few at sides of
/// triangles.
/// \param params  where on the way from one point to the other the nearest hit is; below 0 for a miss
bool castsAgree(const Input& input, const Casts& casts, const std::vector<double>& params, bool nearest);

/// Calls `work(begin, end)` with an equal share of a number of things on each thread.
void shareOut(std::size_t count, int numThreads, const std::function<void(std::size_t, std::size_t)>& work);

/// The answers to all casts: the parameter of the nearest hit, or 0 for any; -1 for a miss.
template <class Index>
std::vector<double> castAll(const Index& index, const Casts& casts, bool nearest, int numThreads)
{
    std::vector<double> params(casts.count());
    shareOut(casts.count(), numThreads, [&](std::size_t begin, std::size_t end) {
        index.cast(&casts.from[3 * begin], &casts.to[3 * begin], end - begin, nearest, &params[begin]);
    });
    return params;
}

/// Lists the workloads: the nearest hit and any, on one thread and on two.
///
/// \tparam Index  is made from a `Soup`; has `void cast(const float* from, const float* to, std::size_t count, bool
///                nearest, double* params) const`, for any number of threads at once
template <class Index>
bool measureCasts(const std::string& who)
{
    constexpr int numCasts = 100'000, numChecked = 60;
    const auto list = [&](const char* work, bool nearest, int numThreads) {
        measure({work,
                 who,
                 [=](const Input& input) {
                     const Casts casts = makeCasts(input, numChecked);
                     const auto params = castAll(madeOnce<Index>(input), casts, nearest, numThreads);
                     return castsAgree(input, casts, params, nearest);
                 },
                 [=](benchmark::State& state, const Input& input) {
                     const Index& index = madeOnce<Index>(input);
                     const Casts casts = makeCasts(input, numCasts);
                     timeWork(
                         state, [&] { return &casts; },
                         [&](const Casts* subject) { return castAll(index, *subject, nearest, numThreads); });
                 },
                 4,
                 {"torus_small", "torus", "torus_shuffled"}});
    };
    list("cast_nearest", true, 1);
    list("cast_any", false, 1);
    list("cast_nearest_two_threads", true, 2);
    list("cast_any_two_threads", false, 2);
    return true;
}

} // namespace bench
