/// Points of the plane on which hulls and rectangles go wrong.
#pragma once

#include <cmath>
#include <limits>
#include <numbers>

#include "tests/support/random.h"
#include "znGeom/foundation/containers.h"

namespace znTest {

using PlanePoints = zn::vector<znLinear::Point2>;

inline constexpr int numPlaneShapes = 8;

inline void shuffle(PlanePoints& points, Random& random)
{
    for (int i = points.size() - 1; i > 0; --i) std::swap(points[i], points[random.below(i + 1)]);
}

/// A shape of one of the kinds, in no particular order, some of its points twice. Coordinates lie between 1 and 4, so
/// that all are whole multiples of 2^-52.
inline PlanePoints planeShape(int kind, Random& random)
{
    PlanePoints points;
    const double angle = random.real(0, 2 * std::numbers::pi), cosine = std::cos(angle), sine = std::sin(angle);
    const auto addTurned = [&](double x, double y) {
        points.append(znLinear::Point2(2.5 + 0.5 * (x * cosine - y * sine), 2.5 + 0.5 * (x * sine + y * cosine)));
    };
    const auto nudged = [&random](double value) {
        return std::nextafter(value, 4.0 * random.below(2)); // the next number up or down
    };
    const int size = 3 + random.below(random.oneIn(8) ? 3000 : 40), steps = 1 + random.below(8);
    const double height = random.real();
    for (int i = 0; i < size; ++i) {
        const double t = random.oneIn(2) ? random.real(-1, 1) : random.below(2 * steps + 1) / double(steps) - 1;
        const double turn = 2 * std::numbers::pi / size * i;
        switch (kind) {
        case 0:
            addTurned(random.real(-1, 1), random.real(-1, 1));
            break;
        case 1:
            points.append(znLinear::Point2(1 + random.below(4), 1 + random.below(3)));
            break;
        case 2:
            addTurned(random.below(steps + 1) / double(steps), random.below(steps + 1) / double(steps));
            break;
        case 3:
            random.oneIn(2) ? addTurned(t, random.oneIn(2) ? height : -height)
                            : addTurned(random.oneIn(2) ? 1 : -1, height * t);
            break;
        case 4:
            addTurned(t, height);
            break;
        case 5:
            points.append(znLinear::Point2(double(3 + 1e-6f * static_cast<float>(std::cos(turn))), // three or four
                                           double(2 + 1e-6f * static_cast<float>(std::sin(turn)))));
            break;
        case 6:
            points.append(i < 3 ? znLinear::Point2(random.real(1, 4), random.real(1, 4)) : points[random.below(3)]);
            if (random.oneIn(2)) points.back().x = nudged(points.back().x);
            if (random.oneIn(2)) points.back().y = nudged(points.back().y);
            break;
        default:
            addTurned(std::cos(turn), std::sin(turn));
            break;
        }
    }
    for (int i = random.below(6); i > 0; --i) points.append(znLinear::Point2(points[random.below(points.size())]));
    shuffle(points, random);
    return points;
}

} // namespace znTest
