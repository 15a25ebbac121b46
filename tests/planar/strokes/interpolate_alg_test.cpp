#include "znGeom/planar/strokes/interpolate_alg.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/allocations.h"
#include "tests/support/random.h"

using namespace znGeom;

namespace {

using Samples = zn::vector<znLinear::Point2Flt>;
using Numbers = std::vector<double>;
using Hint = InterpolateAlg::EInterpolationHint;

const Hint allHints[] = {InterpolateAlg::eCubicSpline, InterpolateAlg::eNeville, InterpolateAlg::eNewtonForm,
                         InterpolateAlg::eLinear, static_cast<Hint>(17)};

double evaluate(InterpolateAlg& curve, Hint hint, double t)
{
    curve.setInterpolationHint(hint);
    return curve.evaluate(t);
}

/// Ascending quarters from about -n / 2 on, so that a cubic with small integers has exact values in float there.
Numbers unevenPlaces(znTest::Random& random, int n)
{
    Numbers x{-n / 2.0};
    while (static_cast<int>(x.size()) < n) x.push_back(x.back() + (1 + random.below(8)) / 4.0);
    return x;
}

double cubic(double x) { return ((x - 2) * x + 3) * x - 4; }
double slopeOfCubic(double x) { return (3 * x - 4) * x + 3; }

struct Spline
{
    explicit Spline(Numbers x_, Numbers f_) : x(std::move(x_)), f(std::move(f_)), b(x.size()), c(b), d(b) {}

    int n() const { return static_cast<int>(x.size()); }
    void notAKnot() { InterpolateAlg::cubic_nak(n(), x.data(), f.data(), b.data(), c.data(), d.data()); }
    void clamp(double start, double end)
    {
        InterpolateAlg::cubic_clamped(n(), x.data(), f.data(), b.data(), c.data(), d.data(), start, end);
    }
    double at(double t) const
    {
        return InterpolateAlg::spline_eval(n(), x.data(), f.data(), b.data(), c.data(), d.data(), t);
    }
    /// Value, slope, second and third derivative of a piece at a place.
    Numbers derivatives(std::size_t piece, double t) const
    {
        const double u = t - x[piece], cs = c[piece], ds = d[piece];
        return {((u * ds + cs) * u + b[piece]) * u + f[piece], b[piece] + (2 * cs + 3 * ds * u) * u,
                2 * cs + 6 * ds * u, 6 * ds};
    }

    Numbers x, f, b, c, d;
};

} // namespace

TEST(InterpolateAlg, SplinesGiveACubicBack)
{
    znTest::Random random(1);
    for (int n = 2; n < 40; ++n) {
        Spline spline(unevenPlaces(random, n), {});
        Samples samples;
        for (const double x : spline.x) {
            spline.f.push_back(cubic(x));
            samples.append({static_cast<float>(x), static_cast<float>(cubic(x))});
        }
        const double start = spline.x.front(), end = spline.x.back();
        const double tolerance = 1e-12 * std::max(std::fabs(cubic(start - 1)), std::fabs(cubic(end + 1)));
        const auto expectCubic = [&](const auto& curve) {
            for (double t = start - 1; t <= end + 1; t += 0.1)
                ASSERT_NEAR(curve(t), cubic(t), tolerance) << n << ' ' << t;
        };
        spline.clamp(slopeOfCubic(start), slopeOfCubic(end));
        expectCubic([&](double t) { return spline.at(t); });
        if (n < 4) continue;
        spline.notAKnot();
        expectCubic([&](double t) { return spline.at(t); });
        InterpolateAlg curve;
        curve.setInput(samples);
        for (const Hint hint : allHints) {
            if (hint == InterpolateAlg::eLinear || (hint != InterpolateAlg::eCubicSpline && n > 9)) continue;
            expectCubic([&](double t) { return evaluate(curve, hint, t); });
        }
    }
}

TEST(InterpolateAlg, SplinesAreSmoothAndKeepTheirEnds)
{
    znTest::Random random(2);
    for (int n = 4; n < 30; ++n) {
        Spline spline(unevenPlaces(random, n), {});
        for (int i = 0; i < n; ++i) spline.f.push_back(random.real(-1, 1));
        const auto last = static_cast<std::size_t>(n) - 1;
        const auto expectJoined = [&](std::size_t sample, std::size_t numDerivatives) {
            const Numbers left = spline.derivatives(sample - 1, spline.x[sample]);
            const Numbers right = spline.derivatives(sample, spline.x[sample]);
            for (std::size_t i = 0; i <= numDerivatives; ++i) ASSERT_NEAR(left[i], right[i], 1e-10) << n << ' ' << i;
        };
        spline.clamp(2, -3);
        EXPECT_NEAR(spline.b[0], 2, 1e-12);
        EXPECT_NEAR(spline.derivatives(last - 1, spline.x[last])[1], -3, 1e-12);
        for (std::size_t i = 1; i < last; ++i) expectJoined(i, 2);
        EXPECT_NEAR(spline.derivatives(last - 1, spline.x[last])[0], spline.f[last], 1e-12);
        spline.notAKnot();
        for (std::size_t i = 1; i < last; ++i) expectJoined(i, i == 1 || i == last - 1 ? 3 : 2);
        for (std::size_t i = 0; i <= last; ++i) EXPECT_NEAR(spline.at(spline.x[i]), spline.f[i], 1e-12);
    }
}

TEST(InterpolateAlg, PolynomialMethodsAgree)
{
    znTest::Random random(3);
    for (int n = 1; n < 10; ++n) {
        Samples samples;
        for (const double x : unevenPlaces(random, n))
            samples.append({static_cast<float>(x), static_cast<float>(random.real(-1, 1))});
        InterpolateAlg curve;
        curve.setInput(samples);
        for (double t = double(samples.front().x); t <= double(samples.back().x) + 0.5; t += 0.125) {
            const double byNeville = evaluate(curve, InterpolateAlg::eNeville, t);
            const double tolerance = 1e-11 * std::max(1.0, std::fabs(byNeville));
            EXPECT_NEAR(evaluate(curve, InterpolateAlg::eNewtonForm, t), byNeville, tolerance);
            if (n <= 2) {
                EXPECT_NEAR(evaluate(curve, InterpolateAlg::eLinear, t), byNeville, tolerance);
            }
            if (n <= 2 || n == 4) {
                EXPECT_NEAR(evaluate(curve, InterpolateAlg::eCubicSpline, t), byNeville, tolerance);
            }
        }
        for (const Hint hint : allHints)
            for (const auto& sample : samples)
                EXPECT_NEAR(evaluate(curve, hint, double(sample.x)), double(sample.y), 1e-11) << hint;
    }
}

TEST(InterpolateAlg, APieceHoldsItsStartAndTheOuterOnesGoOn)
{
    const double x[] = {0, 1, 3, 4}, y[] = {5, 7, 7, 10}, zeros[4] = {};
    const auto linear = [&](double t) { return InterpolateAlg::simpleLinear(4, x, y, t); };
    const double expected[][2] = {{-2, 1}, {0, 5}, {0.5, 6}, {1, 7}, {2, 7}, {3, 7}, {4, 10}, {6, 16}};
    for (const auto& [t, value] : expected) EXPECT_EQ(linear(t), value) << t;
    // Without slopes a spline tells which piece it takes.
    const double starts[][2] = {{-9, 5}, {0.9, 5}, {1, 7}, {2.9, 7}, {3, 7}, {4, 7}, {9, 7}};
    for (const auto& [t, value] : starts)
        EXPECT_EQ(InterpolateAlg::spline_eval(4, x, y, zeros, zeros, zeros, t), value) << t;

    znTest::Random random(4);
    for (int round = 0; round < 1000; ++round) {
        const int n = 2 + random.below(9);
        Numbers places = unevenPlaces(random, n), indices;
        for (int i = 0; i < n; ++i) indices.push_back(i);
        const double t = random.below(40) / 4.0 - 6;
        int k = 1;
        while (k < n - 1 && !(places[static_cast<std::size_t>(k)] > t)) ++k;
        const Numbers flat(static_cast<std::size_t>(n));
        EXPECT_EQ(
            InterpolateAlg::spline_eval(n, places.data(), indices.data(), flat.data(), flat.data(), flat.data(), t),
            k - 1);
    }
}

TEST(InterpolateAlg, FewSamplesFallBackToLines)
{
    InterpolateAlg curve;
    for (const Hint hint : allHints) EXPECT_EQ(evaluate(curve, hint, 1), 0) << "nothing set";
    for (const Samples& samples :
         {Samples{}, Samples{{3, 8}}, Samples{{3, 8}, {5, 9}}, Samples{{3, 8}, {5, 9}, {6, 1}}}) {
        curve.setInput(samples);
        const int n = samples.size();
        for (const Hint hint : allHints) {
            EXPECT_EQ(evaluate(curve, hint, 3), n == 0 ? 0 : 8) << n;
            const bool quadratic = n == 3 && (hint == InterpolateAlg::eNeville || hint == InterpolateAlg::eNewtonForm);
            // Beside the line: 8 + (t - 3) / 2 - 17 / 6 (t - 3) (t - 5)
            EXPECT_NEAR(evaluate(curve, hint, 4), n == 0 ? 0 : n == 1 ? 8 : 8.5 + quadratic * 17 / 6.0, 1e-14) << n;
        }
    }
    Spline three({3, 5, 6}, {8, 9, 1});
    three.notAKnot();
    EXPECT_EQ(three.at(4), 8.5);
    EXPECT_EQ(three.at(7), -7);
    for (const int none : {0, -1}) {
        EXPECT_EQ(InterpolateAlg::simpleLinear(none, nullptr, nullptr, 1), 0);
        EXPECT_EQ(InterpolateAlg::neville(none, nullptr, nullptr, 1), 0);
        EXPECT_EQ(InterpolateAlg::nf_eval(none, nullptr, nullptr, 1), 0);
        EXPECT_EQ(InterpolateAlg::spline_eval(none, nullptr, nullptr, nullptr, nullptr, nullptr, 1), 0);
        InterpolateAlg::divdiff(none, nullptr, nullptr, nullptr);
        InterpolateAlg::cubic_nak(none, nullptr, nullptr, nullptr, nullptr, nullptr);
        InterpolateAlg::cubic_clamped(none, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0);
    }
}

TEST(InterpolateAlg, ComputesOncePerMethodAndForgetsWithNewSamples)
{
    InterpolateAlg curve;
    Samples samples{{0, 1}, {1, 0}, {2, 4}, {4, 2}, {5, 2}};
    curve.setInput(samples);
    const auto numTaken = [&](Hint hint) {
        const long before = znTest::numAllocations();
        evaluate(curve, hint, 0.5);
        return znTest::numAllocations() - before;
    };
    for (const Hint hint : allHints) numTaken(hint);
    for (const Hint hint : allHints)
        if (hint != InterpolateAlg::eNeville) {
            EXPECT_EQ(numTaken(hint), 0) << hint;
        }

    Numbers before;
    for (const Hint hint : allHints) before.push_back(evaluate(curve, hint, 1.5));
    for (auto& sample : samples) sample.y = 2 * sample.y + 1;
    curve.setInput(samples);
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_NEAR(evaluate(curve, allHints[i], 1.5), 2 * before[i] + 1, 1e-13);
}
