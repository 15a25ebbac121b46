// Decimation of a million points, and what passes over all vertices of a line.
#include "bench/polyline.h"
#include "bench/suite.h"
#include "znGeom/planar/polylines/decimate.h"
#include "znGeom/planar/polylines/polyline_project.h"
#include "znGeom/planar/polylines/polyline_transform.h"

#include <cmath>
#include <cstring>
#include <random>

namespace bench {

const std::vector<PlanePoint>& noisyWave()
{
    static const std::vector<PlanePoint> wave = [] {
        constexpr int count = 1'000'000;
        std::mt19937_64 random(1);
        std::vector<PlanePoint> points;
        for (int i = 0; i < count; ++i) {
            double noise = -6; // of twelve even numbers: near enough to a normal distribution, and the same everywhere
            for (int k = 0; k < 12; ++k) noise += static_cast<double>(random() >> 11) * 0x1p-53;
            const double x = 10.0 * i / count;
            points.push_back({x, std::sin(3 * x) + 1e-3 * noise});
        }
        return points;
    }();
    return wave;
}

} // namespace bench

namespace {

using znGeom::Polyline;
using znLinear::Point;

template <typename Place>
Polyline lineOf(const Place& place)
{
    zn::vector<Polyline::vertex> vertices;
    for (const bench::PlanePoint& point : bench::noisyWave())
        vertices.append({place(point), static_cast<double>(vertices.size())});
    return Polyline(vertices.size(), vertices.data());
}

Point onWave(const bench::PlanePoint& p) { return {p[0], p[1], 0}; }
Point onStraight(const bench::PlanePoint& p) { return {0.3 * p[0], 0.7123 * p[0], -1.234 * p[0]}; }
Point inOnePlace(const bench::PlanePoint&) { return {0.1, 0.2, 0.3}; }

template <auto place>
void runDecimation(benchmark::State& state)
{
    const Polyline line = lineOf(place);
    int kept = 0;
    bench::timeWork(
        state, [&] { return line; },
        [&](Polyline& subject) {
            decimate(subject, bench::decimationTolerance);
            kept = subject.getNumVertices();
            return kept;
        });
    state.counters["kept"] = kept;
}

void runProjection(benchmark::State& state)
{
    const Polyline line = lineOf(onWave);
    bench::timeWork(
        state, [&] { return &line; },
        [](const Polyline* subject) { return znGeom::PolylineProjectPt(*subject).project(Point(5, 3, 0)); });
}

void runTransform(benchmark::State& state)
{
    znLinear::AffineMatrix matrix;
    matrix[3][0] = 1;
    bench::timeWork(
        state, [line = lineOf(onWave)]() mutable { return &line; },
        [&](Polyline* subject) {
            polylineTransform(*subject, matrix);
            return subject->getNumVertices();
        });
}

/// Reads all vertices, or copies them over others.
template <bool copies>
void runMemory(benchmark::State& state)
{
    std::vector<double> from(4 * bench::noisyWave().size(), 1), to = from;
    bench::timeWork(
        state, [&] { return &from; },
        [&](const std::vector<double>* subject) {
            if constexpr (copies) {
                std::memcpy(to.data(), subject->data(), subject->size() * sizeof(double));
                return to.front();
            } else {
                double sums[8] = {};
                for (std::size_t i = 0; i < subject->size(); i += 8)
                    for (std::size_t k = 0; k < 8; ++k) sums[k] += (*subject)[i + k];
                return sums[0] + sums[1] + sums[2] + sums[3] + sums[4] + sums[5] + sums[6] + sums[7];
            }
        });
}

[[maybe_unused]] const bool listed[] = {
    bench::measureAlone("decimate", "znGeom", runDecimation<onWave>, 1, 5),
    bench::measureAlone("decimate_straight", "znGeom", runDecimation<onStraight>, 1, 5),
    bench::measureAlone("decimate_one_place", "znGeom", runDecimation<inOnePlace>, 1, 5),
    bench::measureAlone("line_project", "znGeom", runProjection, 20),
    bench::measureAlone("line_project", "memory", runMemory<false>, 20),
    bench::measureAlone("line_transform", "znGeom", runTransform, 20),
    bench::measureAlone("line_transform", "memory", runMemory<true>, 20)};

} // namespace
