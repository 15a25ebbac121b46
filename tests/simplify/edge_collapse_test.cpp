#include "znGeom/simplify/edge_collapse.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <tuple>
#include <vector>

#include "tests/support/check_topology.h"
#include "tests/support/shapes.h"
#include "tests/support/shared_meshes.h"
#include "tests/support/tangles.h"
#include "znGeom/simplify/internal/quadric.h"
#include "znGeom/topology.h"

using namespace znGeom;
using internal::Quadric;
using znLinear::Point;
using znLinear::Vector;
using znTest::checkTopology;

namespace {

constexpr double notAllowed = std::numeric_limits<double>::max();

void reduce(TopoMesh& mesh, double fraction)
{
    znUtil::Progress progress;
    meshReduceByEdgeCollapse(mesh, fraction, progress);
}

void build(TopoMesh& mesh, const CompactMesh& source)
{
    znTest::fill(mesh, source);
    meshTwin(mesh);
}

/// The method without a queue and without tables: all edges are searched for the cheapest, and whatever touches the
/// vertex that a collapse leaves is priced anew.
class PlainCollapse
{
public:
    explicit PlainCollapse(TopoMesh& mesh) : m_mesh(mesh)
    {
        for (const TopoMeshFace face : facesOf(mesh)) addFace(face);
        for (const TopoMeshEdge e : edgesOf(mesh))
            if (!e->twin || !m_costs.contains(e->twin)) price(e);
    }

    void run(int target)
    {
        while (m_mesh.numFaces() > target && !m_costs.empty()) {
            const auto cheapest = std::min_element(m_costs.begin(), m_costs.end(),
                                                   [](const auto& a, const auto& b) { return a.second < b.second; });
            if (cheapest->second >= notAllowed) return;
            if (isAllowed(cheapest->first))
                collapse(cheapest->first);
            else
                cheapest->second = notAllowed;
        }
    }

private:
    void addFace(TopoMeshFace face)
    {
        const TopoMeshEdge first = face->edge;
        const Point p = first->origin.point();
        Vector normal = cross(endOf(first).point() - p, first->prev->origin.point() - p);
        if (!normal.normalize()) return;
        for (const TopoMeshEdge side : sidesOf(face)) {
            m_quadrics[side->origin].addPlane(normal, dot(normal, p.asVector()));
            if (side->twin) continue;
            const Vector upright = cross(endOf(side).point() - side->origin.point(), normal);
            for (const TopoMeshVertex v : {side->origin, endOf(side)})
                m_quadrics[v].addPlane(upright, dot(upright, v.point().asVector()));
        }
    }
    Quadric sumOf(TopoMeshEdge e)
    {
        Quadric sum = m_quadrics[e->origin];
        sum.add(m_quadrics[endOf(e)]);
        return sum;
    }
    static bool isOneFan(TopoMeshEdge spoke)
    {
        return int(znTest::listed(fanOf(spoke)).size()) == spoke->origin.valence();
    }
    static bool isAllowed(TopoMeshEdge e) { return isOneFan(e) && isOneFan(e->next) && TopoMesh::canCollapse(e); }
    void price(TopoMeshEdge e)
    {
        const Quadric sum = sumOf(e);
        m_costs[e] =
            isAllowed(e) ? std::max(0.0, sum.at(placementOf(sum, e->origin.point(), endOf(e).point()))) : notAllowed;
    }
    void collapse(TopoMeshEdge e)
    {
        std::vector<TopoMeshEdge> joined;
        for (const TopoMeshEdge half : {e, e->twin}) {
            if (!half) continue;
            for (const TopoMeshEdge side : {half, half->next, half->prev}) {
                m_costs.erase(side);
                if (side->twin) m_costs.erase(side->twin);
            }
            joined.push_back(half->prev->twin ? half->prev->twin : half->next->twin);
        }
        const Quadric sum = sumOf(e);
        const Point place = placementOf(sum, e->origin.point(), endOf(e).point());
        const TopoMeshVertex survivor = m_mesh.collapseEdge(e);
        m_quadrics[survivor] = sum;
        m_mesh.setPoint(survivor, place);
        for (const TopoMeshEdge side : joined)
            if (side) m_costs[side] = notAllowed;
        for (const auto& [edge, cost] : std::map(m_costs))
            if (edge->origin == survivor || endOf(edge) == survivor) price(edge);
    }

    TopoMesh& m_mesh;
    std::map<TopoMeshVertex, Quadric> m_quadrics;
    std::map<TopoMeshEdge, double> m_costs;
};

std::vector<double> describe(const TopoMesh& mesh)
{
    std::vector<double> all;
    for (const TopoMeshVertex v : verticesOf(mesh))
        all.insert(all.end(), {double(v.number()), v.point().x, v.point().y, v.point().z});
    for (const TopoMeshEdge e : edgesOf(mesh))
        all.insert(all.end(), {double(e.number()), double(e->origin.number()), double(e->next.number())});
    return all;
}

struct Shape
{
    int euler = 0, loops = 0;
    friend bool operator==(const Shape&, const Shape&) = default;
};

/// Isolated vertices do not count.
Shape shapeOf(const TopoMesh& mesh)
{
    Shape shape{mesh.numFaces(), 0};
    std::set<TopoMeshEdge> seen;
    for (const TopoMeshVertex v : verticesOf(mesh)) shape.euler += bool(v->edge);
    for (const TopoMeshEdge e : edgesOf(mesh)) {
        shape.euler -= !e->twin || e < e->twin;
        if (e->twin || seen.contains(e)) continue;
        ++shape.loops;
        for (TopoMeshEdge walk = e; seen.insert(walk).second;) {
            walk = walk->next;
            while (walk->twin) walk = walk->twin->next;
        }
    }
    return shape;
}

bool repeatsVertex(const TopoMesh& mesh)
{
    for (const TopoMeshEdge e : edgesOf(mesh))
        if (e->origin == endOf(e)) return true;
    return false;
}

CompactMesh noisy(const std::function<void(CompactMesh&)>& make, double size)
{
    CompactMesh mesh;
    make(mesh);
    znTest::Random random(8);
    for (int i = 0; i < 3 * mesh.getNumVertices(); ++i) mesh.getVerticesRaw()[i] += float(random.real(-size, size));
    return mesh;
}

/// Closed, with a handle, with borders, with a hole in a corner of three triangles.
std::vector<CompactMesh> noisyShapes()
{
    std::vector<CompactMesh> shapes{noisy([](CompactMesh& m) { znTest::makeSphere(m, 3); }, 0.03),
                                    noisy([](CompactMesh& m) { znTest::makeTorus(m, 24, 12); }, 0.02),
                                    noisy([](CompactMesh& m) { znTest::makeAnnulus(m, 60); }, 0.05),
                                    noisy([](CompactMesh& m) { m = znTest::makeGrid(14, 11); }, 0.2)};
    CompactMesh holes = shapes[1];
    for (int removed : {400, 301, 300, 77, 12, 11, 10})
        holes.getTriangles()[removed] = holes.getTriangles()[holes.getNumTriangles() - 1],
        holes.resizeTriangleArray(holes.getNumTriangles() - 1);
    shapes.push_back(holes);
    return shapes;
}

} // namespace

TEST(EdgeCollapse, DoesWhatTheSearchThroughAllEdgesDoes)
{
    for (const CompactMesh& source : noisyShapes())
        for (const double fraction : {0.6, 0.15, 0.0}) {
            TopoMesh mesh, plain;
            build(mesh, source), build(plain, source);
            reduce(mesh, fraction);
            PlainCollapse(plain).run(std::max(1, int(fraction * source.getNumTriangles())));
            EXPECT_TRUE(checkTopology(mesh));
            EXPECT_EQ(describe(mesh), describe(plain)) << fraction;
        }
}

TEST(EdgeCollapse, KeepsTheTopologyOfTheSurface)
{
    for (const CompactMesh& source : noisyShapes()) {
        TopoMesh mesh;
        build(mesh, source);
        const Shape before = shapeOf(mesh);
        for (const double fraction : {0.5, 0.5, 0.3}) {
            const int target = int(fraction * mesh.numFaces());
            reduce(mesh, fraction);
            EXPECT_LE(mesh.numFaces(), target);
            EXPECT_GE(mesh.numFaces(), target - 1);
            EXPECT_TRUE(checkTopology(mesh));
            EXPECT_EQ(shapeOf(mesh), before);
            EXPECT_FALSE(repeatsVertex(mesh));
        }
    }
}

TEST(EdgeCollapse, LeavesSumsOfQuadricsAndCostsInTheSlots)
{
    for (const CompactMesh& source : noisyShapes()) {
        TopoMesh before, after;
        build(before, source), build(after, source);
        reduce(before, 1), reduce(after, 0.3);
        EXPECT_EQ(before.numFaces(), source.getNumTriangles());
        double sums[2][16] = {};
        for (TopoMesh* mesh : {&before, &after})
            for (const TopoMeshVertex v : verticesOf(*mesh))
                for (int i = 0; i < 16; ++i) sums[mesh == &after][i] += v->metadata[i].asDouble();
        for (int i = 0; i < 16; ++i) EXPECT_NEAR(sums[0][i], sums[1][i], 1e-9 * std::fabs(sums[0][15]));
        for (TopoMesh* mesh : {&before, &after})
            for (const TopoMeshEdge e : edgesOf(*mesh)) {
                EXPECT_TRUE(e->metadata[1].asBool());
                EXPECT_EQ(e->metadata[0].asDouble(), (e->twin ? e->twin : e)->metadata[0].asDouble());
                if (mesh == &before) {
                    EXPECT_EQ(e->metadata[0].asDouble() < notAllowed, TopoMesh::canCollapse(e));
                }
            }
    }
}

TEST(EdgeCollapse, StaysOnFlatGroundAndOnRoofs)
{
    // A square and a roof of 30 x 30 vertices, turned, in three units: no vertex leaves the ground or the outline.
    znLinear::AffineMatrix turn, back;
    turn.rotate(znLinear::Normal(Vector(0, 0, 1)), znLinear::Normal(Vector(1, 2, 0.5)));
    back.rotate(znLinear::Normal(Vector(1, 2, 0.5)), znLinear::Normal(Vector(0, 0, 1)));
    for (const double slope : {0.0, 0.8})
        for (const double unit : {1e-3, 1.0, 1e3}) {
            const auto heightAt = [slope](double x) { return -slope * std::fabs(x - 14); };
            TopoMesh mesh;
            build(mesh, znTest::makeGrid(30, 30));
            for (const TopoMeshVertex v : verticesOf(mesh)) {
                const Point p = v.point();
                mesh.setPoint(v, (Point(p.x, p.y, heightAt(p.x)).asVector() * unit).asPoint() * turn);
            }
            reduce(mesh, 0.05);
            EXPECT_TRUE(checkTopology(mesh));
            EXPECT_LE(mesh.numFaces(), 85);
            for (const TopoMeshVertex v : verticesOf(mesh)) {
                const Point p = ((v.point() * back).asVector() / unit).asPoint();
                EXPECT_NEAR(p.z, heightAt(p.x), 1e-4);
                EXPECT_TRUE(p.x > -0.1 && p.x < 29.1 && p.y > -0.1 && p.y < 29.1) << p.x << " " << p.y;
                EXPECT_LT(v.valence(), 40);
            }
        }
}

TEST(EdgeCollapse, EndsOnEveryInput)
{
    znTest::Random random(21);
    for (int round = 0; round < 120; ++round) {
        const CompactMesh source = znTest::makeAnyMesh(random, round);
        for (const double fraction : {0.5, 0.0, -3.0, 1e300}) {
            TopoMesh mesh;
            build(mesh, source);
            const int before = mesh.numFaces();
            reduce(mesh, fraction);
            EXPECT_TRUE(checkTopology(mesh, false)) << round;
            EXPECT_EQ(mesh.numFaces() == before || fraction < 1, true);
        }
    }
    // Two tetrahedra end as they are or as one pillow less; not a number, and a quad, leave all as it was.
    TopoMesh tetrahedron, quad, empty;
    build(tetrahedron, znTest::makeMesh(4, {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}}));
    reduce(tetrahedron, 0);
    EXPECT_EQ(tetrahedron.numFaces(), 2);
    reduce(empty, 0.5);
    TopoMeshVertex corners[5];
    for (int i = 0; i < 5; ++i) corners[i] = quad.allocVertex(Point(i % 2, i / 2, i * i));
    quad.allocQuad(corners[0], corners[1], corners[3], corners[2]);
    quad.allocTriangle(corners[2], corners[3], corners[4]);
    const std::vector<double> before = describe(quad);
    reduce(quad, 0);
    EXPECT_EQ(describe(quad), before);
    TopoMesh grid;
    build(grid, znTest::makeGrid(4, 4));
    reduce(grid, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(grid.numFaces(), 18);
    EXPECT_FALSE(grid.firstVertex()->metadata.isWritten());
}

TEST(EdgeCollapse, KeepsCornersApartThatTwoEdgesJoin)
{
    const std::vector<std::array<int, 3>> doubled[] = {{{1, 4, 5}, {1, 5, 0}, {6, 0, 2}, {5, 1, 0}},
                                                       {{3, 0, 1}, {3, 2, 1}, {2, 3, 1}},
                                                       {{0, 3, 2}, {3, 1, 2}, {1, 3, 2}}};
    for (const auto& triangles : doubled) {
        TopoMesh mesh;
        build(mesh, znTest::makeMesh(7, triangles));
        reduce(mesh, 0);
        EXPECT_TRUE(checkTopology(mesh, false));
        EXPECT_FALSE(repeatsVertex(mesh));
    }
}

TEST(RealEdgeCollapse, KeepsTopologyAndBoundsOnSharedMeshes)
{
    const bool found = znTest::forEachSharedMesh(60000, [](const CompactMesh& source) {
        TopoMesh mesh;
        build(mesh, source);
        Point low = mesh.firstVertex().point(), high = low;
        for (const TopoMeshVertex v : verticesOf(mesh))
            for (int axis = 0; axis < 3; ++axis) {
                low[axis] = std::min(low[axis], v.point()[axis]);
                high[axis] = std::max(high[axis], v.point()[axis]);
            }
        const double room = 0.03 * (high - low).length();
        reduce(mesh, 0.02);
        EXPECT_TRUE(checkTopology(mesh, false));
        EXPECT_FALSE(repeatsVertex(mesh));
        for (const TopoMeshVertex v : verticesOf(mesh))
            for (int axis = 0; axis < 3 && v->edge; ++axis) {
                EXPECT_GT(v.point()[axis], low[axis] - room);
                EXPECT_LT(v.point()[axis], high[axis] + room);
            }
    });
    if (!found) GTEST_SKIP() << "no shared meshes";
}
