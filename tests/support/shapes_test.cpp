#include "tests/support/shapes.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace znGeom;
using namespace znTest;

/// What a shape is known by: Euler characteristic, edges with one triangle, edges that two triangles run along in the
/// same direction, and the volume that outward triangles enclose.
struct Facts
{
    int euler = 0, boundary = 0, disoriented = 0;
    double volume = 0;

    explicit Facts(const CompactMesh& mesh)
    {
        std::multiset<std::pair<int, int>> sides;
        std::set<int> used;
        std::set<std::pair<int, int>> edges;
        for (int t = 0; t < mesh.getNumTriangles(); ++t) {
            const MeshTriangle& corners = mesh.getTriangles()[t];
            znLinear::Vector at[3];
            for (int i = 0; i < 3; ++i) {
                const int from = corners[i], to = corners[(i + 1) % 3];
                sides.emplace(from, to);
                edges.emplace(std::min(from, to), std::max(from, to));
                used.insert(from);
                at[i] = mesh.getVertices()[from].asPoint().asVector();
            }
            volume += dot(at[0], cross(at[1], at[2])) / 6;
        }
        for (const auto& [a, b] : edges) {
            boundary += sides.count({a, b}) + sides.count({b, a}) == 1;
            disoriented += sides.count({a, b}) > 1 || sides.count({b, a}) > 1;
        }
        euler = int(used.size()) - int(edges.size()) + mesh.getNumTriangles();
    }
};

TEST(Shapes, AreWhatTheirNamesSay)
{
    struct Case
    {
        const char* name;
        void (*make)(CompactMesh&);
        int vertices, triangles, euler, boundary, disoriented;
        double volume;
    };
    const Case cases[] = {
        {"grid", [](CompactMesh& m) { makeGrid(m, 5, 4); }, 20, 24, 1, 14, 0, 0},
        {"cube", makeCube, 8, 12, 2, 0, 0, 8},
        {"octahedron", [](CompactMesh& m) { makeSphere(m, 0); }, 6, 8, 2, 0, 0, 4.0 / 3},
        {"sphere", [](CompactMesh& m) { makeSphere(m, 4); }, 1026, 2048, 2, 0, 0, 4.17},
        {"torus", [](CompactMesh& m) { makeTorus(m, 60, 40); }, 2400, 4800, 0, 0, 0, 3.14},
        {"band", [](CompactMesh& m) { makeMobiusBand(m, 9); }, 18, 18, 0, 18, 1, 0},
        {"annulus", [](CompactMesh& m) { makeAnnulus(m, 7); }, 14, 14, 0, 14, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        CompactMesh mesh, soup;
        c.make(mesh);
        const Facts facts(mesh);
        EXPECT_EQ(mesh.getNumVertices(), c.vertices);
        EXPECT_EQ(mesh.getNumTriangles(), c.triangles);
        EXPECT_EQ(facts.euler, c.euler);
        EXPECT_EQ(facts.boundary, c.boundary);
        EXPECT_EQ(facts.disoriented, c.disoriented);
        if (c.boundary == 0) {
            EXPECT_NEAR(facts.volume, c.volume, 0.02);
        }
        makeSoup(soup, mesh);
        EXPECT_EQ(Facts(soup).boundary, 3 * c.triangles);
        EXPECT_NEAR(Facts(soup).volume, facts.volume, 1e-9);
    }
}

TEST(Shapes, AScanHasHolesCopiesAndUnusedVertices)
{
    CompactMesh scan, again;
    makeNoisyScan(scan, 40, 30);
    makeNoisyScan(again, 40, 30);
    EXPECT_GT(scan.getNumVertices(), 1203); // copies
    EXPECT_LT(scan.getNumTriangles(), 2 * 39 * 29);
    EXPECT_GT(Facts(scan).boundary, 2 * (39 + 29));
    ASSERT_EQ(scan.getNumVertices(), again.getNumVertices());
    EXPECT_TRUE(
        std::equal(scan.getVerticesRaw(), scan.getVerticesRaw() + 3 * scan.getNumVertices(), again.getVerticesRaw()));
}

} // namespace
