#include <gtest/gtest.h>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

/// The kinds of the steps of a report.
Json kindsOf(const Json& report)
{
    Json kinds = Json::array();
    for (const Json& step : report["steps"]) kinds.push_back(step["kind"]);
    return kinds;
}

/// A cube with a side turned over, a fin on an edge, a triangle twice, and a tetrahedron that touches a corner.
std::string brokenCubeObj()
{
    return with(cubeObj(), "f 3 7 8 4", "f 3 4 8 7") + "v 3 3 3\nv 2 3 4\nv 3 2 4\nv 0 -2 -2\nf 8 11 10\nf 8 9 11\nf 8 "
                                                       "10 9\nf 9 10 11\nf 1 2 12\nf 5 6 8\nf 1 3 4\n";
}

TEST(ToolRepair, TakesAllStepsAndTellsThem)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", brokenCubeObj()), out = scratch.path("out.obj");
    const Json told = report({"repair", in, out});
    EXPECT_EQ(kindsOf(told), (Json{"bad_triangles", "non_manifold_edges", "non_manifold_vertices", "winding"})) << told;
    EXPECT_EQ(told["steps"][0]["text"], "removed 2 triangles: 2 that repeat other ones");
    EXPECT_EQ(told["steps"][1]["text"], "removed 1 triangle at 1 edge of three triangles or more");
    EXPECT_EQ(told["steps"][2]["text"], "split 1 vertex of several fans, which makes 1 new vertex");
    EXPECT_EQ(told["steps"][3]["text"], "turned 2 triangles over");
    EXPECT_EQ(told["clean"], true);
    EXPECT_EQ(told["triangles"], 16);
    EXPECT_EQ(report({"check", out})["clean"], true);
    const Json described = info(out);
    EXPECT_EQ(described["components"], 2);
    EXPECT_EQ(described["closed"], true);
}

TEST(ToolRepair, TurnsTheFewerTrianglesOver)
{
    const Scratch scratch;
    for (const auto& [side, turned] : {std::pair{"f 1 3 4 2", "f 1 2 4 3"}, {"f 2 4 8 6", "f 2 6 8 4"}}) {
        const std::string in = scratch.write("in.obj", with(cubeObj(), side, turned)), out = scratch.path("out.obj");
        ASSERT_EQ(info(in)["unbalanced_edges"], 4) << side;
        const Json told = report({"repair", in, out});
        EXPECT_EQ(told["steps"][0]["text"], "turned 2 triangles over") << side;
        EXPECT_EQ(told["steps"][0]["turned_triangles"], 2) << side;
        EXPECT_EQ(info(out)["volume"], 8) << side;
    }
}

TEST(ToolRepair, LeavesACleanMeshAsItIs)
{
    const Scratch scratch;
    const std::string in = scratch.path("in.obj"); // as the tool writes it, of triangles
    report({"weld", scratch.write("box.obj", boxObj()), in});
    const Outcome outcome = runTool({"repair", in, scratch.path("out.obj"), "--self-intersections", "--angles", "1"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("none, there is nothing to repair"), std::string::npos) << outcome;
    EXPECT_EQ(scratch.read("out.obj"), scratch.read("in.obj"));
}

TEST(ToolRepair, RemovesCrossingsAndFoldsOnlyIfAskedTo)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0.6 0.4 -1\nv 0.6 0.4 1\n"
                                                   "v 0.6 0.3 1\nv 9 0 0\nv 9 1 0\nv 8 0.5 0\nv 8 0.5 0.05\n"
                                                   "f 1 2 3 4\nf 5 6 7\nf 8 9 10\nf 9 8 11\n");
    const std::string out = scratch.path("out.obj");
    EXPECT_EQ(report({"repair", in, out})["triangles"], 5);
    const Json crossings = report({"repair", in, out, "--self-intersections"});
    EXPECT_EQ(kindsOf(crossings), (Json{"crossing_triangles"}));
    EXPECT_EQ(crossings["triangles"], 3);
    EXPECT_EQ(crossings["folded_edges"], Json());
    const Json both = report({"repair", in, in, "--self-intersections", "--angles", "4"});
    EXPECT_EQ(kindsOf(both), (Json{"crossing_triangles", "folded_triangles"}));
    EXPECT_EQ(info(in)["triangles"], 1);
}

TEST(ToolRepair, TellsWhatIsLeft)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv nan 1 1\nf 1 2 3\nf 1 3 3\n");
    const Outcome outcome = runTool({"repair", in, scratch.path("out.obj"), "--self-intersections"});
    EXPECT_EQ(outcome.status, 2) << outcome;
    for (const char* words : {"step 1", "removed 1 triangle", "non finite vertices", "vertex 3", "clean", " no\n"})
        EXPECT_NE(outcome.out.find(words), std::string::npos) << words << outcome;
    EXPECT_EQ(outcome.out.find("flipped"), std::string::npos) << outcome;
    EXPECT_EQ(info(scratch.path("out.obj"))["triangles"], 1);
}

TEST(ToolRepair, RemovesTrianglesWithoutAPlace)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv nan 1 1\nf 1 2 3\nf 1 3 4\nf 1 4 4\n");
    const Outcome outcome = runTool({"repair", in, scratch.path("out.obj")});
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_NE(outcome.out.find("removed 2 triangles with corners that are not finite"), std::string::npos) << outcome;
    EXPECT_EQ(info(scratch.path("out.obj"))["vertices"], 3);
}

TEST(ToolRepair, GroupsAndCornersFollowTheirTriangles)
{
    const Scratch scratch;
    const std::string vertices = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 2 0 0\nv 2 1 0\n";
    const std::string corners = "vt 0 0\nvt 0.25 0\nvt 0.5 0\nvt 0.75 0\nvt 1 0\nvn 0 0 1\nvn 0 0 -1\nvn 0 1 1\n";
    const std::string in = scratch.write("in.obj", vertices + corners +
                                                       "g first\nf 1/1/1 1/2/1 2/3/1\ng second\n"
                                                       "f 1/1/1 2/2/1 3/3/3\nf 1/1/1 3/2/1 4/5/1\n"
                                                       "g third\nf 2/4/2 3/5/2 5/1/2\n");
    const Json told = report({"repair", in, scratch.path("out.obj")});
    EXPECT_EQ(kindsOf(told), (Json{"bad_triangles", "winding"})) << told;
    const std::string out = scratch.read("out.obj");
    EXPECT_EQ(out.find("first"), std::string::npos) << out;
    const std::size_t second = out.find("g second\n"), third = out.find("g third\n");
    ASSERT_TRUE(second < third && third != std::string::npos) << out;
    EXPECT_EQ(info(scratch.path("out.obj"))["unbalanced_edges"], 0);
    // Corner by corner: the vertex, and the texture coordinate that it had.
    const std::string face = out.substr(out.find("f ", third));
    std::vector<std::string> uvs;
    for (std::size_t at = out.find("vt "); at != std::string::npos; at = out.find("vt ", at + 1))
        uvs.push_back(out.substr(at + 3, out.find('\n', at) - at - 3));
    int vertex[3], uv[3], normal[3];
    ASSERT_EQ(std::sscanf(face.c_str(), "f %d/%d/%d %d/%d/%d %d/%d/%d", &vertex[0], &uv[0], &normal[0], &vertex[1],
                          &uv[1], &normal[1], &vertex[2], &uv[2], &normal[2]),
              9)
        << face;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(uvs[std::size_t(uv[i] - 1)], vertex[i] == 2 ? "0.75 0" : vertex[i] == 3 ? "1 0" : "0 0") << out;
}

TEST(ToolRepair, LeavesAllFilesAsTheyWereWhenItFails)
{
    const Scratch scratch;
    const std::string soup = scratch.write("soup.stl", boxBinaryStl()), out = scratch.write("out.obj", "old");
    expectOneLine(runTool({"repair", soup, out, "--self-intersections"}), {"soup.stl", "weld the mesh first"}, "soup");
    expectOneLine(runTool({"repair", soup, out, "--picture", "picture.jpg"}), {"picture.jpg"}, "jpg");
    expectOneLine(runTool({"repair", soup, out, "--picture", scratch.path("no/a.png")}), {"no/a.png"}, "no folder");
    expectOneLine(runTool({"repair", soup, scratch.path("no/b.obj"), "--picture", scratch.path("a.png")}), {"no/b.obj"},
                  "no folder for the mesh");
    EXPECT_EQ(scratch.names(), (std::vector<std::string>{"out.obj", "soup.stl"}));
    EXPECT_EQ(scratch.read("out.obj"), "old");
    EXPECT_EQ(runTool({"repair", soup, out}).status, 2);
    EXPECT_NE(scratch.read("out.obj"), "old");
}

} // namespace

} // namespace toolTest
