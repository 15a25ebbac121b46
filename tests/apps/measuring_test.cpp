#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

std::vector<double> numbersOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<double> numbers;
    for (std::string word; stream >> word;) numbers.push_back(std::strtod(word.c_str(), nullptr));
    return numbers;
}

/// A ball of radius 1/16 whose unit is so small that no ray of unit length sees its triangles.
std::string ballObj(int rows)
{
    std::ostringstream obj;
    const int columns = 2 * rows;
    const double pi = std::acos(-1);
    obj.precision(9);
    for (int row = 1; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            const double across = pi * row / rows, around = 2 * pi * column / columns;
            obj << "v " << std::sin(across) * std::cos(around) / 16 << ' ' << std::sin(across) * std::sin(around) / 16
                << ' ' << std::cos(across) / 16 << '\n';
        }
    obj << "v 0 0 0.0625\nv 0 0 -0.0625\n";
    const int top = (rows - 1) * columns + 1;
    const auto at = [&](int row, int column) { return (row - 1) * columns + column % columns + 1; };
    for (int c = 0; c < columns; ++c) {
        obj << "f " << top << ' ' << at(1, c) << ' ' << at(1, c + 1) << '\n';
        obj << "f " << top + 1 << ' ' << at(rows - 1, c + 1) << ' ' << at(rows - 1, c) << '\n';
        for (int r = 1; r + 1 < rows; ++r)
            obj << "f " << at(r, c) << ' ' << at(r + 1, c) << ' ' << at(r + 1, c + 1) << ' ' << at(r, c + 1) << '\n';
    }
    return obj.str();
}

TEST(ToolCurvature, MeasuresABallAndCountsWhatHasNoCurvature)
{
    const Scratch scratch;
    const std::string ball = scratch.write("ball.obj", ballObj(40)), text = scratch.path("values.txt");
    for (const auto& [type, expected] : {std::pair{"mean", 16.0}, {"gauss", 256.0}, {"min", 16.0}, {"max", 16.0}}) {
        const Json told = report({"curvature", ball, text, "--type", type});
        const std::vector<double> values = numbersOf(scratch.read("values.txt"));
        ASSERT_EQ(values.size(), 3122U);
        // Not at the poles and next to them, where triangles are needles.
        for (std::size_t v = 400; v < 2700; ++v) ASSERT_NEAR(values[v] / expected, 1, 0.12) << type << " " << v;
        EXPECT_EQ(told["not_finite"], 0);
        EXPECT_NEAR(told["range"][0].get<double>() / expected, 1, 0.2);
    }

    const std::string flawed = scratch.write("flawed.obj", gridObj(9) + "v 4 4 0\nv 4 4 0\nv 5 4 0\nf 101 102 103\n");
    const Json told = report({"curvature", flawed, scratch.path("out.ply"), "--range", "-1,1"});
    EXPECT_EQ(told["range"], Json({-1, 1}));
    const std::string ply = scratch.read("out.ply");
    EXPECT_NE(ply.find("property float value\nproperty uchar red"), std::string::npos);
    const Json again = info(scratch.path("out.ply"));
    EXPECT_EQ(again["vertices"], 103);
    EXPECT_EQ(again["triangles"], 163);
    // Standard output gets the values alone.
    EXPECT_EQ(numbersOf(runTool({"curvature", flawed, "-", "-q"}).out).size(), 103U);

    const std::string collapsed = scratch.write("collapsed.obj", with(gridObj(4), "v 2 2 0", "v 3 2 0"));
    EXPECT_GE(report({"curvature", collapsed, text})["not_finite"], 2);
}

TEST(ToolDistance, MeasuresEachWayAndBoth)
{
    const Scratch scratch;
    // The smaller cube lies inside; the larger one's corners are farthest.
    const std::string large = scratch.write("large.obj", cubeObj("-2", "2")),
                      small = scratch.write("small.obj", cubeObj() + "v 9 9 9\n");
    const Json told = report({"distance", large, small, "--signed"});
    EXPECT_EQ(told["measured_at"], "vertices");
    EXPECT_EQ(told["a_to_b"]["points"], 8);
    EXPECT_EQ(told["a_to_b"]["largest"], 1);
    EXPECT_EQ(told["a_to_b"]["lowest"], 1);
    EXPECT_EQ(told["b_to_a"]["largest"], 0);
    EXPECT_EQ(told["both"]["mean"], 0.5);
    EXPECT_NEAR(told["both"]["rms"].get<double>(), std::sqrt(0.5), 1e-6);
    EXPECT_EQ(told["both"]["points"], 16);
    EXPECT_NEAR(told["both"]["largest_part"].get<double>(), 1 / std::hypot(11, 10, 10), 1e-6);
    // In the other order it is the larger cube's vertices that lie outside.
    const Json turned = report({"distance", small, large, "--signed", "-o", scratch.path("heat.txt")});
    EXPECT_EQ(turned["b_to_a"]["signed_mean"], 1);
    EXPECT_EQ(turned["not_finite"], 1);

    // Points of the triangles know what vertices don't: a roof over a square.
    const std::string square = scratch.write("square.obj", "v 0 0 0\nv 4 0 0\nv 4 4 0\nv 0 4 0\nf 1 2 3 4\n"),
                      roof = scratch.write("roof.obj", "v 0 0 0\nv 4 0 0\nv 4 4 0\nv 0 4 0\nv 2 2 1\n"
                                                       "f 1 2 5\nf 2 3 5\nf 3 4 5\nf 4 1 5\n");
    EXPECT_EQ(report({"distance", square, roof})["a_to_b"]["largest"], 0);
    const Json fine = report({"distance", square, roof, "--spacing", "0.125", "-o", scratch.path("heat.ply")});
    EXPECT_EQ(fine["measured_at"], "vertices and points at most 0.125 apart");
    EXPECT_NEAR(fine["a_to_b"]["largest"].get<double>(), 2 / std::sqrt(5.0), 0.01);
    EXPECT_EQ(fine["a_to_b"]["largest_at"], Json({2, 2, 0}));
    EXPECT_GT(fine["a_to_b"]["points"], 1000);
    EXPECT_EQ(info(scratch.path("heat.ply"))["vertices"], 4);
    // More points in each triangle than are measured at once: a lattice of 800 parts, without its corners.
    const std::string speck = scratch.write("speck.obj", "v 0 0 1\nv 0.001 0 1\nv 0 0.001 1\nf 1 2 3\n");
    const Json finest = report({"distance", square, speck, "--spacing", std::to_string(std::hypot(4, 4) / 799.5)});
    EXPECT_EQ(finest["a_to_b"]["points"], 4 + 2 * (801 * 802 / 2 - 3));
    EXPECT_EQ(finest["b_to_a"]["points"], 3);
}

TEST(ToolRay, TellsWhatIsHitHoweverSmallTheUnit)
{
    const Scratch scratch;
    const std::string rays = scratch.write("rays.txt", "# from the right, away, from within\n1 0.001 0.002 -5 0 0\n\n"
                                                       "1,0,0,1,0,0 # misses\r\n0 0.001 0.002 0 1e-200 0\n");
    const std::string ball = scratch.write("ball.obj", ballObj(150));
    const Json hits = Json::parse(runTool({"ray", ball, rays, "--json"}).out);
    ASSERT_EQ(hits.size(), 3U);
    EXPECT_NEAR(hits[0]["distance"].get<double>(), 0.9375, 1e-4);
    EXPECT_TRUE(hits[1].is_null());
    EXPECT_NEAR(hits[2]["distance"].get<double>(), 0.0625 - 0.001, 1e-4);
    EXPECT_NEAR(hits[2]["weights"][0].get<double>() + hits[2]["weights"][1].get<double>() +
                    hits[2]["weights"][2].get<double>(),
                1, 1e-6);
    EXPECT_EQ(runTool({"ray", ball, rays, "--any"}).out, "hit\nmiss\nhit\n");
    EXPECT_EQ(Json::parse(runTool({"ray", ball, rays, "--any", "--json"}).out), Json({true, false, true}));

    // Of the cube's front, seen from x = 4; the numbers of the whole beside a file.
    const std::string cube = scratch.write("cube.obj", cubeObj());
    EXPECT_EQ(runTool({"ray", cube, scratch.write("one.txt", "4 0.5 -0.5 -2 0 0")}).out.substr(0, 2), "3 ");
    const Json told = report({"ray", ball, rays, "-o", scratch.path("out.txt")});
    EXPECT_EQ(told["rays"], 3);
    EXPECT_EQ(told["hits"], 2);
    // A triangle with sides of a few last digits, before one of ten million times that size; a ball next to nothing.
    const std::string speck = scratch.write("speck.obj", "v 0 0 0\nv 1000 0 0\nv 0 1000 0\nf 1 2 3\nv 100 100 5\n"
                                                         "v 100.0001 100 5\nv 100 100.0001 5\nf 4 5 6\n");
    const std::string above = scratch.write("above.txt", "100.00003 100.00003 9 0 0 -1\n");
    EXPECT_EQ(runTool({"ray", speck, above}).out.substr(0, 4), "4 1 ");
    const std::string dust = scratch.write("dust.obj", "v 0 0 0\nv 4e-41 0 0\nv 0 4e-41 0\nf 1 2 3\n");
    EXPECT_EQ(runTool({"ray", dust, scratch.write("down.txt", "1e-41 1e-41 3e-41 0 0 -1\n"), "--any"}).out, "hit\n");
    EXPECT_EQ(scratch.read("out.txt"), runTool({"ray", ball, "-", "--json"}, rays).out);
}

TEST(ToolInside, TellsInsideFromOutsideAndSurface)
{
    const Scratch scratch;
    const std::string cube = scratch.write("cube.obj", cubeObj()),
                      points = scratch.write("points.txt", "0 0 0\n0.9 0 0\n2 0 0\n0.99 0.2 0.1\n");
    EXPECT_EQ(runTool({"inside", cube, points}).out, "inside\ninside\noutside\ninside\n");
    EXPECT_EQ(Json::parse(runTool({"inside", cube, points, "--tolerance", "0.05", "--json"}).out),
              Json({"inside", "inside", "outside", "surface"}));
    const std::string out = scratch.path("out.txt");
    const Json told = report({"inside", cube, points, "-o", out});
    EXPECT_EQ(told["inside"], 3);
    EXPECT_EQ(told["notes"], Json::array());
    const auto noteOn = [&](const std::string& obj) {
        const Json notes = report({"inside", scratch.write("flawed.obj", obj), points, "-o", out})["notes"];
        return notes.size() == 1 ? notes[0].get<std::string>() : notes.dump();
    };
    EXPECT_NE(noteOn(cubeObj("1", "-1")).find("inside out"), std::string::npos);
    EXPECT_NE(noteOn(gridObj(3)).find("not closed"), std::string::npos);
    EXPECT_NE(noteOn(with(cubeObj(), "f 1 3 4 2", "f 1 2 4 3")).find("wound against"), std::string::npos);
}

TEST(ToolMeasuring, SaysWhatIsWrongInOneLineAndWritesNothing)
{
    const Scratch scratch;
    const std::string cube = scratch.write("cube.obj", cubeObj()), cloud = scratch.write("cloud.obj", "v 0 0 0\n"),
                      broken = scratch.write("nan.obj", "v 0 0 0\nv 1 0 0\nv nan 1 0\nf 1 2 3\n"),
                      good = scratch.write("good.txt", "5 0 0 -1 0 0\n"), out = scratch.path("out.ply");
    const std::vector<std::pair<std::string, std::string>> texts{
        {"1 2 3 4 5 6\n1 2 3 4 5\n", "line 2: a ray has fewer than six numbers"},
        {"# a\n1 2 3 4 5 6 7\n", "line 2: a ray has more than six numbers"},
        {"1 2 3 0 0 0\n", "line 1: the direction has no length"},
        {"1 2 3 x 0 0\n", "line 1: \"x\" is not a finite number"},
        {std::string(1000, 'x') + "\n", "line 1: \"xxxxxxxxxxxxxxxxxxxxxxxx...\" is not a finite number"},
        {"1 2 inf 1 0 0\n", "line 1: \"inf\" is not a finite number"},
        {"#\n\n", "has no rays"},
        {"", "is empty"},
    };
    for (const auto& [text, words] : texts) {
        const std::string rays = scratch.write("rays.txt", text);
        expectOneLine(runTool({"ray", cube, rays, "-o", out}), {rays, words}, text);
    }
    const std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> cases{
        {{"ray", cloud, good, "-o", out}, {cloud, "no triangles"}},
        {{"ray", broken, good, "-o", out}, {broken, "not finite"}},
        {{"ray", cube, good, "-o", good}, {good, "not overwritten"}},
        {{"inside", cloud, good, "-o", out}, {cloud, "no triangles"}},
        {{"inside", cube, scratch.path("none.xyz"), "-o", out}, {"none.xyz", "No such file"}},
        {{"curvature", cloud, out}, {cloud, "no triangles"}},
        {{"curvature", cube, scratch.path("out.stl")}, {"out.stl", "values are written to .ply"}},
        {{"curvature", cube, out, "--picture", "picture.gif"}, {"picture.gif", "png"}},
        {{"curvature", cube, out, "--range", "2,1"}, {"--range 2,1: expected two numbers"}},
        {{"curvature", cube, out, "--range", "1"}, {"--range 1: expected two numbers"}},
        {{"distance", cube, cube, "-o", out, "--range", "0,nan"}, {"--range 0,nan: expected two numbers"}},
        {{"distance", cube, cloud, "-o", out}, {cloud, "no triangles"}},
        {{"distance", broken, cube, "-o", out}, {broken, "not finite"}},
        {{"distance", cube, cube, "-o", scratch.path("out.obj")}, {"out.obj", "values are written to .ply"}},
        {{"distance", cube, cube, "--spacing", "1e-7", "-o", out}, {cube, "more than can be measured"}},
    };
    for (const auto& [arguments, words] : cases) expectOneLine(runTool(arguments), words, arguments[0] + arguments[1]);
    EXPECT_EQ(runTool({"curvature", cube, out, "--type", "mode"}).status, 2);
    EXPECT_EQ(runTool({"distance", cube, cube, "--spacing", "0"}).status, 2);
    EXPECT_EQ(runTool({"inside", cube, good, "--tolerance", "-1"}).status, 2);
    EXPECT_EQ(scratch.names(), (std::vector<std::string>{"cloud.obj", "cube.obj", "good.txt", "nan.obj", "rays.txt"}));
}

} // namespace

} // namespace toolTest
