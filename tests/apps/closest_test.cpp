#include <gtest/gtest.h>

#include <sstream>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

TEST(ToolClosest, ReportsDistanceTriangleAndWeights)
{
    const Scratch scratch;
    const std::string mesh =
        scratch.write("mesh.obj", "v 0 0 0\nv 4 0 0\nv 0 4 0\nv 0 0 100\nv 4 0 100\nv 0 4 100\nf 1 2 3\nf 4 5 6\n");
    const std::string points =
        scratch.write("points.xyz", "# x y z\n1 2 5\n\n1,-3,0\r\n\t-1, -1, 101 # a corner\n+1e0 1 .99e2\n0 4 0");
    const Json expected = Json::parse(R"([{"distance": 5, "triangle": 0, "weights": [0.25, 0.25, 0.5]},
                                          {"distance": 3, "triangle": 0, "weights": [0.75, 0.25, 0]},
                                          {"distance": 1.73205081, "triangle": 1, "weights": [1, 0, 0]},
                                          {"distance": 1, "triangle": 1, "weights": [0.5, 0.25, 0.25]},
                                          {"distance": 0, "triangle": 0, "weights": [0, 0, 1]}])");
    const Outcome json = runTool({"closest", mesh, points, "--json"});
    EXPECT_EQ(Json::parse(json.out, nullptr, false), expected) << json;
    EXPECT_EQ(runTool({"closest", mesh, points}).out,
              "5 0 0.25 0.25 0.5\n3 0 0.75 0.25 0\n1.73205081 1 1 0 0\n1 1 0.5 0.25 0.25\n0 0 0 0 1\n");

    const Json summary = report({"closest", mesh, points, "-o", scratch.path("out.json")});
    EXPECT_EQ(scratch.read("out.json"), json.out);
    EXPECT_EQ(summary["points"], 5);
    EXPECT_EQ(summary["distance_max"], 5);
    EXPECT_EQ(summary["distance_mean"], 2.14641);
}

TEST(ToolClosest, KeepsTheOrderOfThePointsAndTakesTheVerticesOfAMesh)
{
    const Scratch scratch;
    std::string points;
    for (int i = 0; i < 3000; ++i) points += std::to_string(i % 2) + " 0 " + std::to_string(1 + i) + "\n";
    const std::string path = scratch.write("points.csv", points), cube = scratch.write("cube.obj", cubeObj());
    std::istringstream lines(runTool({"closest", cube, path}).out);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        ASSERT_TRUE(line.starts_with(std::to_string(count) + " ")) << count << ": " << line;
    EXPECT_EQ(count, 3000);

    const std::string grid = scratch.write("grid.obj", gridObj(9));
    // A plain file has the extension of a text; its first line decides.
    report({"convert", grid, scratch.path("grid.txt")});
    for (const std::string& mesh : {grid, scratch.path("grid.txt")}) {
        const Json summary = report({"closest", grid, mesh, "-o", scratch.path("out.txt")});
        EXPECT_EQ(summary["points"], 100);
        EXPECT_EQ(summary["distance_max"], 0);
    }
    EXPECT_EQ(runTool({"closest", grid, scratch.write("points.txt", "2 2 3\n")}).out.substr(0, 2), "3 ");
}

TEST(ToolClosest, SaysWhatItCannotMeasure)
{
    const Scratch scratch;
    const std::string cube = scratch.write("cube.obj", cubeObj()), good = scratch.write("good.xyz", "1 2 3\n");
    const std::string cloud = scratch.write("cloud.obj", "v 0 0 0\n");
    const std::string broken = scratch.write("nan.obj", "v 0 0 0\nv 1 0 0\nv nan 1 0\nf 1 2 3\n");
    const std::vector<std::pair<std::string, std::string>> texts{
        {"1 2 3\n4 5\n6 7 8\n", "line 2: a point has fewer than three"},
        {"# a\n\n1 2 3 4\n", "line 3: a point has more than three"},
        {"1 2 3\n1 2 x\n", "line 2: \"x\" is not a number"},
        {"1 2 nan\n", "vertex 0, counted from 0, has a coordinate that is not finite"},
        {"1 2 1e99\n", "vertex 0, counted from 0, has a coordinate that is not finite"},
        {"# nothing\n\n", "has no points"},
        {"", "is empty"},
    };
    for (const auto& [text, words] : texts) {
        const std::string points = scratch.write("points.xyz", text);
        expectOneLine(runTool({"closest", cube, points, "-o", good}), {points, words}, text);
    }
    const std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> cases{
        {{"closest", cloud, good}, {cloud, "no triangles"}},
        {{"closest", broken, good}, {broken, "vertex 2", "not finite"}},
        {{"closest", cube, broken}, {broken, "vertex 2", "not finite"}},
        {{"closest", cube, scratch.path("missing.xyz")}, {"missing.xyz", "No such file"}},
        {{"closest", cube, good, "-o", good}, {good, "not overwritten"}},
        {{"closest", cube, good, "-o", scratch.path("no/where")}, {"no/where", "No such file"}},
    };
    for (const auto& [arguments, words] : cases) expectOneLine(runTool(arguments), words, arguments[1]);
    EXPECT_EQ(scratch.read("good.xyz"), "1 2 3\n");
}

} // namespace

} // namespace toolTest
