/// What is measured of sewing boundaries together.
#pragma once

#include "bench/suite.h"

#include <memory>
#include <string>

namespace bench {

/// Two waved sheets of half a million triangles, side by side with one border each in the same place.
/// \param isEqual  whether both have the same vertices there; otherwise one has 500 edges and the other 347
Soup twoSheets(bool isEqual);

/// Whether all triangles of a surface are connected, and its vertices are those of one sheet.
bool isOneSheet(const Soup& soup);

/// Lists a benchmark that sews two sheets together.
/// \tparam Stitching  made from a `Soup` before the clock starts; `run()` does the work, and `result()` gives the
/// surface
template <class Stitching>
bool measureStitch(const std::string& work, const std::string& who, bool isEqual)
{
    const auto run = [isEqual](benchmark::State& state) {
        const Soup soup = twoSheets(isEqual);
        Stitching once(soup);
        once.run();
        if (!isOneSheet(once.result())) return state.SkipWithError("the result is not one sheet");
        std::unique_ptr<Stitching> stitching;
        timeWork(
            state,
            [&] {
                stitching = std::make_unique<Stitching>(soup);
                return stitching.get();
            },
            [](Stitching* fresh) { return fresh->run(); });
    };
    return measureAlone(work, who, run, 3);
}

} // namespace bench
