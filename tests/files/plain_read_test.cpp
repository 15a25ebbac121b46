#include "znGeom/files/mesh_files.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/files/temporary_file.h"
#include "tests/support/moving_allocator.h"
#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"

using namespace znGeom;
using znTest::TemporaryFile;

namespace {

using Floats = std::vector<float>;
using Ints = std::vector<int>;

/// Positions and corners.
using Content = std::pair<Floats, Ints>;

Content contentOf(const CompactMesh& mesh)
{
    const float* positions = mesh.getVerticesRaw();
    const int* corners = mesh.getTrianglesRaw();
    return {{positions, positions + 3 * mesh.getNumVertices()}, {corners, corners + 3 * mesh.getNumTriangles()}};
}

Content readText(const std::string& text)
{
    const TemporaryFile file;
    file.write(text);
    CompactMesh mesh;
    meshRead(mesh, file.name());
    return contentOf(mesh);
}

/// The same with functions of the C library, into arrays of zeros with as many elements as the file can hold.
Content scanText(const std::string& text)
{
    const TemporaryFile file;
    file.write(text);
    std::FILE* in = std::fopen(file.path.string().c_str(), "rb");
    const auto scanInt = [in](int& value) { std::ignore = std::fscanf(in, "%d", &value); };
    int numVertices = 0, numFaces = 0, unused = 0;
    scanInt(numVertices);
    scanInt(numFaces);
    const int bytes = static_cast<int>(text.size());
    Floats positions(3 * static_cast<size_t>(std::clamp(numVertices, 0, bytes / 6)));
    Ints corners(3 * static_cast<size_t>(std::clamp(numFaces, 0, bytes / 8)));
    for (float& x : positions) std::ignore = std::fscanf(in, "%f", &x);
    for (size_t i = 0; i < corners.size(); ++i) {
        if (i % 3 == 0) scanInt(unused);
        scanInt(corners[i]);
    }
    std::fclose(in);
    return {positions, corners};
}

TEST(PlainRead, FilesThatBreakOffAreReadAsByTheCLibrary)
{
    // The last two end the reading.
    static const char* const numbers[] = {
        "0",   "1",    "-2",       "+3",   "007",   "12345678", "1.5",   "-.25",
        "3.",  "1e3",  "-2.5E-3",  "1e60", "-1e60", "1e-60",    "1e-42", "0.1000000014901161193847656250001",
        "inf", "-INF", "Infinity", "x",    "3x"};
    static const char* const gaps[] = {" ", "\n", "\r\n", "\t", " \v\f "};
    znTest::Random random(7);
    for (int round = 0; round < 2000; ++round) {
        std::string text = std::to_string(random.below(9)) + " " + std::to_string(random.below(9)) + "\n";
        const int numNumbers = random.oneIn(4) ? 21 : 19;
        for (int i = random.below(60); i > 0; --i)
            text.append(numbers[random.below(numNumbers)]).append(gaps[random.below(5)]);
        if (random.oneIn(2)) text.resize(static_cast<size_t>(random.below(static_cast<int>(text.size()))));
        text.resize(text.find_last_not_of("+-eEinfINFty") + 1); // C libraries differ in what half a number is
        ASSERT_EQ(readText(text), scanText(text)) << text;
    }
}

TEST(PlainRead, TheHeaderIsNotBelievedWhereTheFileIsTooSmall)
{
    EXPECT_EQ(readText("2000000000 2000000000\n1 2 3\n"), (Content{{1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0}, Ints(9)}));
    EXPECT_EQ(readText("99999999999 1\n").first, Floats(6));
    EXPECT_EQ(readText("2000000000 5\nx" + std::string(59, ' ')).first.size(), 3u * (74 / 6));
    for (const char* text : {"-1 -1\n1 2 3\n 3 0 0 0", "", "0 0\n", "x", "-", "3", "0 0 1 2 3", "\n\n"})
        EXPECT_EQ(readText(text), Content()) << text;
    // As close together as numbers can be.
    EXPECT_EQ(readText("2+1+1-1+1-1+1.5.5+3+0-1+2").first, (Floats{1, -1, 1, -1, 1.5f, .5f}));
}

TEST(PlainRead, OddContents)
{
    // The count of a face is read and dropped: a quadrilateral throws the rest out of step.
    EXPECT_EQ(readText("1 2\n0 0 0\n4 0 1 2 3\n3 0 1 2\n").second, (Ints{0, 1, 2, 3, 0, 1}));
    // Indices are not checked, and those that no int can hold become the nearest int.
    EXPECT_EQ(readText("0 1\n3 -7 99999999999 5").second, (Ints{-7, 2147483647, 5}));
    // The first thing that is not a number ends the reading, be it half a number or a zero byte.
    for (const std::string& end : {std::string("x"), std::string("--3"), std::string("1e"), std::string(1, '\0')})
        EXPECT_EQ(readText("2 1\n1 2 " + end + " 4 5 6\n3 1 1 1\n"), (Content{{1, 2, 0, 0, 0, 0}, {0, 0, 0}})) << end;
    EXPECT_EQ(readText("0 2\n3 1 - 5 3 6 7 8").second, (Ints{1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(readText("1 0\n0x10 2 3\n").first, Floats(3));
}

TEST(PlainRead, ReplacesEverythingAndNotifiesOnce)
{
    CompactMesh mesh;
    mesh.setArrayAllocator(new znTest::MovingAllocator);
    znTest::makeCube(mesh);
    mesh.allocUVArray();
    mesh.resizePolyArrays(3, 1);
    const znTest::ChangeRecorder recorder(mesh);
    const TemporaryFile file;
    file.write("2 1\n1 2 3 4 5 6\n3 0 1 0");
    meshRead(mesh, file.name());
    EXPECT_EQ(contentOf(mesh), (Content{{1, 2, 3, 4, 5, 6}, {0, 1, 0}}));
    EXPECT_EQ(mesh.getNumPolys(), 0);
    EXPECT_EQ(mesh.getNumAttributes(), 1);
    ASSERT_EQ(recorder.changes().size(), 1u);
    EXPECT_EQ(recorder.changes()[0].type, MeshModification::TopologyChanged);
}

} // namespace
