// A stroke of a pen: its points at a fixed spacing, raw and smoothed, beside a plain loop that writes them; and values
// of a spline once it is prepared, beside a plain search for the piece.
#include "bench/suite.h"
#include "znGeom/planar/strokes/flt_interpolate_2d.h"
#include "znGeom/planar/strokes/interpolate_alg.h"
#include "znGeom/planar/strokes/smooth_interpolate_2d.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

using znLinear::Point2Flt;

constexpr int numSamples = 2000;
constexpr int turns = 20;

struct Dab
{
    Point2Flt place;
    float t = 0;
};
using Dabs = std::vector<Dab>;
using Samples = std::vector<Point2Flt>;

/// Loops of a hand, in units of pixels: samples up to 60 apart.
Samples handDrawn()
{
    Samples samples;
    for (int i = 0; i < numSamples; ++i) {
        const double angle = 0.02 * i + 0.5 * std::sin(0.05 * i);
        samples.push_back(
            Point2Flt(znLinear::Point2(500 + 400 * std::sin(2 * angle), 500 + 350 * std::sin(3 * angle))));
    }
    return samples;
}

/// Walks with an interpolator, whose type the compiler knows or does not.
template <class Walk>
std::size_t walkAlong(Walk& walk, const Samples& samples, float step, Dab* dabs)
{
    std::size_t count = 0;
    for (const Point2Flt& sample : samples) {
        walk.add_point(sample);
        while (walk.interpolate(step, dabs[count].place, &dabs[count].t)) ++count;
    }
    return count;
}

std::size_t spaceByType(const Samples& samples, float step, Dab* dabs)
{
    znGeom::FltInterpolate2D walk;
    return walkAlong(walk, samples, step, dabs);
}

std::size_t spaceByReference(const Samples& samples, float step, Dab* dabs)
{
    zn::Reference<znGeom::Interpolate2D> walk = new znGeom::FltInterpolate2D;
    benchmark::DoNotOptimize(walk);
    return walkAlong(*walk, samples, step, dabs);
}

std::size_t smoothAndSpace(const Samples& samples, float step, Dab* dabs)
{
    znGeom::SmoothInterpolate2D walk;
    return walkAlong(walk, samples, step, dabs);
}

/// The same points as by `FltInterpolate2D`, by a loop that knows the whole stroke.
std::size_t spacePlainly(const Samples& samples, float step, Dab* dabs)
{
    std::size_t count = 0;
    dabs[count++] = {samples[0], 0};
    float left = 0;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const Point2Flt from = samples[i - 1], to = samples[i];
        float dx = to.x - from.x, dy = to.y - from.y;
        const float length = std::sqrt(dx * dx + dy * dy), inverse = 1 / length;
        dx *= inverse, dy *= inverse;
        float x = from.x - left * dx, y = from.y - left * dy, remaining = length + left;
        while (remaining >= step) {
            x += step * dx, y += step * dy, remaining -= step;
            dabs[count++] = {{x, y}, 1 - inverse * remaining};
        }
        left = remaining;
    }
    return count;
}

using Space = std::size_t (*)(const Samples&, float, Dab*);

Dabs spaced(Space space, float step)
{
    const Samples samples = handDrawn();
    Dabs dabs(numSamples * static_cast<std::size_t>(25 / step + 1));
    dabs.resize(space(samples, step, dabs.data()));
    return dabs;
}

bool measureSpacing(const char* work, const char* who, Space space, float step)
{
    const auto run = [=](benchmark::State& state) {
        const Samples samples = handDrawn();
        Dabs dabs = spaced(space, step), plain = spaced(spacePlainly, step);
        const bool same = dabs.size() == plain.size() &&
                          std::memcmp(dabs.data() + 1, plain.data() + 1, (dabs.size() - 1) * sizeof(Dab)) == 0;
        if (space != smoothAndSpace && !same) return state.SkipWithError("other points");
        dabs.emplace_back();
        bench::timeTinyWork(state, [&] {
            benchmark::DoNotOptimize(space(samples, step, dabs.data()));
            benchmark::ClobberMemory();
        });
    };
    return bench::measureAlone(work, who, run, turns);
}

/// Samples of a curve at uneven places, and where it is asked for.
struct Curve
{
    Curve()
    {
        for (int i = 0; i < numSamples; ++i) {
            const double x = i + 0.3 * std::sin(1.7 * i);
            samples.append(Point2Flt(znLinear::Point2(x, std::sin(0.01 * x))));
            places.push_back(std::fmod(i * 618.034, numSamples));
        }
    }
    zn::vector<Point2Flt> samples;
    std::vector<double> places;
};

void evaluateAfterCaching(benchmark::State& state)
{
    const Curve curve;
    znGeom::InterpolateAlg spline;
    spline.setInput(curve.samples);
    bench::timeTinyWork(state, [&] {
        for (const double place : curve.places) benchmark::DoNotOptimize(spline.evaluate(place));
    });
}

void evaluatePlainly(benchmark::State& state)
{
    const Curve curve;
    std::vector<double> x, y, b(numSamples), c(numSamples), d(numSamples);
    for (const Point2Flt& sample : curve.samples) x.push_back(double(sample.x)), y.push_back(double(sample.y));
    znGeom::InterpolateAlg::cubic_nak(numSamples, x.data(), y.data(), b.data(), c.data(), d.data());
    bench::timeTinyWork(state, [&] {
        for (const double place : curve.places) {
            const auto above = std::upper_bound(x.begin() + 1, x.end() - 1, place);
            const auto s = static_cast<std::size_t>(above - x.begin() - 1);
            const double u = place - x[s];
            benchmark::DoNotOptimize(((u * d[s] + c[s]) * u + b[s]) * u + y[s]);
        }
    });
}

void evaluateFirst(benchmark::State& state)
{
    const Curve curve;
    znGeom::InterpolateAlg spline;
    bench::timeTinyWork(state, [&] {
        spline.setInput(curve.samples);
        benchmark::DoNotOptimize(spline.evaluate(1));
    });
}

[[maybe_unused]] const bool listed[] = {
    measureSpacing("space_stroke", "znGeom", spaceByType, 2.5f),
    measureSpacing("space_stroke", "plain", spacePlainly, 2.5f),
    measureSpacing("space_stroke_densely", "znGeom", spaceByType, 0.25f),
    measureSpacing("space_stroke_densely", "plain", spacePlainly, 0.25f),
    measureSpacing("space_stroke_by_reference", "znGeom", spaceByReference, 2.5f),
    measureSpacing("space_stroke_by_reference", "plain", spacePlainly, 2.5f),
    measureSpacing("smooth_stroke", "znGeom", smoothAndSpace, 2.5f),
    bench::measureAlone("spline_values", "znGeom", evaluateAfterCaching, turns),
    bench::measureAlone("spline_values", "plain", evaluatePlainly, turns),
    bench::measureAlone("spline_first_value", "znGeom", evaluateFirst, turns),
};

} // namespace
