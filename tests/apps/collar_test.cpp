#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

TEST(ToolCollar, StandsOnAWholeLoop)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", gridObj(4)), out = scratch.path("out.obj");
    const std::string picture = scratch.path("collar.png");
    for (const auto& [count, quads, width] : {std::tuple{"", 16, 1.0}, {"3", 3, 16.0 / 3}, {"41", 41, 16.0 / 41}}) {
        std::vector<std::string> arguments{"collar", in, out, "--loop", "1", "--picture", picture};
        if (*count != 0) arguments.insert(arguments.end(), {"--count", count});
        const Json told = report(arguments);
        EXPECT_EQ(told["whole_loop"], true);
        EXPECT_EQ(told["quads"], quads);
        EXPECT_EQ(told["places"], quads);
        EXPECT_NEAR(told["length"].get<double>(), 16, 1e-5);
        EXPECT_NEAR(told["width"].get<double>(), width, 1e-5);
        EXPECT_EQ(told["turned_quads"], 0);
        const Json strip = info(out);
        EXPECT_EQ(strip["triangles"], 2 * quads);
        EXPECT_EQ(strip["boundary_loops"], 2);
        EXPECT_EQ(strip["unbalanced_edges"], 0);
        EXPECT_EQ(strip["components"], 1);
        EXPECT_TRUE(scratch.read("collar.png").starts_with("\x89PNG"));
    }
}

TEST(ToolCollar, WritesFramesOfAPartAsATable)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", gridObj(4));
    const auto write = [&](const std::string& name, std::vector<std::string> more) {
        more.insert(more.begin(), {"collar", in, scratch.path(name), "--loop", "1", "--from", "0", "--to", "4"});
        const Json told = report(more);
        EXPECT_EQ(told["whole_loop"], false);
        EXPECT_EQ(told["turned_quads"], 0);
        return told;
    };
    const Json told = write("frames.json", {"--curvature", "--count", "8"});
    const Json frames = Json::parse(scratch.read("frames.json"));
    const double length = told["length"];
    EXPECT_EQ(told["curvature_largest"], 0);
    ASSERT_EQ(frames.size(), 9);
    EXPECT_EQ(frames[8]["position"][0], 4);
    for (std::size_t i = 0; i + 1 < frames.size(); ++i) {
        const double step =
            std::hypot(frames[i + 1]["position"][0].get<double>() - frames[i]["position"][0].get<double>(),
                       frames[i + 1]["position"][1].get<double>() - frames[i]["position"][1].get<double>());
        EXPECT_NEAR(step, length / 8, 1e-6);
        EXPECT_EQ(frames[i]["direction"], (Json{0, 0, -1}));
        EXPECT_EQ(frames[i]["curvature"], 0);
    }
    write("frames.csv", {});
    write("frames.TXT", {"--curvature"});
    const std::string csv = scratch.read("frames.csv"), text = scratch.read("frames.TXT");
    EXPECT_TRUE(csv.starts_with("x,y,z,direction_x,direction_y,direction_z,normal_x,normal_y,normal_z\n0,0,0,")) << csv;
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 1 + told["length"].get<int>() + 1);
    EXPECT_TRUE(text.starts_with("0 0 0 ")) << text;
    const std::string line = text.substr(0, text.find('\n'));
    EXPECT_EQ(std::count(line.begin(), line.end(), ' '), 9);
    const Outcome printed = runTool({"collar", in, "-", "--loop", "1", "--from", "0", "--to", "4", "--curvature"});
    EXPECT_EQ(printed.out, text);
}

TEST(ToolCollar, TellsWhatCannotBeDone)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", gridObj(4)), closed = scratch.write("closed.obj", cubeObj());
    // Two squares that meet at a vertex.
    const std::string touching = scratch.write(
        "touching.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 2 1 0\nv 2 2 0\nv 1 2 0\nf 1 2 3 4\nf 3 5 6 7\n");
    const std::string out = scratch.path("out.obj");
    using Words = std::vector<std::string>;
    for (const auto& [arguments, words] :
         {std::pair{Words{in, out, "--loop", "2"}, "no boundary loop 2, the mesh has 1"},
          {Words{closed, out, "--loop", "1"}, "no boundary loop 1, the mesh has none"},
          {Words{in, out, "--loop", "1", "--from", "0", "--to", "6"}, "vertex 6 is not on boundary loop 1"},
          {Words{in, out, "--loop", "1", "--from", "0", "--to", "99"}, "vertex 99 is not on boundary loop 1"},
          {Words{in, out, "--loop", "1", "--from", "2", "--to", "2"}, "the same vertex"},
          {Words{in, out, "--loop", "1", "--count", "2"}, "at least 3 for a whole loop"},
          {Words{in, out, "--loop", "1", "--width", "0"}, "--width: must be a number other than 0"},
          {Words{in, out, "--loop", "1", "--width", "nan"}, "--width: must be a number other than 0"},
          {Words{in, out, "--loop", "1", "--width", "1e39"}, "larger than numbers in files are"},
          {Words{in, out, "--loop", "1", "--count", "2000000000"}, "--count: must be at most"},
          {Words{in, in, "--loop", "1"}, "is read, and not overwritten"},
          {Words{in, scratch.path("out.xyzzy"), "--loop", "1"}, "no mesh format"},
          {Words{touching, out, "--loop", "2"}, "does not close"}}) {
        Words all = arguments;
        all.insert(all.begin(), "collar");
        expectOneLine(runTool(all), {words}, words);
    }
    EXPECT_EQ(runTool({"collar", in, out}).status, 2);
    EXPECT_EQ(runTool({"collar", in, out, "--loop", "1", "--from", "0"}).status, 2);
    EXPECT_EQ(scratch.names(), (Words{"closed.obj", "in.obj", "touching.obj"}));
}

} // namespace

} // namespace toolTest
