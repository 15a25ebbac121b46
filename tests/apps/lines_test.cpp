// The commands over lines: section by many planes, polyline and overlap.
#include <gtest/gtest.h>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

TEST(ToolLines, ManyPlanesGiveOutlinesInEveryFormat)
{
    const Scratch scratch;
    const std::string cube = scratch.write("cube.obj", cubeObj()), grid = scratch.write("grid.obj", gridObj(8));
    const std::string out = scratch.path("out.obj"), table = scratch.path("out.csv"), drawing = scratch.path("out.svg");
    // At -0.5, 0, 0.5 and 1: the plane at -1 only touches, that at 1 has the rim of the face.
    const Json sections = report({"section", cube, out, "--every", "0.5"});
    EXPECT_TRUE(sections["planes"] == 5 && sections["curves"] == 4 && sections["closed"] == 4) << sections;
    EXPECT_EQ(sections["length"], 32);
    const Json thin = report({"section", cube, table, "--every", "0.5", "--along", "x", "--decimate", "0.01"});
    EXPECT_EQ(thin["points"], 16);
    const std::string rows = scratch.read("out.csv");
    EXPECT_TRUE(rows.starts_with("line,closed,x,y,z\n1,1,-0.5,") && rows.find("\n4,1,1,") != std::string::npos) << rows;
    const Json open = report({"section", grid, drawing, "--every", "3", "--along", "x"});
    EXPECT_TRUE(open["open"] == 2 && open["closed"] == 0) << open; // at 3 and 6; the one at 0 only touches
    EXPECT_NE(scratch.read("out.svg").find("<polyline"), std::string::npos);

    const Outcome missed = runTool({"section", cube, out, "--plane", "0,0,1,7"});
    EXPECT_EQ(missed.status, 0);
    EXPECT_NE((missed.out + missed.err).find("there are no lines"), std::string::npos) << missed;
    EXPECT_EQ(scratch.read("out.obj"), "");
    EXPECT_EQ(report({"section", cube, drawing, "--every", "50", "--along", "y"})["curves"], 1); // along faces' edges
}

TEST(ToolLines, ArePulledTogetherAndThinnedOut)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.txt", "0 0 0\n1 0.01 0\n2 0 0\n\n2.001 0 0\n2 2 0\n\n0 2 0\n2 2 0.001\n");
    const std::string out = scratch.path("out.obj");
    const Json joined = report({"polyline", in, out, "--join", "0.01", "--decimate", "0.1"});
    EXPECT_TRUE(joined["curves_read"] == 3 && joined["points_read"] == 7 && joined["curves"] == 1) << joined;
    EXPECT_EQ(joined["points"], 4);
    EXPECT_EQ(report({"polyline", out, scratch.path("again.ply")})["length"], joined["length"]);
    const std::string ring = scratch.write("ring.txt", "0 0 0\n1 0 0\n1 1 0\n0 1 0\n0 0 0\n");
    const Json closed = report({"polyline", ring, scratch.path("ring.svg")});
    EXPECT_TRUE(closed["closed"] == 1 && closed["points"] == 4 && closed["length"] == 4) << closed;
    EXPECT_EQ(report({"polyline", ring, out, "--decimate", "5"})["curves"], 0) << "smaller than the tolerance";
}

TEST(ToolLines, OverlapIsToldAlongBoth)
{
    const Scratch scratch;
    const std::string a = scratch.write("a.txt", "0 9 0\n1 9 0\n1 8 0\n\n0 0.1 0\n4 0.1 0\n6 3 0\n");
    const std::string b = scratch.write("b.txt", "8 0 0\n6 0 0\n2 0 0\n");
    const Json found = report({"overlap", a, b, "--tolerance", "0.2"});
    EXPECT_TRUE(found["overlap"] == true && found["line_of_a"] == 2 && found["reversed"] == true) << found;
    EXPECT_NEAR(found["length"].get<double>(), 2, 0.2);
    EXPECT_NEAR(found["greatest_distance"].get<double>(), 0.2, 1e-5);
    EXPECT_EQ(report({"overlap", a, b, "--tolerance", "0.2", "--same-direction"})["overlap"], false);
    EXPECT_EQ(report({"overlap", a, b, "--tolerance", "0.05"})["overlap"], false);
}

TEST(ToolLines, SayWhatTheyCannotDo)
{
    const Scratch scratch;
    const std::string cube = scratch.write("cube.obj", cubeObj()), out = scratch.path("out.obj");
    const std::string odd = scratch.write("odd.txt", "0 0 0\n1 x 0\n"), one = scratch.write("one.txt", "0 0 0\n");
    struct Case
    {
        std::vector<std::string> arguments, words;
    };
    for (const Case& each :
         std::vector<Case>{{{"section", cube, out, "--every", "1e-9"}, {"cube.obj", "a million planes"}},
                           {{"polyline", odd, out}, {"odd.txt", "line 2", "\"x\" is not a finite number"}},
                           {{"polyline", one, out}, {"one.txt", "no polyline"}},
                           {{"polyline", cube, scratch.path("out.stl")}, {"out.stl", ".obj or .ply, .svg or .csv"}},
                           {{"overlap", one, odd, "--tolerance", "1"}, {"one.txt", "no polyline"}}})
        expectOneLine(runTool(each.arguments), each.words, each.words.back());
    for (const auto& wrong :
         std::vector<std::vector<std::string>>{{"section", cube, out, "--every", "0"},
                                               {"section", cube, out, "--along", "x"},
                                               {"section", cube, out, "--every", "1", "--plane", "0,0,1,0"},
                                               {"polyline", odd, out, "--decimate", "-1"},
                                               {"polyline", odd, out, "--join", "nan"},
                                               {"overlap", odd, odd}})
        EXPECT_EQ(runTool(wrong).status, 2);
    for (const std::string& name : scratch.names()) EXPECT_NE(name, "out.obj");
}

} // namespace

} // namespace toolTest
