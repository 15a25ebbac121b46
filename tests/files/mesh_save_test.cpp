#include "znGeom/files/mesh_save.h"

#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/files/temporary_file.h"
#include "tests/support/shapes.h"
#include "znGeom/files/mesh_load.h"
#include "znGeom/files/pending_file.h"

using namespace znGeom;
using znTest::TemporaryFile;
using Status = MeshSaveResult::Status;

namespace {

/// A grid with numbers that need all their digits.
CompactMesh oddMesh()
{
    CompactMesh mesh = znTest::makeGrid(4, 3);
    mesh.allocNormalArray();
    mesh.allocUVArray();
    for (int i = 0; i < 3 * mesh.getNumVertices(); ++i) {
        mesh.getVerticesRaw()[i] += 1 / (3.0f + float(i));
        mesh.getNormalsRaw()[i] = -std::exp(float(i - 30));
        mesh.getUVsRaw()[i / 3 * 2] = 1e-41f * float(i);
    }
    mesh.getVertices()[0].set(-0.0f, std::numeric_limits<float>::max(), std::numeric_limits<float>::denorm_min());
    return mesh;
}

bool sameBits(const float* a, const float* b, int count)
{
    return std::memcmp(a, b, static_cast<size_t>(count) * sizeof(float)) == 0;
}

} // namespace

TEST(MeshSave, WritesWhatReadsBackToTheSameBitsInEveryFormat)
{
    const CompactMesh mesh = oddMesh();
    const int count = mesh.getNumVertices(), numTriangles = mesh.getNumTriangles();
    for (const char* name : {"a.obj", "a.ply", "a.stl", "a.off", "a.txt", "a.xyz"}) {
        const TemporaryFile file(name);
        const MeshSaveResult result = meshSave(mesh, file.name());
        ASSERT_TRUE(result) << result.message;
        EXPECT_EQ(static_cast<size_t>(result.numBytes), file.read().size()) << name;
        const bool hasChannels =
            meshFormat(file.name()) == MeshFormat::Obj || meshFormat(file.name()) == MeshFormat::Ply;
        const bool isSoup = meshFormat(file.name()) == MeshFormat::Stl;
        const bool isPoints = meshFormat(file.name()) == MeshFormat::Points;
        EXPECT_EQ(result.notes.size(), hasChannels ? 0 : isPoints ? 3 : 2) << name;

        CompactMesh back;
        const MeshLoadResult loaded = meshLoad(back, file.name());
        ASSERT_TRUE(loaded) << name << loaded.message;
        EXPECT_EQ(loaded.notes.size(), 0) << name;
        EXPECT_EQ(back.getNumTriangles(), isPoints ? 0 : numTriangles) << name;
        ASSERT_EQ(back.getNumVertices(), isSoup ? 3 * numTriangles : count) << name;
        for (int corner = 0; isSoup && corner < 3 * numTriangles; ++corner)
            EXPECT_TRUE(
                sameBits(&back.getVertices()[corner].x, &mesh.getVertices()[mesh.getTrianglesRaw()[corner]].x, 3));
        if (isSoup) continue;
        EXPECT_TRUE(sameBits(back.getVerticesRaw(), mesh.getVerticesRaw(), 3 * count)) << name;
        if (isPoints) continue;
        EXPECT_EQ(std::memcmp(back.getTriangles(), mesh.getTriangles(), sizeof(MeshTriangle) * size_t(numTriangles)),
                  0);
        ASSERT_EQ(back.getNormals() != nullptr && back.getUVs() != nullptr, hasChannels) << name;
        if (!hasChannels) continue;
        EXPECT_TRUE(sameBits(back.getNormalsRaw(), mesh.getNormalsRaw(), 3 * count)) << name;
        EXPECT_TRUE(sameBits(back.getUVsRaw(), mesh.getUVsRaw(), 2 * count)) << name;
    }
}

TEST(MeshSave, WritesPolygonsOfAMeshWithoutTriangles)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(300);
    mesh.resizePolyArrays(303, 2);
    mesh.getPolyLengths()[0] = 3;
    mesh.getPolyLengths()[1] = 300;
    for (int i = 0; i < 303; ++i) mesh.getPolyPoints()[i] = i % 300;
    for (const char* name : {"a.obj", "a.ply", "a.stl", "a.off", "a.txt"}) {
        const TemporaryFile file(name);
        ASSERT_TRUE(meshSave(mesh, file.name()));
        CompactMesh back;
        const MeshLoadResult loaded = meshLoad(back, file.name());
        EXPECT_EQ(back.getNumTriangles(), 299) << name << loaded.message;
        EXPECT_EQ(loaded.numPolygons, meshFormat(file.name()) == MeshFormat::Stl ? 0 : 1) << name;
    }
}

TEST(MeshSave, WritesGroupsAndCornerChannelsToObj)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(4);
    const int corners[] = {0, 1, 2, 0, 2, 3, 0, 1, 3};
    mesh.copyTriangles(3, corners);
    mesh.allocUVArray();
    MeshGroups groups;
    groups.names = {"left\nwall", "right"};
    groups.ofTriangle = {1, -1, 0};
    const MeshUV uvs[] = {{0, 0}, {1, 0}, {1, 1}, {0, 0}, {1, 1}, {0, 1}, {0.5f, 0.5f}, {1, 0}, {0, 1}};
    MeshSaveOptions options;
    options.groups = &groups;
    options.cornerUVs = uvs;
    znUtil::Progress progress;
    const TemporaryFile file;
    ASSERT_TRUE(meshSave(mesh, file.name(), options, progress));
    EXPECT_EQ(file.read(), "v 0 0 0\nv 0 0 0\nv 0 0 0\nv 0 0 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvt 0.5 0.5\n"
                           "g right\nf 1/1 2/2 3/3\ng\nf 1/1 3/3 4/4\ng left_wall\nf 1/5 2/2 4/4\n");
}

TEST(MeshSave, WritesTextureCoordinatesOfCornersToPly)
{
    // Fans of faces of 3, 4 and 130 corners: lists of one byte are too short for the last.
    for (const int largest : {127, 130}) {
        CompactMesh mesh;
        mesh.resizeVertexArray(largest);
        mesh.allocUVArray();
        mesh.resizePolyArrays(7 + largest, 3);
        zn::vector<int> corners;
        zn::vector<MeshUV> uvs;
        int* point = mesh.getPolyPoints();
        for (int face = 0; face < 3; ++face) {
            const int length = mesh.getPolyLengths()[face] = face < 2 ? 3 + face : largest;
            const auto put = [&](int corner) {
                corners.append(corner);
                uvs.append({float(face) + 0.25f, float(corner)});
            };
            for (int i = 0; i < length; ++i) *point++ = i;
            for (int i = 2; i < length; ++i) put(0), put(i - 1), put(i);
        }
        mesh.copyTriangles(corners.size() / 3, corners.data());
        MeshSaveOptions options;
        options.cornerUVs = uvs.data();
        for (const bool polygons : {false, true}) {
            options.polygons = polygons;
            znUtil::Progress progress;
            const TemporaryFile file("a.ply");
            const MeshSaveResult result = meshSave(mesh, file.name(), options, progress);
            EXPECT_EQ(result.notes.size(), polygons ? 0 : 1);
            CompactMesh back;
            const MeshLoadResult loaded = meshLoad(back, file.name());
            EXPECT_EQ(loaded.message, "");
            EXPECT_EQ(loaded.numPolygons, polygons ? 2 : 0);
            EXPECT_EQ(back.getUVs(), nullptr);
            ASSERT_EQ(loaded.cornerUVs.size(), uvs.size());
            EXPECT_TRUE(sameBits(&loaded.cornerUVs[0].u, &uvs[0].u, 2 * uvs.size()));
        }
    }
}

TEST(MeshSave, WritesLongNamesAndToWhereLinksLead)
{
    const TemporaryFile file;
    const CompactMesh mesh = znTest::makeGrid(3, 3);
    const auto save = [&](const std::string& name) {
        return meshSave(mesh, znOS::Filename((file.folder / name).c_str())).message;
    };
    for (const std::size_t length : {241, 251}) EXPECT_EQ(save(std::string(length, 'n') + ".obj"), "") << length;

    std::filesystem::create_directory(file.folder / "deep");
    std::filesystem::create_symlink("deep/second.obj", file.folder / "first.obj");
    std::filesystem::create_symlink("target.obj", file.folder / "deep" / "second.obj");
    for (const char* state : {"dangling", "leading to a file"}) {
        EXPECT_EQ(save("first.obj"), "") << state;
        EXPECT_TRUE(std::filesystem::is_symlink(file.folder / "first.obj"));
        EXPECT_TRUE(std::filesystem::is_symlink(file.folder / "deep" / "second.obj"));
        EXPECT_TRUE(std::filesystem::is_regular_file(file.folder / "deep" / "target.obj"));
    }
    std::filesystem::create_symlink("circle.obj", file.folder / "circle.obj");
    EXPECT_NE(save("circle.obj"), "");
}

TEST(MeshSave, AHandlerOfSignalsRemovesWhatIsHalfWritten)
{
    const TemporaryFile file;
    const auto numFiles = [&file] {
        const std::filesystem::directory_iterator files(file.folder);
        return std::distance(begin(files), end(files));
    };
    std::vector<std::unique_ptr<PendingFile>> files;
    for (const char* name : {"a", "b", "c", "d", "e"})
        files.push_back(std::make_unique<PendingFile>(znOS::Filename((file.folder / name).c_str())));
    EXPECT_EQ(numFiles(), 5);
    EXPECT_TRUE(files[1]->commit());
    files.erase(files.begin() + 2);
    EXPECT_EQ(numFiles(), 4);
    PendingFile::removeAll();
    EXPECT_EQ(numFiles(), 1);
    EXPECT_FALSE(files[0]->commit());
    files.clear();
    EXPECT_TRUE(std::filesystem::exists(file.folder / "b"));
}

TEST(MeshSave, KeepsTheOldFileUntilTheNewOneIsComplete)
{
    const TemporaryFile file;
    file.write("old");
    const auto isAlone = [&file] {
        const std::filesystem::directory_iterator files(file.folder);
        return std::distance(begin(files), end(files)) == 1;
    };
    CompactMesh mesh = znTest::makeGrid(200, 200);
    znUtil::Progress progress;
    progress.setObserver([&progress](double fraction, const char*) {
        if (fraction > 0.2) progress.cancel();
    });
    EXPECT_EQ(meshSave(mesh, file.name(), progress).status, Status::Cancelled);
    EXPECT_EQ(file.read(), "old");
    EXPECT_TRUE(isAlone());

    const MeshSaveResult nowhere = meshSave(mesh, znOS::Filename((file.folder / "none" / "a.obj").c_str()));
    EXPECT_EQ(nowhere.status, Status::Unwritable);
    EXPECT_TRUE(nowhere.message.starts_with("can't be written: ")) << nowhere.message;
    EXPECT_EQ(meshSave(mesh, znOS::Filename((file.folder / "a.docx").c_str())).status, Status::UnknownFormat);

    int numPieces = 0;
    const auto full = [&numPieces](const void*, size_t) { return ++numPieces < 2; };
    znUtil::Progress fresh;
    EXPECT_EQ(meshSave(mesh, MeshFormat::Obj, full, {}, fresh).status, Status::Unwritable);
    EXPECT_EQ(numPieces, 2);
    EXPECT_TRUE(meshSave(mesh, file.name()));
    EXPECT_TRUE(file.read().starts_with("v "));
    EXPECT_TRUE(isAlone());
}
