#include "znGeom/editing/duplicate_triangles.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"

using namespace znGeom;
using znTest::makeMesh;
using znTest::toVector;

namespace {

using Triangles = std::vector<int>;

Triangles toVector(const zn::vector<int>& list) { return Triangles(list.begin(), list.end()); }

/// The three lists, written down plainly.
struct PlainResult
{
    Triangles duplicates, repeated, coincident;

    explicit PlainResult(const CompactMesh& mesh)
    {
        std::map<std::array<int, 3>, Triangles> byCorners;
        for (int t = 0; t < mesh.getNumTriangles(); ++t) {
            const auto [a, b, c] = mesh.getTriangles()[t].corners;
            std::array<int, 3> sorted{a, b, c};
            std::sort(sorted.begin(), sorted.end());
            byCorners[sorted].push_back(t);
            const auto same = [&mesh](int v, int w) {
                const MeshVertex &p = mesh.getVertices()[v], &q = mesh.getVertices()[w];
                return p.x == q.x && p.y == q.y && p.z == q.z;
            };
            if (std::set<int>{a, b, c}.size() < 3)
                repeated.push_back(t);
            else if (same(a, b) || same(b, c) || same(c, a))
                coincident.push_back(t);
        }
        for (const auto& group : byCorners)
            duplicates.insert(duplicates.end(), group.second.begin() + 1, group.second.end());
    }
};

/// Some vertices where others are, one nowhere, and many triangles around vertex 0.
CompactMesh makeBadMesh(znTest::Random& random, int round)
{
    CompactMesh mesh = znTest::makeAnyMesh(random, round);
    const int numVertices = mesh.getNumVertices();
    for (int i = random.below(numVertices); i > 0; --i)
        mesh.getVertices()[random.below(numVertices)] = mesh.getVertices()[random.below(numVertices)];
    mesh.getVertices()[random.below(numVertices)].x = -0.0f;
    mesh.getVertices()[random.below(numVertices)].z = NAN;
    for (int t = 0; round % 7 == 0 && t < mesh.getNumTriangles(); ++t) mesh.getTriangles()[t][random.below(3)] = 0;
    return mesh;
}

} // namespace

TEST(DuplicateTriangles, EqualPlainListsOnAnyPool)
{
    znUtil::ThreadPool one(1), two(2), seven(7);
    znTest::Random random(1);
    MeshDuplicateTrisResult result;
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        const CompactMesh mesh = round == 0 ? CompactMesh() : makeBadMesh(random, round);
        const PlainResult expected(mesh);
        std::set<int> all(expected.duplicates.begin(), expected.duplicates.end());
        all.insert(expected.repeated.begin(), expected.repeated.end());
        all.insert(expected.coincident.begin(), expected.coincident.end());
        for (znUtil::ThreadPool* pool : {&one, &two, &seven}) {
            ASSERT_EQ(meshDuplicateTris(mesh, result, *pool), !all.empty());
            ASSERT_EQ(bool(result), !all.empty());
            ASSERT_EQ(toVector(result.duplicates), expected.duplicates);
            ASSERT_EQ(toVector(result.repeatedCorners), expected.repeated);
            ASSERT_EQ(toVector(result.coincidentCorners), expected.coincident);
        }
        zn::vector<int> bad{-1};
        result.getBadTriangles(mesh, bad);
        ASSERT_EQ(toVector(bad), Triangles(all.begin(), all.end()));
    }
}

TEST(DuplicateTriangles, AreRemovedWithWhatWasSelected)
{
    CompactMesh mesh = makeMesh(
        7, {{{0, 1, 2}}, {{3, 3, 4}}, {{2, 1, 0}}, {{1, 2, 5}}, {{4, 3, 3}}, {{0, 1, 5}}, {{0, 0, 3}}, {{2, 5, 6}}});
    mesh.getVertices()[5] = mesh.getVertices()[0];
    mesh.getSelectedTriangles().resize(4);
    mesh.getSelectedTriangles().setBit(3); // 2 and 4 are duplicates, 1, 4 and 6 repeat a vertex, 5 two positions
    const znTest::ChangeRecorder changes(mesh);
    znTest::LogRecorder log;
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    log.clear();
    meshRemoveDuplicateTris(mesh, adjTris);
    EXPECT_EQ(toVector(mesh.getTrianglesRaw(), 6), (Triangles{0, 1, 2, 2, 3, 4})) << "of 0 1 2, and of 2 5 6";
    EXPECT_EQ(mesh.getNumVertices(), 5) << "3 and 4 are gone";
    ASSERT_EQ(changes.changes().size(), 1u);
    EXPECT_EQ(withoutTimes(log),
              (znTest::Lines{"meshDuplicateTris:  verts(7) tris(8) dup(2) degenerate(4) # s\n",
                             "znGeom::meshRemoveDuplicateTris\n", "           vertices(7) triangles(8)\n",
                             "MeshSelect::selectVerticesFromTriangles: vertices(7) triangles(8)\n",
                             "  selected vertices(6): # s\n", "  selected 6 duplicate/degenerate tris: # s\n",
                             "meshDeleteSelected:  vertices 6(7)  triangles 6(8)\n", "  delete vertices: # s\n",
                             "  delete triangles: # s\n"}));

    mesh.getSelectedTriangles().resize(2);
    mesh.getSelectedTriangles().setBit(1);
    meshRemoveDuplicateTris(mesh, znTest::adjTrisOf(mesh));
    meshRemoveDuplicateTris(mesh, znTest::adjTrisOf(mesh), MeshDuplicateTrisResult());
    EXPECT_EQ(mesh.getNumTriangles(), 2) << "nothing to remove, nothing done";
    EXPECT_EQ(changes.changes().size(), 1u);
    EXPECT_EQ(log.count("znGeom::meshRemoveDuplicateTris\n"), 1);
}
