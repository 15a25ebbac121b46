/// Nearest points by one library or another: the same queries, split over threads in the same way.
#pragma once

#include "bench/suite.h"

#include <cstddef>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace bench {

constexpr int numQueries = 100'000;

/// Whether distances are those of brute force, for a few of the points; as far as the precision of `float` allows.
bool closestAgrees(const Input& input, Spread spread, const std::vector<double>& distances);

/// The points whose distances `closestAgrees` receives.
std::vector<float> checkedPoints(const Input& input, Spread spread);

/// The distances of all points, three floats each; an equal share on each thread.
template <class Index>
std::vector<double> closestDistances(const Index& index, const std::vector<float>& points, int numThreads)
{
    const std::size_t count = points.size() / 3;
    std::vector<double> distances(count);
    std::vector<std::thread> threads;
    for (int thread = numThreads - 1; thread >= 0; --thread) {
        const auto part = static_cast<std::size_t>(thread), parts = static_cast<std::size_t>(numThreads);
        const std::size_t begin = count * part / parts, end = count * (part + 1) / parts;
        const auto work = [&index, &points, &distances, begin, end] {
            index.distances(points.data() + 3 * begin, end - begin, distances.data() + begin);
        };
        if (thread > 0)
            threads.emplace_back(work);
        else
            work();
    }
    for (std::thread& thread : threads) thread.join();
    return distances;
}

/// What a program does that needs an index for one purpose: makes it, on as many threads as it likes, and queries it.
template <class Index>
bool measureMadeAndAsked(const std::string& who, const std::string& work, int count)
{
    const auto ask = [=](const Soup& soup, const std::vector<float>& points) {
        auto index = std::make_unique<Index>(soup);
        auto distances = closestDistances(*index, points, 1);
        return std::pair(std::move(index), std::move(distances));
    };
    return measure({work,
                    who,
                    [=](const Input& input) {
                        return closestAgrees(input, Spread::near,
                                             ask(input.soup(), checkedPoints(input, Spread::near)).second);
                    },
                    [=](benchmark::State& state, const Input& input) {
                        const std::vector<float> points = queryPoints(input.soup(), Spread::near, count);
                        std::size_t bytes = 0;
                        timeWork(
                            state, [&] { return &points; },
                            [&](const std::vector<float>* subject) {
                                auto result = ask(input.soup(), *subject);
                                bytes = result.first->bytes();
                                return result;
                            });
                        countBytesPerTriangle(state, bytes, input.soup().triangles.size() / 3);
                    },
                    2,
                    {"torus_small", "torus", "torus_shuffled"}});
}

/// Lists the workloads: points near the surface and spread out, on one thread and on two, and an index made for one
/// point or for many.
///
/// \tparam Index      is made from a `Soup`; has `void distances(const float* points, std::size_t count, double*
///                    distances) const`, for any number of threads at once, and `std::size_t bytes() const`, the memory
///                    that it takes besides the mesh
/// \tparam OnceIndex  the same for a single point
///
/// These take seconds: hence two repetitions of each, and two threads on a few meshes only.
template <class Index, class OnceIndex = Index>
bool measureClosest(const std::string& who)
{
    measureMadeAndAsked<Index>(who, "closest_made_and_asked", numQueries);
    measureMadeAndAsked<OnceIndex>(who, "closest_made_and_asked_once", 1);
    const auto list = [&](std::string work, Spread spread, int numThreads, std::vector<std::string> onInputs) {
        measure(
            {std::move(work), who,
             [=](const Input& input) {
                 const std::vector<float> points = checkedPoints(input, spread);
                 return closestAgrees(input, spread, closestDistances(madeOnce<Index>(input), points, numThreads));
             },
             [=](benchmark::State& state, const Input& input) {
                 const Index& index = madeOnce<Index>(input);
                 const std::vector<float> points = queryPoints(input.soup(), spread, numQueries);
                 timeWork(
                     state, [&] { return &points; },
                     [&](const std::vector<float>* subject) { return closestDistances(index, *subject, numThreads); });
             },
             2, std::move(onInputs)});
    };
    const std::vector<std::string> many{"bunny", "torus_small", "torus", "torus_shuffled"}, few{"torus_small", "torus"};
    list("closest_near", Spread::near, 1, many);
    list("closest_wide", Spread::wide, 1, many);
    list("closest_near_two_threads", Spread::near, 2, few);
    list("closest_wide_two_threads", Spread::wide, 2, few);
    return true;
}

} // namespace bench
