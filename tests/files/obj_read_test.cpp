#include "znGeom/files/mesh_files.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <sstream>
#include <string>
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

using Face = std::vector<int>;
using Faces = std::vector<Face>;

/// The vertex indices of a face line, from what follows its "f ".
Face streamFace(const std::string& text)
{
    std::istringstream in(text);
    Face face;
    while (in.good()) {
        int v = -1, unused;
        in >> v;
        for (int slash = 1; slash <= 2 && in.good() && in.peek() == '/'; ++slash) {
            in.get();
            if (slash == 2 || in.peek() != '/') in >> unused;
        }
        face.push_back(v);
    }
    return face;
}

/// An OBJ reader made of streams, slow and plain.
void streamObj(const std::string& text, std::vector<float>& positions, Faces& faces)
{
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (line.ends_with('\r')) line.pop_back();
        line.erase(0, std::min(line.find_first_not_of(" \t\v\f\r"), line.size()));
        if (line.starts_with("v ")) {
            float x = 0, y = 0, z = 0;
            std::istringstream(line.substr(2)) >> x >> y >> z;
            positions.insert(positions.end(), {x, y, z});
        }
        if (line.starts_with("f ")) faces.push_back(streamFace(line.substr(2)));
    }
    const auto isOut = [count = static_cast<int>(positions.size() / 3)](int v) { return v < 1 || v > count; };
    std::erase_if(faces, [&](const Face& f) { return f.size() < 3 || std::any_of(f.begin(), f.end(), isOut); });
    for (Face& face : faces)
        for (int& v : face) --v;
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

void readText(CompactMesh& mesh, const std::string& text)
{
    const TemporaryFile file;
    file.write(text);
    EXPECT_TRUE(meshReadObj(mesh, file.name()));
}

/// What is read from `text` is what the streams see, to the last bit.
void expectAsStreams(const std::string& text)
{
    CompactMesh mesh;
    std::vector<float> positions;
    Faces faces;
    readText(mesh, text);
    streamObj(text, positions, faces);
    ASSERT_EQ(3 * static_cast<size_t>(mesh.getNumVertices()), positions.size());
    for (size_t i = 0; i < positions.size(); ++i)
        ASSERT_EQ(std::memcmp(mesh.getVerticesRaw() + i, &positions[i], sizeof(float)), 0)
            << "number " << i << ": " << mesh.getVerticesRaw()[i] << " and not " << positions[i];
    const bool hasPolygon = std::any_of(faces.begin(), faces.end(), [](const Face& face) { return face.size() > 3; });
    ASSERT_EQ(polygonsOf(mesh), hasPolygon ? faces : Faces());
    ASSERT_EQ(trianglesOf(mesh), hasPolygon ? Faces() : faces);
}

std::vector<std::string> wordsOf(const std::string& text)
{
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), {}};
}

/// A line of some kind, made of pieces that make sense or nearly do, in which some characters have been changed. The
/// last few of each list are picked rarely.
std::string randomLine(znTest::Random& random)
{
    using Pieces = std::vector<std::string>;
    static const Pieces starts{"v ", " v ", "v\t", "vn "}, faceStarts{"f ", "f ", "\t\rf  ", "f\t", "$f "};
    static const Pieces numbers = wordsOf("0 1.5 -.5e-3 +2 3. 1e-60 -1e-42 2E5 7.e+2 -0 16777217 16777217.000000001 "
                                          "0.333333343267440796 0.1000000014901161193847656250001 "
                                          "123456789012345678901 1.2.3 99999999999999999e22 -1e60 1e 0x10 inf");
    static const Pieces entries = wordsOf("1 2 74 +5 12/3 13//14 6/7/8 9/ 10/1/ 11// "
                                          "500 0 -1 2147483648 -2147483649 1/99999999999");
    static const Pieces gaps{" ", " ", "  ", "\t", "\r", "/", ""}, ends{"\n", "\r\n", " \n", "\r\r\n", " \r\n"};
    static const std::string letters("0123456789+-.eE/ \t\r\v\fnft#$infax\0", 32);
    const auto pick = [&random](const auto& list, int rare) {
        const int size = static_cast<int>(list.size());
        return list[static_cast<size_t>(random.below(random.oneIn(8) ? size : size - rare))];
    };
    const bool isFace = random.oneIn(2);
    std::string line = isFace ? pick(faceStarts, 2) : pick(starts, 2);
    for (int i = 0, count = 2 + random.below(5); i < count; ++i)
        line += (i > 0 ? pick(gaps, 4) : "") + (isFace ? pick(entries, 6) : pick(numbers, 6));
    for (int i = random.below(8) - 5; i > 0; --i) {
        const auto at = static_cast<size_t>(random.below(static_cast<int>(line.size())));
        line.replace(at, static_cast<size_t>(random.below(2)), 1, pick(letters, 0));
    }
    return line + pick(ends, 3);
}

TEST(ObjRead, RandomLinesAreReadAsByStreamsWhereverTheFileEnds)
{
    znTest::Random random(1);
    for (int file = 0; file < 1000; ++file) {
        SCOPED_TRACE(file);
        std::string text;
        for (int i = file < 4 ? 8000 : random.below(20); i >= 0; --i) text += randomLine(random);
        if (file == 1) // lines longer than any buffer
            text += "f 1 2" + std::string(700000, ' ') + "3\nv 1 -2e60 3" + std::string(300000, '0');
        else if (random.oneIn(2))
            text.resize(static_cast<size_t>(random.below(static_cast<int>(text.size()))));
        expectAsStreams(text);
    }
}

TEST(ObjRead, WhichFacesAreKept)
{
    const auto read = [](const std::string& line) {
        CompactMesh mesh;
        readText(mesh, "f 4 3 2\n" + line + "\nv 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 2 3 4\n");
        return trianglesOf(mesh);
    };
    // UVs and normals are not there and not missed. An entry that breaks off after its v counts, and a blank may follow
    // a slash.
    for (const char* line : {"f 1 2 3", "f 1/1/1 2/2/2 3/3/3", "f 1//9 2//9 3//9", "f 1/-9 2/0 3/9", " \t f  1   2\t3",
                             "f +1 2 3", "f 1+2+3", "f 1 2 3/x", "f 1 2 3//", "f 1/ 4 2 3", "f 1 2 3\r"})
        EXPECT_EQ(read(line), (Faces{{3, 2, 1}, {0, 1, 2}, {1, 2, 3}})) << line;
    // A byte order mark is no part of the first line.
    CompactMesh marked;
    readText(marked, "\xEF\xBB\xBFv 7 0 0\n\xEF\xBB\xBFv 8 0 0\nv 9 0 0\n");
    ASSERT_EQ(marked.getNumVertices(), 2);
    EXPECT_EQ(marked.getVertices()[0].x, 7);
    for (const char* line :
         {"f 1 2 3 ", "f 1 2 3 \r", "f 1 2 3\r\r", "f 1 2 3 #", "f 1 2 /3", "f 1/2/3/4 2 3", "f 1.0 2 3", "f 1 2",
          "f 0 1 2", "f 1 2 5", "f 1 2 4294967299", "f -3 -2 -1", "f\t1 2 3", "$f 1 2 3"})
        EXPECT_EQ(read(line), (Faces{{3, 2, 1}, {1, 2, 3}})) << line;
}

TEST(ObjRead, OnePolygonMakesAllFacesPolygons)
{
    const std::string vertices = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";
    CompactMesh mesh;
    readText(mesh, vertices + "f 1 2 3\n");
    mesh.resizePolyArrays(3, 1);
    mesh.allocPolyMaterialArray();
    readText(mesh, vertices + "f 4 3 2 1\nf 1 2 3\nf 4 3 2 1 2\nf 2 3 4\nf 1 2 3 5\n");
    EXPECT_EQ(polygonsOf(mesh), (Faces{{3, 2, 1, 0}, {0, 1, 2}, {3, 2, 1, 0, 1}, {1, 2, 3}}));
    EXPECT_EQ(trianglesOf(mesh), (Faces{{0, 1, 2}}));
    EXPECT_EQ(mesh.getPolyMaterials(), nullptr);

    readText(mesh, vertices + "f 1 2 3 5\nf 4 3 2\n"); // the only polygon is out of range
    EXPECT_EQ(trianglesOf(mesh), (Faces{{3, 2, 1}}));
    EXPECT_EQ(mesh.getNumPolys(), 4);
}

TEST(ObjRead, ReplacesPositionsAndNotifiesOnceUnlessTheFileDoesNotOpen)
{
    CompactMesh mesh;
    mesh.setArrayAllocator(new znTest::MovingAllocator);
    znTest::makeCube(mesh);
    mesh.allocNormalArray();
    mesh.allocAttributes("weight", 1)->asFloat()[0] = 5;
    const znTest::ChangeRecorder recorder(mesh);
    const TemporaryFile file;
    for (const znOS::Filename& name : {file.name(), znOS::Filename(file.folder.string().c_str())}) {
        EXPECT_FALSE(meshReadObj(mesh, name));
        meshRead(mesh, name);
    }
    EXPECT_TRUE(mesh.getNumTriangles() == 12 && recorder.changes().empty());

    readText(mesh, "v 1 2 3\nv 4 5 6\nv 7 8 9\nf 3 2 1\n");
    EXPECT_EQ(mesh.getNumVertices(), 3);
    EXPECT_EQ(mesh.getVertices()[2].y, 8);
    EXPECT_EQ(trianglesOf(mesh), (Faces{{2, 1, 0}}));
    EXPECT_EQ(mesh.getNormals(), nullptr);
    EXPECT_EQ(mesh.getAttributes("weight")->asFloat()[0], 0);
    ASSERT_EQ(recorder.changes().size(), 1u);
    EXPECT_EQ(recorder.changes()[0].type, MeshModification::TopologyChanged);
    EXPECT_TRUE(recorder.changes()[0].modified.empty() && recorder.changes()[0].valid.empty());

    readText(mesh, "");
    EXPECT_EQ(mesh.getNumVertices() + mesh.getNumTriangles(), 0);
    EXPECT_EQ(recorder.changes().size(), 2u);
}

} // namespace
