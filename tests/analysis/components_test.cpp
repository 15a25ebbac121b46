#include "znGeom/analysis/components.h"

#include <gtest/gtest.h>

#include "tests/support/check_topology.h"
#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"

using namespace znGeom;

/// Against labels that spread until nothing changes: the lowest triangle that each vertex is connected to.
TEST(Components, EqualPlainLabelling)
{
    znTest::Random random(1);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        const CompactMesh mesh = round == 0 ? CompactMesh() : znTest::makeAnyMesh(random, round);
        std::vector<int> lowest(mesh.getNumVertices(), mesh.getNumTriangles()), before;
        while (before != lowest) {
            before = lowest;
            for (int t = 0; t < mesh.getNumTriangles(); ++t) {
                const auto [a, b, c] = mesh.getTriangles()[t].corners;
                lowest[a] = lowest[b] = lowest[c] = std::min({t, lowest[a], lowest[b], lowest[c]});
            }
        }
        int count = 0;
        std::vector<int> expected(lowest.size(), -1);
        for (int t = 0; t < mesh.getNumTriangles(); ++t) {
            for (size_t v = 0; v < lowest.size(); ++v)
                if (lowest[v] == t) expected[v] = count;
            count += lowest[mesh.getTriangles()[t][0]] == t;
        }
        Array<int> labels(7);
        ASSERT_EQ(meshComponents(mesh, znTest::adjTrisOf(mesh), &labels), count);
        ASSERT_EQ(meshComponents(mesh, znTest::adjTrisOf(mesh), nullptr), count);
        ASSERT_EQ(znTest::toVector(labels.read(), labels.size()), expected);
    }
}

/// Half-edge meshes are connected across edges alone.
TEST(Components, OfHalfEdgeMeshesStayApartAtAVertex)
{
    const CompactMesh bowtie = znTest::makeMesh(5, {{{0, 1, 2}}, {{0, 3, 4}}});
    const MeshAdjTris adjTris = znTest::adjTrisOf(bowtie);
    TopoMesh mesh;
    EXPECT_EQ(meshComponents(mesh), 0);
    znTest::fill(mesh, bowtie);
    EXPECT_EQ(meshComponents(mesh), 2);
    znTest::LogRecorder log;
    EXPECT_EQ(meshComponents(bowtie, adjTris, nullptr), 1);
    EXPECT_EQ(withoutTimes(log), (znTest::Lines{"meshComponents(): 2 triangles\n", "   1 components: # s\n"}));
}
