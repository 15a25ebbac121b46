/// What is measured of subdivision.
#pragma once

#include "bench/suite.h"

#include <string>
#include <vector>

namespace bench {

/// A closed mesh of quads.
struct Quads
{
    std::vector<double> positions; ///< three per vertex
    std::vector<int> corners;      ///< four per quad
};

/// A bumpy torus of 250 thousand.
const Quads& quarterMillionQuads();

/// Whether a mesh has as many vertices as one step of Catmull-Clark makes of these quads, each where the rules put it.
/// \param positions  three per vertex, in any order
bool areSubdivided(const Quads& quads, const std::vector<double>& positions);

/// Lists a benchmark of one step.
/// \tparam Subdividing  made from `Quads` before the clock starts; `run()` does the work, `positions()` gives the
/// result
template <class Subdividing>
bool measureSubdivision(const std::string& who)
{
    const auto run = [](benchmark::State& state) {
        const Quads& quads = quarterMillionQuads();
        auto subject = std::make_unique<Subdividing>(quads);
        subject->run();
        if (!areSubdivided(quads, subject->positions())) return state.SkipWithError("the result is another");
        timeWork(
            state,
            [&] {
                subject.reset(); // the memory is free when the next one is made
                subject = std::make_unique<Subdividing>(quads);
                return subject.get();
            },
            [](Subdividing* fresh) { return fresh->run(); });
    };
    return measureAlone("subdivide", who + "/torus_of_quads", run, 10);
}

} // namespace bench
