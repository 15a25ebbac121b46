#include <gtest/gtest.h>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

struct Case
{
    std::string name, content;
    std::string expected;                    ///< the members of a JSON object that differ from those of a clean mesh
    std::vector<std::string> arguments = {}; ///< more of them
};

/// What is told of a mesh without defects; boundary edges are left out.
Json cleanReport()
{
    Json report = {{"clean", true}, {"folded_edges", Json()}};
    for (const char* key : {"degenerate_triangles", "collapsed_triangles", "duplicate_triangles", "non_manifold_edges",
                            "non_manifold_vertices", "flipped_triangles", "one_sided_triangles", "crossings",
                            "crossing_triangles", "non_finite_vertices"})
        report[key] = 0;
    return report;
}

void expectChecks(const std::vector<Case>& cases)
{
    const Scratch scratch;
    for (const auto& [name, content, expected, arguments] : cases) {
        std::vector<std::string> words{"check", "--json", scratch.write("file.obj", content)};
        words.insert(words.end(), arguments.begin(), arguments.end());
        const Outcome outcome = runTool(words);
        const Json report = Json::parse(outcome.out, nullptr, false);
        ASSERT_TRUE(report.is_object()) << name << outcome;
        Json all = cleanReport();
        if (!expected.empty()) all["clean"] = false;
        all.update(Json::parse("{" + expected + "}"));
        for (const auto& [key, value] : all.items())
            EXPECT_EQ(report.value(key, Json()), value) << key << " of " << name;
        EXPECT_EQ(outcome.status, all["clean"] == true ? 0 : 2) << name;
        EXPECT_EQ(outcome.err, "") << name;
    }
}

const std::string points = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 -1 0\nv 0 0 1\nv 0 0 1\n";

TEST(ToolCheck, FindsEachKindOfDefectAndWhereItIs)
{
    const std::string turned = with(cubeObj(), "f 5 6 8 7", "f 5 7 8 6");
    const std::string square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n";
    const std::string unknownVertices = R"("non_manifold_vertices": null, "non_manifold_vertex_numbers": null, )";
    const std::string threeOnEdge =
        unknownVertices + R"("non_manifold_edges": 1, "non_manifold_edge_vertices": [[0, 1]])";
    expectChecks({
        {"a cube", cubeObj(), ""},
        {"an open box", boxObj(), ""},
        {"a side turned over", turned, R"("flipped_triangles": 2, "flipped_triangle_numbers": [2, 3])"},
        {"the first side turned over", with(cubeObj(), "f 1 3 4 2", "f 1 2 4 3"),
         R"("flipped_triangles": 2, "flipped_triangle_numbers": [0, 1])"},
        {"three triangles on an edge", points + "f 1 2 3\nf 2 1 4\nf 2 1 5\n", threeOnEdge},
        {"two tetrahedra that touch", tetrahedraObj(),
         R"("non_manifold_vertices": 1, "non_manifold_vertex_numbers": [0])"},
        {"a triangle twice", turned + "f 1 5 7\n",
         unknownVertices + R"("duplicate_triangles": 1, "duplicate_triangle_numbers": [12], "non_manifold_edges": 3,
            "flipped_triangles": 2, "flipped_triangle_numbers": [2, 3])"},
        {"a vertex twice", points + "f 1 2 3\nf 1 4 4\n",
         R"("degenerate_triangles": 1, "degenerate_triangle_numbers": [1], "non_manifold_vertices": 1)"},
        {"two corners in one place", points + "f 1 2 3\nf 4 5 6\n",
         R"("collapsed_triangles": 1, "collapsed_triangle_numbers": [1])"},
        {"squares that cross", square + "v 0.5 0.25 -1\nv 0.5 0.25 1\nv 0.5 0.75 1\nv 0.5 0.75 -1\nf 5 6 7 8\n",
         R"("crossings": 2, "crossing_triangles": 4, "crossing_triangle_numbers": [0, 1, 2, 3],
            "crossing_pairs": [[2, 0], [3, 1]])"},
        {"places that are none", square + "v nan 0 0\nv 0 1e99 0\nf 1 2 5\n",
         R"("non_finite_vertices": 2, "non_finite_vertex_numbers": [4, 5], "flipped_triangles": 1)"},
        {"a one-sided band",
         "v 0 0 0\nv 1 0 0\nv 2 0 0\nv 0 1 1\nv 1 1 1\nv 2 1 1\n"
         "f 1 2 4\nf 2 5 4\nf 2 3 5\nf 3 6 5\nf 3 4 6\nf 4 1 6\n",
         R"("flipped_triangles": null, "one_sided_triangles": 6)"},
        {"a fold that is not looked for", points + "v 1 0.1 0.1\nf 1 3 2\nf 1 7 3\n", ""},
        {"a fold that is small enough",
         points + "v 1 0.1 0.1\nf 1 3 2\nf 1 7 3\n",
         R"("folded_edges": 0, "clean": true)",
         {"--angles", "5"}},
        {"a fold",
         points + "v 1 0.1 0.1\nf 1 3 2\nf 1 7 3\n",
         R"("folded_edges": 1, "folded_edge_vertices": [[0, 2]], "folded_triangles": 2)",
         {"--angles", "6"}},
    });
}

TEST(ToolCheck, AdvisesWeldingWhereNothingIsConnected)
{
    const Scratch scratch;
    const Outcome outcome = runTool({"check", "--json", scratch.write("soup.stl", boxBinaryStl())});
    const Json report = Json::parse(outcome.out, nullptr, false);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(report["crossings"], Json());
    EXPECT_EQ(report["boundary_edges"], 33);
    EXPECT_NE(report["notes"].dump().find("weld the mesh first"), std::string::npos) << outcome;
}

TEST(ToolCheck, TellsPeopleThePlacesOfTheFirstFew)
{
    const Scratch scratch;
    std::string cube = cubeObj() + "v nan 1 -inf\n";
    for (int i = 0; i < 5; ++i) cube += "f 1 5 7\n";
    const Outcome outcome = runTool({"check", scratch.write("cube.obj", cube)});
    EXPECT_EQ(outcome.status, 2);
    for (const char* words : {"vertex 8 ", "at nan 1.0 -infinity", "duplicate triangles    5\n  triangle 12 ",
                              "of vertices 0 4 6, first at -1.0 -1.0 -1.0", "  and more             2\n", "edge 0 4 ",
                              "from -1.0 -1.0 -1.0 to -1.0 -1.0 1.0", "can't be told", "clean                  no"})
        EXPECT_NE(outcome.out.find(words), std::string::npos) << words << outcome;
}

TEST(ToolCheck, SaysWhatItCannotDo)
{
    const Scratch scratch;
    const std::string cube = scratch.write("cube.obj", cubeObj()), bare = scratch.write("bare.obj", points);
    expectOneLine(runTool({"check", bare}), {"bare.obj: has no triangles"}, "points");
    expectOneLine(runTool({"check", scratch.path("none.obj")}), {"none.obj"}, "absent");
    expectOneLine(runTool({"check", cube, "--picture", scratch.path("a.jpg")}), {"a.jpg", ".png"}, "jpg");
    expectOneLine(runTool({"check", cube, "--picture", scratch.path("no/a.png")}), {"no/a.png"}, "folder");
    for (const char* size : {"10x10", "500", "500x", "x500", "500x500x", "99999x500", "-500x500"})
        EXPECT_EQ(runTool({"check", cube, "--picture", scratch.path("a.png"), "--picture-size", size}).status, 2)
            << size;
    for (const char* angle : {"-1", "181", "nan", "x"})
        EXPECT_EQ(runTool({"check", cube, "--angles", angle}).status, 2) << angle;
    EXPECT_EQ(scratch.names(), (std::vector<std::string>{"bare.obj", "cube.obj"}));
}

} // namespace

} // namespace toolTest
