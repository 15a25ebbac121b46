#include <gtest/gtest.h>

#include <filesystem>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

TEST(ToolSplit, WritesEachPartToAFileTheLargestFirst)
{
    const std::vector<std::tuple<std::vector<std::string>, std::vector<int>, std::vector<int>>> cases{
        {{}, {6, 4}, {5, 4}},
        {{"--by", "vertices"}, {10}, {8}},
        {{"--parts", "3"}, {4, 3, 3}, {}},
        {{"--parts", "99"}, std::vector<int>(10, 1), std::vector<int>(10, 3)},
    };
    for (const auto& [options, triangles, vertices] : cases) {
        const Scratch scratch;
        std::vector<std::string> arguments{"split", scratch.write("in.obj", tetrahedraObj()), scratch.path("out.ply")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Json result = report(arguments);
        ASSERT_EQ(result["files"].size(), triangles.size()) << result;
        EXPECT_EQ(result["parts"], triangles.size());
        EXPECT_EQ(scratch.names().size(), triangles.size() + 1);
        for (std::size_t i = 0; i < triangles.size(); ++i) {
            const Json& file = result["files"][i];
            EXPECT_EQ(file["file"], scratch.path("out-" + std::to_string(i + 1) + ".ply"));
            const Json part = info(file["file"]);
            EXPECT_EQ(part["triangles"], triangles[i]) << result;
            EXPECT_EQ(part["triangles"], file["triangles"]);
            EXPECT_EQ(part["vertices"], file["vertices"]);
            EXPECT_EQ(part["unused_vertices"], 0);
            if (i < vertices.size()) {
                EXPECT_EQ(part["vertices"], vertices[i]) << result;
            }
            if (options.empty()) {
                EXPECT_EQ(part["volume"], 0.1666667);
            }
        }
    }
}

TEST(ToolExtract, KeepsNormalsAndTextureCoordinates)
{
    const std::string vertices =
        "v 0 0 0\nv 2 0 0\nv 0 2 0\nvn 0 0 1\nvn 0 1 0\nvn 1 0 0\nvt 0.5 0.25\nvt 1 0\nvt 0 1\n";
    const std::string small = vertices + "f 1/1/1 2/2/2 3/3/3\n";
    const std::string large = "v 0 0 1\nv 2 0 1\nv 2 2 1\nv 0 2 1\nvn 1 0 0\nvn 1 0 0\nvn 0 0 1\nvn 0 0 1\n"
                              "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nf 4/4/4 5/5/5 6/6/6\nf 4/4/4 6/6/6 7/7/7\n";
    const Scratch scratch;
    const std::string both = scratch.write("both.obj", small + large), out = scratch.path("out.obj");
    const Json result = report({"extract", both, out, "--component", "2"});
    EXPECT_EQ(result["triangles"], 1);
    EXPECT_EQ(scratch.read("out.obj"), small);
    report({"extract", both, out, "--component", "1"});
    EXPECT_EQ(info(out)["area"], 4);
    report({"split", both, out});
    EXPECT_EQ(scratch.read("out-1.obj"), scratch.read("out.obj"));
    EXPECT_EQ(scratch.read("out-2.obj"), small);
}

TEST(ToolExtract, TakesRingsOfTrianglesRoundALoop)
{
    const Scratch scratch;
    const std::string grid = scratch.write("grid.obj", gridObj(6)), out = scratch.path("rim.ply");
    // The squares left out are those between vertices that lie further inside than that many rings.
    for (const auto& [rings, triangles] : {std::pair{"1", 40}, {"2", 64}, {"3", 72}, {"2000000000", 72}}) {
        const Json result = report({"extract", grid, out, "--boundary", "1", "--rings", rings});
        EXPECT_EQ(result["triangles"], triangles) << rings;
        EXPECT_EQ(result["boundary_loop_length"], 24);
    }
    EXPECT_EQ(report({"extract", grid, out, "--boundary", "1"})["triangles"], 40);
    EXPECT_EQ(info(out)["boundary_loop_lengths"], Json({24, 16}));
    // The second loop of the ring just written is its inner one, and all its triangles touch both.
    EXPECT_EQ(report({"extract", out, out, "--boundary", "2"})["boundary_loop_length"], 16);
}

TEST(ToolParts, SaysThatWeldingWouldHelpASoup)
{
    const Scratch scratch;
    const std::string soup = scratch.write("soup.stl", boxBinaryStl()), out = scratch.path("out.ply");
    const std::string words = "25 of 33 vertices are where another one is: weld the mesh first";
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"info", soup},
                                                      {"split", soup, out},
                                                      {"split", soup, out, "--parts", "2"},
                                                      {"extract", soup, out, "--component", "1"},
                                                      {"extract", soup, out, "--boundary", "1"}}) {
        const Json notes = report(arguments)["notes"];
        ASSERT_EQ(notes.size(), 1U) << arguments[0];
        EXPECT_NE(notes[0].get<std::string>().find(words), std::string::npos) << notes;
    }
    expectOneLine(runTool({"split", soup, out, "--most", "10"}), {"11 files", words}, soup);

    // Others get no such note: one triangle, loose triangles far apart, a surface with vertices to weld.
    const std::string triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf -3 -2 -1\n";
    for (const std::string& content :
         {triangle, triangle + "v 5 0 0\nv 6 0 0\nv 5 1 0\nf -3 -2 -1\n", gridObj(4) + "v 0 0 0\nv 0 0 0\n"})
        EXPECT_EQ(info(scratch.write("in.obj", content))["notes"], Json::array()) << content;
}

TEST(ToolParts, WritesAllFilesOrNoneAndSaysWhatIsNotThere)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", tetrahedraObj()), cube = scratch.write("cube.obj", cubeObj());
    const std::string points = scratch.write("points.obj", "v 0 0 0\n"), out = scratch.path("out.obj");
    const std::string folder = scratch.path("out-2.obj");
    scratch.write("out.obj", "old"), scratch.write("out-1.obj", "old");
    std::filesystem::create_directory(folder);
    const std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> cases{
        {{"split", in, out}, {folder, "folder"}},
        {{"split", in, out, "--most", "1"}, {in, "2 files", "--most"}},
        {{"split", in, out, "--parts", "5000000", "--most", "9"}, {"10 files"}},
        {{"split", points, out}, {"no triangles"}},
        {{"split", cube, scratch.path("out.gltf")}, {"not written"}},
        {{"extract", cube, out, "--component", "2"}, {"no component 2, the mesh has 1"}},
        {{"extract", cube, out, "--boundary", "1"}, {"no boundary loop 1, the mesh has none"}},
        {{"extract", points, out, "--component", "1"}, {"no triangles"}},
    };
    for (const auto& [arguments, words] : cases) expectOneLine(runTool(arguments), words, words[0]);
    EXPECT_EQ(scratch.read("out.obj") + scratch.read("out-1.obj"), "oldold");
    EXPECT_EQ(scratch.names().size(), 6U) << "something was left behind";
}

} // namespace

} // namespace toolTest
