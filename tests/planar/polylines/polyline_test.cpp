#include "znGeom/planar/polylines/polyline.h"

#include <gtest/gtest.h>

#include "znGeom/planar/polylines/polyline_2d.h"
#include "znGeom/planar/polylines/segment.h"

using znGeom::Polyline;
using znGeom::Polyline2d;
using znLinear::Point;
using znLinear::Point2;

TEST(Polyline, IsMeasuredAlongItsParameter)
{
    // An L of 3 and 4 whose parameter runs at two speeds.
    const Polyline::vertex corners[] = {{{0, 0, 0}, 1}, {{3, 0, 0}, 2}, {{3, 4, 0}, 10}};
    const Polyline line(3, corners);
    EXPECT_EQ(line.getDomain(), znLinear::Range1d(1, 10));
    EXPECT_EQ(line.getBoundingBox(), znLinear::Range3d(Point(0, 0, 0), Point(3, 4, 0)));
    for (const auto& [parameter, place] : {std::pair(-5.0, Point(0, 0, 0)),
                                           {1.0, Point(0, 0, 0)},
                                           {1.5, Point(1.5, 0, 0)},
                                           {2.0, Point(3, 0, 0)},
                                           {4.0, Point(3, 1, 0)},
                                           {10.0, Point(3, 4, 0)},
                                           {11.0, Point(3, 4, 0)}})
        EXPECT_EQ(line.eval(parameter), place) << parameter;
    EXPECT_EQ(line.getLength(1, 10), 7);
    EXPECT_EQ(line.getLength(1.5, 4), 2.5);
    EXPECT_EQ(line.getLength(4, 1.5), 2.5);
    EXPECT_EQ(line.getLength(-3, 1.5), 1.5);
    EXPECT_EQ(line.getLength(4, 6), 1);
    EXPECT_EQ(line.getLength(20, 30), 0);
    EXPECT_FALSE(line.getClosed());
}

TEST(Polyline, IsClosedWhenItComesBackAndTakesItsOwnVertices)
{
    Polyline::vertex corners[] = {{{0, 0, 0}, 0}, {{1, 0, 0}, 1}, {{1, 1, 0}, 2}, {{1e-11, 0, 0}, 3}};
    Polyline line(4, corners);
    corners[0].point.x = 7;
    EXPECT_TRUE(line.getClosed());
    line.getVertex(3).point.y = 1e-9;
    EXPECT_FALSE(line.getClosed());
    EXPECT_FALSE(Polyline(1, corners).getClosed());
    line.initialize(2, &line.getVertex(1));
    EXPECT_EQ(line.getNumVertices(), 2);
    EXPECT_EQ(line.getVertex(0).point, Point(1, 0, 0));
    line.initialize(0, nullptr);
    EXPECT_EQ(line.getNumVertices(), 0);
    EXPECT_TRUE(line.getDomain().isEmpty() && line.getBoundingBox().isEmpty());
    EXPECT_EQ(line.getLength(0, 1), 0);
}

TEST(Polyline2d, GoesOnWhereParametersEnd)
{
    Polyline2d line({{0, 0}, {2, 0}, {2, 2}}, {5, 7});
    line.appendVertex({0, 0});
    EXPECT_EQ(line.getVertex(2).parameter, 8);
    EXPECT_EQ(line.getVertex(3).parameter, 9);
    EXPECT_EQ(line.eval(6), Point2(1, 0));
    EXPECT_EQ(line.getBoundingBox(), znLinear::Range2d(Point2(0, 0), Point2(2, 2)));
    EXPECT_TRUE(line.getClosed());
    Polyline2d other;
    other.swap(line);
    EXPECT_EQ(other.getFirstVertex().point, Point2(0, 0));
    EXPECT_EQ(line.getNumVertices(), 0);
}

TEST(Segment, IsNarrowed)
{
    const double from[] = {0.1, 0, 0}, to[] = {1, 2, 3};
    const znGeom::Segment segment(from, to);
    EXPECT_EQ(segment.start[0], 0.1f);
    EXPECT_EQ(segment.end[2], 3.0f);
}
