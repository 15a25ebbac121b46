/// Segments in no order, to be joined into lines.
#pragma once

#include <array>
#include <vector>

namespace bench {

struct LooseSegment
{
    std::array<float, 3> start, end;
};

/// The segments of a thousand lines that wander through a cube, a thousand segments of length 1 each, in random order
/// and of random direction. Neighbours share the digits of their joint.
std::vector<LooseSegment> looseSegments();

constexpr float joiningTolerance = 1e-4f;

} // namespace bench
