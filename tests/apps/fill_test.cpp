#include <gtest/gtest.h>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

/// Two cubes apart, one without a face and one without a triangle.
std::string openCubesObj()
{
    std::string second = cubeObj("4", "6");
    const std::size_t faces = second.find("f ");
    const std::string first = with(cubeObj(), "f 2 4 8 6\n", "");
    return first.substr(0, first.find("f ")) + second.substr(0, faces) + first.substr(first.find("f ")) +
           "f 9 11 12 10\nf 13 14 16 15\nf 9 10 14 13\nf 11 15 16 12\nf 9 13 15 11\nf 10 12 16\n";
}

Json outcomesOf(const Json& report)
{
    Json outcomes = Json::array();
    for (const Json& loop : report["loops"]) outcomes.push_back(loop["outcome"]);
    return outcomes;
}

TEST(ToolFill, ClosesAllLoopsTheLongestFirst)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", openCubesObj()), out = scratch.path("out.obj");
    for (const char* quality : {"0", "1", "2"}) {
        const Json told = report({"fill", in, out, "--quality", quality});
        EXPECT_EQ(told["loops"][0]["edges"], 4);
        EXPECT_EQ(told["loops"][0]["length"], 8);
        EXPECT_EQ(told["loops"][1]["edges"], 3);
        EXPECT_EQ(outcomesOf(told), (Json{"filled", "filled"})) << told;
        EXPECT_EQ(told["filled"], 2);
        EXPECT_EQ(told["triangles_before"], 21);
        const Json closed = info(out);
        EXPECT_EQ(closed["closed"], true);
        EXPECT_EQ(closed["unbalanced_edges"], 0);
        EXPECT_EQ(closed["triangles"], told["triangles"]);
        if (*quality == '0') {
            EXPECT_EQ(closed["triangles"], 24);
            EXPECT_EQ(closed["volume"], 16);
        }
    }
    const Outcome outcome = runTool({"fill", out, scratch.path("again.obj")});
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_NE(outcome.out.find("0 of 0"), std::string::npos) << outcome;
}

TEST(ToolFill, LeavesOpenWhatIsNotAskedFor)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", openCubesObj()), out = scratch.path("out.obj");
    for (const auto& [option, value, outcomes] : {std::tuple{"--loops", "1", Json{"filled", "not_asked_for"}},
                                                  {"--loops", "2,2", Json{"not_asked_for", "filled"}},
                                                  {"--loops", "2,1", Json{"filled", "filled"}},
                                                  {"--max-length", "3", Json{"too_many_edges", "filled"}},
                                                  {"--max-length", "4", Json{"filled", "filled"}}}) {
        const Json told = report({"fill", option, value, in, out}); // what was asked for is done: status 0
        EXPECT_EQ(outcomesOf(told), outcomes) << value;
        EXPECT_EQ(info(out)["boundary_loops"], 2 - told["filled"].get<int>()) << value;
    }
    const std::string old = scratch.read("out.obj");
    expectOneLine(runTool({"fill", in, out, "--loops", "1,3"}), {in, "no boundary loop 3, the mesh has 2"}, "loop 3");
    for (const auto& [option, words] : {std::pair{"--loops=1,x", "--loops: must be a whole number\n"},
                                        {"--loops=0", "--loops: must be at least 1\n"},
                                        {"--max-length=2", "--max-length: must be at least 3\n"},
                                        {"--quality=3", "--quality: 3 not in {0,1,2}\n"}}) {
        const Outcome outcome = runTool({"fill", in, out, option});
        EXPECT_EQ(outcome.status, 2) << option;
        EXPECT_NE(outcome.err.find(words), std::string::npos) << outcome;
    }
    EXPECT_EQ(scratch.read("out.obj"), old);
}

TEST(ToolFill, SaysWhatStaysOpen)
{
    const Scratch scratch;
    // Two squares that touch at a vertex are left out.
    const std::string touching = with(with(gridObj(4), "f 7 8 13 12\n", ""), "f 13 14 19 18\n", "");
    const std::string in = scratch.write("in.obj", touching), out = scratch.path("out.obj");
    const Outcome outcome = runTool({"fill", in, out});
    EXPECT_EQ(outcome.status, 2) << outcome;
    for (const char* words : {"not filled", "2 of 4", "unless the mesh is repaired first"})
        EXPECT_NE(outcome.out.find(words), std::string::npos) << words << outcome;
    report({"repair", in, in});
    EXPECT_EQ(report({"fill", in, out})["filled"], 2);
    EXPECT_EQ(info(out)["closed"], true);
}

TEST(ToolFill, DrawsTheMeshBeforeAndAfter)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", openCubesObj()), out = scratch.path("out.obj");
    const Json told = report({"fill", in, out, "--picture", scratch.path("a.png"), "--picture-size", "500x400"});
    EXPECT_EQ(told["picture"], scratch.path("a.png"));
    EXPECT_EQ(scratch.read("a.png").substr(1, 3), "PNG");
    expectOneLine(runTool({"fill", in, out, "--picture", scratch.path("a.jpg")}), {"a.jpg", ".png"}, "jpg");
}

TEST(ToolFill, SaysWhatIsNotKeptAndRefusesASoup)
{
    const Scratch scratch;
    const std::string normals = with(openCubesObj(), "f ", "vn 0 0 1\ng cube\nf ");
    const std::string out = scratch.path("out.obj");
    const std::string in = scratch.write("in.obj", with(normals, "f 1 3 4 2", "f 1//1 3//1 4//1 2//1"));
    const std::string notes = report({"fill", in, out})["notes"].dump();
    EXPECT_NE(notes.find("groups: not kept by the filling"), std::string::npos) << notes;
    EXPECT_EQ(scratch.read("out.obj").find_first_of("gn/"), std::string::npos);
    const std::string soup = scratch.write("soup.stl", boxBinaryStl()), old = scratch.read("out.obj");
    expectOneLine(runTool({"fill", soup, out}), {"soup.stl", "weld the mesh first"}, "soup");
    EXPECT_EQ(scratch.read("out.obj"), old);
}

} // namespace

} // namespace toolTest
