// Joining a million segments that come in no order.
#include "bench/merge.h"
#include "bench/suite.h"
#include "znGeom/planar/polylines/merge_segments.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <deque>
#include <random>
#include <utility>

namespace bench {

std::vector<LooseSegment> looseSegments()
{
    constexpr int numLines = 1000, segmentsPerLine = 1000;
    std::mt19937 random(1);
    const auto real = [&random](double limit) { return limit * (2 * static_cast<double>(random()) * 0x1p-32 - 1); };
    std::vector<LooseSegment> segments;
    for (int line = 0; line < numLines; ++line) {
        double at[3] = {real(100), real(100), real(100)}, heading[3] = {real(1), real(1), real(1)};
        for (int i = 0; i < segmentsPerLine; ++i) {
            LooseSegment segment;
            for (std::size_t axis = 0; axis < 3; ++axis) heading[axis] += real(0.3);
            const double length =
                std::sqrt(heading[0] * heading[0] + heading[1] * heading[1] + heading[2] * heading[2]);
            for (std::size_t axis = 0; axis < 3; ++axis) {
                segment.start[axis] = static_cast<float>(at[axis]);
                heading[axis] /= length;
                at[axis] += heading[axis];
                if (std::fabs(at[axis]) > 100) heading[axis] = -heading[axis];
                segment.end[axis] = static_cast<float>(at[axis]);
            }
            if (random() % 2 == 0) std::swap(segment.start, segment.end);
            segments.push_back(segment);
        }
    }
    std::shuffle(segments.begin(), segments.end(), random);
    return segments;
}

} // namespace bench

namespace {

void runMerge(benchmark::State& state)
{
    std::deque<znGeom::Segment> segments;
    for (const bench::LooseSegment& segment : bench::looseSegments())
        segments.emplace_back(segment.start.data(), segment.end.data());
    bench::timeWork(
        state, [&] { return &segments; },
        [](const std::deque<znGeom::Segment>* subject) {
            zn::vector<zn::Reference<znGeom::Polyline>> lines;
            znGeom::MergeSegments()(lines, *subject, bench::joiningTolerance);
            return lines;
        });
}

[[maybe_unused]] const bool listed = bench::measureAlone("merge_segments", "znGeom", runMerge, 3);

} // namespace
