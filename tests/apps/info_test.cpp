#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

/// Expects the values of `expected` in the report; other keys are free.
void expectValues(const Json& report, const Json& expected, const std::string& what)
{
    for (const auto& [key, value] : expected.items())
        EXPECT_EQ(report.value(key, Json()), value) << key << " of " << what;
}

struct File
{
    std::string name; ///< without an extension it says what the case is, and the file is an OBJ file
    std::string content;
    std::string expected; ///< the members of a JSON object
};

void expectInfos(const std::vector<File>& files)
{
    const Scratch scratch;
    for (const auto& [name, content, expected] : files) {
        const std::string path = scratch.write(name.find('.') == std::string::npos ? "file.obj" : name, content);
        expectValues(info(path), Json::parse("{" + expected + "}"), name);
    }
}

TEST(ToolInfo, ReportsTheSameForOneSurfaceInEveryFormat)
{
    const std::string box = R"("vertices": 9, "unused_vertices": 1, "duplicate_positions": 0, "non_finite_vertices": 0,
        "triangles": 11, "degenerate_triangles": 0, "edges": 18, "boundary_edges": 3, "boundary_vertices": 3,
        "non_manifold_edges": 0, "closed": false, "valence_min": 4, "valence_max": 5, "min": [0, 0, 0],
        "max": [5, 5, 5.5], "channels": ["vertices"], )";
    const std::string faces = box + R"("faces": 6, "polygons": 5, )", noNotes = R"("notes": [])";
    const std::string plyNote = R"("notes": ["vertex properties: quality, not kept"])";
    // Three vertices per triangle, and no place for the unused one.
    const std::string soup = R"("vertices": 33, "duplicate_positions": 25, "triangles": 11, "boundary_edges": 33,
        "valence_max": 2, "max": [1, 1, 1])";
    expectInfos({{"box.obj", boxObj(), faces + noNotes},
                 {"box.OFF", boxOff(), faces + noNotes},
                 {"text.ply", boxPly(), faces + plyNote},
                 {"little.ply", boxBinaryPly("little"), faces + plyNote},
                 {"big.ply", boxBinaryPly("big"), faces + plyNote},
                 {"box.txt", boxPlain(), box + R"("faces": 11, "polygons": 0, )" + noNotes},
                 {"text.stl", boxStl(), soup},
                 {"binary.stl", boxBinaryStl(), soup}});
}

TEST(ToolInfo, PutsTheMeshesOfASceneWhereItsNodesSay)
{
    expectInfos({{"scene.gltf", triangleGltf(), R"("vertices": 9, "triangles": 6, "min": [-1, 0, 0], "max": [11, 1, 0],
        "channels": ["vertices", "normals"])"}});
    // The mirrored triangle is turned around, so that its front stays in front.
    const Scratch scratch;
    report({"convert", scratch.write("scene.gltf", triangleGltf()), scratch.path("scene.txt")});
    EXPECT_TRUE(scratch.read("scene.txt").ends_with("3 0 1 2\n3 0 2 1\n3 3 4 5\n3 3 5 4\n3 8 7 6\n3 7 8 6\n"))
        << scratch.read("scene.txt");
}

TEST(ToolInfo, ReadsObjFilesAsPeopleWriteThem)
{
    const std::string square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";
    const std::string normals = square + "vn 0 0 1\nvn 0 0 1\nvn 0 1 0\n";
    const std::string one = R"("vertices": 4, "triangles": 1, "notes": [])";
    const std::string two = R"("vertices": 4, "triangles": 2, "faces": 1, "polygons": 1, "notes": [])";
    expectInfos({
        {"trailing blanks and tabs", square + "f 1 2 3 \t \n", one},
        {"CR LF", "v 0 0 0\r\nv 1 0 0\r\nv 1 1 0\r\nv 0 1 0\r\nf 1 2 3 4\r\n", two},
        {"CR alone", "v 0 0 0\rv 1 0 0\rv 1 1 0\rf 1 2 3\r", R"("vertices": 3, "triangles": 1)"},
        {"relative", square + "f -4 -3 -2 -1", two},
        {"relative in the middle", square + "f -4/-1 -3/-1 -2/-1\nv 9 9 9\n", R"("vertices": 5, "triangles": 1)"},
        {"faces first", "f 1 2 3\n" + square, one},
        {"continued", square + "f 1 2 \\\n 3 \\\r\n4\n", two},
        {"comment behind a face", square + "f 1 2 3 # 4\n", one},
        {"byte order mark", "\xEF\xBB\xBF" + square + "f 1 2 3\n", one},
        {"indented", "  v +1 +2e0 3\n\tv 0 0 0\n v 1 1 1\n  f 1 2 3\n", R"("vertices": 3, "triangles": 1)"},
        {"no numbers", "v nan 0 0\nv 0 -inf 0\nv 1e99 0 0\nv 1 2 3\nv 1 2 3\nf 1 2 3\n",
         R"("non_finite_vertices": 3, "duplicate_positions": 1, "min": [1, 2, 3], "max": [1, 2, 3])"},
        {"colours", "v 0 0 0 1 1 1\n", R"("vertices": 1, "notes": ["colours: not kept"])"},
        {"two corners", square + "f 1 2\nf 1 2 3\n",
         R"("faces": 1, "triangles": 1, "notes": ["faces of one or two corners: 1, left out"])"},
        {"one normal a vertex", normals + "f 1//1 2//2 3//1\nf 1//2 3//2 4//3\n",
         R"("channels": ["vertices", "normals"], "notes": [])"},
        {"several normals", normals + "f 1//1 2//2 3//1\nf 1//3 3//2 4//3\n",
         R"("channels": ["vertices"], "notes": ["normals: several at one vertex, kept per face corner"])"},
        {"normals here and there", normals + "f 1//1 2//2 3//1\nf 1 3 4\n",
         R"("channels": ["vertices"], "notes": ["normals: not at every face corner, not kept"])"},
        {"texture", square + "vt 0 0\nvt 1 1\nf 1/1 2/-1 3/2\n", R"("channels": ["vertices", "uvs"])"},
    });
}

TEST(ToolInfo, CountsAndMeasuresASurfaceAndItsParts)
{
    const std::string points = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 -1 0\nv 0 0 1\nv 0 0 1\nv -0 0 1\n";
    const std::string top = "f 5 6 8 7\n";
    std::string oneTurned = cubeObj();
    oneTurned.replace(oneTurned.find(top), top.size(), "f 7 8 6 5\n");
    const std::string moebius = "v 0 0 0\nv 1 0 0\nv 2 0 0\nv 0 1 1\nv 1 1 1\nv 2 1 1\n"
                                "f 1 2 4\nf 2 5 4\nf 2 3 5\nf 3 6 5\nf 3 4 6\nf 4 1 6\n";
    // A flat square of side 4 with a square hole of side 2.
    const std::string annulus = "v -2 -2 0\nv 2 -2 0\nv 2 2 0\nv -2 2 0\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\n"
                                "f 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n";
    expectInfos({
        {"three triangles on an edge", points + "f 1 2 3\nf 1 2 4\nf 2 1 5\n",
         R"("edges": 7, "non_manifold_edges": 1, "boundary_edges": 6, "boundary_vertices": 5, "valence_max": 4,
            "components": 1, "boundary_loop_edges": [4, 2], "unbalanced_edges": 1)"},
        {"the same triangle three times", points + "f 1 2 3\nf 2 3 1\nf 3 2 1\n",
         R"("edges": 3, "non_manifold_edges": 3, "boundary_edges": 0, "valence_max": 2)"},
        {"a corner repeated", points + "f 1 2 2\nf 3 3 4\nf 5 5 5\n",
         R"("degenerate_triangles": 3, "edges": 2, "boundary_edges": 2, "unused_vertices": 2, "valence_min": 0)"},
        {"corners repeated", points + "f 1 1 1\nf 1 2 2\n", R"("components": 2, "vertex_components": 1)"},
        {"closed by two triangles", points + "f 1 2 3\nf 3 2 1\n", R"("closed": true, "unused_vertices": 4)"},
        {"zeros of both signs, points alone", points,
         R"("duplicate_positions": 2, "closed": false, "vertices": 7, "unused_vertices": 7, "triangles": 0,
            "valence_min": null, "components": 0, "boundary_loops": 0, "area": 0, "longest_edge": null)"},
        {"cube", cubeObj(),
         R"("components": 1, "vertex_components": 1, "boundary_loops": 0, "boundary_loop_lengths": [], "closed": true,
            "unbalanced_edges": 0, "area": 24, "volume": 8, "longest_edge": 2.828427, "largest_dihedral_angle": 90)"},
        {"far away", cubeObj("9999", "10001"), R"("min": [9999, -1, -1], "volume": 8)"},
        {"inside out", cubeObj("1", "-1"), R"("area": 24, "volume": -8, "largest_dihedral_angle": 90)"},
        {"one face turned", oneTurned,
         R"("closed": true, "unbalanced_edges": 4, "volume": null, "largest_dihedral_angle": null)"},
        {"tetrahedra", tetrahedraObj(),
         R"("components": 2, "vertex_components": 1, "volume": 0.3333333, "longest_edge": 1.414214,
            "largest_dihedral_angle": 125.2644)"},
        {"annulus", annulus,
         R"("boundary_loops": 2, "boundary_loop_lengths": [16, 8], "boundary_loop_edges": [4, 4], "area": 12,
            "volume": null, "largest_dihedral_angle": 0)"},
        {"borders that touch", "v 0 0 0\nv 3 0 0\nv 0 4 0\nv -6 0 0\nv 0 -8 0\nf 1 2 3\nf 1 4 5\n",
         R"("components": 2, "vertex_components": 1, "boundary_loop_lengths": [24, 12])"},
        {"one-sided", moebius, R"("boundary_loop_edges": [6], "unbalanced_edges": 1, "components": 1)"},
        {"a sliver on a flat square", "v 0 0 0\nv 2 0 0\nv 2 2 0\nv 0 2 0\nv 1 0 0\nf 1 2 3\nf 1 3 4\nf 2 1 5\n",
         R"("area": 4, "largest_dihedral_angle": 0)"},
        {"no number", "v nan 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", R"("area": null, "boundary_loop_lengths": [null])"},
    });
}

TEST(ToolInfo, ShowsPeopleTheSameTheLongestLoopsAndWhatHasNoValue)
{
    std::string triangles;
    for (int i = 1; i <= 12; ++i) {
        const std::string size = std::to_string(i);
        triangles += "v 0 0 " + size + "\nv " + size + " 0 " + size + "\nv 0 " + size + " " + size + "\nf -3 -2 -1\n";
    }
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases{
        {triangles,
         {"components            12", "  loop 1              length 40.97056, 3 edges",
          "  and more            2 shorter ones", "volume                none: the surface is not closed"}},
        {tetrahedraObj(),
         {"components            2, over shared vertices 1", "largest dihedral      125.2644 degrees"}},
        {boxObj() + "vn 0 0 1\n",
         {"vertices              9", "polygons              5", "closed                no",
          "max                   5.0 5.0 5.5", "note: normals: not at every face corner, not kept"}},
    };
    const Scratch scratch;
    for (const auto& [content, lines] : cases) {
        const Outcome outcome = runTool({"info", scratch.write("in.obj", content)});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.err, "");
        for (const std::string& line : lines)
            EXPECT_NE(outcome.out.find("\n" + line + "\n"), std::string::npos) << line << outcome;
    }
    EXPECT_EQ(info(scratch.write("in.obj", triangles))["boundary_loop_lengths"].size(), 12U);
}

TEST(ToolInfo, ReadsThePlyAndOffOfOtherPrograms)
{
    const std::string rich =
        "ply\r\nformat ascii 1.0\r\nobj_info x\r\nelement camera 1\r\nproperty float a\r\n"
        "element vertex 3\r\nproperty double x\r\nproperty double y\r\nproperty double z\r\n"
        "property float nx\r\nproperty float ny\r\nproperty float nz\r\nproperty float texture_u\r\n"
        "property float texture_v\r\nelement face 1\r\nproperty list uchar uint vertex_index\r\n"
        "property int flags\r\nend_header\r\n7\r\n0 0 0 0 0 1 0.5 0.25\r\n1 0 0 0 0 1 0 0\r\n"
        "0 1 0 0 0 1 0 0\r\n3 0 1 2 7\r\n";
    const std::string strips = "ply\nformat ascii 1.0\nelement vertex 5\nproperty float x\nproperty float y\nproperty "
                               "float z\nelement tristrips 1\nproperty list int int vertex_indices\nend_header\n"
                               "0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 2 0\n8 0 1 2 3 -1 2 3 4\n";
    std::string polygon = "OFF 12 1 0\n";
    for (int i = 0; i < 12; ++i) polygon += std::to_string(i) + " " + std::to_string(i * i) + " 0\n";
    polygon += "12 0 1 2 3 4 5 6 7 8 9 10 11 255 0 0\n";
    expectInfos({
        {"rich.ply", rich,
         R"("vertices": 3, "triangles": 1, "max": [1, 1, 0], "channels": ["vertices", "normals", "uvs"],
            "notes": ["camera properties: a, not kept", "face properties: flags, not kept"])"},
        {"strips.ply", strips, R"("triangles": 3, "edges": 7, "boundary_edges": 5)"},
        {"polygon.off", polygon, R"("vertices": 12, "polygons": 1, "triangles": 10)"},
        {"normals.off", "NOFF\n3 1 0\n0 0 0 0 0 1\n1 0 0 0 0 1\n0 1 0 0 0 1\n3 0 1 2\n",
         R"("max": [1, 1, 0], "channels": ["vertices", "normals"])"},
        {"colours.off", "COFF\n3 1 0\n0 0 0 255 0 0 1\n1 0 0 255 0 0 1\n0 1 0 255 0 0 1\n3 0 1 2\n",
         R"("max": [1, 1, 0], "notes": ["colours and texture coordinates: not kept"])"},
        {"empty.off", "OFF\n0 0 0\n", R"("vertices": 0, "min": null, "valence_max": null, "closed": false)"},
        {"empty.txt", "0 0\n", R"("vertices": 0, "max": null)"},
    });
    const Scratch scratch;
    report({"convert", scratch.write("strips.ply", strips), scratch.path("strips.txt")});
    EXPECT_TRUE(scratch.read("strips.txt").ends_with("3 0 1 2\n3 1 3 2\n3 2 3 4\n")) << scratch.read("strips.txt");
}

TEST(ToolInfo, ReportsOnEachOfSeveralMeshesAlsoWhereOneFails)
{
    const Scratch scratch;
    const std::string box = scratch.write("box.obj", boxObj()), cube = scratch.write("cube.obj", cubeObj());
    const std::string none = scratch.path("none.obj");
    const Json both = Json::parse(runTool({"info", "--json", box, cube}).out);
    ASSERT_EQ(both.size(), 2U);
    EXPECT_EQ(both[0], info(box));
    EXPECT_EQ(both[1], info(cube));

    const Outcome json = runTool({"info", "--json", box, none, cube});
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(json.err, "zngeom: " + none + ": can't be read: No such file or directory\n");
    const Json three = Json::parse(json.out);
    ASSERT_EQ(three.size(), 3U);
    EXPECT_EQ(three[1]["file"], none);
    EXPECT_NE(three[1]["error"].get<std::string>().find("No such file"), std::string::npos);
    EXPECT_EQ(three[2]["volume"], 8);

    const Outcome people = runTool({"info", none, box, cube});
    EXPECT_EQ(people.status, 1);
    EXPECT_EQ(people.err, json.err);
    EXPECT_EQ(people.out, runTool({"info", box}).out + "\n" + runTool({"info", cube}).out);
}

TEST(ToolInfo, ShowsPeopleNoControlCharactersOfFilesAndNoNotesIfTheyWantNone)
{
    const Scratch scratch;
    const std::string path = scratch.write("red\x1B[31m\xC2\x9B\n.obj", boxObj() + "vn 0 0 1\n");
    const Outcome outcome = runTool({"info", path});
    EXPECT_NE(outcome.out.find("red?[31m??.obj\n"), std::string::npos) << outcome;
    const std::size_t notes = outcome.out.find("note: ");
    ASSERT_NE(notes, std::string::npos) << outcome;
    EXPECT_EQ(runTool({"info", "-q", path}).out, outcome.out.substr(0, notes));
    EXPECT_EQ(info(path)["file"], path);
    EXPECT_EQ(report({"info", "--quiet", path}), info(path));
}

/// What the text of an OBJ file says, for simple files.
Json countObj(const std::filesystem::path& path)
{
    long vertices = 0, faces = 0, polygons = 0, triangles = 0;
    std::ifstream file(path);
    for (std::string line, word; std::getline(file, line);) {
        std::istringstream words(line);
        if (!(words >> word)) continue;
        if (word == "v") ++vertices;
        if (word != "f") continue;
        long corners = 0;
        while (words >> word) ++corners;
        ++faces;
        polygons += corners > 3 ? 1 : 0;
        triangles += corners - 2;
    }
    return {{"vertices", vertices}, {"faces", faces}, {"polygons", polygons}, {"triangles", triangles}};
}

TEST(ToolInfo, LoadsEveryMeshOfTheSharedFolderWithAllItsFaces)
{
    const auto folder = std::filesystem::path(ZNGEOM_SOURCE_DIR) / "../shared/meshes";
    if (!std::filesystem::is_directory(folder)) GTEST_SKIP() << "no meshes in " << folder.string();
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".obj")
            expectValues(info(entry.path()), countObj(entry.path()), entry.path().filename());
}

} // namespace

} // namespace toolTest
