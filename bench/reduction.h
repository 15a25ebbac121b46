/// What reducing a mesh is measured by.
#pragma once

#include "bench/generate.h"

#include <benchmark/benchmark.h>

namespace bench {

/// How far two surfaces are from each other, both ways, over their vertices and the middles of their triangles, in
/// parts of the diagonal of the first.
struct Deviation
{
    double largest = 0;
    double rootMeanSquare = 0;
    int numTurned = 0; ///< triangles of the second whose normal points against that at the nearest place of the first
};
Deviation deviation(const Soup& original, const Soup& reduced);

/// Reports how good a reduced mesh is, beside the time.
void countQuality(benchmark::State& state, const Soup& original, const Soup& reduced);

/// The distance that a reduction within a tolerance must keep.
double toleranceFor(const Soup& soup);

} // namespace bench
