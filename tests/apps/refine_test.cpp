// Subdivision and extrusion.
#include <gtest/gtest.h>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

TEST(ToolSubdivide, MakesQuadsOfPolygons)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", cubeObj());
    for (const char* name : {"out.obj", "out.ply", "out.off", "out.txt"}) {
        const Json told = report({"subdivide", in, scratch.path(name), "--levels", "2"});
        EXPECT_EQ(told["faces_before"], 6) << told;
        EXPECT_EQ(told["faces"], 96) << told;
        EXPECT_EQ(told["vertices"], 98) << told;
        EXPECT_TRUE(told["notes"].empty()) << told;
        const Json result = info(scratch.path(name));
        EXPECT_EQ(result["polygons"], 96) << name;
        EXPECT_EQ(result["closed"], true) << name;
    }
    EXPECT_EQ(report({"subdivide", in, scratch.path("out.stl")})["notes"],
              Json({"polygons: 24, written as triangles"}));
    const Outcome outcome = runTool({"subdivide", in, scratch.path("out.off"), "--picture", scratch.path("out.png")});
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_EQ(scratch.read("out.png").substr(1, 3), "PNG");
}

TEST(ToolSubdivide, RefusesWhatCannotBe)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", cubeObj()), out = scratch.write("out.obj", "old");
    expectOneLine(runTool({"subdivide", in, out, "--levels", "17"}), {in, "too large for level 13"}, "levels");
    expectOneLine(runTool({"subdivide", scratch.write("cloud.xyz", "1 2 3\n"), out}), {"has no triangles"}, "cloud");
    EXPECT_EQ(runTool({"subdivide", in, out, "--levels", "0"}).status, 2);
    EXPECT_EQ(scratch.read("out.obj"), "old");
}

TEST(ToolExtrude, MovesPatchesByThemselves)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", cubeObj()), out = scratch.path("out.obj");
    // Two opposite sides, each outward: the cube from -1 to 1 becomes longer at both ends.
    const std::vector<std::string> pairs[] = {{"0", "1"}, {"2", "3"}, {"4", "5"}};
    for (const auto& pair : pairs) {
        const Json told = report({"extrude", in, out, "--faces", pair[0] + "," + pair[1], "--distance", "0.5"});
        EXPECT_EQ(told["extruded_faces"], 2) << told;
        EXPECT_EQ(told["vertices"], 16) << told;
        EXPECT_EQ(told["faces"], 14) << told;
        const Json result = info(out);
        EXPECT_EQ(result["closed"], true);
        EXPECT_EQ(result["unbalanced_edges"], 0);
        EXPECT_EQ(result["unused_vertices"], 0);
        EXPECT_EQ(result["polygons"], 14);
        if (told["patches"] == 2) {
            EXPECT_EQ(result["volume"], 12) << told;
        }
    }
    const Json scaled = report({"extrude", in, out, "--faces", "3", "--distance", "1", "--scale", "0"});
    EXPECT_EQ(scaled["faces"], 10);
    EXPECT_NEAR(info(out)["volume"].get<double>(), 8 + 4.0 / 3, 1e-6) << "a pyramid";
}

TEST(ToolExtrude, MakesPlatesOfSheets)
{
    const Scratch scratch;
    const std::string sheet = scratch.write("sheet.obj", gridObj(3) + "v 9 9 9\n"), out = scratch.path("out.off");
    const std::string turned = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 2 0 0\nv 2 1 0\nf 1 2 3 4\nf 2 3 6 5\n";
    for (const auto& [name, motion] : {std::pair{"--distance", "2"},
                                       {"--distance", "-2"},
                                       {"--vector", "0.5,0,2"},
                                       {"--matrix", "1,0,0,0,1,0,0,0,1,0,0,-2"}}) {
        const Json told = report({"extrude", sheet, out, "--all", std::string(name) + "=" + motion});
        EXPECT_EQ(told["sheets"], 1) << told;
        const Json result = info(out);
        EXPECT_EQ(result["closed"], true) << motion;
        EXPECT_EQ(result["unbalanced_edges"], 0) << motion;
        EXPECT_EQ(result["unused_vertices"], 0) << motion;
        EXPECT_NEAR(result["volume"].get<double>(), 18, 1e-5) << motion;
    }
    const Json told = report({"extrude", scratch.write("turned.obj", turned), out, "--all", "--distance", "1"});
    EXPECT_EQ(told["notes"], Json({"faces that disagreed with their neighbours: 1, reversed first"}));
    EXPECT_EQ(info(out)["volume"], 2);

    const Json copied = report({"extrude", scratch.write("two.obj", cubeObj()), out, "--component", "1", "--vector",
                                "5,0,0", "--picture", scratch.path("out.png")});
    EXPECT_EQ(copied["notes"].size(), 1u) << copied;
    EXPECT_EQ(info(out)["components"], 2);
}

TEST(ToolExtrude, RefusesWhatCannotBe)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", cubeObj()), out = scratch.write("out.obj", "old");
    expectOneLine(runTool({"extrude", in, out, "--faces", "2,6", "--distance", "1"}),
                  {in, "there is no face 6, the mesh has 6, counted from 0"}, "face");
    expectOneLine(runTool({"extrude", in, out, "--component", "2", "--distance", "1"}), {in, "no component 2"}, "part");
    expectOneLine(runTool({"extrude", in, out, "--all", "--distance", "1"}), {in, "cancel out"}, "closed");
    for (const std::vector<std::string>& options : {std::vector<std::string>{"--all"},
                                                    {"--distance=1"},
                                                    {"--all", "--faces=1", "--distance=1"},
                                                    {"--all", "--distance=1", "--vector=0,0,1"},
                                                    {"--all", "--vector=0,0"},
                                                    {"--all", "--vector=0,0,1,2"},
                                                    {"--all", "--matrix=1,0,0,0,1,0,0,0,1,0,0,nan"},
                                                    {"--faces=-1", "--distance=1"}}) {
        std::vector<std::string> arguments{"extrude", in, out};
        arguments.insert(arguments.end(), options.begin(), options.end());
        EXPECT_EQ(runTool(arguments).status, 2) << options.back();
    }
    EXPECT_EQ(scratch.read("out.obj"), "old");
}

} // namespace

} // namespace toolTest
