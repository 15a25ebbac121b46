#include <gtest/gtest.h>

#include <sstream>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

const std::string square = "v 0 0 0\nv 2 0 0\nv 2 2 0\nv 0 2 0\nf 1 2 3 4\n";
/// Crosses the square from (1.5, 0.5) to (1.5, 1), which is in one triangle of it.
const std::string blade = "v 1.5 0.5 -1\nv 1.5 0.5 1\nv 1.5 1.5 -1\nf 1 2 3\n";

TEST(ToolIntersect, WritesTheCrossingsAsLines)
{
    const Scratch scratch;
    const std::string a = scratch.write("a.obj", square), b = scratch.write("b.obj", blade);
    const Json told = report({"intersect", a, b, scratch.path("lines.obj")});
    EXPECT_EQ(told["crossings"], 1);
    EXPECT_EQ(told["length"], 0.5);
    EXPECT_EQ(told["crossing_triangles"], (Json{{0, 0}}));
    double x[2], y[2], z[2];
    const std::string lines = scratch.read("lines.obj");
    ASSERT_EQ(std::sscanf(lines.c_str(), "v %lf %lf %lf\nv %lf %lf %lf\n", &x[0], &y[0], &z[0], &x[1], &y[1], &z[1]),
              6);
    for (const int end : {0, 1}) {
        EXPECT_EQ(x[end], 1.5);
        EXPECT_EQ(z[end], 0);
    }
    EXPECT_EQ(std::min(y[0], y[1]), 0.5);
    EXPECT_EQ(std::max(y[0], y[1]), 1);
    EXPECT_TRUE(lines.ends_with("\nl 1 2\n")) << lines;

    EXPECT_EQ(report({"intersect", b, a, scratch.path("lines.ply")})["length"], 0.5);
    const std::string ply = scratch.read("lines.ply");
    for (const char* words : {"element vertex 2\n", "element edge 1\nproperty int vertex1\nproperty int vertex2\n"})
        EXPECT_NE(ply.find(words), std::string::npos) << ply;
    EXPECT_TRUE(ply.ends_with("\n0 1\n")) << ply;
    EXPECT_EQ(report({"info", scratch.path("lines.ply")})["vertices"], 2);

    const Outcome piped = runTool({"intersect", "-", b, "-", "--format", "obj"}, a);
    EXPECT_EQ(piped.status, 0);
    EXPECT_EQ(piped.out, lines);
    EXPECT_NE(piped.err.find("crossings"), std::string::npos) << piped;
}

TEST(ToolIntersect, FindsClosedCurvesAndNothingWhereThereIsNothing)
{
    const Scratch scratch;
    const std::string cube = scratch.write("cube.obj", cubeObj()), lines = scratch.path("lines.obj");
    // A slice through the cube at z = 0.25: four sides of length 2.
    const std::string slice =
        scratch.write("slice.obj", "v -3 -3.1 0.25\nv 3 -3 0.25\nv 3 3.2 0.25\nv -3 3 0.25\nf 1 2 3 4\n");
    const Json cut = report({"intersect", cube, slice, lines});
    EXPECT_NEAR(cut["length"].get<double>(), 8, 1e-5);
    EXPECT_EQ(cut["triangles_of_a"], 8);
    EXPECT_EQ(cut["triangles_of_b"], 2);
    const std::string apart = scratch.write("apart.obj", cubeObj("5", "7"));
    EXPECT_EQ(report({"intersect", cube, apart, lines})["crossings"], 0);
    EXPECT_EQ(scratch.read("lines.obj"), "");
}

TEST(ToolIntersect, SaysWhatItCannotDo)
{
    const Scratch scratch;
    const std::string a = scratch.write("a.obj", square), b = scratch.write("b.obj", blade);
    const std::string bare = scratch.write("bare.obj", "v 0 0 0\n"), lines = scratch.path("lines.obj");
    for (const char* name : {"lines.stl", "lines.off", "lines.glb", "lines.xyz", "lines.txt"})
        expectOneLine(runTool({"intersect", a, b, scratch.path(name)}), {name, ".obj or .ply"}, name);
    expectOneLine(runTool({"intersect", a, a, lines}), {"a.obj", "zngeom check"}, "the same");
    expectOneLine(runTool({"intersect", a, b, b}), {"b.obj", "not overwritten"}, "over an input");
    expectOneLine(runTool({"intersect", "-", "-", lines, "--format", "obj"}, a), {"only one"}, "twice");
    expectOneLine(runTool({"intersect", a, bare, lines}), {"bare.obj: has no triangles"}, "points");
    EXPECT_EQ(scratch.read("a.obj"), square);
    EXPECT_EQ(scratch.names(), (std::vector<std::string>{"a.obj", "b.obj", "bare.obj"}));
}

} // namespace

} // namespace toolTest
