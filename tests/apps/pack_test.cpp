#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

using Row = std::array<double, 4>; // x, y, width, height

std::vector<Row> rowsOf(std::string text)
{
    std::replace(text.begin(), text.end(), ',', ' ');
    std::istringstream lines(text);
    std::vector<Row> rows;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream numbers(line);
        Row& row = rows.emplace_back();
        for (double& value : row) numbers >> value;
    }
    return rows;
}

/// The least gap between two of them, along either axis.
double leastGap(const std::vector<Row>& rows)
{
    double least = 1;
    for (std::size_t i = 0; i < rows.size(); ++i)
        for (std::size_t k = 0; k < i; ++k) {
            double gap = -1;
            for (std::size_t axis = 0; axis < 2; ++axis)
                gap = std::max({gap, rows[i][axis] - rows[k][axis] - rows[k][axis + 2],
                                rows[k][axis] - rows[i][axis] - rows[i][axis + 2]});
            least = std::min(least, gap);
        }
    return least;
}

/// Texture coordinates per corner of the triangles of an OBJ file.
struct Chart
{
    int numVertices = 0;
    std::vector<std::array<double, 2>> corners;

    explicit Chart(const std::string& text)
    {
        std::vector<std::array<double, 2>> uvs;
        std::istringstream lines(text);
        for (std::string line, word; std::getline(lines, line);) {
            std::istringstream words(line);
            words >> word;
            numVertices += word == "v";
            if (word == "vt") words >> uvs.emplace_back()[0] >> uvs.back()[1];
            if (word != "f") continue;
            while (words >> word) corners.push_back(uvs.at(std::stoul(word.substr(word.find('/') + 1)) - 1));
        }
    }

    double length(std::size_t corner, std::size_t other) const
    {
        return std::hypot(corners[corner][0] - corners[other][0], corners[corner][1] - corners[other][1]);
    }
};

/// A roof: two squares that share an edge, in two triangles each. One lies as it is on the texture, the other, at half
/// the size, on its tip.
const std::string roof = "v 0 0 0\nv 1 0 1\nv 2 0 0\nv 0 1 0\nv 1 1 1\nv 2 1 0\n"
                         "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvt 3.5 0\nvt 4 0.5\nvt 3.5 1\nvt 3 0.5\n"
                         "g left\nf 1/1 2/2 5/3\nf 1/1 5/3 4/4\ng right\nf 2/5 3/6 6/7\nf 2/5 6/7 5/8\n";

TEST(ToolPack, LaysOutRectanglesOfATable)
{
    const Scratch scratch;
    const std::string table = scratch.write("sizes.csv", "# three\n2,1,a\n\n1\t1\n1 1, wide one\n");
    const std::string out = scratch.path("places.csv");
    const Json told = report({"pack", table, out, "--svg", scratch.path("a.svg")});
    EXPECT_EQ(told["rectangles"], 3);
    EXPECT_EQ(told["tries"], 1);
    EXPECT_EQ(told["scale"], 0.5);
    EXPECT_EQ(told["density"], 1);
    EXPECT_EQ(scratch.read("places.csv"), "0,0,1,0.5,a\n0,0.5,0.5,0.5\n0.5,0.5,0.5,0.5,wide one\n");
    EXPECT_NE(scratch.read("a.svg").find(">wide one<"), std::string::npos);

    const Outcome piped = runTool({"pack", "-", "-"}, scratch.write("huge.csv", "1e308 1e-300\n0 5e307\n"));
    EXPECT_EQ(piped.status, 0) << piped;
    EXPECT_EQ(piped.out, "0,0,1,0\n0,0,0,0.5\n");
    EXPECT_EQ(runTool({"pack", scratch.write("points.csv", "0 0\n0 0\n"), "-"}).out, "0,0,0,0\n0,0,0,0\n");
}

TEST(ToolPack, KeepsAMarginAndPacksTighterWithMoreTries)
{
    const Scratch scratch;
    std::string text;
    for (int i = 0; i < 90; ++i)
        text += std::to_string(20 + i * 37 % 61) + ',' + std::to_string(20 + i * 17 % 71) + '\n';
    const std::string table = scratch.write("sizes.csv", text), out = scratch.path("places.csv");
    const std::vector<Row> sizes = rowsOf(text);
    for (const double margin : {0.0, 0.01, 0.06}) {
        const Json told = report({"pack", table, out, "--margin", std::to_string(margin)});
        const std::vector<Row> rows = rowsOf(scratch.read("places.csv"));
        ASSERT_EQ(rows.size(), 90u);
        EXPECT_GE(leastGap(rows), margin - 1e-8);
        EXPECT_LE(leastGap(rows), 1.1 * margin);
        double area = 0;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            for (std::size_t axis = 0; axis < 2; ++axis) {
                EXPECT_GE(rows[i][axis], margin / 2 - 1e-8);
                EXPECT_LE(rows[i][axis] + rows[i][axis + 2], 1 - margin / 2 + 1e-8);
                EXPECT_NEAR(rows[i][axis + 2], sizes[i][axis] * told["scale"].get<double>(), 1e-6);
            }
            area += rows[i][2] * rows[i][3];
        }
        EXPECT_NEAR(told["density"].get<double>(), area, 1e-6);
    }
    const Json hasty = report({"pack", table, out, "--iterations", "5"});
    const Json patient = report({"pack", table, out, "--iterations", "5000"});
    EXPECT_LT(hasty["tries"].get<int>(), patient["tries"].get<int>());
    EXPECT_LT(hasty["density"].get<double>(), patient["density"].get<double>());
}

TEST(ToolPack, LaysOutIslandsOfAMeshAnew)
{
    const Scratch scratch;
    const std::string mesh = scratch.write("roof.obj", roof), out = scratch.path("out.obj");
    const Chart before(roof);
    for (const bool isTurned : {false, true}) {
        std::vector<std::string> call{"pack", mesh, out, "--margin", "0.01", "--svg", scratch.path("a.svg")};
        if (isTurned) call.push_back("--turn");
        const Json told = report(call);
        EXPECT_EQ(told["islands"], 2);
        EXPECT_EQ(told.contains("turned"), isTurned);
        EXPECT_EQ(told.value("turned", 1), 1);
        const Chart after(scratch.read("out.obj"));
        EXPECT_EQ(after.numVertices, 6);
        ASSERT_EQ(after.corners.size(), 12u);
        std::vector<Row> islands(2, Row{9, 9, -9, -9});
        for (std::size_t corner = 0; corner < 12; ++corner) {
            const std::size_t next = corner % 3 == 2 ? corner - 2 : corner + 1;
            EXPECT_NEAR(after.length(corner, next), told["scale"].get<double>() * before.length(corner, next), 1e-6);
            for (std::size_t axis = 0; axis < 2; ++axis) {
                double &low = islands[corner / 6][axis], &high = islands[corner / 6][axis + 2];
                low = std::min(low, after.corners[corner][axis]);
                high = std::max(high, after.corners[corner][axis]);
            }
        }
        EXPECT_NEAR(islands[1][2] - islands[1][0], (isTurned ? std::sqrt(0.5) : 1) * told["scale"].get<double>(), 1e-6);
        for (Row& island : islands) {
            EXPECT_GE(std::min(island[0], island[1]), 0.0049);
            EXPECT_LE(std::max(island[2], island[3]), 0.9951);
            island[2] -= island[0], island[3] -= island[1];
        }
        EXPECT_GE(leastGap(islands), 0.0099);
        EXPECT_NE(scratch.read("out.obj").find("g right\n"), std::string::npos);
        EXPECT_EQ(scratch.read("a.svg").find("nan"), std::string::npos);

        // The same in every format that has texture coordinates.
        call[2] = scratch.path("out.ply");
        report(call);
        report({"convert", call[2], scratch.path("ply.obj")});
        EXPECT_EQ(Chart(scratch.read("ply.obj")).corners, after.corners);
        EXPECT_EQ(Chart(scratch.read("ply.obj")).numVertices, 6);
        call[2] = scratch.path("out.glb");
        report(call);
        report({"convert", call[2], scratch.path("glb.obj")});
        EXPECT_EQ(Chart(scratch.read("glb.obj")).numVertices, 8);
        for (std::size_t corner = 0; corner < 12; ++corner)
            EXPECT_NEAR(Chart(scratch.read("glb.obj")).corners[corner][1], after.corners[corner][1], 1e-6);
    }
    // Islands that have nothing at a seam keep a channel, and polygons stay.
    const std::string whole = scratch.write("whole.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 0.2 0\n"
                                                         "vt 0.2 0.1\nvt 0 0.1\nf 1/1 2/2 3/3 4/4\n");
    EXPECT_EQ(report({"pack", whole, out})["density"], 0.5);
    EXPECT_NE(scratch.read("out.obj").find("vt 1 0.5\n"), std::string::npos);
    EXPECT_NE(scratch.read("out.obj").find("f 1/1 2/2 3/3 4/4\n"), std::string::npos);
}

TEST(ToolPack, ConvertsTextureCoordinatesOfCorners)
{
    const Scratch scratch;
    const std::string mesh = scratch.write("roof.obj", roof), again = scratch.path("again.obj");
    report({"convert", mesh, scratch.path("a.ply")});
    report({"convert", scratch.path("a.ply"), again});
    EXPECT_EQ(Chart(scratch.read("again.obj")).corners, Chart(roof).corners);
    const Json told = report({"convert", mesh, scratch.path("a.glb")});
    EXPECT_NE(told["notes"].dump().find("written several times"), std::string::npos);
    report({"convert", scratch.path("a.glb"), again});
    EXPECT_EQ(Chart(scratch.read("again.obj")).corners, Chart(roof).corners);
    EXPECT_EQ(Chart(scratch.read("again.obj")).numVertices, 8);
    EXPECT_NE(report({"convert", mesh, scratch.path("a.off")})["notes"].dump().find("OFF files have none"),
              std::string::npos);

    // Normals of corners as well, where the format has them.
    const std::string lit = scratch.write("lit.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nvn 0 0 1\nvn 1 0 0\n"
                                                     "f 1//1 2//1 3//1\nf 3//2 2//2 4//2\n");
    report({"convert", lit, scratch.path("lit.glb")});
    EXPECT_EQ(info(scratch.path("lit.glb"))["vertices"], 6);
}

TEST(ToolPack, RefusesWhatItCannotPack)
{
    const Scratch scratch;
    const std::string out = scratch.write("out.csv", "old");
    const struct
    {
        std::string table;
        std::vector<std::string> words;
    } cases[] = {
        {"1 2\n3\n", {"line 2: a rectangle has a width and no height"}},
        {"1 2\n\n3,-1\n", {"line 3: the height is below 0"}},
        {"-1 2\n", {"line 1: the width is below 0"}},
        {"1 wide\n", {"line 1: \"wide\" is not a finite number"}},
        {"1 1e999\n", {"line 1: \"1e999\" is not a finite number"}},
        {"nan 1\n", {"line 1: \"nan\""}},
        {"# none\n\n", {"has no rectangles"}},
        {std::string("\x01\0\xFF\n", 4), {"line 1"}},
    };
    for (const auto& [table, words] : cases)
        expectOneLine(runTool({"pack", scratch.write("in.csv", table), out}), words, table);
    const std::string good = scratch.write("in.csv", "1 1\n1 1\n1 1\n1 1\n1 1\n");
    expectOneLine(runTool({"pack", good, out, "--margin", "0.5"}), {"in.csv", "no room for 5 rectangles"}, "margin");
    expectOneLine(runTool({"pack", good, out, "--svg", "a.png"}), {"a.png", ".svg"}, "drawing");
    expectOneLine(runTool({"pack", scratch.path("none.csv"), out}), {"none.csv"}, "no file");

    const std::string bare = scratch.write("bare.obj", gridObj(2));
    expectOneLine(runTool({"pack", bare, scratch.path("a.obj")}), {"bare.obj", "has no texture coordinates"}, "bare");
    const std::string mesh = scratch.write("roof.obj", roof);
    expectOneLine(runTool({"pack", mesh, scratch.path("a.off")}), {"OFF files have no texture coordinates"}, "format");
    const std::string endless = scratch.write("inf.obj", with(roof, "vt 1 1", "vt 1 inf"));
    expectOneLine(runTool({"pack", endless, scratch.path("a.obj")}), {"inf.obj", "not finite"}, "not finite");

    for (const std::vector<std::string>& options : {std::vector<std::string>{"--turn"},
                                                    {"--margin", "1"},
                                                    {"--margin", "-0.1"},
                                                    {"--iterations", "0"},
                                                    {"--svg"}}) {
        std::vector<std::string> call{"pack", good, out};
        call.insert(call.end(), options.begin(), options.end());
        EXPECT_EQ(runTool(call).status, 2) << options[0];
    }
    EXPECT_EQ(scratch.read("out.csv"), "old");
}

} // namespace

} // namespace toolTest
