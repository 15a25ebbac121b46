#include "znGeom/files/mesh_files.h"

#include <algorithm>
#include <bit>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <locale>
#include <string>

#include <gtest/gtest.h>

#include "tests/files/temporary_file.h"
#include "tests/support/random.h"
#include "tests/support/shapes.h"

using namespace znGeom;
using znTest::TemporaryFile;

namespace {

/// Two triangles on four vertices, with or without channels.
void makeSquare(CompactMesh& mesh, bool hasNormals, bool hasUVs)
{
    znTest::makeGrid(mesh, 2, 2);
    const int corners[] = {0, 1, 2, 1, 3, 2};
    mesh.copyTriangles(2, corners);
    if (hasNormals) mesh.allocNormalArray();
    if (hasUVs) mesh.allocUVArray();
    for (int i = 0; i < 4; ++i) {
        if (hasNormals) mesh.getNormals()[i].set(0, 0, 1);
        if (hasUVs) mesh.getUVs()[i].set(0.25f * float(i), 1.0f / 3.0f);
    }
}

const std::string squareVertices = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\n";
const std::string squareNormals = "vn 0 0 1\nvn 0 0 1\nvn 0 0 1\nvn 0 0 1\n";
const std::string squareUVs = "vt 0 0.333333\nvt 0.25 0.333333\nvt 0.5 0.333333\nvt 0.75 0.333333\n";

std::string written(const CompactMesh& mesh)
{
    const TemporaryFile file;
    EXPECT_TRUE(meshWriteObj(mesh, file.name()));
    return file.read();
}

TEST(MeshWrite, ObjToTheLetter)
{
    const std::string faces[] = {"f 1  2  3 \nf 2  4  3 \n", "f 1/1 2/2 3/3\nf 2/2 4/4 3/3\n",
                                 "f 1//1 2//2 3//3\nf 2//2 4//4 3//3\n", "f 1/1/1 2/2/2 3/3/3\nf 2/2/2 4/4/4 3/3/3\n"};
    for (int channels = 0; channels < 4; ++channels) {
        CompactMesh mesh, back;
        makeSquare(mesh, channels & 2, channels & 1);
        const TemporaryFile file;
        EXPECT_TRUE(meshWriteObj(mesh, file.name()));
        EXPECT_EQ(file.read(), squareVertices + (channels & 2 ? squareNormals : "") + (channels & 1 ? squareUVs : "") +
                                   faces[channels]);
        EXPECT_TRUE(meshReadObj(back, file.name()));
        EXPECT_EQ(back.getNumTriangles(), channels ? 2 : 0) << "bare faces end with a blank and are lost";
    }
}

TEST(MeshWrite, ObjWithMaterials)
{
    CompactMesh mesh;
    makeSquare(mesh, true, false);
    const int both[] = {1, 0}, one[] = {1};
    zn::list<zn::Reference<MeshSubset>> subsets;
    subsets.append(new MeshSubset(0, nullptr, 2, both));
    subsets.append(new MeshSubset(0, nullptr, 0, nullptr));
    subsets.append(new MeshSubset(0, nullptr, 1, one));
    zn::list<znUtil::Color> colours;
    colours.append({1, 0.5f, 1.0f / 3.0f, 0.7f});
    colours.append({1e-5f, 0, 1e6f, 1});

    const TemporaryFile file("some.name.obj");
    const auto materials = file.folder / "some.name.mtl";
    EXPECT_TRUE(meshWriteObj(mesh, subsets, colours, file.name()));
    EXPECT_EQ(file.read(), "mtllib some.name.mtl\n" + squareVertices + squareNormals +
                               "usemtl mat0\nf 2//2 4//4 3//3\nf 1//1 2//2 3//3\nusemtl mat1\n"
                               "usemtl mat2\nf 2//2 4//4 3//3\n");
    const std::string rest = "Ka 1.0 1.0 1.0\nKs 1.0 1.0 1.0\nKe 0.0 0.0 0.0\n\n";
    EXPECT_EQ(TemporaryFile::readFile(materials), "newmtl mat0\nNs 100.0\nd 1.0\nillum 2\nKd 1 0.5 0.333333\n" + rest +
                                                      "newmtl mat1\nNs 100.0\nd 1.0\nillum 2\nKd 1e-05 0 1e+06\n" +
                                                      rest);

    // That the materials can't be written is not reported.
    std::filesystem::remove(materials);
    std::filesystem::create_directory(materials);
    EXPECT_TRUE(meshWriteObj(mesh, {}, colours, file.name()));
    EXPECT_EQ(file.read(), "mtllib some.name.mtl\n" + squareVertices + squareNormals);
}

TEST(MeshWrite, PlainToTheLetter)
{
    CompactMesh mesh;
    const TemporaryFile file;
    meshWrite(mesh, file.name());
    EXPECT_EQ(file.read(), "0 0\n");
    makeSquare(mesh, true, true);
    mesh.getVertices()[1].set(0.1f, -1.0f / 3.0f, 1e10f);
    mesh.getTriangles()[1][2] = std::numeric_limits<int>::min();
    meshWrite(mesh, file.name());
    EXPECT_EQ(file.read(), "4 2\n0 0 0\n0.1000000015 -0.3333333433 1e+10\n0 1 0\n1 1 0\n"
                           "3 0 1 2\n3 1 3 -2147483648\n");
}

/// Numbers of all sizes, and some at which a writer of digits may go wrong.
void makeNumbers(CompactMesh& mesh)
{
    constexpr float infinity = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const float chosen[] = {0,         -0.0f,         1e-4f,     0.00099999994f, 9.9999997e-5f, 0.99999951f,
                            99999.95f, 999999.4f,     999999.5f, 1e6f,           16777216,      9.9999994e9f,
                            1e10f,     3.4028235e38f, 1e-45f,    infinity,       -infinity,     nan,
                            -nan};
    mesh.resizeVertexArray(60000);
    float* const values = mesh.getVerticesRaw();
    znTest::Random random(3);
    for (int i = 0; i < 180000; i += 3) {
        values[i] = std::bit_cast<float>(static_cast<std::uint32_t>(random.next()));
        values[i + 1] = static_cast<float>(random.real(-1, 1) * std::exp2(random.below(48) - 20));
        // Often halfway between two results.
        values[i + 2] = (static_cast<float>(random.below(4000000)) + 0.5f) / static_cast<float>(1 << random.below(8));
    }
    std::copy(std::begin(chosen), std::end(chosen), values);
}

struct DecimalComma : std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
};

TEST(MeshWrite, NumbersArePrintedAsByTheCLibraryInAnyLocaleAndReadBack)
{
    CompactMesh mesh, back;
    makeNumbers(mesh);
    std::string obj, plain = "60000 0\n";
    for (int i = 0; i < mesh.getNumVertices(); ++i) {
        const znLinear::Point p = mesh.getVertices()[i].asPoint();
        char line[200];
        obj.append(line, static_cast<size_t>(std::snprintf(line, sizeof line, "v %g %g %g\n", p.x, p.y, p.z)));
        plain.append(line, static_cast<size_t>(std::snprintf(line, sizeof line, "%.10g %.10g %.10g\n", p.x, p.y, p.z)));
    }
    const TemporaryFile file, other;
    meshWrite(mesh, file.name());
    meshRead(back, file.name());
    EXPECT_TRUE(file.read() == plain); // no message of megabytes
    EXPECT_TRUE(written(mesh) == obj);
    ASSERT_EQ(back.getNumVertices(), mesh.getNumVertices());
    for (int i = 0; i < 3 * mesh.getNumVertices(); ++i) {
        const float value = mesh.getVerticesRaw()[i], read = back.getVerticesRaw()[i];
        ASSERT_TRUE(value == read || (std::isnan(value) && std::isnan(read))) << value << " became " << read;
        ASSERT_EQ(std::signbit(value), std::signbit(read));
    }

    std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
    std::setlocale(LC_ALL, "de_DE.UTF-8"); // where it is installed
    EXPECT_TRUE(written(mesh) == obj);
    meshWrite(mesh, file.name());
    other.write("v 1.5 1,5 1\n");
    meshReadObj(back, other.name());
    std::locale::global(std::locale::classic());
    EXPECT_TRUE(file.read() == plain);
    EXPECT_EQ(back.getVertices()[0].asPoint(), znLinear::Point(1.5, 1, 0));
}

TEST(MeshWrite, WhatDoesNotOpenIsLeftAlone)
{
    const CompactMesh mesh;
    const TemporaryFile file("missing/mesh.obj");
    EXPECT_FALSE(meshWriteObj(mesh, file.name()));
    EXPECT_FALSE(meshWriteObj(mesh, {}, {}, file.name()));
    meshWrite(mesh, file.name());
    EXPECT_TRUE(std::filesystem::is_empty(file.folder));
}

} // namespace
