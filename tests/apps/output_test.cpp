#include <gtest/gtest.h>
#include <sys/resource.h>

#include <filesystem>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

TEST(ToolConvert, KeepsTheSurfaceThroughEveryFormat)
{
    const Scratch scratch;
    std::string previous = scratch.write("0.obj", boxObj());
    const Json first = info(previous);
    for (const char* name : {"1.ply", "2.off", "3.glb", "4.txt", "5.obj", "6.plain", "7.glb", "8.ply"}) {
        const std::string next = scratch.path(name);
        const Json result = report({"convert", previous, next});
        EXPECT_EQ(result["vertices"], 9) << name;
        EXPECT_EQ(result["triangles"], 11) << name;
        EXPECT_EQ(result["bytes"], std::filesystem::file_size(next)) << name;
        const Json now = info(next);
        for (const char* key : {"vertices", "unused_vertices", "triangles", "edges", "boundary_edges", "min", "max"})
            EXPECT_EQ(now[key], first[key]) << key << " of " << name;
        previous = next;
    }
    // The triangles themselves, and positions to the last digit.
    report({"convert", previous, scratch.path("9.off")});
    report({"convert", scratch.path("3.glb"), scratch.path("10.off")});
    EXPECT_EQ(scratch.read("9.off"), scratch.read("10.off"));
}

TEST(ToolConvert, KeepsPolygonsWhereTheFormatHasThem)
{
    // Texture coordinates per corner and groups follow the polygons, whose fans they are read for.
    const std::string source = "v 0 0 0\nv 1 0 0\nv 2 1 0\nv 1 2 0\nv 0 1 0\nv 3 0 0\n"
                               "vt 0 0\nvt 1 0\nvt 1 1\nvt 0.5 1\nvt 0 1\nvt 0.25 0.25\nvt 1 0\n"
                               "g five\nf 1/1 2/2 3/3 4/4 5/5\ng three\nf 2/6 6/7 3/3\n";
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", source);
    report({"convert", in, scratch.path("out.obj")});
    EXPECT_EQ(scratch.read("out.obj"), source);

    std::string previous = in;
    for (const char* name : {"1.off", "2.ply", "3.txt", "4.obj"}) {
        const std::string next = scratch.path(name);
        const Json told = report({"convert", previous, next});
        EXPECT_EQ(told["faces"], 2) << name;
        EXPECT_EQ(told["polygons"], 1) << name;
        EXPECT_EQ(info(next)["polygons"], 1) << name;
        previous = next;
    }
    EXPECT_NE(scratch.read("4.obj").find("\nf 1 2 3 4 5\nf 2 6 3\n"), std::string::npos);
    EXPECT_EQ(report({"convert", previous, scratch.path("5.stl")})["notes"],
              Json({"polygons: 1, written as triangles"}));
    EXPECT_EQ(info(scratch.path("5.stl"))["triangles"], 4);
}

TEST(ToolConvert, KeepsNormalsAndTextureCoordinatesWhereTheFormatHasThem)
{
    const std::string source =
        "v 0 0 0\nv 0.1 0 0\nv 0 0.25 0\nvn 0 0 1\nvn 0 1 0\nvn 1 0 0\nvt 0.5 0.25\nvt 1 0\nvt 0 1\n"
        "f 1/1/1 2/2/2 3/3/3\n";
    const Scratch scratch;
    scratch.write("a.obj", source);
    report({"convert", scratch.path("a.obj"), scratch.path("b.ply")});
    report({"convert", scratch.path("b.ply"), scratch.path("c.glb")});
    report({"convert", scratch.path("c.glb"), scratch.path("d.obj")});
    EXPECT_EQ(scratch.read("d.obj"), source);

    for (const char* name : {"e.off", "e.stl", "e.txt"}) {
        const Json result = report({"convert", scratch.path("a.obj"), scratch.path(name)});
        EXPECT_EQ(result["notes"].size(), 2U) << name << result;
    }
    // Facets face the side from which their corners run counter-clockwise.
    EXPECT_EQ(scratch.read("e.stl").substr(84, 12), std::string("\0\0\0\0\0\0\0\0\0\0\x80\x3F", 12));
}

TEST(ToolConvert, DoesNotWriteWhatAFormatHasNoPlaceFor)
{
    const Scratch scratch;
    const std::string cloud = scratch.write("cloud.obj", "v 0 0 0\nv 1 2 3\n");
    report({"convert", cloud, scratch.path("cloud.glb")});
    EXPECT_EQ(info(scratch.path("cloud.glb"))["max"], Json({1, 2, 3}));
    const std::string nan = scratch.write("nan.obj", "v nan 0 0\n"), none = scratch.write("none.txt", "0 0\n");
    for (const auto& [from, to] : {std::pair(nan, "nan.glb"), {none, "none.glb"}, {cloud, "cloud.gltf"}})
        expectOneLine(runTool({"convert", from, scratch.path(to)}), {}, to);
    EXPECT_EQ(scratch.names(), (std::vector<std::string>{"cloud.glb", "cloud.obj", "nan.obj", "none.txt"}));
}

TEST(ToolWeld, MergesASoupIntoASurface)
{
    const Scratch scratch;
    const std::string soup = scratch.write("soup.stl", boxBinaryStl()), out = scratch.path("welded.ply");
    const Json result = report({"weld", soup, out});
    const Json expected{{"input", soup}, {"output", out},   {"vertices_before", 33},     {"vertices", 8},
                        {"merged", 25},  {"triangles", 11}, {"degenerate_triangles", 0}, {"notes", Json::array()}};
    EXPECT_EQ(result, expected);
    EXPECT_EQ(info(out)["boundary_edges"], 3);

    // In place, and with triangles that lose their area.
    const std::string sliver = scratch.write("sliver.obj", "v 0 0 0\nv 1 0 0\nv 0 0 0\nf 1 2 3\n");
    EXPECT_EQ(report({"weld", sliver, sliver})["degenerate_triangles"], 1);
    EXPECT_EQ(info(sliver)["vertices"], 2);
    EXPECT_EQ(report({"weld", sliver, sliver})["merged"], 0);
}

TEST(ToolWeld, KeepsVerticesApartByTheNormalsOfTheFileUnlessToldOtherwise)
{
    const Scratch scratch;
    const std::string corner = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 0\nv 1 0 0\nv 0 0 1\n";
    const std::string creased =
        scratch.write("crease.obj", corner + "vn 0 0 1\nvn 0 -1 0\nf 1//1 2//1 3//1\nf 4//2 5//2 6//2\n");
    EXPECT_EQ(report({"weld", creased, scratch.path("a.ply")})["merged"], 0);
    EXPECT_EQ(report({"weld", "--positions", creased, scratch.path("b.ply")})["merged"], 2);
    EXPECT_EQ(info(scratch.path("a.ply"))["channels"], Json({"vertices", "normals"}));
    EXPECT_EQ(info(scratch.path("b.ply"))["channels"], Json({"vertices"}));

    const std::string seam = scratch.write("seam.obj", corner + "vt 0 0\nvt 1 1\nf 1/1 2/1 3/1\nf 4/2 5/2 6/2\n");
    const Json result = report({"weld", seam, scratch.path("c.obj")});
    EXPECT_EQ(result["merged"], 2);
    EXPECT_EQ(result["notes"].size(), 1U) << "texture coordinates were merged away without a word";
}

TEST(ToolOutput, ReplacesAFileAsAWhole)
{
    const Scratch scratch;
    const std::string box = scratch.write("box.obj", boxObj());
    const std::string target = scratch.write("target.off", "old");
    std::filesystem::permissions(target, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    std::filesystem::create_symlink("target.off", scratch.path("link.off"));
    report({"convert", box, scratch.path("link.off")});
    EXPECT_TRUE(std::filesystem::is_symlink(scratch.path("link.off")));
    EXPECT_EQ(info(target)["vertices"], 9);
    EXPECT_EQ(static_cast<int>(std::filesystem::status(target).permissions()), 0600);
    EXPECT_EQ(scratch.names().size(), 3U);
}

/// While it lives, no process started here may write a file larger than this.
struct FileSizeLimit
{
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &former);
        const rlimit limit{bytes, former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &former); }

    rlimit former{};
};

TEST(ToolOutput, ReportsAFullDiskAndLeavesTheOldFile)
{
    const Scratch scratch;
    std::string points;
    for (int i = 0; i < 3000; ++i) points += "v " + std::to_string(i) + " 0.125 0.5\n";
    std::string facets = "f 1 2 3\n";
    for (int i = 0; i < 11; ++i) facets += facets.substr(0, 16384);
    const std::string manyFaces = scratch.write("faces.obj", points + facets);
    for (const char* name : {"out.obj", "out.txt", "out.ply", "out.off", "out.glb", "out.stl"}) {
        const std::string out = scratch.write(name, "old");
        for (const char* command : {"convert", "weld"}) {
            const FileSizeLimit limit(20000);
            expectOneLine(runTool({command, manyFaces, out}), {"can't be written"}, name);
        }
        EXPECT_EQ(scratch.read(name), "old") << name;
    }
    EXPECT_EQ(scratch.names().size(), 7U) << "something was left behind";
}

} // namespace

} // namespace toolTest
