#include "znGeom/files/mesh_load.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/files/temporary_file.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"
#include "znGeom/files/mesh_save.h"

using namespace znGeom;
using znTest::TemporaryFile;
using Status = MeshLoadResult::Status;

namespace {

MeshLoadResult loadText(CompactMesh& mesh, const std::string& text, MeshFormat format)
{
    return meshLoad(mesh, text.data(), text.size(), format);
}

std::string saved(const CompactMesh& mesh, MeshFormat format, const MeshUV* cornerUVs = nullptr)
{
    MeshSaveOptions options;
    options.cornerUVs = cornerUVs;
    std::string bytes;
    const auto write = [&bytes](const void* more, size_t count) {
        bytes.append(static_cast<const char*>(more), count);
        return true;
    };
    znUtil::Progress progress;
    EXPECT_TRUE(meshSave(mesh, format, write, options, progress));
    return bytes;
}

template <typename T>
std::string bytesOf(T value)
{
    char bytes[sizeof(T)];
    std::memcpy(bytes, &value, sizeof(T));
    return {bytes, sizeof(T)};
}

std::string binaryStl(std::uint32_t count, const std::vector<float>& coordinates)
{
    std::string file(80, ' ');
    file += bytesOf(count);
    for (size_t i = 0; i < coordinates.size(); ++i) {
        if (i % 9 == 0) file.append(12, '\0');
        file += bytesOf(coordinates[i]);
        if (i % 9 == 8) file.append(2, '\0');
    }
    return file;
}

const char* const textStl = "solid a thing\n facet normal 0 0 1\n outer loop\n vertex 0 0 0\n vertex 1e0 0 0\n"
                            " vertex 0 +1 inf\n endloop\n endfacet\nendsolid a thing\n";

const std::string square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

} // namespace

TEST(MeshLoad, ReplacesTheWholeMeshAndNotifiesItOnce)
{
    const TemporaryFile file("mesh.PLY");
    file.write("ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
               "property float nx\nproperty float ny\nproperty float nz\nelement face 1\n"
               "property list uchar int vertex_indices\nend_header\n"
               "0 0 0 0 0 1\n1 0 0 0 0 1\n0 1 0 0 0 1\n3 0 1 2\n");
    CompactMesh mesh = znTest::makeGrid(3, 3);
    mesh.allocUVArray();
    mesh.resizePolyArrays(4, 1);
    znTest::ChangeRecorder recorder(mesh);
    const MeshLoadResult result = meshLoad(mesh, file.name());
    EXPECT_TRUE(result) << result.message;
    EXPECT_EQ(result.numFaces, 1);
    EXPECT_EQ(mesh.getNumVertices(), 3);
    EXPECT_EQ(mesh.getNumTriangles(), 1);
    ASSERT_NE(mesh.getNormals(), nullptr);
    EXPECT_FALSE(mesh.getNormalsComputed());
    EXPECT_EQ(mesh.getNormals()[2].z, 1);
    EXPECT_EQ(mesh.getUVs(), nullptr);
    EXPECT_EQ(mesh.getNumPolys(), 0);
    EXPECT_EQ(recorder.changes().size(), 1U);
}

TEST(MeshLoad, LeavesTheMeshAndItsListenersAloneOnFailureAndCancel)
{
    const TemporaryFile file, unknown("mesh.docx");
    file.write(square + "f 1 2 3\n");
    CompactMesh mesh = znTest::makeGrid(2, 2);
    znTest::ChangeRecorder recorder(mesh);
    znUtil::Progress cancelled;
    cancelled.cancel();
    EXPECT_EQ(meshLoad(mesh, file.name(), cancelled).status, Status::Cancelled);
    EXPECT_EQ(meshLoad(mesh, unknown.name()).status, Status::UnknownFormat);
    EXPECT_EQ(meshLoad(mesh, znOS::Filename((file.folder / "none.obj").c_str())).status, Status::Unreadable);
    znUtil::Progress unused;
    EXPECT_EQ(meshLoad(mesh, znOS::Filename(file.folder.c_str()), MeshFormat::Obj, unused).status, Status::Unreadable);
    EXPECT_EQ(loadText(mesh, "", MeshFormat::Obj).status, Status::Malformed);
    EXPECT_EQ(loadText(mesh, square + "f 1 2 5\n", MeshFormat::Obj).status, Status::Malformed);
    EXPECT_EQ(mesh.getNumVertices(), 4);
    EXPECT_EQ(recorder.changes().size(), 0U);

    // In the middle of a large file, seen at the next block.
    std::string large;
    for (int i = 0; i < 60000; ++i) large += "v 0.125 0.25 0.5\n";
    znUtil::Progress progress;
    progress.setObserver([&progress](double fraction, const char*) {
        if (fraction > 0.4) progress.cancel();
    });
    const MeshLoadResult stopped = meshLoad(mesh, large.data(), large.size(), MeshFormat::Obj, progress);
    EXPECT_EQ(stopped.status, Status::Cancelled);
    EXPECT_LT(progress.get(), 0.9);
    progress.reset();
    progress.setObserver({});
    EXPECT_TRUE(meshLoad(mesh, large.data(), large.size(), MeshFormat::Obj, progress));
    EXPECT_EQ(progress.get(), 1);
    EXPECT_EQ(mesh.getNumVertices(), 60000);
}

TEST(MeshLoad, TakesTextureCoordinatesOfCornersFromPly)
{
    const auto load = [](CompactMesh& mesh, const std::string& vertexUVs, const std::string& faces) {
        std::string text = "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
                           "property float z\n";
        if (!vertexUVs.empty()) text += "property float s\nproperty float t\n";
        text += "element face 2\nproperty list uchar float texcoord\nproperty list uchar int vertex_indices\n"
                "property list uchar int flags\nend_header\n";
        for (int i = 0; i < 4; ++i) text += "0 0 0" + vertexUVs + "\n";
        return loadText(mesh, text + faces, MeshFormat::Ply);
    };
    CompactMesh mesh;
    const std::string first = "6 0 0 1 0 1 1 3 0 1 2 1 7\n";
    MeshLoadResult result = load(mesh, "", first + "6 0 0 1 1 0 0.5 3 0 2 3 0\n");
    EXPECT_EQ(result.cornerUVs.size(), 0); // they agree
    ASSERT_NE(mesh.getUVs(), nullptr);
    EXPECT_EQ(mesh.getUVs()[2].u, 1);
    EXPECT_EQ(mesh.getUVs()[3].v, 0.5f);

    result = load(mesh, " 9 9", first + "6 0 0 0.25 1 0 0.5 3 0 2 3 0\n");
    EXPECT_EQ(mesh.getUVs(), nullptr);
    ASSERT_EQ(result.cornerUVs.size(), 6);
    EXPECT_EQ(result.cornerUVs[2].u, 1);
    EXPECT_EQ(result.cornerUVs[4].u, 0.25f);
    EXPECT_EQ(result.notes.size(), 3); // of the flags, of the vertices' own, of the corners

    for (const char* second : {"0 3 0 2 3 0\n", "5 0 0 1 1 0 3 0 2 3 0\n", "7 0 0 1 1 0 0 1 3 0 2 3 0\n"}) {
        result = load(mesh, " 9 9", first + second);
        EXPECT_TRUE(result) << result.message;
        EXPECT_EQ(result.cornerUVs.size(), 0) << second;
        ASSERT_NE(mesh.getUVs(), nullptr);
        EXPECT_EQ(mesh.getUVs()[2].u, 9);
    }
    EXPECT_EQ(load(mesh, "", first + "6 0 0 0 0 0 0 3 0 -1 3 0\n").status, Status::Malformed);
    EXPECT_EQ(load(mesh, "", first + "6 0 0 0 0 0 0 3 0 4 3 0\n").status, Status::Malformed);
    EXPECT_EQ(load(mesh, "", first + "-1 3 0 1 3 0\n").status, Status::Malformed);
}

TEST(MeshLoad, EveryTruncatedPrefixFailsOrGivesAWholeMesh)
{
    CompactMesh mesh = znTest::makeGrid(2, 2);
    mesh.allocNormalArray();
    mesh.allocUVArray();
    const std::string textPly = "ply\r\nformat ascii 1.0\r\ncomment x\r\nelement vertex 3\r\nproperty double x\r\n"
                                "property float y\r\nproperty float z\r\nelement face 1\r\nproperty list uchar int "
                                "vertex_indices\r\nend_header\r\n0 0 0\r\n1 0 0\r\n0 1 0\r\n3 0 1 2\r\n";
    const MeshUV uvs[] = {{0, 0}, {1, 0}, {1, 1}, {0.5f, 0}, {1, 1}, {0, 1}};
    const std::string cornersPly = saved(mesh, MeshFormat::Ply, uvs);
    // How many bytes at the end can be lost without harm: line ends, digits of a last number, a name.
    const std::vector<std::tuple<MeshFormat, std::string, size_t>> files{
        {MeshFormat::Ply, saved(mesh, MeshFormat::Ply), 0},
        {MeshFormat::Ply, textPly, 2},
        {MeshFormat::Ply, cornersPly, 0},
        {MeshFormat::Stl, saved(mesh, MeshFormat::Stl), 0},
        {MeshFormat::Stl, textStl, 9},
        {MeshFormat::Off, saved(mesh, MeshFormat::Off), 1},
        {MeshFormat::Plain, saved(mesh, MeshFormat::Plain), 1},
    };
    for (const auto& [format, whole, spare] : files) {
        for (size_t size = 0; size <= whole.size(); ++size) {
            CompactMesh part;
            const MeshLoadResult result = loadText(part, whole.substr(0, size), format);
            EXPECT_EQ(bool(result), size + spare >= whole.size())
                << meshFormatName(format) << " cut to " << size << " of " << whole.size() << ": " << result.message;
            EXPECT_TRUE(result || part.getNumVertices() == 0);
        }
    }
    for (const std::string obj = saved(mesh, MeshFormat::Obj); const char& c : obj) {
        CompactMesh part;
        loadText(part, obj.substr(0, static_cast<size_t>(&c - obj.data())), MeshFormat::Obj);
        EXPECT_LE(part.getNumTriangles(), 2);
    }
}

TEST(MeshLoad, AHeaderTakesNoMemoryThatTheFileDoesNotJustify)
{
    const std::string ply = "ply\nformat binary_little_endian 1.0\nelement vertex 2000000000\nproperty float x\n"
                            "property float y\nproperty float z\nend_header\n";
    const std::string list = "ply\nformat binary_little_endian 1.0\nelement vertex 0\nproperty float x\n"
                             "property float y\nproperty float z\nelement face 1\nproperty list uint int "
                             "vertex_indices\nend_header\n\xF0\xFF\xFF\x7F";
    const std::vector<std::pair<MeshFormat, std::string>> files{
        {MeshFormat::Ply, ply + "0123456789"},
        {MeshFormat::Ply, list},
        {MeshFormat::Stl, binaryStl(0xFFFFFFFF, std::vector<float>(9))},
        {MeshFormat::Off, "OFF\n2000000000 2000000000 0\n0 0 0\n"},
        {MeshFormat::Plain, "2147483647 2147483647\n0 0 0\n"},
        {MeshFormat::Plain, "0 1\n2147483647 0 0\n"},
    };
    for (const auto& [format, file] : files) {
        CompactMesh mesh;
        const MeshLoadResult result = loadText(mesh, file, format);
        EXPECT_EQ(result.status, Status::Malformed);
        EXPECT_NE(result.message.find("ends too soon"), std::string::npos) << result.message;
    }
}

TEST(MeshLoad, TellsATextStlFromABinaryOneWhateverItBeginsWith)
{
    std::string solid = binaryStl(1, {0, 0, 0, 1, 0, 0, 0, 1, std::numeric_limits<float>::infinity()});
    solid.replace(0, 17, "solid facet made ");
    const std::string two = std::string(textStl) + textStl;
    for (const auto& [file, numVertices] : {std::pair<std::string, int>(solid, 3), {textStl, 3}, {two, 6}}) {
        CompactMesh mesh;
        const MeshLoadResult result = loadText(mesh, file, MeshFormat::Stl);
        EXPECT_TRUE(result) << result.message;
        ASSERT_EQ(mesh.getNumVertices(), numVertices);
        EXPECT_TRUE(std::isinf(mesh.getVertices()[2].z));
        EXPECT_EQ(mesh.getVertices()[1].x, 1);
        EXPECT_EQ(mesh.getTriangles()[0][2], 2);
    }
    CompactMesh mesh;
    EXPECT_FALSE(loadText(mesh, solid + "x", MeshFormat::Stl));
    EXPECT_FALSE(loadText(mesh, "solid x\nfacet normal 0 0 1\nouter loop\nvertex 0 0 zero\n", MeshFormat::Stl));
}

TEST(MeshLoad, KeepsPolygonsBesideTheirFansAndGroupsOfTheTriangles)
{
    CompactMesh mesh;
    const MeshLoadResult result = loadText(
        mesh, square + "f 1 2 3\ng  left  wall \nf 1 2 3 4\nf 4 3 2\no\nf 1 2 3\ng never\ng left  wall\nf 2 3 4 1\n",
        MeshFormat::Obj);
    ASSERT_TRUE(result) << result.message;
    EXPECT_EQ(result.numFaces, 5);
    EXPECT_EQ(result.numPolygons, 2);
    EXPECT_EQ(mesh.getNumPolys(), 5);
    ASSERT_EQ(mesh.getNumTriangles(), 7);
    const int expected[] = {0, 1, 2, 0, 1, 2, 0, 2, 3, 3, 2, 1, 0, 1, 2, 1, 2, 3, 1, 3, 0};
    EXPECT_TRUE(std::equal(expected, expected + 21, mesh.getTrianglesRaw()));
    ASSERT_EQ(result.groups.ofTriangle.size(), 7);
    const int groups[] = {-1, 0, 0, 0, -1, 0, 0};
    EXPECT_TRUE(std::equal(groups, groups + 7, result.groups.ofTriangle.begin()));
    EXPECT_EQ(result.groups.names[0], "left  wall");
}

TEST(MeshLoad, NamesTheLineAndShowsNoControlCharacters)
{
    const std::vector<std::tuple<MeshFormat, std::string, std::string>> files{
        {MeshFormat::Obj, "v 0 0 0\r\n\rv 0 \\\n0 1..5\n", "line 4: \"1..5\" is not a number"},
        {MeshFormat::Obj, square + "f 1 2 99999999999999999999\n", "line 5: a face names vertex 99999999999999999999"},
        {MeshFormat::Obj, square + "f 1 2 4294967299/1\n", "line 5: a face names vertex 4294967299,"},
        {MeshFormat::Obj, square + "f 1 2 2147483647\n", "face 1 names vertex 2147483647, the file has 4"},
        {MeshFormat::Obj, "v 0 0 \x1B[2J\n", "line 1: \"?[2J\" is not"},
        {MeshFormat::Off, "OFF\n3 1 0\n0 0 0\n# so\n1 0 0\n0 1 \x7F\xC2\x9B\n", "line 6: \"???\" is not a number"},
        {MeshFormat::Points, "1,2,3\n\n4 5\n", "line 3: a point has fewer"},
        {MeshFormat::Ply, "ply\nelement \x1B 1\nelement vertex -1\n", "line 3: a count is negative"},
    };
    for (const auto& [format, file, words] : files) {
        CompactMesh mesh;
        const MeshLoadResult result = loadText(mesh, file, format);
        EXPECT_EQ(result.status, Status::Malformed);
        EXPECT_NE(result.message.find(words), std::string::npos) << result.message;
    }
}

TEST(MeshLoad, KeepsCornerChannelsWhereTheyAgree)
{
    const std::string normals = square + "vn 0 0 1\nvn 0 0 1\nvn 0 1 0\nvt 0.5 0.25\n";
    const std::vector<std::tuple<std::string, bool, bool, int>> cases{
        {"f 1/1/1 2/1/1 3/1/2\nf 3/1/1 1/1/2 4/1/3\n", true, true, 0},
        {"f 1//1 2//1 3//3\nf 1//1 3//1 4//1\n", false, false, 2},
        {"f 1/1 2/1 3/1\nf 1 3 4\n", false, false, 2},
        {"f 1/1/9 2/1/9 3/1/9\n", false, true, 1},
        {"", false, false, 2},
    };
    for (const auto& [faces, hasNormals, hasUVs, numNotes] : cases) {
        CompactMesh mesh;
        const MeshLoadResult result = loadText(mesh, normals + faces, MeshFormat::Obj);
        ASSERT_TRUE(result) << result.message;
        EXPECT_EQ(mesh.getNormals() != nullptr, hasNormals) << faces;
        EXPECT_EQ(mesh.getUVs() != nullptr, hasUVs) << faces;
        EXPECT_EQ(result.notes.size(), numNotes) << faces;
        EXPECT_TRUE(!hasNormals || mesh.getNormals()[3].y == 1);
    }
}

TEST(MeshLoad, KeepsCornersApartWhereTheyDisagreeAndSavesThemAgain)
{
    // A quad that agrees, and then a triangle with a seam to it; a fourth face comes after the first disagreement.
    const std::string text = square + "v 2 2 2\nvn 0 0 1\nvn 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvt 7 8\n" +
                             "f 1/1/1 2/2/1 3/3/1 4/4/1\nf 1/5/1 3/3/2 5/1/1\nf 1/1/2 5/2/2 2/2/1\n";
    CompactMesh mesh;
    const MeshLoadResult result = loadText(mesh, text, MeshFormat::Obj);
    ASSERT_TRUE(result) << result.message;
    EXPECT_TRUE(!mesh.getUVs() && !mesh.getNormals() && result.notes.size() == 2 && mesh.getNumTriangles() == 4);
    ASSERT_EQ(result.cornerUVs.size(), 12);
    ASSERT_EQ(result.cornerNormals.size(), 12);
    const float u[] = {0, 1, 1, 0, 1, 0, 7, 1, 0, 0, 1, 1}, ny[] = {0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 1, 0};
    for (int corner = 0; corner < 12; ++corner) {
        EXPECT_EQ(result.cornerUVs[corner].u, u[corner]) << corner;
        EXPECT_EQ(result.cornerNormals[corner].y, ny[corner]) << corner;
    }

    std::string bytes;
    MeshSaveOptions options;
    options.cornerUVs = result.cornerUVs.data();
    options.cornerNormals = result.cornerNormals.data();
    znUtil::Progress progress;
    const auto write = [&bytes](const void* more, size_t count) {
        bytes.append(static_cast<const char*>(more), count);
        return true;
    };
    ASSERT_TRUE(meshSave(mesh, MeshFormat::Obj, write, options, progress));
    CompactMesh again;
    const MeshLoadResult second = loadText(again, bytes, MeshFormat::Obj);
    ASSERT_EQ(second.cornerUVs.size(), 12);
    for (int corner = 0; corner < 12; ++corner) {
        EXPECT_EQ(second.cornerUVs[corner].v, result.cornerUVs[corner].v);
        EXPECT_EQ(second.cornerNormals[corner].z, result.cornerNormals[corner].z);
    }
}
