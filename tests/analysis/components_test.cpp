#include "znGeom/analysis/components.h"

#include <gtest/gtest.h>

#include "tests/support/check_topology.h"
#include "tests/support/recorder.h"
#include "tests/support/tangles.h"

using namespace znGeom;

/// Against labels that spread until nothing changes: the lowest triangle that each vertex is connected to.
TEST(Components, equalPlainLabelling)
{
    znTest::Random random(1);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        const CompactMesh mesh = round == 0 ? CompactMesh() : znTest::makeAnyMesh(random, round);
        std::vector<int> lowest(size_t(mesh.getNumVertices()), mesh.getNumTriangles()), before;
        while (before != lowest) {
            before = lowest;
            for (int t = 0; t < mesh.getNumTriangles(); ++t) {
                const auto [a, b, c] = mesh.getTriangles()[t].corners;
                const int least = std::min({t, lowest[size_t(a)], lowest[size_t(b)], lowest[size_t(c)]});
                lowest[size_t(a)] = lowest[size_t(b)] = lowest[size_t(c)] = least;
            }
        }
        int count = 0;
        std::vector<int> expected(lowest.size(), -1);
        for (int t = 0; t < mesh.getNumTriangles(); ++t) {
            for (size_t v = 0; v < lowest.size(); ++v)
                if (lowest[v] == t) expected[v] = count;
            count += lowest[size_t(mesh.getTriangles()[t][0])] == t;
        }
        Array<int> labels(7);
        ASSERT_EQ(meshComponents(mesh, znTest::adjTrisOf(mesh), &labels), count);
        ASSERT_EQ(meshComponents(mesh, znTest::adjTrisOf(mesh), nullptr), count);
        ASSERT_EQ(znTest::toVector(labels.read(), labels.size()), expected);
    }
    const CompactMesh pair = znTest::makeMesh(6, {{{0, 1, 2}}, {{3, 4, 5}}});
    const MeshAdjTris adjTris = znTest::adjTrisOf(pair);
    znTest::LogRecorder log;
    meshComponents(pair, adjTris, nullptr);
    ASSERT_EQ(log.lines().size(), 2u);
    EXPECT_EQ(log.lines()[0], "meshComponents(): 2 triangles\n");
    EXPECT_EQ(log.lines()[1].substr(0, 19), "   2 components: 0.");
}

/// Half-edge meshes are connected across edges alone.
TEST(Components, ofHalfEdgeMeshesStayApartAtAVertex)
{
    CompactMesh bowtie(5, nullptr, nullptr, nullptr, nullptr);
    const int corners[] = {0, 1, 2, 0, 3, 4};
    bowtie.copyTriangles(2, corners);
    TopoMesh mesh;
    EXPECT_EQ(meshComponents(mesh), 0);
    znTest::fill(mesh, bowtie);
    EXPECT_EQ(meshComponents(mesh), 2);
    EXPECT_EQ(meshComponents(bowtie, znTest::adjTrisOf(bowtie), nullptr), 1);
}
