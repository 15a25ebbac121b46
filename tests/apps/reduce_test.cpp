#include <gtest/gtest.h>

#include <cmath>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

TEST(ToolReduce, KeepsAFractionOrACountOfTheVertices)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", wavesObj(30)), out = scratch.path("out.ply");
    for (const auto& [amount, vertices] : {std::pair{"0.5", 480}, {"480", 480}, {"961", 961}, {"400", 400}}) {
        const Json told = report({"reduce", in, out, "--to", amount});
        EXPECT_EQ(told["vertices_before"], 961);
        EXPECT_EQ(told["triangles_before"], 1800);
        EXPECT_EQ(told["boundary_vertices"], 120);
        EXPECT_EQ(told["vertices"], vertices) << amount;
        EXPECT_EQ(told["notes"], (Json{"polygons: 900, written as triangles"})) << told;
        const Json left = info(out);
        EXPECT_EQ(left["vertices"], vertices) << amount;
        EXPECT_EQ(left["triangles"], told["triangles"]);
        EXPECT_EQ(left["boundary_vertices"], 120);
    }
}

TEST(ToolReduce, StaysWithinADistanceOrAPartOfTheDiagonal)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", wavesObj(30)), out = scratch.path("out.ply");
    const Json distance = report({"reduce", in, out, "--tolerance", "0.1"});
    EXPECT_EQ(distance["tolerance"], 0.1);
    EXPECT_GT(distance["largest_deviation"], 0.0);
    EXPECT_LE(distance["largest_deviation"], 0.1);
    EXPECT_LT(distance["vertices"], 480);
    const double diagonal = std::hypot(30, 30, info(in)["max"][2].get<double>() - info(in)["min"][2].get<double>());
    const Json part = report({"reduce", in, out, "--tolerance", "0.1%"});
    EXPECT_NEAR(part["tolerance"], diagonal / 1000, 1e-6);
    EXPECT_GT(part["vertices"], distance["vertices"]);
    // The removed vertices as the mesh that is left sees them.
    const Json measured = report({"closest", out, in, "-o", scratch.path("distances.txt")});
    EXPECT_LE(measured["distance_max"], part["tolerance"].get<double>() * 1.0001) << measured;
}

TEST(ToolReduce, SaysWhyItGotLessFar)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", wavesObj(12)), out = scratch.path("out.obj");
    const auto notesOf = [&](const std::string& input, const std::string& amount) {
        return report({"reduce", input, out, "--to", amount})["notes"].dump();
    };
    const std::string notes = notesOf(in, "0.01");
    EXPECT_NE(notes.find("no more vertices can be removed"), std::string::npos) << notes;
    EXPECT_NE(notes.find("instead of 1;"), std::string::npos) << notes;
    EXPECT_GE(info(out)["vertices"], 48);
    EXPECT_NE(notesOf(in, "170").find("there are only 169 vertices: all stay"), std::string::npos);
    const std::string soup = scratch.write("soup.stl", boxBinaryStl());
    EXPECT_NE(notesOf(soup, "0.5").find("weld the mesh first"), std::string::npos);
    EXPECT_EQ(info(out)["triangles"], 11);
}

TEST(ToolReduce, CollapsesEdgesToAPartOrACountOfTheTriangles)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", wavesObj(30)), out = scratch.path("out.ply");
    for (const auto& [amount, triangles] : {std::pair{"0.5", 900}, {"300", 300}, {"1800", 1800}}) {
        const Json told = report({"reduce", in, out, "--to", amount, "--method", "collapse"});
        const Json left = info(out);
        EXPECT_LE(told["triangles"], triangles);
        EXPECT_GE(told["triangles"], triangles - 1);
        EXPECT_EQ(told["turned_triangles"], 0);
        EXPECT_EQ(left["triangles"], told["triangles"]);
        EXPECT_EQ(left["vertices"], told["vertices"]);
        EXPECT_EQ(left["unused_vertices"], 0);
    }
    EXPECT_NE(report({"reduce", in, out, "--to", "2000", "--method", "collapse"})["notes"].dump().find("all stay"),
              std::string::npos);
    EXPECT_NE(
        report({"reduce", scratch.write("two.obj", tetrahedraObj()), out, "--to", "1", "--method", "collapse"})["notes"]
            .dump()
            .find("no more edges"),
        std::string::npos);
    EXPECT_EQ(runTool({"reduce", in, out, "--tolerance", "1%", "--method", "collapse"}).status, 2);
    EXPECT_EQ(runTool({"reduce", in, out, "--to", "1", "--method", "melting"}).status, 2);
}

TEST(ToolReduce, SaysWhatIsNotKept)
{
    const Scratch scratch;
    const std::string corners = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\nvn 0 1 0\nvt 0 0\nvt 1 0\n";
    const std::string out = scratch.path("out.obj");
    for (const char* faces : {"g top\nf 1/1/1 2/2/1 3/1/1\n", "g top\nf 1/1/1 2/2/1 3/1/1\nf 1/2/2 3/1/2 2/1/2\n"}) {
        const Json told = report({"reduce", scratch.write("in.obj", corners + faces), out, "--tolerance", "1"});
        EXPECT_EQ(told["notes"],
                  (Json{"normals: not kept by the reduction", "texture coordinates: not kept by the reduction",
                        "groups: not kept by the reduction"}))
            << told;
        EXPECT_EQ(scratch.read("out.obj").find_first_of("gnt/"), std::string::npos) << scratch.read("out.obj");
    }
}

TEST(ToolReduce, RefusesWhatIsNoAmount)
{
    const std::string amount = "--to: must be a fraction between 0 and 1, or a whole number from 1\n";
    const std::string distance = "--tolerance: must be a distance above 0, or a percentage such as 0.1%\n";
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"--to=0"}, amount},
        {{"--to=-5"}, amount},
        {{"--to=1.5"}, amount},
        {{"--to=10%"}, amount},
        {{"--to=nan"}, amount},
        {{"--tolerance=0"}, distance},
        {{"--tolerance=%"}, distance},
        {{"--tolerance=inf"}, distance},
        {{"--tolerance=0.5mm"}, distance},
        {{"--quiet"}, "--to or --tolerance is required\n"},
        {{"--to=1", "--tolerance=1"}, "--to excludes --tolerance\n"},
    };
    for (const auto& [options, words] : cases) {
        std::vector<std::string> arguments{"reduce", "in.obj", "out.obj"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = runTool(arguments);
        EXPECT_EQ(outcome.status, 2) << outcome;
        EXPECT_NE(outcome.err.find(words), std::string::npos) << words << outcome;
    }
    const Scratch scratch;
    const std::string far = scratch.write("far.obj", "v 0 0 0\nv 1 0 0\nv 0 inf 0\nf 1 2 3\n");
    const std::string points = scratch.write("points.obj", "v 0 0 0\n"), out = scratch.write("out.obj", "old");
    expectOneLine(runTool({"reduce", far, out, "--tolerance", "1%"}), {"far.obj", "not finite"}, "far");
    expectOneLine(runTool({"reduce", points, out, "--to", "1"}), {"points.obj", "no triangles"}, "points");
    EXPECT_EQ(scratch.read("out.obj"), "old");
}

} // namespace

} // namespace toolTest
