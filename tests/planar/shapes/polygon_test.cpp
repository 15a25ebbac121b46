#include "znGeom/planar/shapes/polygon.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tests/support/random.h"

TEST(PointPolygonIntersect2D, CountsEvenAndOddAndHoldsTheLowerLeft)
{
    using znGeom::pointPolygonIntersect2D;
    const float square[] = {0, 0, 1, 0, 1, 1, 0, 1, 0, 0}, star[] = {0, 3, 2, -3, -3, 1, 3, 1, -2, -3, 0, 3};
    const auto inside = [&square](float x, float y) { return pointPolygonIntersect2D(square, 5, x, y); };
    EXPECT_TRUE(inside(0.5f, 0.5f) && inside(0, 0) && inside(0, 0.5f) && inside(0.5f, 0));
    EXPECT_FALSE(inside(1, 0.5f) || inside(0.5f, 1) || inside(1, 1) || inside(-0.1f, 0) || inside(0.5f, 2));
    EXPECT_FALSE(inside(NAN, 0.5f) || inside(0.5f, NAN) || inside(-INFINITY, 0.5f) || inside(INFINITY, 0.5f));
    EXPECT_FALSE(pointPolygonIntersect2D(square, 3, 0.5f, 0.25f) || pointPolygonIntersect2D(nullptr, 0, 0, 0));
    EXPECT_FALSE(pointPolygonIntersect2D(star, 6, 0, 0)) << "covered twice";
    EXPECT_TRUE(pointPolygonIntersect2D(star, 6, 0, 2));

    // Triangles around a common corner at awkward numbers: each point is in one alone, on their sides too.
    znTest::Random random(1);
    for (int round = 0; round < 2000; ++round) {
        const float x = static_cast<float>(random.real(0.1, 0.9)), y = static_cast<float>(random.real(0.1, 0.9));
        const float along = static_cast<float>(random.below(5)) / 4, *end = square + 2 * random.below(4);
        const float px = x + along * (end[0] - x), py = y + along * (end[1] - y);
        int count = 0;
        for (const float* side = square; side < square + 8; side += 2) {
            const float tile[] = {side[0], side[1], side[2], side[3], x, y, side[0], side[1]};
            count += pointPolygonIntersect2D(tile, 4, px, py);
        }
        ASSERT_EQ(count, inside(px, py) ? 1 : 0) << px << " " << py;
    }
}
