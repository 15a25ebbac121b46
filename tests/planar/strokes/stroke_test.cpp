#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/allocations.h"
#include "tests/support/random.h"
#include "znGeom/planar/strokes/flt_interpolate_2d.h"
#include "znGeom/planar/strokes/smooth_2d.h"
#include "znGeom/planar/strokes/smooth_interpolate_2d.h"

using namespace znGeom;
using namespace znLinear;

namespace {

using Points = std::vector<Point2Flt>;

struct Answer
{
    Point2Flt point;
    float t = -100;
};

/// All that `stroke` has to give at one step.
std::vector<Answer> takeAll(Interpolate2D& stroke, float step)
{
    std::vector<Answer> answers;
    for (Answer answer; stroke.interpolate(step, answer.point, &answer.t);) answers.push_back(answer);
    return answers;
}

void expectAnswers(const std::vector<Answer>& answers, const std::vector<Answer>& expected)
{
    ASSERT_EQ(answers.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(equivalent(answers[i].point, expected[i].point, 1e-6f)) << i;
        EXPECT_NEAR(answers[i].t, expected[i].t, 2e-7) << i;
    }
}

Point2Flt currentOf(Interpolate2D& stroke)
{
    Point2Flt point;
    stroke.current(point);
    return point;
}

/// All points of a stroke at one step.
Points spacedPoints(Interpolate2D& stroke, const Points& samples, float step)
{
    Points points;
    for (const Point2Flt& sample : samples) {
        stroke.add_point(sample);
        for (const Answer& answer : takeAll(stroke, step)) points.push_back(answer.point);
    }
    return points;
}

/// A walk with segments from far below a step to several steps, and some of no length.
Points randomStroke(znTest::Random& random, int numSamples)
{
    Points samples{{0, 0}};
    while (static_cast<int>(samples.size()) < numSamples) {
        const double reach = random.oneIn(5) ? 0 : random.oneIn(2) ? 0.3 : 4;
        const Vector way = random.vector(reach);
        samples.push_back(samples.back() + Vector2Flt(static_cast<float>(way.dx), static_cast<float>(way.dy)));
    }
    return samples;
}

/// Every point of a polyline whose distance along it is a multiple of the step, in double.
std::vector<Point2> spacedExactly(const Points& samples, double step)
{
    std::vector<Point2> points{samples[0]};
    double done = 0, next = step;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const Point2 start = samples[i - 1], end = samples[i];
        const double length = distance(start, end);
        for (; next <= done + length; next += step)
            points.push_back(combine(1 - (next - done) / length, start, (next - done) / length, end));
        done += length;
    }
    return points;
}

} // namespace

TEST(Stroke, CarriesTheSpacingRoundACorner)
{
    FltInterpolate2D stroke;
    Answer answer{{7, 7}, 7};
    Vector2Flt direction{7, 7};
    EXPECT_FALSE(stroke.interpolate(3, answer.point, &answer.t) || stroke.dir(direction));
    stroke.add_point({0, 0});
    EXPECT_FALSE(stroke.interpolate(3, answer.point, &answer.t) || stroke.interpolate(answer.point, &answer.t));
    EXPECT_FALSE(stroke.dir(direction));
    EXPECT_TRUE(answer.point == Point2Flt(7, 7) && answer.t == 7 && direction == Vector2Flt(7, 7)) << "untouched";
    EXPECT_EQ(currentOf(stroke), Point2Flt(0, 0));

    stroke.add_point({10, 0});
    expectAnswers(takeAll(stroke, 3), {{{0, 0}, 0}, {{3, 0}, 0.3f}, {{6, 0}, 0.6f}, {{9, 0}, 0.9f}});
    FltInterpolate2D copy = stroke;
    EXPECT_FALSE(copy.interpolate(1.0001f, answer.point, nullptr));
    EXPECT_TRUE(copy.interpolate(1, answer.point, nullptr)) << "1 remains, and just enough is enough";

    stroke.add_point({10, 10});
    EXPECT_EQ(currentOf(stroke), Point2Flt(10, -1)) << "1 behind the corner";
    EXPECT_TRUE(stroke.dir(direction) && direction == Vector2Flt::y);
    expectAnswers(takeAll(stroke, 3), {{{10, 2}, 0.2f}, {{10, 5}, 0.5f}, {{10, 8}, 0.8f}});
    stroke.add_point({10.5f, 10});
    expectAnswers(takeAll(stroke, 3), {});
    stroke.add_point({20, 10});
    expectAnswers(takeAll(stroke, 3),
                  {{{11, 10}, 0.5f / 9.5f}, {{14, 10}, 3.5f / 9.5f}, {{17, 10}, 6.5f / 9.5f}, {{20, 10}, 1}});
}

TEST(Stroke, CutsCornersWithoutCarry)
{
    FltInterpolate2D stroke(false);
    stroke.add_point({0, 0});
    stroke.add_point({10, 0});
    expectAnswers(takeAll(stroke, 3), {{{0, 0}, 0}, {{3, 0}, 0.3f}, {{6, 0}, 0.6f}, {{9, 0}, 0.9f}});
    stroke.add_point({12, 4});
    EXPECT_EQ(currentOf(stroke), Point2Flt(9, 0));
    expectAnswers(takeAll(stroke, 2), {{{10.2f, 1.6f}, 0.4f}, {{11.4f, 3.2f}, 0.8f}});
}

TEST(Stroke, WithoutLengthThereIsOneAnswerAndNoDirection)
{
    FltInterpolate2D stroke;
    Vector2Flt direction;
    stroke.add_point({2, 3});
    stroke.add_point({2, 3});
    EXPECT_FALSE(stroke.dir(direction));
    expectAnswers(takeAll(stroke, 0.1f), {{{2, 3}, 0}});
    stroke.add_point({NAN, 3});
    EXPECT_FALSE(stroke.dir(direction)) << "a length that is no number is none";
    expectAnswers(takeAll(stroke, 0.1f), {});
}

TEST(Stroke, JumpsToTheEndOfWhatWasAdded)
{
    FltInterpolate2D stroke;
    Answer answer;
    stroke.add_point({0, 0});
    stroke.add_point({10, 0});
    ASSERT_TRUE(stroke.interpolate(answer.point, &answer.t));
    expectAnswers({answer}, {{{0, 0}, 0}});
    ASSERT_TRUE(stroke.interpolate(4, answer.point, nullptr) && stroke.interpolate(answer.point, &answer.t));
    expectAnswers({answer}, {{{10, 0}, 1}});
    EXPECT_FALSE(stroke.interpolate(answer.point, nullptr) || stroke.interpolate(1, answer.point, nullptr));
    stroke.add_point({10, 5});
    expectAnswers(takeAll(stroke, 2), {{{10, 2}, 0.4f}, {{10, 4}, 0.8f}});
}

TEST(Stroke, HandsOverWhatIsLeftInOnePiece)
{
    FltInterpolate2D shrinking;
    for (const float x : {0.0f, 10.0f}) shrinking.add_point({x, 0});
    ASSERT_EQ(takeAll(shrinking, 7).size(), 2u);
    shrinking.add_point({10, 10});
    // 3 are left: the first step of 1 takes all of them.
    const auto answers = takeAll(shrinking, 1);
    ASSERT_EQ(answers.size(), 11u);
    EXPECT_EQ(answers[0].point, Point2Flt(10, 0));
    EXPECT_EQ(answers[1].point, Point2Flt(10, 1));

    FltInterpolate2D late;
    for (const Point2Flt sample : {Point2Flt(0, 0), Point2Flt(10, 0), Point2Flt(10, 10)}) late.add_point(sample);
    expectAnswers(takeAll(late, 5), {{{10, -10}, -1}, {{10, 0}, 0}, {{10, 5}, 0.5f}, {{10, 10}, 1}});
}

TEST(Stroke, PointsLieOnThePathAtEqualDistanceAlongIt)
{
    znTest::Random random(5);
    for (int round = 0; round < 200; ++round) {
        const Points samples = randomStroke(random, 40);
        const auto step = static_cast<float>(random.real(0.2, 3));
        FltInterpolate2D stroke;
        const Points points = spacedPoints(stroke, samples, step);
        const auto expected = spacedExactly(samples, double(step));
        // Whether the very end is reached may be a matter of rounding.
        ASSERT_NEAR(static_cast<double>(points.size()), static_cast<double>(expected.size()), 1);
        for (std::size_t i = 0; i < std::min(points.size(), expected.size()); ++i)
            ASSERT_LT(distance(Point2(points[i]), expected[i]), 2e-4) << i;
    }
}

TEST(Stroke, HowItIsSplitIntoCallsDoesNotMatter)
{
    znTest::Random random(6);
    for (int round = 0; round < 50; ++round) {
        // Points of a grid and steps of eighths along its lines: exact, so that the same points have the same bits.
        Points coarse{{0, 0}}, fine{{0, 0}};
        for (int i = 0; i < 30; ++i) {
            const float way = static_cast<float>(random.below(9) - 4);
            const Vector2Flt along = (i % 2 ? Vector2Flt::x : Vector2Flt::y) * way;
            for (const float part : {0.25f, 0.5f, 0.75f})
                if (random.oneIn(2)) fine.push_back(coarse.back() + part * along);
            coarse.push_back(coarse.back() + along);
            fine.push_back(coarse.back());
        }
        const float step = static_cast<float>(1 + random.below(20)) / 8;
        FltInterpolate2D once, often, interrupted;
        const Points expected = spacedPoints(once, coarse, step);
        ASSERT_TRUE(spacedPoints(often, fine, step) == expected) << "samples in between";
        Points points;
        for (const Point2Flt& sample : coarse) {
            interrupted.add_point(sample);
            Vector2Flt direction;
            for (Point2Flt point; interrupted.interpolate(step, point, nullptr);) {
                points.push_back(point);
                EXPECT_TRUE(currentOf(interrupted) == point);
                interrupted.dir(direction);
                EXPECT_FALSE(interrupted.interpolate(1000, point, nullptr));
            }
        }
        ASSERT_TRUE(points == expected) << "asked for more in between";
    }
}

TEST(Smooth, TrailsTheInputWithoutKinks)
{
    Smooth1D filter(0.9f, 0.921f);
    float positions[6] = {-1, -1, -1, -1, -1, -1};
    int count = 6;
    filter.step(2, count, positions);
    EXPECT_TRUE(count == 0 && positions[0] == -1) << "rests on the first value";
    // The jerk is 0.079 / 0.9 / 21; sums of sums of it follow. The next six were worked out in double.
    const double expected[] = {0.0041798942, 0.0167195767, 0.0417989418, 0.0835978836, 0.1462962963, 0.2340740741,
                               0.3391174908, 0.4536128205, 0.5697463369, 0.6797043140, 0.7756730257, 0.8498387458};
    for (int i = 0; i < 12; ++i) {
        if (i % 6 == 0) filter.step(3, count = 6, positions);
        EXPECT_NEAR(double(positions[i % 6]) - 2, expected[i], 2e-6) << i;
    }
    filter.step(9, count = -3, positions);
    EXPECT_EQ(count, 0) << "no steps: put at the value";
    filter.step(9, count = 1, positions);
    EXPECT_EQ(count, 1);

    // Exact in float: each velocity is half of the way plus the velocity before.
    Smooth1D halves(1, 0.5f), still(0, 0.5f);
    halves.step(0, count = 1, positions);
    still.step(5, count = 1, positions + 1);
    for (const float at : {4.0f, 8.0f, 10.0f}) {
        halves.step(8, count = 1, positions);
        still.step(8, count = 1, positions + 1);
        EXPECT_TRUE(positions[0] == at && positions[1] == 5) << at;
    }
}

TEST(Smooth, EachSampleButTheFirstGivesItsSteps)
{
    Smooth2D smooth;
    Point2Flt point{7, 7};
    smooth.add_point({0, 0});
    EXPECT_FALSE(smooth.interpolate(point));
    EXPECT_EQ(point, Point2Flt(7, 7));
    smooth.add_point({10, -20});
    const float parts[] = {1, 4, 10, 20, 35, 56};
    for (const float part : parts) {
        ASSERT_TRUE(smooth.interpolate(point));
        EXPECT_TRUE(equivalent(point, {part * 0.041798942f, part * -0.083597884f}, 1e-5f)) << part;
    }
    EXPECT_FALSE(smooth.interpolate(point));
    smooth.add_point({10, -20});
    ASSERT_TRUE(smooth.interpolate(point));
    smooth.add_point({10, -20});
    int count = 0;
    while (smooth.interpolate(point)) ++count;
    EXPECT_EQ(count, 6) << "what was not read is lost";
    for (const int none : {0, -1}) {
        Smooth2D empty(0.9f, 0.921f, none);
        for (int i = 0; i < 3; ++i) empty.add_point({1, 1});
        EXPECT_FALSE(empty.interpolate(point));
    }
}

TEST(Smooth, SpacesTheSmoothedStroke)
{
    znTest::Random random(7);
    const Points samples = randomStroke(random, 60);
    for (const bool carry : {true, false}) {
        Smooth2D smooth(1.5f, 0.8f, 4);
        FltInterpolate2D walk(carry);
        SmoothInterpolate2D both(4, 1.5f, 0.8f, carry ? nullptr : new FltInterpolate2D(false));
        for (const Point2Flt& sample : samples) {
            Points smoothed;
            smooth.add_point(sample);
            for (Point2Flt point; smooth.interpolate(point);) smoothed.push_back(point);
            const Points expected = spacedPoints(walk, smoothed, 0.1f);
            both.add_point(sample);
            const std::vector<Answer> answers = takeAll(both, 0.1f);
            ASSERT_EQ(answers.size(), expected.size());
            float t = 0;
            for (std::size_t i = 0; i < expected.size(); ++i) {
                ASSERT_TRUE(answers[i].point == expected[i]);
                ASSERT_TRUE(answers[i].t >= std::exchange(t, answers[i].t) - 1e-6f && answers[i].t <= 1);
            }
            Vector2Flt direction, directionOfBoth;
            EXPECT_EQ(walk.dir(direction), both.dir(directionOfBoth));
            EXPECT_EQ(direction, directionOfBoth);
            if (!answers.empty()) {
                EXPECT_EQ(currentOf(both), answers.back().point);
            }
        }
    }
}

TEST(Smooth, ReportsProgressThroughTheSteps)
{
    SmoothInterpolate2D stroke(4, 1, 0.5f);
    Answer answer;
    stroke.add_point({1, 2});
    EXPECT_EQ(currentOf(stroke), Point2Flt(1, 2));
    EXPECT_FALSE(stroke.interpolate(answer.point, &answer.t));
    stroke.add_point({11, 2});
    // Target velocity 5, jerk a half: the first jump needs two smoothed points, and stays on the first.
    const Answer expected[] = {{{1.5f, 2}, 0.25f}, {{3, 2}, 0.5f}, {{6, 2}, 0.75f}, {{11, 2}, 1}};
    for (const Answer& next : expected) {
        ASSERT_TRUE(stroke.interpolate(answer.point, &answer.t));
        expectAnswers({answer}, {next});
    }
    EXPECT_FALSE(stroke.interpolate(answer.point, &answer.t));
}

TEST(Stroke, TakesNoMemoryOnceItStands)
{
    FltInterpolate2D walk;
    Smooth2D smooth;
    SmoothInterpolate2D both;
    const long allocations = znTest::numAllocations();
    int numPoints = 0;
    for (int i = 0; i < 1000; ++i) {
        const Point2Flt sample(static_cast<float>(i % 17), static_cast<float>(i % 29));
        walk.add_point(sample);
        smooth.add_point(sample);
        both.add_point(sample);
        Point2Flt point;
        while (walk.interpolate(0.5f, point, nullptr)) ++numPoints;
        while (smooth.interpolate(point)) ++numPoints;
        while (both.interpolate(0.5f, point, nullptr)) ++numPoints;
    }
    EXPECT_EQ(znTest::numAllocations(), allocations);
    EXPECT_GT(numPoints, 10000);
}
