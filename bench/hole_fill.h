/// What is measured of filling holes.
#pragma once

#include "bench/suite.h"

#include <functional>
#include <string>

namespace bench {

/// A surface with holes, made when it is first asked for.
struct HolesInput
{
    std::string name;
    std::function<Soup()> make;
};

/// Generated ones, with one large hole and with 700 small ones, and those of the folder of meshes that are there.
const std::vector<HolesInput>& holesInputs();

/// Whether all holes of a surface are closed in another; some of them, where edges have more than two sides.
bool closesHoles(const Soup& before, const Soup& after);

/// Lists a benchmark that fills all holes of these surfaces.
/// \tparam Filling  made from a `Soup` before the clock starts; `run()` does the work, and `result()` gives the surface
template <class Filling>
bool measureHoleFill(const std::string& work, const std::string& who)
{
    for (const HolesInput& input : holesInputs()) {
        const auto run = [&input](benchmark::State& state) {
            const Soup soup = input.make();
            Filling once(soup);
            once.run();
            if (!closesHoles(soup, once.result())) return state.SkipWithError("the result has holes");
            std::unique_ptr<Filling> filling;
            timeWork(
                state,
                [&] {
                    filling = std::make_unique<Filling>(soup);
                    return filling.get();
                },
                [](Filling* fresh) { return fresh->run(); });
        };
        measureAlone(work, who + "/" + input.name, run, 3);
    }
    return true;
}

} // namespace bench
