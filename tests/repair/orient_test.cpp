#include "znGeom/repair/orient.h"

#include <deque>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"

using namespace znGeom;
using znTest::makeMesh;
using znTest::toVector;

namespace {

/// The same search as a plain walk over sets.
struct PlainSearch
{
    CompactMesh mesh;
    MeshAdjTris adjTris;
    std::set<int> visited;
    int offending = -1;
    bool wasOriented;

    explicit PlainSearch(const CompactMesh& given)
        : mesh(given), adjTris(znTest::adjTrisOf(given)), wasOriented(isOriented())
    {}

    bool isOriented() const
    {
        std::map<std::pair<int, int>, std::set<int>> alongSide;
        for (int side = 0; side < 3 * mesh.getNumTriangles(); ++side) {
            const MeshTriangle& triangle = mesh.getTriangles()[side / 3];
            alongSide[{triangle[side % 3], triangle[(side + 1) % 3]}].insert(side / 3);
        }
        for (const auto& side : alongSide)
            if (side.second.size() > 1) return false;
        return true;
    }

    bool orient()
    {
        if (wasOriented) return true;
        visited.clear();
        for (int seed = 0; seed < mesh.getNumTriangles(); ++seed) {
            if (visited.count(seed) || search(seed)) continue;
            visited.clear();
            search(offending);
            return false;
        }
        return true;
    }

    bool search(int seed)
    {
        std::deque<int> queue{seed};
        for (visited.insert(seed); !queue.empty(); queue.pop_front())
            for (int corner = 0; corner < 3; ++corner) {
                const MeshTriangle triangle = mesh.getTriangles()[queue.front()];
                const int from = triangle[corner], to = triangle[(corner + 1) % 3];
                for (const int other : adjTris.around(from)) {
                    MeshTriangle& met = mesh.getTriangles()[other];
                    const bool against = hasDirectedEdge(met, from, to);
                    if (other == queue.front() || (!against && !hasDirectedEdge(met, to, from))) continue;
                    if (against && visited.count(other)) {
                        offending = other;
                        return false;
                    }
                    if (against) std::swap(met[1], met[2]);
                    if (visited.insert(other).second) queue.push_back(other);
                }
            }
        return true;
    }
};

void turnSomeOver(CompactMesh& mesh, znTest::Random& random)
{
    for (int t = 0; t < mesh.getNumTriangles(); ++t)
        if (random.oneIn(3)) std::swap(mesh.getTriangles()[t][0], mesh.getTriangles()[t][random.oneIn(2) ? 1 : 2]);
}

/// Loose cells, tangles, and shapes of one side and of two, some triangles of which are turned over.
CompactMesh makeTurnedMesh(znTest::Random& random, int round)
{
    CompactMesh mesh;
    if (round % 4 == 1) {
        znTest::makeMobiusBand(mesh, 3 + random.below(30));
    } else if (round % 4 == 2) {
        znTest::makeAnnulus(mesh, 3 + random.below(30));
    } else if (round % 8 == 3) { // one or two triangles, that repeat vertices for the most part
        mesh = makeMesh(3, {});
        mesh.resizeTriangleArray(1 + random.below(3));
        for (int i = 0; i < 3 * mesh.getNumTriangles(); ++i) mesh.getTrianglesRaw()[i] = random.below(3);
    } else {
        mesh = znTest::makeAnyMesh(random, round);
    }
    turnSomeOver(mesh, random);
    return mesh;
}

} // namespace

TEST(Orient, TurnsOverAndReachesWhatAPlainWalkDoes)
{
    znUtil::ThreadPool one(1), two(2), seven(7);
    znTest::Random random(1);
    int numDone = 0, numFailed = 0, numFine = 0;
    for (int round = 0; round < 800; ++round) {
        SCOPED_TRACE(round);
        CompactMesh mesh = round == 0 ? CompactMesh() : makeTurnedMesh(random, round);
        PlainSearch plain(mesh);
        const bool wasOriented = plain.wasOriented;
        for (znUtil::ThreadPool* pool : {&one, &two, &seven})
            ASSERT_EQ(meshOriented(mesh, plain.adjTris, *pool), wasOriented);

        const std::vector<int> before = toVector(mesh.getTrianglesRaw(), 3 * mesh.getNumTriangles());
        const znTest::ChangeRecorder changes(mesh);
        MeshOrient orient(mesh, plain.adjTris);
        ASSERT_TRUE(orient.isOriented() == wasOriented && orient.isOrientable() == wasOriented);
        for (int call = 0; call < 2; ++call) { // the second one searches again after a failure
            orient.orient();
            const bool succeeded = plain.orient();
            ASSERT_TRUE(orient.isOriented() == succeeded && orient.isOrientable() == succeeded);
            ASSERT_EQ(toVector(mesh.getTrianglesRaw(), 3 * mesh.getNumTriangles()),
                      toVector(plain.mesh.getTrianglesRaw(), 3 * mesh.getNumTriangles()));
            const BitVector& affected = orient.getAffectedTriangles();
            ASSERT_EQ(affected.getSize(), wasOriented ? 0 : mesh.getNumTriangles());
            ASSERT_EQ(affected.getNumSetBits(), int(plain.visited.size()));
            for (const int t : plain.visited) ASSERT_TRUE(affected.isSet(t));
            ASSERT_TRUE(!succeeded || plain.isOriented());
            if (call == 0) ++(wasOriented ? numFine : succeeded ? numDone : numFailed);
            if (succeeded) break;
        }
        // A triangle may have been turned over and back again.
        const bool isAsBefore = before == toVector(mesh.getTrianglesRaw(), int(before.size()));
        ASSERT_TRUE(isAsBefore || !changes.changes().empty());
        ASSERT_TRUE(!wasOriented || changes.changes().empty());
    }
    EXPECT_TRUE(numDone > 100 && numFailed > 100 && numFine > 10);
}

TEST(Orient, ReportsOnceAndKeepsTextureChannels)
{
    for (const bool oneSided : {false, true}) {
        CompactMesh mesh;
        if (oneSided)
            znTest::makeMobiusBand(mesh, 20);
        else
            znTest::makeTorus(mesh, 12, 8);
        const int numTriangles = mesh.getNumTriangles();
        mesh.allocNormalArray();
        mesh.allocUVArray();
        mesh.allocSTArray();
        for (const int t : {3, 4, 17}) std::swap(mesh.getTriangles()[t][0], mesh.getTriangles()[t][1]);
        const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
        const znTest::ChangeRecorder changes(mesh);
        EXPECT_EQ(meshMakeOriented(mesh, adjTris), !oneSided);
        EXPECT_EQ(meshOriented(mesh, adjTris), !oneSided);
        EXPECT_TRUE(mesh.getUVs() && mesh.getSTs() && !mesh.getNormals());
        ASSERT_EQ(changes.changes().size(), 1u);
        using M = MeshModification;
        EXPECT_EQ(changes.changes()[0].type, M::TopologyChanged);
        EXPECT_EQ(changes.changes()[0].valid, (znTest::Change::Channels{M::UVs, M::STs, M::Colours}));
        EXPECT_TRUE(changes.changes()[0].modified.empty() && mesh.getNumTriangles() == numTriangles);
        if (oneSided) continue;
        EXPECT_TRUE(meshMakeOriented(mesh, adjTris));
        EXPECT_EQ(changes.changes().size(), 1u) << "nothing was left to do";
    }
}

/// A test of pairs around the hub would take minutes here.
TEST(Orient, CopesWithAVertexOfVeryManyTriangles)
{
    constexpr int rim = 100000;
    std::vector<std::array<int, 3>> triangles;
    for (int i = 0; i < rim; ++i) triangles.push_back({i, (i + 1) % rim, rim});
    CompactMesh mesh = makeMesh(rim + 1, triangles);
    znTest::Random random(2);
    turnSomeOver(mesh, random);
    EXPECT_TRUE(meshMakeOriented(mesh, znTest::adjTrisOf(mesh)));
}
