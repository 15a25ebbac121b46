#include <gtest/gtest.h>

#include <cmath>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

/// Twice as wide as high, turned by the angle of 3, 4, 5, with points along its sides.
const std::string turned = "0 0\n8,6\t# a corner\n\n5 10\n-3 4\n4 3\n-1.5 2\n1 7\n2 5\n";

TEST(ToolHull, FindsCornersOfPointsOutlinesAndMeshes)
{
    const Scratch scratch;
    const std::string points = scratch.write("points.txt", turned), table = scratch.path("hull.csv");
    const Json hull = report({"hull", points, table});
    EXPECT_TRUE(hull["points"] == 8 && hull["corners"] == 4 && hull["area"] == 50 && hull["length"] == 30);
    EXPECT_EQ(scratch.read("hull.csv"), "0,0\n8,6\n5,10\n-3,4\n");
    // A closed line comes back as it was.
    for (const char* name : {"line.obj", "line.ply"}) {
        report({"hull", points, scratch.path(name)});
        EXPECT_EQ(report({"hull", scratch.path(name), table})["area"], 50) << name;
        EXPECT_EQ(scratch.read("hull.csv"), "0,0\n8,6\n5,10\n-3,4\n") << name;
    }
    EXPECT_EQ(report({"hull", scratch.path("line.obj"), scratch.path("hull.svg")})["corners"], 4);
    EXPECT_NE(scratch.read("hull.svg").find("<svg"), std::string::npos);

    const std::string box = scratch.write("box.obj", cubeObj("-1", "4")), plain = scratch.write("box.txt", boxPlain());
    EXPECT_EQ(report({"hull", box, table})["area"], 10);
    EXPECT_EQ(report({"hull", box, table, "--along", "x"})["area"], 4);
    EXPECT_EQ(report({"hull", box, table, "--along", "y"})["area"], 10);
    EXPECT_EQ(scratch.read("hull.csv"), "1,-1\n1,4\n-1,4\n-1,-1\n") << "z x";
    EXPECT_EQ(report({"hull", plain, table})["corners"],
              report({"hull", scratch.write("b.obj", boxObj()), table})["corners"]);
    EXPECT_EQ(report({"hull", scratch.write("one.txt", "2 3\n2 3\n2 3\n"), table})["corners"], 1);
}

TEST(ToolBounds, TellsTheBoxAndTheSmallestRectangle)
{
    const Scratch scratch;
    const std::string points = scratch.write("points.txt", turned),
                      square = scratch.write("square", "1 0\n0 1\n-1 0\n0 -1\n");
    const Json box = report({"bounds", points}), smallest = report({"bounds", points, "--minimal"});
    EXPECT_TRUE(box["width"] == 11 && box["height"] == 10 && box["angle"] == 0 && box["ratio"] == 1);
    EXPECT_TRUE(smallest["width"] == 10 && smallest["height"] == 5 && smallest["area"] == 50);
    EXPECT_NEAR(smallest["angle"].get<double>(), std::atan2(3, 4) * 180 / std::acos(-1), 1e-5);
    EXPECT_NEAR(smallest["ratio"].get<double>(), 50.0 / 110, 1e-6);
    const Json wider = report({"bounds", points, "--minimal", "--margin", "5", "--svg", scratch.path("b.svg")});
    EXPECT_TRUE(wider["width"] == 20 && wider["height"] == 15);
    EXPECT_NEAR(wider["corners"][0][0].get<double>(), -1, 1e-12);
    EXPECT_NEAR(wider["corners"][0][1].get<double>(), -7, 1e-12);
    EXPECT_NE(scratch.read("b.svg").find("<svg"), std::string::npos);
    EXPECT_NEAR(report({"bounds", points, "--minimal", "--margin", "-2.5"})["height"].get<double>(), 0, 1e-12);
    const Json diamond = report({"bounds", square, "--minimal"});
    EXPECT_TRUE(diamond["area"] == 2 && diamond["ratio"] == 0.5 && diamond["angle"] == 45) << "a square stays one";
    const Json point = report({"bounds", scratch.write("point", "1 2 3\n"), "--along", "x", "--minimal"});
    EXPECT_TRUE(point["corners"][3] == Json({2, 3}) && point["area"] == 0 && point["ratio"] == 1);
}

TEST(ToolBounds, RefusesWhatItCannotUse)
{
    const Scratch scratch;
    const std::string points = scratch.write("points.txt", turned), table = scratch.path("hull.txt");
    const std::string bad = scratch.write("bad.txt", "1 2\n\n3 x\n"), none = scratch.write("none.txt", "# nothing\n");
    expectOneLine(runTool({"hull", bad, table}), {"bad.txt: line 3", "\"x\""}, "a word");
    expectOneLine(runTool({"hull", scratch.write("row.txt", "1 2\n1 2\n3 4 5\n"), table}), {"line 3"}, "three numbers");
    expectOneLine(runTool({"bounds", none}), {"none.txt: has no points"}, "no points");
    expectOneLine(runTool({"hull", points, points}), {"not overwritten"}, "itself");
    expectOneLine(runTool({"hull", points, scratch.path("out.stl")}), {"out.stl"}, "a format without lines");
    expectOneLine(runTool({"bounds", points, "--minimal", "--margin=-2.6"}), {"-2.6 leaves nothing"}, "a margin");
    expectOneLine(runTool({"bounds", points, "--svg", scratch.path("out.png")}), {".svg"}, "a picture");
    for (const std::vector<std::string>& wrong : {std::vector<std::string>{"bounds", points, "--along", "w"},
                                                  {"bounds", points, "--margin", "inf"},
                                                  {"hull", points}})
        EXPECT_EQ(runTool(wrong).status, 2);
    EXPECT_EQ(scratch.read("points.txt"), turned);
    EXPECT_EQ(scratch.names().size(), 4u) << "nothing is written on a failure";
}

} // namespace

} // namespace toolTest
