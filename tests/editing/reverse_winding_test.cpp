#include "znGeom/editing/reverse_winding.h"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

#include "tests/support/allocations.h"
#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"
#include "znGeom/foundation/mesh/bit_runs.h"

using namespace znGeom;
using znTest::makeMesh;
using znTest::toVector;
using Channels = znTest::Change::Channels;
using Triangle = std::array<int, 3>;

namespace {

Triangle lowestFirst(int a, int b, int c)
{
    Triangle triangle{a, b, c};
    std::rotate(triangle.begin(), std::min_element(triangle.begin(), triangle.end()), triangle.end());
    return triangle;
}

/// The triangles of all strips, or of all fans, turned over or not.
std::multiset<Triangle> expand(const CompactMesh& mesh, bool fans, bool turnedOver)
{
    std::multiset<Triangle> triangles;
    const int* lengths = fans ? mesh.getTriFanLengths() : mesh.getTriStripLengths();
    const int* points = fans ? mesh.getTriFanPoints() : mesh.getTriStripPoints();
    for (int i = 0; i < (fans ? mesh.getNumTriFans() : mesh.getNumTriStrips()); points += lengths[i++])
        for (int j = 2; j < lengths[i]; ++j) {
            const int hub = fans ? points[0] : points[j - 2];
            const bool backwards = (!fans && j % 2 == 1) != turnedOver;
            triangles.insert(backwards ? lowestFirst(hub, points[j], points[j - 1])
                                       : lowestFirst(hub, points[j - 1], points[j]));
        }
    return triangles;
}

/// All points are different, so that a triangle's winding shows.
void giveStripsAndFans(CompactMesh& mesh, const std::vector<int>& lengths)
{
    int numPoints = 0;
    for (const int length : lengths) numPoints += length;
    mesh.resizeTriStripArrays(numPoints, int(lengths.size()));
    mesh.resizeTriFanArrays(numPoints, int(lengths.size()));
    std::copy(lengths.begin(), lengths.end(), mesh.getTriStripLengths());
    std::copy(lengths.begin(), lengths.end(), mesh.getTriFanLengths());
    for (int i = 0; i < numPoints; ++i) mesh.getTriStripPoints()[i] = mesh.getTriFanPoints()[i] = i;
}

/// Two pairs of triangles, 0 1 and 2 3, that share no vertex, with all channels; normal v is (v + 1, 0, 0).
CompactMesh makePairs()
{
    CompactMesh mesh = makeMesh(8, {{{0, 1, 2}}, {{2, 1, 3}}, {{4, 5, 6}}, {{6, 5, 7}}});
    mesh.allocNormalArray();
    mesh.allocUVArray();
    mesh.allocTriangleNormalArray();
    for (int v = 0; v < 8; ++v) mesh.getNormals()[v].set(float(v + 1), 0, 0);
    for (int t = 0; t < 4; ++t) mesh.getTriangleNormals()[t].set(0, float(t + 1), 0);
    giveStripsAndFans(mesh, {4, 5});
    return mesh;
}

std::vector<int> reversedNormals(const CompactMesh& mesh)
{
    std::vector<int> reversed;
    for (int v = 0; v < mesh.getNumVertices(); ++v)
        if (mesh.getNormals()[v].x == -float(v + 1)) reversed.push_back(v);
    for (int t = 0; t < mesh.getNumTriangles(); ++t)
        if (mesh.getTriangleNormals()[t].y == -float(t + 1)) reversed.push_back(100 + t);
    return reversed;
}

} // namespace

TEST(ReverseWinding, TurnsStripsAndFansOver)
{
    znTest::Random random(1);
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        std::vector<int> lengths(size_t(random.below(5)));
        for (int& length : lengths) length = round % 2 ? random.below(12) : 3 + random.below(3);
        const auto numSplit = std::count_if(lengths.begin(), lengths.end(), [](int n) { return n > 4 && n % 2 == 0; });
        CompactMesh mesh;
        giveStripsAndFans(mesh, lengths);
        const CompactMesh before = mesh;
        const long numAllocations = znTest::numAllocations();
        meshReverseWinding(mesh, false);
        EXPECT_TRUE(round % 2 || znTest::numAllocations() == numAllocations);
        ASSERT_EQ(expand(mesh, false, true), expand(before, false, false));
        ASSERT_EQ(expand(mesh, true, true), expand(before, true, false));
        ASSERT_EQ(mesh.getNumTriStrips(), before.getNumTriStrips() + numSplit);
        ASSERT_EQ(mesh.getNumTriStripPoints(), before.getNumTriStripPoints() + 2 * numSplit);
        meshReverseWinding(mesh, false);
        ASSERT_EQ(expand(mesh, false, false), expand(before, false, false));
    }
    CompactMesh mesh;
    giveStripsAndFans(mesh, {6, 2, 4});
    meshReverseWinding(mesh, false);
    EXPECT_EQ(toVector(mesh.getTriStripLengths(), 4), (std::vector<int>{3, 5, 2, 4}));
    EXPECT_EQ(toVector(mesh.getTriStripPoints(), 14), (std::vector<int>{2, 1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 9, 11}));
    EXPECT_EQ(toVector(mesh.getTriFanPoints(), 12), (std::vector<int>{0, 5, 4, 3, 2, 1, 6, 7, 8, 11, 10, 9}));
}

TEST(ReverseWinding, OfTheWholeMeshReversesVertexNormalsOnRequest)
{
    for (const bool reverseNormals : {false, true}) {
        CompactMesh mesh = makePairs();
        const znTest::ChangeRecorder changes(mesh);
        znTest::LogRecorder log;
        meshReverseWinding(mesh, reverseNormals);
        EXPECT_EQ(toVector(mesh.getTrianglesRaw(), 6), (std::vector<int>{1, 0, 2, 1, 2, 3}));
        EXPECT_EQ(reversedNormals(mesh), reverseNormals ? (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 100, 101, 102, 103})
                                                        : (std::vector<int>{100, 101, 102, 103}));
        EXPECT_EQ(withoutTimes(log),
                  (znTest::Lines{"meshReverseWinding: 4 triangles\n", "  remapped triangle indices: # s\n"}));
        ASSERT_EQ(changes.changes().size(), 1u);
        const znTest::Change& change = changes.changes()[0];
        EXPECT_TRUE(change.type == MeshModification::TopologyChanged && !change.hasVertexRemap);
        using M = MeshModification;
        EXPECT_EQ(change.modified, reverseNormals ? (Channels{M::Normals, M::TriangleNormals, M::StripsAndFans})
                                                  : (Channels{M::TriangleNormals, M::StripsAndFans}));
        EXPECT_EQ(change.valid, reverseNormals ? (Channels{M::UVs}) : (Channels{M::Normals, M::UVs}));
    }
}

TEST(ReverseWinding, OfASelectionReversesEachNormalOnce)
{
    CompactMesh mesh = makePairs();
    mesh.getSelectedTriangles().resize(40);
    for (const int t : {1, 2, 3, 39}) mesh.getSelectedTriangles().setBit(t);
    const znTest::ChangeRecorder changes(mesh);
    znTest::LogRecorder log;
    meshReverseSelectedWinding(mesh);
    EXPECT_EQ(toVector(mesh.getTrianglesRaw(), 12), (std::vector<int>{0, 1, 2, 1, 2, 3, 5, 4, 6, 5, 6, 7}));
    EXPECT_EQ(reversedNormals(mesh), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 101, 102, 103}));
    EXPECT_EQ(mesh.getNumTriStrips() + mesh.getNumTriFans(), 0);
    EXPECT_EQ(mesh.getSelectedTriangles().getNumSetBits(), 4);
    EXPECT_EQ(withoutTimes(log),
              (znTest::Lines{"meshReverseSelectedWinding: 40 triangles\n", "  mesh reverse selected winding: # s\n"}));
    ASSERT_EQ(changes.changes().size(), 1u);
    EXPECT_EQ(changes.changes()[0].modified, (Channels{MeshModification::Normals, MeshModification::TriangleNormals}));
    EXPECT_EQ(changes.changes()[0].valid, Channels{MeshModification::UVs});
}

TEST(ReverseWinding, OfAShellTakesAlongWhatIsSelected)
{
    CompactMesh mesh = makePairs();
    mesh.deleteNormals();
    mesh.deleteTriangleNormals();
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    meshReverseWinding(mesh, adjTris, 3);
    EXPECT_EQ(toVector(mesh.getTrianglesRaw(), 12), (std::vector<int>{0, 1, 2, 2, 1, 3, 5, 4, 6, 5, 6, 7}));
    EXPECT_EQ(toVector(listMembers(mesh.getSelectedTriangles(), 4).data(), 2), (std::vector<int>{2, 3}));
    meshReverseWinding(mesh, adjTris, 0);
    EXPECT_EQ(toVector(mesh.getTrianglesRaw(), 12), (std::vector<int>{1, 0, 2, 1, 2, 3, 4, 5, 6, 6, 5, 7}));
}
