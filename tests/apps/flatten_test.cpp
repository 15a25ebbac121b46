#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

/// The texture coordinates that an OBJ file has at the corners of its faces.
struct ObjCoordinates
{
    int numVertices = 0;
    double low = 1e9, high = -1e9, widestSpan = 0;
    std::set<std::pair<int, int>> pairs; ///< position and coordinates, as indices

    explicit ObjCoordinates(const std::string& text)
    {
        std::vector<std::pair<double, double>> uvs;
        std::istringstream lines(text);
        for (std::string line, word; std::getline(lines, line);) {
            std::istringstream words(line);
            words >> word;
            numVertices += word == "v";
            if (word == "vt") {
                auto& [u, v] = uvs.emplace_back();
                words >> u >> v;
                low = std::min({low, u, v});
                high = std::max({high, u, v});
            }
            std::vector<std::pair<double, double>> corners;
            while (word == "f" && words >> word) {
                const auto uv = std::stoul(word.substr(word.find('/') + 1));
                pairs.insert({std::stoi(word), static_cast<int>(uv)});
                corners.push_back(uvs.at(uv - 1));
                word = "f";
            }
            for (const auto& [u, v] : corners)
                widestSpan = std::max({widestSpan, std::abs(u - corners[0].first), std::abs(v - corners[0].second)});
        }
    }
};

TEST(ToolFlatten, WritesCoordinatesForDisksAndCutsWhatIsNone)
{
    const Scratch scratch;
    const std::string grid = scratch.write("grid.obj", gridObj(6)), out = scratch.path("out.obj");
    Json told = report({"flatten", grid, out, "--no-cut"});
    EXPECT_EQ(told["flipped_triangles"], 0);
    EXPECT_EQ(told["seam_length"], 0);
    EXPECT_NEAR(told["stretch_largest"].get<double>(), 1, 1e-5);
    EXPECT_NEAR(told["scale_smallest"].get<double>(), 1, 1e-5);
    const ObjCoordinates flat(scratch.read("out.obj"));
    EXPECT_EQ(flat.numVertices, 49);
    EXPECT_EQ(flat.pairs.size(), 49u);

    // A closed surface is cut: positions stay shared, and no triangle reaches across the chart.
    const std::string cube = scratch.write("cube.obj", cubeObj());
    told = report({"flatten", cube, out});
    EXPECT_EQ(told["boundary_loops"], 0);
    EXPECT_EQ(told["handles"], 0);
    EXPECT_GT(told["seam_length"], 3);
    EXPECT_EQ(told["flipped_triangles"], 0);
    const ObjCoordinates opened(scratch.read("out.obj"));
    EXPECT_EQ(opened.numVertices, 8);
    EXPECT_GT(opened.pairs.size(), 8u);
    EXPECT_EQ(opened.low, 0);
    EXPECT_EQ(opened.high, 1);
    EXPECT_LT(opened.widestSpan, 0.9);
    EXPECT_EQ(info(out)["closed"], true);

    // A seam that is there is kept, and what else the file has as well.
    const std::string unused = scratch.write("box.obj", with(boxObj(), "f ", "g side\nf "));
    told = report({"flatten", unused, out, "--no-cut"});
    EXPECT_EQ(told["boundary_loops"], 1);
    EXPECT_NE(scratch.read("out.obj").find("g side"), std::string::npos);
    const Outcome again = runTool({"flatten", out, "-", "--output-format", "obj"});
    EXPECT_NE(again.err.find("texture coordinates: replaced"), std::string::npos) << again;
    EXPECT_EQ(ObjCoordinates(again.out).numVertices, 9);
}

TEST(ToolFlatten, SaysInOneLineWhatToDoFirst)
{
    const Scratch scratch;
    const std::string out = scratch.path("out.obj");
    const auto mesh = [&](const char* name, const std::string& text) { return scratch.write(name, text); };
    const std::string touching = with(with(gridObj(4), "f 7 8 13 12\n", ""), "f 13 14 19 18\n", "");
    const std::string point = "v 1 1 1\nv 1 1 1\nv 1 1 1\nf 1 2 3\n";
    const struct
    {
        std::string in;
        std::vector<std::string> words;
        std::vector<std::string> more = {};
    } cases[] = {
        {mesh("soup.stl", boxBinaryStl()), {"weld the mesh first"}},
        {mesh("two.obj", tetrahedraObj()), {"2 components; split it"}},
        {mesh("touching.obj", touching), {"the surface touches itself at 1 vertex; repair the mesh first"}},
        {mesh("three.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 -1 0\nv 0 0 1\nf 1 2 3\nf 2 1 4\nf 1 2 5\n"),
         {"1 edge has three triangles or more; repair the mesh first"}},
        {mesh("turned.obj", with(gridObj(2), "f 1 2 5 4", "f 4 5 2 1")), {"wound in opposite directions at 2 edges"}},
        {mesh("repeats.obj", gridObj(2) + "f 1 1 2\n"), {"1 triangle repeats a vertex"}},
        {mesh("nan.obj", with(gridObj(2), "v 1 1 0", "v 1 nan 0")), {"not finite; repair the mesh first"}},
        {mesh("point.obj", point), {"all borders are points"}},
        {mesh("empty.obj", "v 0 0 0\n"), {"has no triangles"}},
        {mesh("cube.obj", cubeObj()), {"it is closed; without --no-cut it is cut first"}, {"--no-cut"}},
    };
    for (const auto& [in, words, more] : cases) {
        std::vector<std::string> arguments{"flatten", in, out, "--picture", scratch.path("uv.png")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        std::vector<std::string> expected{in};
        expected.insert(expected.end(), words.begin(), words.end());
        expectOneLine(runTool(arguments), expected, in);
    }
    const std::string cube = cases[std::size(cases) - 1].in;
    expectOneLine(runTool({"flatten", cube, scratch.path("out.off")}), {"out.off", "write .obj, .ply or .glb"},
                  "format");
    expectOneLine(runTool({"flatten", cube, out, "--picture", "uv.jpg"}), {"uv.jpg", ".png"}, "picture");
    const auto names = scratch.names();
    EXPECT_EQ(std::count(names.begin(), names.end(), "out.obj") + std::count(names.begin(), names.end(), "uv.png"), 0);
}

} // namespace

} // namespace toolTest
