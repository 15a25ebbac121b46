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
    if (hasNormals) {
        mesh.allocNormalArray();
        for (int i = 0; i < 4; ++i) mesh.getNormals()[i].set(0, 0, 1);
    }
    if (hasUVs) {
        mesh.allocUVArray();
        for (int i = 0; i < 4; ++i) mesh.getUVs()[i].set(0.25f * float(i), 1.0f / 3.0f);
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

std::string writtenPlain(const CompactMesh& mesh)
{
    const TemporaryFile file;
    meshWrite(mesh, file.name());
    return file.read();
}

TEST(MeshWrite, ObjToTheLetter)
{
    const struct
    {
        bool hasNormals, hasUVs;
        std::string faces;
    } cases[] = {{true, true, "f 1/1/1 2/2/2 3/3/3\nf 2/2/2 4/4/4 3/3/3\n"},
                 {true, false, "f 1//1 2//2 3//3\nf 2//2 4//4 3//3\n"},
                 {false, true, "f 1/1 2/2 3/3\nf 2/2 4/4 3/3\n"},
                 {false, false, "f 1  2  3 \nf 2  4  3 \n"}};
    for (const auto& [hasNormals, hasUVs, faces] : cases) {
        CompactMesh mesh, back;
        makeSquare(mesh, hasNormals, hasUVs);
        const TemporaryFile file;
        EXPECT_TRUE(meshWriteObj(mesh, file.name()));
        EXPECT_EQ(file.read(), squareVertices + (hasNormals ? squareNormals : "") + (hasUVs ? squareUVs : "") + faces);
        EXPECT_TRUE(meshReadObj(back, file.name()));
        EXPECT_EQ(back.getNumTriangles(), hasNormals || hasUVs ? 2 : 0); // bare faces end with a blank and are lost
    }
    EXPECT_EQ(written(CompactMesh()), "");
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
    const auto materials = file.path().parent_path() / "some.name.mtl";
    EXPECT_TRUE(meshWriteObj(mesh, subsets, colours, file.name()));
    EXPECT_EQ(file.read(),
              "mtllib some.name.mtl\n" + squareVertices + squareNormals +
                  "usemtl mat0\nf 2//2 4//4 3//3\nf 1//1 2//2 3//3\nusemtl mat1\nusemtl mat2\nf 2//2 4//4 3//3\n");
    const std::string rest = "Ka 1.0 1.0 1.0\nKs 1.0 1.0 1.0\nKe 0.0 0.0 0.0\n\n";
    EXPECT_EQ(TemporaryFile::read(materials), "newmtl mat0\nNs 100.0\nd 1.0\nillum 2\nKd 1 0.5 0.333333\n" + rest +
                                                  "newmtl mat1\nNs 100.0\nd 1.0\nillum 2\nKd 1e-05 0 1e+06\n" + rest);

    // That the materials can't be written is not told.
    std::filesystem::remove(materials);
    std::filesystem::create_directory(materials);
    EXPECT_TRUE(meshWriteObj(mesh, {}, colours, file.name()));
    EXPECT_EQ(file.read(), "mtllib some.name.mtl\n" + squareVertices + squareNormals);
}

TEST(MeshWrite, PlainToTheLetter)
{
    CompactMesh mesh;
    EXPECT_EQ(writtenPlain(mesh), "0 0\n");
    makeSquare(mesh, true, true);
    mesh.getVertices()[1].set(0.1f, -1.0f / 3.0f, 1e10f);
    mesh.getTriangles()[1][2] = std::numeric_limits<int>::min();
    EXPECT_EQ(writtenPlain(mesh), "4 2\n0 0 0\n0.1000000015 -0.3333333433 1e+10\n0 1 0\n1 1 0\n"
                                  "3 0 1 2\n3 1 3 -2147483648\n");
}

/// Numbers at which a writer of digits may go wrong, and numbers of all sizes.
void makeNumbers(CompactMesh& mesh)
{
    const float chosen[] = {0.0f,
                            -0.0f,
                            1,
                            -1,
                            1e-4f,
                            0.00099999994f,
                            9.9999997e-5f,
                            1e-5f,
                            0.9999995f,
                            0.99999951f,
                            9.999995f,
                            99999.95f,
                            999999.4f,
                            999999.5f,
                            1e6f,
                            16777216,
                            123456.5f,
                            123457.5f,
                            2.5f,
                            1e9f,
                            9.9999994e9f,
                            1e10f,
                            0.5f,
                            0.1f,
                            0.01f,
                            0.001f,
                            1000000.5f,
                            8388607.5f,
                            3.4028235e38f,
                            1e-45f,
                            1.1754944e-38f,
                            std::numeric_limits<float>::infinity(),
                            -std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::quiet_NaN(),
                            -std::numeric_limits<float>::quiet_NaN()};
    mesh.resizeVertexArray(60000);
    float* const values = mesh.getVerticesRaw();
    znTest::Random random(3);
    for (int i = 0; i < 180000; ++i) {
        const float tame =
            static_cast<float>(random.real(-1, 1)) * std::bit_cast<float>((107u + random.below(48)) << 23);
        const float tie = 0.5f + static_cast<float>(random.below(4000000)); // often in the middle between two results
        values[i] = i % 3 == 0   ? std::bit_cast<float>(static_cast<std::uint32_t>(random.next()))
                    : i % 3 == 1 ? tame
                                 : tie / float(1 << random.below(8));
    }
    std::copy(std::begin(chosen), std::end(chosen), values);
}

TEST(MeshWrite, NumbersArePrintedAsByTheCLibrary)
{
    CompactMesh mesh;
    makeNumbers(mesh);
    std::string obj, plain = "60000 0\n";
    for (int i = 0; i < mesh.getNumVertices(); ++i) {
        const znLinear::Point p = mesh.getVertices()[i].asPoint();
        char line[200];
        std::snprintf(line, sizeof line, "v %g %g %g\n", p.x, p.y, p.z);
        obj += line;
        std::snprintf(line, sizeof line, "%.10g %.10g %.10g\n", p.x, p.y, p.z);
        plain += line;
    }
    const auto firstDifference = [](const std::string& a, const std::string& b) {
        return a.substr(static_cast<size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin()),
                        60);
    };
    EXPECT_EQ(firstDifference(obj, written(mesh)), "");
    EXPECT_EQ(firstDifference(plain, writtenPlain(mesh)), "");
    EXPECT_EQ(obj.size(), written(mesh).size());
}

TEST(MeshWrite, PlainGivesBackEveryNumber)
{
    CompactMesh mesh, back;
    makeNumbers(mesh);
    const TemporaryFile file;
    meshWrite(mesh, file.name());
    meshRead(back, file.name());
    ASSERT_EQ(back.getNumVertices(), mesh.getNumVertices());
    for (int i = 0; i < 3 * mesh.getNumVertices(); ++i) {
        const float value = mesh.getVerticesRaw()[i], read = back.getVerticesRaw()[i];
        ASSERT_TRUE(value == read || (std::isnan(value) && std::isnan(read))) << value << " became " << read;
        ASSERT_EQ(std::signbit(value), std::signbit(read));
    }
}

TEST(MeshWrite, WhatDoesNotOpenIsLeftAlone)
{
    CompactMesh mesh;
    znTest::makeCube(mesh);
    const TemporaryFile file;
    const auto missing = file.path().parent_path() / "missing" / "mesh.obj";
    const znOS::Filename name(missing.string().c_str());
    EXPECT_FALSE(meshWriteObj(mesh, name));
    EXPECT_FALSE(meshWriteObj(mesh, {}, {}, name));
    meshWrite(mesh, name);
    EXPECT_FALSE(std::filesystem::exists(missing.parent_path()));
}

TEST(MeshWrite, NumbersDoNotDependOnTheLocale)
{
    CompactMesh mesh, back;
    makeSquare(mesh, false, true);
    mesh.getVertices()[0].set(0.5f, 1234567, -0.25f);
    const std::string obj = written(mesh), plain = writtenPlain(mesh);
    const std::string former = std::setlocale(LC_ALL, nullptr);
    bool found = false;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR", "German_Germany.1252"})
        found = found || std::setlocale(LC_ALL, name);
    if (!found) GTEST_SKIP() << "no locale with a decimal comma";
    const std::locale formerGlobal = std::locale::global(std::locale(std::setlocale(LC_ALL, nullptr)));
    EXPECT_EQ(written(mesh), obj);
    EXPECT_EQ(writtenPlain(mesh), plain);
    const TemporaryFile file("mesh.obj", obj), plainFile("mesh.txt", plain);
    meshReadObj(back, file.name());
    EXPECT_EQ(back.getVertices()[0].x, 0.5f);
    EXPECT_EQ(back.getNumTriangles(), 2);
    meshRead(back, plainFile.name());
    EXPECT_EQ(back.getVertices()[0].z, -0.25f);
    std::locale::global(formerGlobal);
    std::setlocale(LC_ALL, former.c_str());
}

} // namespace
