#include "znGeom/files/mesh_files.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/files/temporary_file.h"
#include "tests/support/meshes.h"
#include "tests/support/moving_allocator.h"
#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"

using namespace znGeom;
using znTest::TemporaryFile;

namespace {

using Faces = std::vector<std::vector<int>>;

struct Content
{
    std::vector<float> positions;
    Faces faces;
};

/// What the rest of a face line holds, read through a stream word by word as the format is described.
std::vector<int> streamFace(const std::string& text)
{
    std::istringstream in(text);
    in.imbue(std::locale::classic());
    std::vector<int> face;
    while (in.good()) {
        int v = -1, vt = -1, vn = -1;
        in >> v;
        if (in.good() && in.peek() == '/') {
            in.get();
            if (in.good() && in.peek() != '/') in >> vt;
            if (in.good() && in.peek() == '/') {
                in.get();
                in >> vn;
            }
        }
        face.push_back(v);
    }
    return face;
}

/// An OBJ reader made of streams, slow and plain.
Content streamObj(const std::string& text)
{
    std::istringstream in(text);
    Content content;
    for (std::string line; std::getline(in, line);) {
        if (line.ends_with('\r')) line.pop_back();
        line.erase(0, std::min(line.find_first_not_of(" \t\v\f\r"), line.size()));
        if (line.starts_with("v ")) {
            std::istringstream numbers(line.substr(2));
            numbers.imbue(std::locale::classic());
            float x = 0, y = 0, z = 0;
            numbers >> x >> y >> z;
            content.positions.insert(content.positions.end(), {x, y, z});
        }
        if (line.starts_with("f ")) content.faces.push_back(streamFace(line.substr(2)));
    }
    const int numVertices = static_cast<int>(content.positions.size() / 3);
    std::erase_if(content.faces, [=](const std::vector<int>& face) {
        return face.size() < 3 ||
               std::any_of(face.begin(), face.end(), [=](int v) { return v < 1 || v > numVertices; });
    });
    for (std::vector<int>& face : content.faces)
        for (int& v : face) --v;
    return content;
}

Faces trianglesOf(const CompactMesh& mesh)
{
    Faces faces;
    for (int i = 0; i < mesh.getNumTriangles(); ++i)
        faces.emplace_back(mesh.getTriangles()[i].corners, mesh.getTriangles()[i].corners + 3);
    return faces;
}

Faces polygonsOf(const CompactMesh& mesh)
{
    Faces faces;
    const int* points = mesh.getPolyPoints();
    for (int i = 0; i < mesh.getNumPolys(); points += mesh.getPolyLengths()[i++])
        faces.emplace_back(points, points + mesh.getPolyLengths()[i]);
    return faces;
}

/// Reads a text that stands in a file.
void readText(CompactMesh& mesh, const std::string& text)
{
    const TemporaryFile file("mesh.obj", text);
    EXPECT_TRUE(meshReadObj(mesh, file.name()));
}

/// The mesh that is read from `text` is the one that the streams see, to the last bit.
void expectAsStreams(const std::string& text)
{
    CompactMesh mesh;
    readText(mesh, text);
    const Content expected = streamObj(text);
    ASSERT_EQ(3 * size_t(mesh.getNumVertices()), expected.positions.size());
    for (size_t i = 0; i < expected.positions.size(); ++i)
        ASSERT_EQ(std::memcmp(mesh.getVerticesRaw() + i, &expected.positions[i], sizeof(float)), 0)
            << "number " << i << ": " << mesh.getVerticesRaw()[i] << " and not " << expected.positions[i];
    const bool hasPolygon =
        std::any_of(expected.faces.begin(), expected.faces.end(), [](const auto& face) { return face.size() > 3; });
    ASSERT_EQ(hasPolygon ? polygonsOf(mesh) : trianglesOf(mesh), expected.faces);
    ASSERT_EQ(hasPolygon ? mesh.getNumTriangles() : mesh.getNumPolys(), 0);
}

/// A line of one of the kinds, out of pieces that make sense or nearly so, in which some characters have been changed.
std::string randomLine(znTest::Random& random, bool trianglesOnly)
{
    static const char* const starts[] = {"v ", "v ", "v ", "v ", " v ", "v\t", "vn ", "# v "};
    static const char* const numbers[] = {"0",
                                          "1.5",
                                          "-.5e-3",
                                          "+2",
                                          "3.",
                                          "0x10",
                                          "inf",
                                          "nan",
                                          "1e60",
                                          "-1e60",
                                          "1e-60",
                                          "1e-42",
                                          "16777217",
                                          "1.2.3",
                                          "7.e+2",
                                          "2E5",
                                          "1e",
                                          "-0",
                                          "8388608.5",
                                          "0.333333343267440796",
                                          "0.1000000014901161193847656250001",
                                          "123456789012345678901"};
    static const char* const faceStarts[] = {"f ", "f ", "f ", "f ", "\t\rf  ", "f\t", "$f "};
    static const char* const entries[] = {"1",      "2",     "3",          "74",          "+5",           "12/3",
                                          "13//14", "6/7/8", "9/",         "10/1/",       "11//",         "500",
                                          "0",      "-1",    "2147483648", "-2147483649", "1/99999999999"};
    static const char* const gaps[] = {" ", " ", " ", " ", "  ", "\t", " \v", "\r", "/", ""};
    static const char* const ends[] = {"\n", "\n", "\n", "\r\n", " \n", "\r\r\n", " \r\n"};
    static const std::string letters = "0123456789+-.eE/ \t\r\v\fnft#$infax";
    const auto pick = [&random](const auto& list, int lower = 0) {
        const int size = static_cast<int>(std::size(list));
        return list[static_cast<size_t>(random.below(random.oneIn(8) ? size : size - lower))];
    };
    const bool isFace = random.oneIn(2);
    std::string line = isFace ? pick(faceStarts, 2) : pick(starts, 2);
    for (int i = 0, count = trianglesOnly ? 3 : 2 + random.below(5); i < count; ++i) {
        if (i > 0) line += pick(gaps, 5);
        line += isFace ? pick(entries, 6) : pick(numbers);
    }
    for (int i = random.below(8) - 5; i > 0; --i) {
        const auto at = static_cast<size_t>(random.below(static_cast<int>(line.size())));
        line.replace(at, static_cast<size_t>(random.below(2)), 1, pick(letters));
    }
    const size_t f = line.find("f ");
    if (trianglesOnly && f != line.npos && streamFace(line.substr(f + 2)).size() > 3) return "f 1 2 3\n";
    return line + pick(ends, 3);
}

TEST(ObjRead, RandomLinesAreReadAsByStreams)
{
    for (int file = 0; file < 12; ++file) {
        SCOPED_TRACE(file);
        znTest::Random random(static_cast<std::uint64_t>(file));
        std::string text;
        for (int i = 0; i < 4000; ++i) text += randomLine(random, file % 3 == 0);
        // Lines longer than any buffer, of which one ends the text without a line end.
        if (file == 1) text += "f 1 2" + std::string(700000, ' ') + "3\nv 1 2 3" + std::string(300000, '0');
        expectAsStreams(text);
    }
}

TEST(ObjRead, EveryBeginningOfAFile)
{
    const std::string text = "# two\r\nv 0 0 0\nv 1.5 -2e-1 +3 4\r\n v .5 5. 1e2\nvn 0 0 1\nvt .5 .5\n"
                             "f 1/1/1 2/1/1 3/1/1\nf 3//1 2//1 1//1\r\nf 3/1 2/1 1/1\nusemtl a\nv 1 1 1\nf 1 2 3 4";
    for (size_t length = 0; length <= text.size(); ++length) {
        SCOPED_TRACE(length);
        expectAsStreams(text.substr(0, length));
    }
}

TEST(ObjRead, FaceLines)
{
    const struct
    {
        const char* line;
        Faces expected;
    } cases[] = {
        {"f 1 2 3", {{0, 1, 2}}},
        {"f 1/1/1 2/2/2 3/3/3", {{0, 1, 2}}}, // no UV and no normal is there: these are not looked at
        {"f 1//9 2//9 3//9", {{0, 1, 2}}},
        {"f 1/-9 2/0 3/9", {{0, 1, 2}}},
        {" \t f  1   2\t3", {{0, 1, 2}}},
        {"f +1 2 3", {{0, 1, 2}}},
        {"f 1+2+3", {{0, 1, 2}}},
        {"f 1 2 3/", {{0, 1, 2}}}, // the last entry breaks off behind its v
        {"f 1 2 3/x", {{0, 1, 2}}},
        {"f 1 2 3//", {{0, 1, 2}}},
        {"f 1 2 3/99999999999 4", {{0, 1, 2}}},
        {"f 1/ 4 2 3", {{0, 1, 2}}}, // a blank may stand behind a slash
        {"f 1 2 3\r", {{0, 1, 2}}},
        {"f 1 2 2", {{0, 1, 1}}},
        {"f 1 2 3 ", {}},
        {"f 1 2 3 \r", {}},
        {"f 1 2 3\r\r", {}},
        {"f 1 2 3 # and more", {}},
        {"f 1 2 /3", {}},
        {"f 1/2/3/4 2 3", {}},
        {"f 1.0 2.0 3.0", {}},
        {"f 1 2", {}},
        {"f 0 1 2", {}},
        {"f 1 2 5", {}},
        {"f 1 2 4294967299", {}},
        {"f -3 -2 -1", {}},
        {"f\t1 2 3", {}},
        {"F 1 2 3", {}},
        {"fo 1 2 3", {}},
        {"$f 1 2 3", {}},
        {"#f 1 2 3", {}},
    };
    for (const auto& [line, expected] : cases) {
        CompactMesh mesh;
        readText(mesh, std::string("f 4 3 2\n") + line + "\nv 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 2 3 4\n");
        Faces faces = {{3, 2, 1}, {1, 2, 3}};
        faces.insert(faces.begin() + 1, expected.begin(), expected.end());
        EXPECT_EQ(trianglesOf(mesh), faces) << line;
    }
}

TEST(ObjRead, VertexLines)
{
    constexpr float most = std::numeric_limits<float>::max();
    const struct
    {
        std::string line;
        std::vector<float> expected;
    } cases[] = {
        {"v 1 2 3", {1, 2, 3}},
        {"  v 1 2 3 4 some text", {1, 2, 3}},
        {"v ", {0, 0, 0}},
        {"v 1", {1, 0, 0}},
        {"v 1.5abc 2 3", {1.5f, 0, 0}},
        {"v inf 2 3", {0, 0, 0}},
        {"v nan 2 3", {0, 0, 0}},
        {"v 0x10 2 3", {0, 0, 0}},
        {"v 1e60 2 3", {most, 0, 0}},
        {"v 1 -1e60 3", {1, -most, 0}},
        {"v 1 1" + std::string(400, '0') + " 3", {1, most, 0}},
        {"v 1 0." + std::string(400, '0') + "1 3", {1, 0, 3}},
        {"v 1 2e 3", {1, 0, 0}},
        {"v 1.2.3 4", {1.2f, .3f, 4}},
        {"v +1 +2 +.3e+1", {1, 2, 3}},
        {std::string("v 1 \0 3", 7), {1, 0, 0}},
        {"v\t1 2 3", {}},
        {"v", {}},
        {"V 1 2 3", {}},
        {"vn 1 2 3", {}},
        {"vt 1 2", {}},
        {"", {}},
    };
    for (const auto& [line, expected] : cases) {
        CompactMesh mesh;
        readText(mesh, line + "\r\nv 7 8 9");
        std::vector<float> positions = expected;
        positions.insert(positions.end(), {7, 8, 9});
        EXPECT_EQ(std::vector(mesh.getVerticesRaw(), mesh.getVerticesRaw() + 3 * mesh.getNumVertices()), positions)
            << line;
    }
}

TEST(ObjRead, OnePolygonMakesAllFacesPolygons)
{
    const std::string vertices = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";
    CompactMesh mesh;
    readText(mesh, vertices + "f 1 2 3\n");
    mesh.resizePolyArrays(3, 1);
    mesh.allocPolyMaterialArray();
    mesh.allocPolyGroupArray();
    readText(mesh, vertices + "f 4 3 2 1\nf 1 2 3\nf 4 3 2 1 2\nf 2 3 4\nf 1 2 3 5\n");
    EXPECT_EQ(polygonsOf(mesh), (Faces{{3, 2, 1, 0}, {0, 1, 2}, {3, 2, 1, 0, 1}, {1, 2, 3}}));
    EXPECT_EQ(trianglesOf(mesh), (Faces{{0, 1, 2}}));
    EXPECT_EQ(mesh.getPolyMaterials(), nullptr);
    EXPECT_EQ(mesh.getPolyGroups(), nullptr);

    readText(mesh, vertices + "f 1 2 3 5\nf 4 3 2\n"); // the only polygon is out of range
    EXPECT_EQ(trianglesOf(mesh), (Faces{{3, 2, 1}}));
    EXPECT_EQ(mesh.getNumPolys(), 4);
}

TEST(ObjRead, ReplacesPositionsAndTellsOnce)
{
    CompactMesh mesh;
    const zn::Reference<znTest::MovingAllocator> allocator = new znTest::MovingAllocator;
    mesh.setArrayAllocator(allocator);
    znTest::makeCube(mesh);
    mesh.allocNormalArray();
    mesh.allocTriangleNormalArray();
    mesh.allocAttributes("weight", 1)->asFloat()[0] = 5;
    const znTest::ChangeRecorder recorder(mesh);
    readText(mesh, "v 1 2 3\nv 4 5 6\nv 7 8 9\nf 3 2 1\n");
    EXPECT_EQ(mesh.getNumVertices(), 3);
    EXPECT_EQ(mesh.getVertices()[2].y, 8);
    EXPECT_EQ(trianglesOf(mesh), (Faces{{2, 1, 0}}));
    EXPECT_EQ(mesh.getNormals(), nullptr);
    EXPECT_EQ(mesh.getTriangleNormals(), nullptr);
    EXPECT_EQ(mesh.getAttributes("weight")->asFloat()[0], 0);
    ASSERT_EQ(recorder.changes().size(), 1u);
    EXPECT_EQ(recorder.changes()[0].type, MeshModification::TopologyChanged);
    EXPECT_TRUE(recorder.changes()[0].modified.empty() && recorder.changes()[0].valid.empty());

    readText(mesh, "");
    EXPECT_EQ(mesh.getNumVertices() + mesh.getNumTriangles(), 0);
    EXPECT_EQ(recorder.changes().size(), 2u);
}

TEST(ObjRead, WhatDoesNotOpenChangesNothing)
{
    CompactMesh mesh;
    znTest::makeCube(mesh);
    const znTest::ChangeRecorder recorder(mesh);
    const TemporaryFile file;
    const znOS::Filename folder(file.path().parent_path().string().c_str());
    EXPECT_FALSE(meshReadObj(mesh, file.name()));
    EXPECT_FALSE(meshReadObj(mesh, folder));
    meshRead(mesh, file.name());
    meshRead(mesh, folder);
    EXPECT_EQ(mesh.getNumTriangles(), 12);
    EXPECT_TRUE(recorder.changes().empty());
}

TEST(ObjRead, RealMeshes)
{
    const std::string known = znTest::meshFile("cow.obj");
    if (known.empty()) GTEST_SKIP();
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(known).parent_path())) {
        SCOPED_TRACE(entry.path().filename());
        if (entry.path().extension() == ".obj") expectAsStreams(TemporaryFile::read(entry.path()));
    }
}

} // namespace
