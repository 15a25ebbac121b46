/// What is measured of offset shells: which of the moved vertices lie nearer to the mesh than the distance.
#pragma once

#include "bench/suite.h"

#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/// A mesh and a distance, with the vertices moved by it.
struct OffsetInput
{
    std::string name; ///< of the mesh, and the distance as a percentage of the diagonal
    std::function<Soup()> make;
    double part; ///< of the diagonal; positive is inward

    double distance(const Soup& soup) const
    {
        const Box box = boxOf(soup);
        double length2 = 0;
        for (int axis = 0; axis < 3; ++axis) length2 += std::pow(double(box.high[axis] - box.low[axis]), 2);
        return part * std::sqrt(length2);
    }
};

/// The bunny and the armadillo at half a percent and at two, where their files are.
const std::vector<OffsetInput>& offsetInputs();

/// The vertices of a surface moved by a distance, three numbers each.
std::vector<double> movedVertices(const Soup& soup, double distance);
/// How many of them are nearer than that, as the library finds it.
int countTooClose(const Soup& soup, const std::vector<double>& points, double distance);

/// Lists the workload, on one thread, with the index made before.
/// \tparam Index  made from a `Soup`; `int countNearer(const std::vector<double>& points, double distance)`
template <class Index>
bool measureOffsetNearness(const std::string& who)
{
    for (const OffsetInput& input : offsetInputs()) {
        const auto run = [&input](benchmark::State& state) {
            const Soup soup = input.make();
            const double distance = input.distance(soup);
            const std::vector<double> points = movedVertices(soup, distance);
            Index index(soup);
            const int expected = countTooClose(soup, points, distance);
            if (std::abs(index.countNearer(points, distance) - expected) > 2 + expected / 100)
                return state.SkipWithError("other vertices are too close");
            timeWork(
                state, [&] { return &points; },
                [&](const std::vector<double>* queries) { return index.countNearer(*queries, distance); });
        };
        measureAlone("offset_nearness", who + "/" + input.name, run, 5);
    }
    return true;
}

} // namespace bench
