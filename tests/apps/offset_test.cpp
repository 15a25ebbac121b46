#include <gtest/gtest.h>

#include <cmath>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

/// A ditch with steep sides along y, `size` squares wide and long, and a vertex that nothing uses.
std::string ditchObj(int size)
{
    std::string text;
    for (int y = 0; y <= size; ++y)
        for (int x = 0; x <= size; ++x)
            text += "v " + std::to_string(x) + " " + std::to_string(y) + " " +
                    std::to_string(6 * std::tanh(std::abs(x - size / 2.0) - 4)) + "\n";
    const std::string flat = gridObj(size);
    return text + "v 3 3 3\n" + flat.substr(flat.find("f "));
}

TEST(ToolOffset, MakesTheBoxAroundABoxAndInIt)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", cubeObj()), out = scratch.path("out.obj");
    for (const auto& [distance, side] : {std::pair{"1.7320508", 2.0}, {"-0.8660254", 0.5}}) {
        const Json told = report({"offset", in, out, "--distance", distance});
        const double moved = std::stod(distance);
        EXPECT_EQ(told["distance"], moved);
        EXPECT_EQ(told["removed_too_close"].get<int>() + told["removed_turned"].get<int>(), 0) << told;
        EXPECT_EQ(told["crossings"], 0);
        EXPECT_NEAR(told["wall_smallest"], std::fabs(1 - side), 1e-6); // of a corner inside, from the sides
        EXPECT_NEAR(told["wall_largest"], side > 1 ? 1.7320508 : 0.8660254, 1e-6);
        const Json box = info(out);
        EXPECT_NEAR(box["volume"], 8 * side * side * side, 1e-4); // wound like the cube
        EXPECT_EQ(box["triangles"], 12);

        const Json shell = report({"shell", in, out, "--thickness", *distance == '-' ? distance + 1 : distance,
                                   "--side", *distance == '-' ? "in" : "out"});
        EXPECT_EQ(shell["vertices"], 16);
        EXPECT_NEAR(info(out)["volume"], std::fabs(8 * side * side * side - 8), 1e-4);
        EXPECT_EQ(info(out)["closed"], true);
    }
}

TEST(ToolOffset, TellsWhatWasPrunedAndWhatCrosses)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", ditchObj(24)), out = scratch.path("out.obj");
    const Json above = report({"offset", in, out, "--distance", "3"});
    EXPECT_GT(above["removed_too_close"].get<int>() + above["removed_turned"].get<int>(), 100) << above;
    EXPECT_EQ(above["vertices_before"], 626);
    EXPECT_EQ(above["vertices"], info(out)["vertices"]);
    EXPECT_EQ(info(out)["unused_vertices"], 0);
    EXPECT_LT(above["wall_smallest"], 3.0);
    EXPECT_GT(above["wall_largest"], 3.5);
    EXPECT_EQ(above["notes"].dump().find("away from"), std::string::npos) << above;
    const Json highAbove = report({"offset", in, out, "--distance", "6"}); // there is no room at the bottom
    EXPECT_NE(highAbove["notes"].dump().find("up to 17.2"), std::string::npos) << highAbove;

    for (const char* side : {"in", "out"}) {
        const Json shell = report({"shell", in, out, "--thickness", "0.3", "--side", side});
        EXPECT_EQ(shell["side"], side);
        EXPECT_EQ(shell["crossings"], 0) << shell;
        EXPECT_EQ(info(out)["closed"], true);
        EXPECT_EQ(info(out)["components"], 1);
        EXPECT_GT(info(out)["volume"], 24 * 24 * 0.3);
    }
    // Thicker than the cube: the copy has come out on the other side.
    const Outcome thick = runTool({"shell", scratch.write("cube.obj", cubeObj()), out, "--thickness", "4"});
    EXPECT_EQ(thick.status, 2) << thick;
    EXPECT_NE(thick.out.find("thinner than the distance"), std::string::npos) << thick;
    EXPECT_NE(thick.out.find("left too close"), std::string::npos) << thick;
    const std::string inverted = scratch.write("inverted.obj", cubeObj("1", "-1"));
    EXPECT_NE(report({"offset", inverted, out, "--distance", "0.1"})["notes"].dump().find("inside out"),
              std::string::npos);
}

TEST(ToolOffset, RefusesInOneLineAndWritesNothing)
{
    const Scratch scratch;
    const std::string out = scratch.write("out.obj", "old"), cube = scratch.write("cube.obj", cubeObj());
    for (const auto& [name, content, words] : {std::tuple<std::string, std::string, std::string>{
                                                   "far.obj", "v 0 0 0\nv 1 0 0\nv 0 inf 0\nf 1 2 3\n", "not finite"},
                                               {"points.obj", "v 0 0 0\n", "no triangles"},
                                               {"soup.stl", boxStl(), "weld"}})
        expectOneLine(runTool({"shell", scratch.write(name, content), out, "--thickness", "1"}), {name, words}, name);
    expectOneLine(runTool({"offset", cube, out, "--distance", "1e39"}), {"cube.obj", "larger than"}, "large");
    expectOneLine(runTool({"offset", cube, out, "--distance", "1", "--picture", "a.jpg"}), {"a.jpg", ".png"}, "jpg");
    for (const std::vector<std::string>& wrong :
         std::vector<std::vector<std::string>>{{"offset", cube, out},
                                               {"offset", cube, out, "--distance", "0"},
                                               {"offset", cube, out, "--distance", "nan"},
                                               {"shell", cube, out, "--thickness", "-1"},
                                               {"shell", cube, out, "--thickness", "1", "--side", "up"}})
        EXPECT_EQ(runTool(wrong).status, 2) << wrong.back();
    EXPECT_EQ(scratch.read("out.obj"), "old");
}

TEST(ToolOffset, EndsAtCtrlCWithTheOldFile)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", ditchObj(150)), out = scratch.path("out.obj");
    expectOldOrNewAtCtrlC(scratch, {"shell", in, out, "--thickness", "0.5"}, 1, true);
}

TEST(ToolOffset, DrawsBeforeAndAfter)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", ditchObj(10)), picture = scratch.path("a.png");
    const Json told = report({"shell", in, scratch.path("out.ply"), "--thickness", "0.2", "--picture", picture});
    EXPECT_EQ(told["picture"], picture);
    EXPECT_TRUE(scratch.read("a.png").starts_with("\x89PNG"));
}

} // namespace

} // namespace toolTest
