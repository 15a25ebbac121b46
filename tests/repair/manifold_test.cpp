#include "znGeom/repair/manifold.h"

#include <algorithm>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"
#include "znGeom/editing/duplicate_triangles.h"

using namespace znGeom;
using znTest::makeMesh;
using znTest::toVector;

namespace {

using Edge = std::pair<int, int>;
using Corners = std::vector<std::array<int, 3>>;

/// Everything about edges and fans, written down plainly.
struct PlainManifold
{
    std::map<Edge, int> numSides; ///< an edge from a vertex to itself counts twice
    std::set<Edge> badEdges;
    std::set<int> badVertices, surplus;

    explicit PlainManifold(const CompactMesh& mesh) : m_mesh(mesh), m_triangles(mesh.getTriangles())
    {
        for (int side = 0; side < 3 * mesh.getNumTriangles(); ++side) {
            const int a = m_triangles[side / 3][side % 3], b = m_triangles[side / 3][(side + 1) % 3];
            numSides[std::minmax({a, b})] += a == b ? 2 : 1;
        }
        for (const auto& [edge, count] : numSides)
            if (count > 2) badEdges.insert(edge);
        for (const Edge& edge : badEdges) findSurplus(edge);
        for (int v = 0; v < mesh.getNumVertices() && badEdges.empty(); ++v)
            if (countFans(v) > 1) badVertices.insert(v);
    }

    /// Fans spread over vertices next to v until nothing changes.
    int countFans(int v) const
    {
        std::map<int, int> labels;
        for (int before = -1, sum = 0; before != sum;) {
            before = std::exchange(sum, 0);
            for (int t = 0; t < m_mesh.getNumTriangles(); ++t) {
                const int corner = cornerOf(m_triangles[t], v);
                if (corner < 0) continue;
                const int a = m_triangles[t][(corner + 1) % 3], b = m_triangles[t][(corner + 2) % 3];
                const int label = std::min(labels.emplace(a, a).first->second, labels.emplace(b, b).first->second);
                labels[a] = labels[b] = label;
                sum += label + 1;
            }
        }
        std::set<int> fans;
        for (const auto& label : labels) fans.insert(label.second);
        return int(fans.size());
    }

private:
    /// A triangle is there as often as it names the lower vertex, if it goes on from there to the higher one.
    void findSurplus(const Edge& edge)
    {
        std::vector<std::pair<int, int>> ranked;
        const MeshAdjTris adjTris = znTest::adjTrisOf(m_mesh);
        for (const int t : adjTris.around(edge.first)) {
            std::vector<int> left(m_triangles[t].corners, m_triangles[t].corners + 3);
            left.erase(std::find(left.begin(), left.end(), edge.first));
            const auto high = std::find(left.begin(), left.end(), edge.second);
            if (high == left.end()) continue;
            left.erase(high);
            ranked.push_back({adjTris.numTris(left[0]), t});
        }
        std::sort(ranked.begin(), ranked.end());
        for (size_t i = 0; i + 2 < ranked.size(); ++i) surplus.insert(ranked[i].second);
    }

    const CompactMesh& m_mesh;
    const MeshTriangle* m_triangles;
};

/// Few vertices and many triangles, or few triangles.
CompactMesh makeTightSoup(znTest::Random& random)
{
    const int numVertices = 2 + random.below(6);
    Corners triangles;
    for (int i = random.below(random.oneIn(2) ? 8 : 40); i >= 0; --i)
        triangles.push_back({random.below(numVertices), random.below(numVertices), random.below(numVertices)});
    return makeMesh(numVertices, triangles);
}

CompactMesh makeMeshFor(znTest::Random& random, int round)
{
    return round == 0 ? CompactMesh() : round % 2 ? makeTightSoup(random) : znTest::makeAnyMesh(random, round);
}

/// Corners by the x of their vertices, which splitting and removing leave alone.
Corners places(const CompactMesh& mesh)
{
    Corners corners;
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        const auto [a, b, c] = mesh.getTriangles()[t].corners;
        const MeshVertex* vertices = mesh.getVertices();
        corners.push_back({int(vertices[a].x), int(vertices[b].x), int(vertices[c].x)});
    }
    return corners;
}

MeshManifoldResult check(const CompactMesh& mesh)
{
    MeshManifoldResult result;
    meshManifold(mesh, znTest::adjTrisOf(mesh), result);
    return result;
}

/// Triangles from a hub to the cells of a closed rim.
void addCone(Corners& triangles, int hub, int firstOfRim, int sizeOfRim)
{
    for (int i = 0; i < sizeOfRim; ++i) triangles.push_back({hub, firstOfRim + i, firstOfRim + (i + 1) % sizeOfRim});
}

} // namespace

TEST(Manifold, FindsWhatAPlainCountFindsOnAnyPool)
{
    znUtil::ThreadPool one(1), two(2), seven(7);
    znTest::Random random(1);
    MeshManifoldResult result;
    int numWithBadVertices = 0;
    for (int round = 0; round < 600; ++round) {
        SCOPED_TRACE(round);
        const CompactMesh mesh = makeMeshFor(random, round);
        const PlainManifold expected(mesh);
        numWithBadVertices += !expected.badVertices.empty();
        for (znUtil::ThreadPool* pool : {&one, &two, &seven}) {
            meshManifold(mesh, znTest::adjTrisOf(mesh), result, *pool);
            ASSERT_EQ(std::vector<Edge>(result.badEdges.begin(), result.badEdges.end()),
                      std::vector<Edge>(expected.badEdges.begin(), expected.badEdges.end()));
            ASSERT_EQ(result.badVertices.getSize(), mesh.getNumVertices());
            ASSERT_EQ(result.badVertices.getNumSetBits(), int(expected.badVertices.size()));
            for (const int v : expected.badVertices) ASSERT_TRUE(result.badVertices.isSet(v));
            ASSERT_EQ(result.isManifold(), expected.badEdges.empty() && expected.badVertices.empty());
        }
    }
    EXPECT_GT(numWithBadVertices, 50);
}

TEST(MakeManifold, RemovesThenSplitsAndEndsOnAnyTangle)
{
    znTest::Random random(2);
    int numRemoving = 0, numSplitting = 0;
    for (int round = 0; round < 600; ++round) {
        SCOPED_TRACE(round);
        const CompactMesh before = makeMeshFor(random, round);
        const PlainManifold found(before);
        CompactMesh mesh = before;
        meshMakeManifold(mesh, znTest::adjTrisOf(mesh), check(mesh));
        Corners expected = places(before);
        for (auto t = found.surplus.rbegin(); t != found.surplus.rend(); ++t) expected.erase(expected.begin() + *t);
        ASSERT_EQ(places(mesh), expected);
        numRemoving += !found.surplus.empty();
        if (!found.badVertices.empty()) {
            int numVertices = before.getNumVertices();
            for (const int v : found.badVertices) numVertices += found.countFans(v) - 1;
            ASSERT_EQ(mesh.getNumVertices(), numVertices);
            ASSERT_TRUE(check(mesh).isManifold());
            ++numSplitting;
        }

        mesh = before;
        meshRemoveDuplicateTris(mesh, znTest::adjTrisOf(mesh));
        meshMakeManifold(mesh);
        ASSERT_TRUE(check(mesh).isManifold());
        mesh = before;
        meshMakeManifold(mesh); // with triangles that repeat vertices
        const Corners once = places(mesh);
        meshMakeManifold(mesh);
        ASSERT_EQ(places(mesh), once);
        for (const auto& [low, high] : check(mesh).badEdges) {
            const PlainManifold left(mesh);
            ASSERT_TRUE(left.surplus.empty() && low < high);
        }
    }
    EXPECT_TRUE(numRemoving > 200 && numSplitting > 50);
}

TEST(MakeManifold, ByHand)
{
    // Three on the edge 0 1: the one that leads to the fewest triangles goes, with its vertex, and what was selected.
    CompactMesh mesh =
        makeMesh(8, {{{0, 1, 2}}, {{1, 0, 3}}, {{0, 1, 4}}, {{2, 1, 5}}, {{5, 6, 7}}, {{2, 5, 6}}, {{3, 0, 6}}});
    mesh.getSelectedTriangles().resize(7);
    mesh.getSelectedTriangles().setBit(4);
    meshMakeManifold(mesh, znTest::adjTrisOf(mesh), check(mesh));
    EXPECT_EQ(places(mesh), (Corners{{0, 1, 2}, {1, 0, 3}, {2, 1, 5}, {2, 5, 6}, {3, 0, 6}}));
    EXPECT_EQ(mesh.getNumVertices(), 6) << "4 and 7 are gone";

    // Two cones and a triangle that repeats the apex: three vertices, the first cone keeps the old one.
    Corners triangles;
    addCone(triangles, 8, 4, 4);
    triangles.push_back({8, 9, 8});
    addCone(triangles, 8, 0, 4);
    mesh = makeMesh(10, triangles);
    mesh.allocNormalArray();
    mesh.allocUVArray();
    mesh.allocAttributes("flow", 1)->asFloat()[8] = 5;
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    const znTest::ChangeRecorder changes(mesh);
    znTest::LogRecorder log;
    MeshManifoldResult result;
    meshManifold(mesh, adjTris, result);
    meshMakeManifold(mesh, adjTris, result);
    EXPECT_EQ(withoutTimes(log), (znTest::Lines{"meshManifold:  vertices 10  triangles 9: # s\n"
                                                "               badVertexAdj(1) badEdgeAdj(0)\n"}));
    EXPECT_EQ(toVector(mesh.getTriangles()[0].corners, 3), (std::vector<int>{8, 4, 5}));
    EXPECT_EQ(toVector(mesh.getTriangles()[4].corners, 6), (std::vector<int>{10, 9, 10, 11, 0, 1}));
    EXPECT_EQ(mesh.getNumVertices(), 12);
    EXPECT_TRUE(mesh.getVertices()[10].x == 8 && mesh.getVertices()[11].x == 8);
    EXPECT_EQ(mesh.getAttributes("flow")->asFloat()[11], 0);
    EXPECT_FALSE(mesh.getNormals() || mesh.getUVs());
    ASSERT_EQ(changes.changes().size(), 1u);
    const znTest::Change& change = changes.changes()[0];
    EXPECT_TRUE(change.type == MeshModification::TopologyChanged && !change.hasVertexRemap);
    EXPECT_TRUE(change.modified.empty() && change.valid.empty());
    meshMakeManifold(mesh);
    EXPECT_EQ(changes.changes().size(), 1u) << "nothing is left to do";
}

/// A test of pairs would take minutes here.
TEST(MakeManifold, CopesWithVertexAndEdgeOfVeryManyTriangles)
{
    constexpr int rim = 30000;
    Corners triangles;
    addCone(triangles, 2 * rim, 0, rim);
    addCone(triangles, 2 * rim, rim, rim);
    CompactMesh mesh = makeMesh(2 * rim + 1, triangles);
    meshMakeManifold(mesh);
    EXPECT_TRUE(mesh.getNumVertices() == 2 * rim + 2 && check(mesh).isManifold());

    // All pages on one spine, and each cell of a cone three times.
    triangles.resize(rim);
    addCone(triangles, 2 * rim, 0, rim);
    addCone(triangles, 2 * rim, 0, rim);
    for (int page = rim; page < 2 * rim; ++page) triangles.push_back({0, page, 2 * rim});
    mesh = makeMesh(2 * rim + 1, triangles);
    meshMakeManifold(mesh);
    EXPECT_TRUE(check(mesh).isManifold());
}
