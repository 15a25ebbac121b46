/// What is measured of packing rectangles into a square.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <vector>

namespace bench {

struct Size
{
    double width, height;
};

/// Rectangles with sides of 0.2 to 1, by descending larger side.
std::vector<Size> randomSizes(int count);

/// Times one try at the largest sizes that a packer finds places for, shrinking from a whole area of 1 by a thousandth
/// of the sides at a time, and reports that area as "density".
///
/// \param prepare  given the sizes, makes ready what the try needs; not timed
/// \param attempt  the try, which may change what `prepare` made; says whether all found a place
void timeTry(benchmark::State& state, int count, const std::function<void(const std::vector<Size>&)>& prepare,
             const std::function<bool()>& attempt);

} // namespace bench
