#include <gtest/gtest.h>

#include <cmath>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

/// Three strokes across a square of eight: two that cross it, one of which is told in pieces, and one that ends inside.
const std::string strokes = "v 0.1 3.3 0\nv 8 3.4 0\nv 2.6 0 0\nv 2.5 5 0\nv 2.5 8 0\nv 6 8 0\nv 6.1 5 1\n"
                            "l 1 2\nl 4 3\nl 4 5\nl 6 7\n";

TEST(ToolCut, CutsAlongPlanesAndLines)
{
    const Scratch scratch;
    const std::string cube = scratch.write("cube.obj", cubeObj()), out = scratch.path("out.ply");
    const Json once = report({"cut", cube, out, "--plane", "0,0,2,0.5"}); // z = 0.25
    EXPECT_TRUE(once["pieces_before"] == 1 && once["borders_before"] == 0);
    EXPECT_TRUE(once["pieces"] == 2 && once["borders"] == 2);
    EXPECT_NEAR(once["length_cut"].get<double>(), 8, 1e-6);
    EXPECT_NEAR(once["tolerance"].get<double>(), std::sqrt(12.0) * 1e-6, 1e-9);
    EXPECT_NEAR(info(out)["area"].get<double>(), 24, 1e-5);
    const Json thrice = report({"cut", cube, out, "--plane", "0,0,1,0", "--plane=-1,0,0,0.1", "--plane", "0,1,1,0.3"});
    EXPECT_EQ(thrice["pieces"], 8);

    const std::string grid = scratch.write("grid.obj", gridObj(8)), lines = scratch.write("lines.obj", strokes);
    const Json along = report({"cut", grid, out, "--along", lines, "--tolerance", "1e-5"});
    EXPECT_EQ(along["pieces"], 4);
    EXPECT_EQ(along["curves"], 3); // segments that meet are one
    EXPECT_EQ(along["ends_trimmed"], 1);
    EXPECT_NEAR(along["length_trimmed"].get<double>(), 3, 1);
    EXPECT_NEAR(along["length_cut"].get<double>(), 16, 0.2);
    const Outcome people = runTool({"cut", grid, out, "--along", lines});
    EXPECT_NE(people.out.find(": 1 end inside the surface"), std::string::npos) << people;
    EXPECT_EQ(report({"info", out})["components"], 4);
}

TEST(ToolCut, SectionsAndProjectionsAreLines)
{
    const Scratch scratch;
    const std::string cube = scratch.write("cube.obj", cubeObj()), grid = scratch.write("grid.obj", gridObj(8));
    const std::string lines = scratch.path("lines.obj"), ply = scratch.path("lines.ply");
    const Json ring = report({"section", cube, lines, "--plane", "0,0,1,0.25"});
    EXPECT_TRUE(ring["curves"] == 1 && ring["closed"] == 1 && ring["length"] == 8);
    const std::string text = scratch.read("lines.obj");
    EXPECT_TRUE(text.find("\nl 1 2 3 ") != std::string::npos && text.ends_with(" 1\n")) << text;
    // What one command writes, in either format, the others read as it was.
    EXPECT_EQ(report({"section", cube, ply, "--plane", "0,0,1,0.25"})["length"], 8);
    for (const std::string& from : {lines, ply}) {
        const Json again = report({"project", cube, from, scratch.path("again.obj")});
        EXPECT_TRUE(again["curves"] == 1 && again["closed"] == 1);
        EXPECT_NEAR(again["length"].get<double>(), 8, 1e-6);
        EXPECT_EQ(report({"cut", cube, scratch.path("cut.obj"), "--along", from})["pieces"], 2);
    }
    const std::string points = scratch.write("points.txt", "# two strokes\n0,1,5\n8 1 0 \n\n\n4 0 0\n4 4 1e0\n4 8 0\n");
    const Json laid = report({"project", grid, points, lines});
    EXPECT_TRUE(laid["curves"] == 2 && laid["closed"] == 0 && laid["length"] == 16 && laid["farthest_point"] == 5);
    EXPECT_EQ(report({"section", grid, lines, "--plane", "1,0,0,4.5"})["closed"], 0);
}

TEST(ToolCut, SaysWhatItCannotDo)
{
    const Scratch scratch;
    const std::string cube = scratch.write("cube.obj", cubeObj()), bare = scratch.write("bare.obj", "v 0 0 0\n");
    const std::string grid = scratch.write("grid.obj", gridObj(2)), out = scratch.path("out.obj");
    const auto lines = [&](const std::string& name, const std::string& text) { return scratch.write(name, text); };
    const std::string loop = lines("loop.txt", "0.9 0.2 0\n0.5 0.1 0\n0.7 0.25 0\n0.9 0.2 0\n");
    const std::string far = lines("far.txt", "0 0 9\n1 1 0\n"), inner = lines("inner.txt", "0.5 0.5 0\n1.5 1.4 0\n");
    const std::string odd = lines("odd.txt", "0 0 0\n1 x 0\n"), one = lines("one.obj", "v 0 0 0\nl 1\n");
    const std::string wrong = lines("wrong.obj", "v 0 0 0\nv 1 0 0\nl 1 3\n");
    const std::string binary = lines("bin.ply", "ply\nformat binary_little_endian 1.0\nend_header\n");
    const std::string across = lines("across.txt", "0 0 1\n0 0 -1\n");
    const std::string endless = lines("endless.obj", "v 0 0 0\nv 1 0 0\nv 0 1 inf\nf 1 2 3\n");
    struct Case
    {
        std::vector<std::string> arguments;
        std::vector<std::string> words;
    };
    for (const Case& each : std::vector<Case>{
             {{"section", cube, out, "--plane", "0,0,0,1"}, {"0,0,0,1", "no length"}},
             {{"section", cube, out, "--plane", "0,0,1"}, {"four numbers"}},
             {{"section", cube, out, "--plane", "0,0,nan,1"}, {"four numbers"}},
             {{"section", cube, scratch.path("out.stl"), "--plane", "0,0,1,0"},
              {"out.stl", ".obj or .ply, .svg or .csv"}},
             {{"section", bare, out, "--plane", "0,0,1,0"}, {"bare.obj", "no triangles"}},
             {{"section", cube, cube, "--plane", "0,0,1,0"}, {"not overwritten"}},
             {{"section", endless, out, "--every", "1"}, {"endless.obj", "not finite"}},
             {{"section", cube, out, "--every", "1e-9"}, {"more than a million"}},
             {{"project", grid, far, out}, {"far.txt", "polyline 1, point 1", "farther"}},
             {{"project", grid, odd, out}, {"odd.txt", "line 2", "\"x\" is not a finite number"}},
             {{"project", grid, one, out}, {"one.obj", "no polyline"}},
             {{"project", grid, wrong, out}, {"wrong.obj", "line 3", "\"3\" is not the number of a vertex above"}},
             {{"project", grid, binary, out}, {"bin.ply", "binary"}},
             {{"project", grid, scratch.path("none.txt"), out}, {"none.txt"}},
             {{"project", cube, across, out}, {"across.txt", "piece 1", "does not lead"}},
             {{"cut", grid, out}, {"--along or --plane"}},
             {{"cut", grid, out, "--along", loop}, {"grid.obj", "twice within one triangle", "("}},
             {{"cut", grid, out, "--along", inner}, {"nothing to cut"}},
             {{"cut", grid, out, "--plane", "1,0,0,9"}, {"misses"}},
             {{"cut", grid, out, "--plane", "1,0,0,1", "--tolerance", "99"}, {"no larger than the tolerance of 99"}},
             {{"cut", bare, out, "--plane", "1,0,0,9"}, {"no triangles"}}})
        expectOneLine(runTool(each.arguments), each.words, each.words.back());
    for (const std::string tolerance : {"-1", "0", "nan", "1e999", "wide"}) {
        const Outcome refused = runTool({"cut", grid, out, "--plane", "1,0,0,1", "--tolerance", tolerance});
        EXPECT_EQ(refused.status, 2);
        EXPECT_NE(refused.err.find("must be a distance"), std::string::npos) << refused;
    }
    EXPECT_EQ(runTool({"section", cube, out}).status, 2);
    EXPECT_EQ(scratch.read("grid.obj"), gridObj(2));
    for (const std::string& name : scratch.names()) EXPECT_NE(name, "out.obj");
}

} // namespace

} // namespace toolTest
