#include <gtest/gtest.h>

#include <array>
#include <sstream>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

/// The place that the weights of an answer stand for, by the plain text of the mesh.
std::array<double, 3> placeOf(const Json& answer, const std::string& plainMesh)
{
    std::istringstream text(plainMesh);
    std::size_t numVertices = 0, numTriangles = 0;
    text >> numVertices >> numTriangles;
    std::vector<std::array<double, 3>> vertices(numVertices);
    for (auto& vertex : vertices) text >> vertex[0] >> vertex[1] >> vertex[2];
    std::vector<std::array<std::size_t, 4>> triangles(numTriangles);
    for (auto& triangle : triangles) text >> triangle[0] >> triangle[1] >> triangle[2] >> triangle[3];
    std::array<double, 3> place{};
    for (std::size_t corner = 0; corner < 3; ++corner)
        for (std::size_t axis = 0; axis < 3; ++axis)
            place[axis] +=
                answer["weights"][corner].get<double>() * vertices[triangles.at(answer["triangle"])[corner + 1]][axis];
    return place;
}

TEST(ToolClosest, TellsDistanceTriangleAndWeights)
{
    const Scratch scratch;
    const std::string cube = scratch.write("cube.obj", cubeObj());
    report({"convert", cube, scratch.path("cube.txt")});
    const std::string plain = scratch.read("cube.txt");
    const std::string points = scratch.write(
        "points.xyz", "# x y z\n0.25 0.5 5\n\n3,0.25,0.5\r\n\t+2, 2, 2 # a corner\n5e-1 .25 0.875\n1 1 1");
    const std::vector<std::pair<double, std::array<double, 3>>> expected{
        {4, {0.25, 0.5, 1}}, {2, {1, 0.25, 0.5}}, {1.73205081, {1, 1, 1}}, {0.125, {0.5, 0.25, 1}}, {0, {1, 1, 1}}};

    const Outcome json = runTool({"closest", cube, points, "--json"}), lines = runTool({"closest", cube, points});
    const Json answers = Json::parse(json.out, nullptr, false);
    ASSERT_EQ(answers.size(), expected.size()) << json;
    std::istringstream text(lines.out);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const Json& answer = answers[i];
        EXPECT_EQ(answer["distance"], expected[i].first) << i;
        const auto place = placeOf(answer, plain);
        for (std::size_t axis = 0; axis < 3; ++axis) EXPECT_NEAR(place[axis], expected[i].second[axis], 1e-8) << i;
        double distance = 0, weights[3];
        int triangle = -1;
        text >> distance >> triangle >> weights[0] >> weights[1] >> weights[2];
        EXPECT_EQ(Json({{"distance", distance}, {"triangle", triangle}, {"weights", weights}}), answer) << lines;
    }
    std::string rest;
    EXPECT_FALSE(text >> rest) << rest;

    const Json summary = report({"closest", cube, points, "-o", scratch.path("out.json")});
    EXPECT_EQ(scratch.read("out.json"), json.out);
    EXPECT_EQ(summary["points"], 5);
    EXPECT_EQ(summary["distance_max"], 4);
    EXPECT_EQ(summary["distance_mean"], 1.57141);
}

TEST(ToolClosest, KeepsTheOrderOfThePoints)
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
}

TEST(ToolClosest, TakesTheVerticesOfAMesh)
{
    const Scratch scratch;
    const std::string grid = scratch.write("grid.obj", gridObj(9));
    // A plain file has the extension of a text; its first line tells.
    report({"convert", grid, scratch.path("grid.txt")});
    for (const std::string& points : {grid, scratch.path("grid.txt")}) {
        const Json summary = report({"closest", grid, points, "-o", scratch.path("out.txt")});
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
        {"1 2 nan\n", "line 1: a coordinate is not finite"},
        {"1 2 1e99\n", "line 1: a coordinate is not finite"},
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
