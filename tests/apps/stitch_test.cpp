#include <gtest/gtest.h>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

/// Two sheets of ten by ten squares side by side, 0.1 apart, the second one facing down; and one far away.
std::string sheetsObj()
{
    std::string vertices, faces;
    for (const double shift : {0.0, 10.1, 50.0}) {
        const int first = shift == 0.0 ? 1 : shift < 50 ? 122 : 243;
        for (int i = 0; i < 121; ++i)
            vertices += "v " + std::to_string(shift + i % 11) + " " + std::to_string(i / 11) + " 0\n";
        for (int i = 0; i < 110; ++i) {
            if (i % 11 == 10) continue;
            const int a = first + i, b = a + 1, c = a + 12, d = a + 11;
            const bool isTurned = first == 122;
            faces += "f " + std::to_string(a) + " " + std::to_string(isTurned ? d : b) + " " + std::to_string(c) + " " +
                     std::to_string(isTurned ? b : d) + "\n";
        }
    }
    return vertices + faces;
}

} // namespace

TEST(ToolStitch, TellsOfEachSeamAndOfWhatStaysOpen)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", sheetsObj()), out = scratch.path("out.obj");
    const Json told = report({"stitch", in, out, "--tolerance", "0.5", "--picture", scratch.path("p.png")});
    ASSERT_EQ(told["pairs"].size(), 1u) << told;
    EXPECT_EQ(told["pairs"][0]["length"], 10);
    EXPECT_EQ(told["pairs"][0]["sewn"], true);
    EXPECT_EQ(told["pairs"][0]["circular"], false);
    EXPECT_EQ(told["seams"], 1);
    ASSERT_EQ(told["turned_shells"].size(), 1u);
    EXPECT_EQ(told["turned_shells"][0]["triangles"], 200);
    EXPECT_EQ(told["boundary_loops"], 3);
    std::vector<std::string> outcomes;
    for (const Json& loop : told["loops"]) outcomes.push_back(loop["outcome"]);
    EXPECT_EQ(outcomes, (std::vector<std::string>{"sewn_in_part", "sewn_in_part", "nothing_beside"}));
    const Json sewn = info(out);
    EXPECT_EQ(sewn["components"], 2);
    EXPECT_EQ(sewn["boundary_loops"], 2);
    EXPECT_EQ(sewn["unbalanced_edges"], 0);
    EXPECT_EQ(sewn["vertices"], 3 * 121 - 11);
    EXPECT_FALSE(scratch.read("p.png").empty());

    // Nothing to sew: the mesh is written all the same.
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--tolerance", "0.05"}, {"--tolerance", "0.5", "--loops", "3,1"}}) {
        std::vector<std::string> arguments{"stitch", in, out};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = runTool(arguments);
        EXPECT_EQ(outcome.status, 2) << outcome;
        EXPECT_NE(outcome.out.find("left open"), std::string::npos) << outcome;
        EXPECT_EQ(info(out)["components"], 3);
    }
}

TEST(ToolStitch, EndsAtCtrlCWithTheOldFile)
{
    const Scratch scratch;
    const std::string waves = scratch.write("waves.obj", wavesObj(250)), in = scratch.path("in.obj");
    const std::string out = scratch.path("out.obj");
    report({"cut", waves, in, "--plane", "1,0.3,0,60", "--plane", "0.2,1,0.1,50"});
    expectOldOrNewAtCtrlC(scratch, {"stitch", in, out, "--tolerance", "0.02%"}, 1, true);
}

TEST(ToolStitch, RefusesBadInputInOneLine)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", sheetsObj()), out = scratch.path("out.obj");
    expectOneLine(runTool({"stitch", in, out, "--tolerance", "1", "--loops", "4"}),
                  {in, "no boundary loop 4, the mesh has 3"}, "loop 4");
    expectOneLine(runTool({"stitch", scratch.path("none.obj"), out, "--tolerance", "1"}), {"none.obj"}, "no file");
    const std::string endless = scratch.write("endless.obj", "v 0 0 0\nv 1 0 0\nv 0 inf 0\nf 1 2 3\n");
    expectOneLine(runTool({"stitch", endless, out, "--tolerance", "1%"}), {endless, "not finite"}, "endless");
    for (const auto& [option, words] : {std::pair{"--tolerance=0", "--tolerance: must be a distance above 0"},
                                        {"--tolerance=-1%", "--tolerance: must be a distance above 0"},
                                        {"--tolerance=nan", "--tolerance: must be a distance above 0"},
                                        {"--seam=2", "--seam: must be a number from 0 to 1"}}) {
        const Outcome outcome = runTool({"stitch", in, out, option});
        EXPECT_EQ(outcome.status, 2) << outcome;
        EXPECT_NE(outcome.err.find(words), std::string::npos) << outcome;
    }
    EXPECT_EQ(runTool({"stitch", in, out}).status, 2);
    EXPECT_EQ(scratch.names(), (std::vector<std::string>{"endless.obj", "in.obj"}));
}

} // namespace toolTest
