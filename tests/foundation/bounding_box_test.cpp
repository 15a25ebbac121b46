#include <cmath>

#include <gtest/gtest.h>

#include "tests/spatial/spatial_support.h"

using namespace znGeom;
using namespace znLinear;
using znTest::boxOf;

namespace {

const BoundingBox invalid, unit = boxOf({0, 0, 0}, {1, 1, 1});

} // namespace

TEST(BoundingBox, TheInvalidBoxHoldsNothingAndBecomesWhatItIsExtendedBy)
{
    EXPECT_FALSE(invalid.intersects(invalid) || invalid.intersects(unit) || contains(invalid, {0, 0, 0}));
    EXPECT_TRUE(invalid.distance2({0, 0, 0}) > double(BoundingBox::largest) && invalid.distance2({0, 0, 0}) < 1e300);
    BoundingBox box;
    box.extendToCube(), box.transform(AffineMatrixFlt(-3.0f)), box.extend(invalid), box.extend(PointFlt(NAN, NAN, NAN));
    EXPECT_EQ(box, invalid);
    const double centre[3] = {0.1, 0.2, 0.3};
    const float narrowed[3] = {0.1f, 0.2f, 0.3f};
    box.extend(PointFlt(narrowed));
    EXPECT_TRUE(box == BoundingBox(centre) && box == BoundingBox(narrowed));
    box.extend(0.5f);
    EXPECT_EQ(box, BoundingBox(narrowed, 0.5f));
    box.extend(PointFlt(NAN, 7, -7));
    EXPECT_EQ(box, boxOf({-0.4f, 0.2f - 0.5f, -7}, {0.6f, 7, 0.8f}));
}

TEST(BoundingBox, FacesBelongToTheBox)
{
    for (int axis = 0; axis < 3; ++axis)
        for (const float at : {1.0f, std::nextafter(1.0f, 2.0f)}) {
            PointFlt p(0.5f, 0.5f, 0.5f);
            p[axis] = at;
            const BoundingBox past = boxOf(p, {2, 2, 2});
            EXPECT_TRUE(contains(unit, p) == (at == 1) && unit.contains(boxOf({0, 0, 0}, p)) == (at == 1));
            EXPECT_TRUE(unit.intersects(past) == (at == 1) && past.intersects(unit) == (at == 1));
            EXPECT_EQ(unit.intersects2D(past) && past.intersects2D(unit), at == 1 || axis == 2);
        }
    EXPECT_FALSE(equivalent(unit, boxOf({0, 0, 0}, {1, 1, 1.25f}), 0.25f)) << "the tolerance itself is a difference";
}

TEST(BoundingBox, MeasuresOfRandomBoxes)
{
    znTest::Random random(1);
    for (int round = 0; round < 500; ++round) {
        const BoundingBox box = boxOf(znTest::pointFlt(random, 2), znTest::pointFlt(random, 2));
        const PointFlt p = znTest::pointFlt(random, 4);
        PointFlt nearest;
        AffineMatrix matrix;
        BoundingBox moved = box, movedFlt = box, cube = box, expected, span;
        for (int i = 0; i < 4; ++i) matrix.setRow(i, random.vector());
        for (int i = 0; i < 3; ++i) nearest[i] = std::clamp(p[i], box.minPt()[i], box.maxPt()[i]);
        for (int i = 0; i < 8; ++i) {
            PointFlt corner;
            box.getPoint(i, &corner.x);
            expected.extend(PointFlt(Point(corner) * matrix));
            span.extend(PointFlt(dot(corner.asVector(), VectorFlt(matrix.row(1))), 0, 0));
        }
        EXPECT_EQ(box.distance2(p), distance2<double>(p, nearest));
        moved.transform(matrix), movedFlt.transform(AffineMatrixFlt(matrix)), cube.extendToCube();
        EXPECT_TRUE(moved == expected && equivalent(moved, movedFlt, 1e-5f));
        float low = 7, high = -7;
        project(box, VectorFlt(matrix.row(1)), low, high);
        EXPECT_TRUE(low == span.minX && high == span.maxX);
        const VectorFlt half = box.halfDiagonal();
        const float longest = std::max({half.dx, half.dy, half.dz});
        EXPECT_TRUE(cube.contains(box) && equivalent(cube.center(), box.center(), 1e-6f));
        EXPECT_TRUE(equivalent(cube.halfDiagonal(), VectorFlt(longest, longest, longest), 1e-6f));
    }
}

TEST(SceneBoundingBox, IsUnknownOnceARemovalTouchedTheExtent)
{
    const float top = BoundingBox::largest;
    // What is removed from 0 to 4 on one axis, and what is left there.
    const float cases[][4] = {{1, 2, 0, 4},  {0, 2, 4, 4},   {1, 4, 0, 0},      {0, 4, top, -top},
                              {5, 6, 0, 4},  {-2, -1, 0, 4}, {0, 5, 4, 4},      {-1, 4, 0, 0},
                              {-1, 5, 0, 4}, {4, 4, 0, 0},   {top, -top, 0, 4}, {0, 0, 4, 4}};
    for (int number = 0; number < 36; ++number) {
        const auto& [from, to, low, high] = cases[number / 3];
        const BoundingBox all = boxOf({0, 0, 0}, {4, 4, 4});
        BoundingBox removed = boxOf({1, 1, 1}, {2, 2, 2}), left = all;
        (&removed.minX)[number % 3] = from, (&removed.maxX)[number % 3] = to;
        (&left.minX)[number % 3] = low, (&left.maxX)[number % 3] = high;
        SceneBoundingBox scene;
        scene.addItemBox(boxOf({0, 0, 0}, {3, 3, 3})), scene.addItemBox(boxOf({2, 2, 2}, {4, 4, 4}));
        scene.removeItemBox(removed), scene.removeItemBox(boxOf({1, 1, 1}, {2, 2, 2}));
        EXPECT_EQ(scene.workingBox, left) << from << ' ' << to;
        EXPECT_TRUE(scene.known() == (low == 0 && high == 4) && scene.getSceneBox() == all);
        scene.reset();
        EXPECT_TRUE(scene.known() && scene.getSceneBox() == invalid);
    }
}
