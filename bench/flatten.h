/// What is measured of flattening.
#pragma once

#include "bench/suite.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/// A disk, made when it is first asked for.
struct DiskInput
{
    std::string name;
    std::function<Soup()> make;
};

/// A height field of a hundred thousand triangles, and the disks of the folder of meshes that are there.
const std::vector<DiskInput>& diskInputs();

/// Reports the stretch of a chart, and the triangles that it turns over or that have no area in it.
/// \param uvs  two per vertex
/// \return whether there are coordinates for all vertices
bool countDistortion(benchmark::State& state, const Soup& soup, const std::vector<float>& uvs);

/// Lists a benchmark that flattens these disks.
/// \tparam Flattening  made from a `Soup` before the clock starts; `run()` does the work, `uvs()` gives the coordinates
template <class Flattening>
bool measureFlatten(const std::string& who)
{
    for (const DiskInput& input : diskInputs()) {
        const auto run = [&input](benchmark::State& state) {
            const Soup soup = input.make();
            Flattening once(soup);
            once.run();
            if (!countDistortion(state, soup, once.uvs())) return state.SkipWithError("it is not flattened");
            std::unique_ptr<Flattening> flattening;
            timeWork(
                state,
                [&] {
                    flattening = std::make_unique<Flattening>(soup);
                    return flattening.get();
                },
                [](Flattening* fresh) { return fresh->run(); });
        };
        measureAlone("flatten", who + "/" + input.name, run, 3);
    }
    return true;
}

} // namespace bench
