#include "znGeom/spatial/queries/closest_point.h"

#include <limits>
#include <regex>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

#include "tests/spatial/spatial_support.h"
#include "tests/support/allocations.h"
#include "tests/support/recorder.h"
#include "tests/support/tangles.h"
#include "znGeom/analysis/edges.h"
#include "znGeom/spatial/queries/octree_closest.h"
#include "znGeom/spatial/trees/octree_partition.h"

using namespace znGeom;
using namespace znLinear;
using znTest::Random;

namespace {

constexpr double largest = std::numeric_limits<double>::max();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct Indexed
{
    CompactMesh mesh;
    zn::Reference<Octree> octree;
    OctreeTris tris;
    TriangleTree tree;
    MeshAdjTris adjTris;
    std::vector<BoundingBox> neighbourBoxes;
    double longestEdge;

    explicit Indexed(const CompactMesh& source, int leafCapacity = 16)
        : mesh(source), octree(znTest::makeOctree(mesh, leafCapacity)), tree(mesh), adjTris(znTest::adjTrisOf(mesh)),
          neighbourBoxes(size_t(mesh.getNumVertices())), longestEdge(meshLongestEdge(mesh))
    {
        computeOctreeTris(mesh, *octree, tris);
        meshComputeNeighbourBBoxes(mesh, adjTris, neighbourBoxes.data());
    }
};

/// Distance, triangle and weights.
using Found = std::tuple<double, int, double, double, double>;

Found makeFound(double distance, const MeshCoord& coord)
{
    return {distance, coord.triangle, coord.weights[0], coord.weights[1], coord.weights[2]};
}

/// Takes only strictly nearer triangles, so that the first one is kept; tests each once, and in full.
struct PlainSearch
{
    const CompactMesh& mesh;
    Point query;
    double best2 = largest;
    MeshCoord coord = {};
    std::vector<char> seen = std::vector<char>(size_t(mesh.getNumTriangles()), 0);

    void test(int triangle)
    {
        if (std::exchange(seen[size_t(triangle)], 1)) return;
        const MeshCoord candidate = meshTriClosestPt(mesh.getVerticesRaw(), mesh.getTrianglesRaw(), triangle, query);
        if (!candidate.valid()) return;
        const double d2 = distance2(query, candidate.evaluate(mesh.getVertices(), mesh.getTriangles()));
        if (best2 > d2) best2 = d2, coord = candidate;
    }
    Found found() const { return makeFound(std::sqrt(best2), coord); }
};

Found byTris(const Indexed& on, const Point& query)
{
    PlainSearch search{on.mesh, query};
    for (OctreeClosestIt it(*on.octree, query); it.valid() && !(it.getDistance2() >= search.best2); it.next())
        for (int i = 0; i < on.tris.numTris(it.get().node->leafIndex); ++i)
            search.test(on.tris.firstTri(it.get().node->leafIndex)[i]);
    return search.found();
}

Found byVertices(const Indexed& on, const Point& query)
{
    const double reach2 = (on.longestEdge / std::sqrt(2.0)) * (on.longestEdge / std::sqrt(2.0));
    PlainSearch search{on.mesh, query};
    for (OctreeClosestIt it(*on.octree, query); it.valid(); it.next()) {
        const OctreeIterator leaf = it.get();
        if (leaf.box.distance2(PointFlt(query)) >= std::max(reach2, search.best2)) break;
        for (int i = leaf.node->firstPoint; i < leaf.node->endPoint; ++i) {
            const int v = on.octree->pointIndices()[i];
            if (!(search.best2 > on.neighbourBoxes[size_t(v)].distance2(PointFlt(query)))) continue;
            for (const int triangle : on.adjTris.around(v)) search.test(triangle);
        }
    }
    return search.found();
}

/// Both engines against their plain forms, bit for bit; against brute force by distance. Queries allocate no memory
/// once a copy has answered the same ones.
void expectEngines(const Indexed& on, const std::vector<Point>& queries, bool vertexEngineIsExact = false)
{
    MeshClosestPoint owner(on.mesh, *on.octree, on.tris, on.tree), copy(owner), engine(std::move(copy));
    const BoundingBox box = znTest::boxOf(on.mesh);
    const double extent = double(box.diagonalLength()) + double(box.maxPt().asVector().length());
    for (const Point& query : queries) owner.compute(query, nullptr);
    for (const Point& query : queries) {
        PlainSearch all{on.mesh, query};
        for (int t = 0; t < on.mesh.getNumTriangles(); ++t) all.test(t);
        const double nearest = std::sqrt(all.best2);
        // The error that comparing leaves with a query narrowed to `float` may cause; not a number for a query that is
        // not one.
        const double narrowing = 2e-7 * (query.asVector().length() + extent);
        MeshCoord coord;
        const long before = znTest::numAllocations();
        const double distance = engine.compute(query, &coord);
        ASSERT_EQ(znTest::numAllocations(), before);
        ASSERT_EQ(makeFound(distance, coord), byTris(on, query));
        ASSERT_FALSE(std::fabs(distance - nearest) > narrowing);
        for (const BoundingBox* given : {static_cast<const BoundingBox*>(nullptr), on.neighbourBoxes.data()}) {
            MeshCoord other;
            const double vertexwise =
                meshClosestPoint(on.mesh, *on.octree, on.adjTris, query, on.longestEdge, largest, given, &other);
            ASSERT_EQ(makeFound(vertexwise, other), byVertices(on, query));
            ASSERT_FALSE(vertexEngineIsExact && std::fabs(vertexwise - nearest) > narrowing);
        }
    }
}

std::vector<Point> makeQueries(Random& random, const CompactMesh& mesh, int count)
{
    std::vector<Point> queries;
    for (int i = 0; i < count; ++i) {
        const Point onVertex = mesh.getVertices()[random.below(mesh.getNumVertices())].asPoint();
        queries.push_back(onVertex);
        queries.push_back(onVertex + random.vector(0.05));
        queries.push_back(random.point(2.0));
        queries.push_back(random.point(1e6));
        queries.push_back({std::round(4 * onVertex.x) / 4, std::round(4 * onVertex.y) / 4, 0.25});
    }
    return queries;
}

using Entry = std::pair<double, OctreeIterator>;

/// The walk as it is documented: a heap of whole iterators, with distances by the boxes themselves.
std::vector<Entry> walkPlainly(const Octree& octree, const PointFlt& query)
{
    std::vector<Entry> heap{{octree.getRoot().box.distance2(query), octree.getRoot()}}, leaves;
    while (!heap.empty()) {
        const Entry top = heap[0];
        heap[0] = heap.back();
        heap.pop_back();
        for (size_t at = 0, child = 1; child < heap.size(); at = child, child = 2 * at + 1) {
            if (child + 1 < heap.size() && heap[child].first > heap[child + 1].first) ++child;
            if (!(heap[at].first > heap[child].first)) break;
            std::swap(heap[at], heap[child]);
        }
        if (top.second.node->isLeaf) leaves.push_back(top);
        for (int child = 0; child < 8; ++child) {
            OctreeIterator below = top.second;
            if (!below.descend(child)) break;
            heap.emplace_back(below.box.distance2(query), below);
            for (size_t at = heap.size() - 1; at > 0 && heap[(at - 1) / 2].first > heap[at].first; at = (at - 1) / 2)
                std::swap(heap[(at - 1) / 2], heap[at]);
        }
    }
    return leaves;
}

} // namespace

TEST(OctreeClosest, WalksAsStatedAlsoAmongEqualDistances)
{
    CompactMesh meshes[2];
    znTest::makeGrid(meshes[0], 17, 17);
    znTest::makeTorus(meshes[1], 40, 20);
    Random random(1);
    for (const CompactMesh& mesh : meshes)
        for (const int capacity : {1, 16, 1000000}) {
            const zn::Reference<Octree> octree = znTest::makeOctree(mesh, capacity);
            OctreeClosestIt it;
            std::vector<Point> queries = makeQueries(random, mesh, 5);
            queries.insert(queries.end(), {{8, 8, 0}, {notANumber, 0, 0}});
            for (const Point& query : queries) {
                it.reset(*octree, query);
                for (const auto& [distance2, leaf] : walkPlainly(*octree, PointFlt(query))) {
                    ASSERT_TRUE(it.valid() && it.get().node == leaf.node && it.get().box == leaf.box);
                    ASSERT_TRUE(it.getDistance2() == distance2 || std::isnan(query.x));
                    it.next();
                }
                ASSERT_FALSE(it.valid());
            }
        }
}

TEST(ClosestPoint, EnginesEqualTheirPlainForms)
{
    Random random(2);
    CompactMesh meshes[5]; // torus, scan, grid, a grid with all triangles twice, a torus of which much is not a number
    znTest::makeTorus(meshes[0], 40, 25);
    znTest::makeNoisyScan(meshes[1], 25, 25);
    znTest::makeGrid(meshes[2], 20, 20);
    const int numIndices = 3 * meshes[2].getNumTriangles();
    meshes[3] = meshes[2];
    meshes[3].resizeTriangleArray(2 * meshes[2].getNumTriangles());
    std::copy_n(meshes[2].getTrianglesRaw(), numIndices, meshes[3].getTrianglesRaw() + numIndices);
    meshes[4] = meshes[0];
    for (int i = 0; i < 40; ++i)
        (&meshes[4].getVertices()[random.below(1000)].x)[random.below(3)] = i % 4 ? NAN : INFINITY;
    for (const CompactMesh& mesh : meshes)
        for (const int capacity : {3, 16, 1000000})
            expectEngines(Indexed(mesh, capacity), makeQueries(random, mesh, 12),
                          capacity == 16 && &mesh != &meshes[4]);
    for (int round = 0; round < 6; ++round) {
        const CompactMesh soup = znTest::makeRandomSoup(random, 150);
        expectEngines(Indexed(soup, 4), makeQueries(random, soup, 6));
    }
    // Another scale and position change nothing.
    for (const double scale : {1e-24, 1e-6, 1e5, 1e18}) {
        CompactMesh torus = meshes[0];
        const auto moved = [&](const Point& p) { return ((p.asVector() + Vector(3, 0, 0)) * scale).asPoint(); };
        std::vector<Point> queries = makeQueries(random, torus, 5);
        for (Point& query : queries) query = moved(query);
        for (int v = 0; v < torus.getNumVertices(); ++v) {
            const Point p = moved(torus.getVertices()[v].asPoint());
            torus.getVertices()[v].set(&p.x);
        }
        expectEngines(Indexed(torus), queries);
    }
}

TEST(ClosestPoint, LimitsAndNothingToFind)
{
    CompactMesh sphere;
    znTest::makeSphere(sphere, 3);
    CompactMesh noNumbers = sphere;
    for (int v = 0; v < noNumbers.getNumVertices(); ++v) noNumbers.getVertices()[v].set(NAN, NAN, NAN);
    const Indexed on(sphere), nothing{CompactMesh()}, nonsense(noNumbers);
    MeshCoord untouched;
    untouched.triangle = 77;
    // From two units outside: nothing within 1.5, something within 2.5.
    const Point query(0, 0, 3), noPoint(notANumber, 0, 0), beyondFloat(0, -1e39, 0);
    EXPECT_EQ(meshClosestPoint(on.mesh, *on.octree, on.adjTris, query, on.longestEdge, 2.25, nullptr, &untouched), 1.5);
    EXPECT_EQ(meshClosestPoint(on.mesh, *on.octree, on.adjTris, query, on.longestEdge, 6.25, nullptr, nullptr), 2.0);
    for (const auto& [where, point] :
         {std::pair(&on, noPoint), {&on, beyondFloat}, {&nothing, query}, {&nonsense, query}}) {
        MeshClosestPoint engine(where->mesh, *where->octree, where->tris);
        EXPECT_EQ(engine.compute(point, &untouched), std::sqrt(largest));
        EXPECT_EQ(meshClosestPoint(where->mesh, *where->octree, where->adjTris, point, &untouched), std::sqrt(largest));
        EXPECT_EQ(untouched.triangle, 77);
        EXPECT_EQ(engine.compute(query, nullptr), where == &on ? 2.0 : std::sqrt(largest)) << "and goes on afterwards";
    }
}

TEST(ClosestPoint, NearestVertex)
{
    Random random(8);
    CompactMesh scan;
    znTest::makeNoisyScan(scan, 25, 25);
    const zn::Reference<Octree> octree = znTest::makeOctree(scan, 5), empty = znTest::makeOctree(CompactMesh(), 5);
    const znTest::LogRecorder log;
    for (const Point& query : makeQueries(random, scan, 10)) {
        double expected = largest;
        for (int v = 0; v < scan.getNumVertices(); ++v)
            expected = std::min(expected, distance2(query, scan.getVertices()[v].asPoint()));
        // Leaves are compared in float: far away another vertex may be found, equally near apart from that.
        ASSERT_NEAR(meshClosestVertex2(scan, *octree, query) / std::max(expected, 1e-30), expected > 0, 1e-6);
    }
    EXPECT_EQ(meshClosestVertex2(CompactMesh(), *empty, {0, 0, 0}), largest);
    EXPECT_EQ(meshClosestVertex2(scan, *octree, {0, -1e39, 0}), largest);
    EXPECT_EQ(log.lines().size(), 52u);
    EXPECT_TRUE(std::regex_match(log.lines().back(), std::regex("   meshClosestVertex: \\d+\\.\\d{6} s\n")));
}

TEST(ClosestPoint, FromARayLevelWithAPoint)
{
    CompactMesh sphere;
    znTest::makeSphere(sphere, 4);
    const Indexed on(sphere);
    // The ray along z passes the point's level at (2, 0, 0.5).
    const Line line(Point(2, 0, -7), Vector::z);
    const MeshCoord coord = meshRayClosestPt(on.mesh, on.longestEdge, *on.octree, on.adjTris, line, Point(-1, 4, 0.5));
    const Vector expected = Point(2, 0, 0.5).asVector().normalized().asVector();
    EXPECT_TRUE(equivalent(coord.evaluate(sphere.getVertices(), sphere.getTriangles()), expected.asPoint(), 0.02));
}

namespace {

CompactMesh transformed(CompactMesh mesh, double scale, const Vector& shift)
{
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        const Point p = ((mesh.getVertices()[v].asPoint().asVector() + shift) * scale).asPoint();
        mesh.getVertices()[v].set(&p.x);
    }
    return mesh;
}

/// A cylinder of triangles that are as long as it is and of almost no width.
CompactMesh makeSlivers(int sides)
{
    CompactMesh mesh;
    znTest::makeGrid(mesh, sides, 2);
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        const float angle = 6.25f * float(v % sides) / float(sides);
        mesh.getVertices()[v].set(std::cos(angle), std::sin(angle), v < sides ? -3.0f : 3.0f);
    }
    return mesh;
}

/// Meshes with many places that are exactly as near as others, and with cases that searches in `float` find hard.
std::vector<CompactMesh> makeZoo(Random& random)
{
    std::vector<CompactMesh> zoo(7);
    znTest::makeTorus(zoo[0], 60, 30);
    znTest::makeGrid(zoo[1], 40, 33); // flat: distances to its plane, to sides and to corners are exactly equal
    znTest::makeCube(zoo[2]);
    znTest::makeNoisyScan(zoo[3], 50, 50);
    znTest::makeSphere(zoo[4], 4);
    zoo[5] = makeSlivers(300);
    zoo[6] = zoo[1]; // bumpy, on whole numbers
    for (int v = 0; v < zoo[6].getNumVertices(); ++v) zoo[6].getVertices()[v].z = float(random.below(3));
    // Doubled and out of order; a quarter without area; some that are not numbers.
    CompactMesh twice = zoo[6];
    const int count = twice.getNumTriangles();
    twice.resizeTriangleArray(2 * count);
    for (int t = 0; t < count; ++t) twice.getTriangles()[2 * count - 1 - t] = twice.getTriangles()[t];
    for (int t = 0; t < count; t += 4) twice.getTriangles()[t][2] = twice.getTriangles()[t][random.below(2)];
    for (int i = 0; i < 30; ++i)
        (&twice.getVertices()[random.below(twice.getNumVertices())].x)[random.below(3)] = i % 2 ? NAN : 2.5f;
    zoo.push_back(twice);
    zoo.push_back(znTest::makeRandomSoup(random, 300));
    for (const double scale : {1e-38, 1e-22, 1e-6, 1e5, 1e21, 1e37})
        zoo.push_back(transformed(zoo[0], scale, Vector(0, 0.5, 0)));
    for (const double away : {40.0, 1e4, 1e6}) zoo.push_back(transformed(zoo[4], 1, Vector(away, -away, 0)));
    zoo.push_back(transformed(zoo[6], 1, Vector(-1e5, 7, 1e6)));
    return zoo;
}

/// In turn on vertices, sides and triangles, near, spread out, on halves of whole numbers, far away, and nowhere.
Point makeZooQuery(Random& random, const CompactMesh& mesh, int turn)
{
    const BoundingBox box = znTest::boxOf(mesh);
    const double size = double(box.diagonalLength());
    const MeshTriangle& triangle = std::as_const(mesh).getTriangles()[random.below(mesh.getNumTriangles())];
    const auto corner = [&](int i) { return mesh.getVertices()[triangle[i]].asPoint(); };
    const auto rounded = [](double c) { return std::round(2 * c) / 2; };
    const Point side = combine(0.5, corner(0), 0.5, corner(1));
    const Point spread = Point(box.center()) + random.vector(0.6) * size;
    switch (turn % 8) {
    case 0:
        return corner(0);
    case 1:
        return turn % 16 == 1 ? side : combine(0.5, side, 0.5, corner(2));
    case 2:
        return corner(0) + random.vector(0.01) * size;
    case 3:
        return corner(0) + (turn % 16 == 3 ? Vector::x : Vector::z) * (size * random.real(-0.3, 0.3));
    case 4:
        return {rounded(spread.x), rounded(spread.y), rounded(spread.z)};
    case 5:
        return Point(box.center()) + random.vector(turn % 16 == 5 ? 20 : 1e5) * size;
    case 6:
        return turn % 24 == 6    ? Point(box.center())
               : turn % 48 == 14 ? Point(0, double(INFINITY), 0)
                                 : Point(PointFlt(spread));
    default:
        return spread;
    }
}

} // namespace

/// Triangle, weights and distance are those of the plain walk, to the last bit: by the tree, by the instance that walks
/// and then makes a tree for itself, and for all points at once.
TEST(ClosestPoint, AllWaysLeadToTheAnswersOfTheWalk)
{
    Random random(11);
    for (const CompactMesh& mesh : makeZoo(random)) {
        const Indexed on(mesh, random.oneIn(3) ? 4 : 16);
        MeshClosestPoint byTree(on.mesh, *on.octree, on.tris, on.tree), byItself(on.mesh, *on.octree, on.tris);
        std::vector<Point> points;
        std::vector<Found> expected;
        for (int i = 0; i < 240; ++i) {
            points.push_back(makeZooQuery(random, mesh, i));
            expected.push_back(byTris(on, points.back()));
            MeshCoord tree, itself;
            const double treeDistance = byTree.compute(points.back(), &tree);
            const double distance = byItself.compute(points.back(), &itself);
            ASSERT_EQ(makeFound(treeDistance, tree), expected.back()) << i << " size " << znTest::boxOf(mesh).maxX;
            ASSERT_EQ(makeFound(distance, itself), expected.back()) << i;
        }
        for (const int numThreads : {1, 2, 7}) {
            znUtil::ThreadPool pool(numThreads);
            std::vector<MeshCoord> places(points.size());
            std::vector<double> distances(points.size());
            MeshClosestPoint many(on.mesh, *on.octree, on.tris);
            ASSERT_TRUE(
                many.compute(points.data(), int(points.size()), places.data(), distances.data(), nullptr, pool));
            for (size_t i = 0; i < points.size(); ++i) ASSERT_EQ(makeFound(distances[i], places[i]), expected[i]);
        }
    }
}

/// An octree whose box is wider than the mesh, a cube, or too small for it.
TEST(ClosestPoint, TheBoxOfTheOctreeDecidesWhatTheWalkFinds)
{
    Random random(5);
    CompactMesh mesh;
    znTest::makeTorus(mesh, 30, 20);
    const TriangleTree tree(mesh);
    for (const float wider : {0.5f, -0.2f}) {
        Indexed on(mesh);
        BoundingBox box = znTest::boxOf(mesh);
        box.extend(wider);
        if (wider > 0) box.extendToCube();
        on.octree = new Octree(mesh.getNumVertices(), mesh.getVerticesRaw(), box, true, 5);
        computeOctreeTris(on.mesh, *on.octree, on.tris);
        MeshClosestPoint closest(on.mesh, *on.octree, on.tris, tree);
        for (const Point& query : makeQueries(random, mesh, 40)) {
            MeshCoord coord;
            const double distance = closest.compute(query, &coord);
            ASSERT_EQ(makeFound(distance, coord), byTris(on, query));
        }
    }
}

TEST(ClosestPoint, ManyAtOnceReportTheirProgressAndCanBeStopped)
{
    CompactMesh sphere;
    znTest::makeSphere(sphere, 4);
    const Indexed on(sphere);
    MeshClosestPoint closest(on.mesh, *on.octree, on.tris, on.tree);
    Random random(3);
    std::vector<Point> points(5000);
    for (Point& point : points) point = random.point(2.0);
    const int count = int(points.size());
    std::vector<double> distances(points.size(), -1.0), all(points.size());
    EXPECT_TRUE(closest.compute(points.data(), 0, nullptr, nullptr));
    ASSERT_TRUE(closest.compute(points.data(), count, nullptr, all.data()));
    for (const double stopAt : {0.0, 0.3, 2.0}) {
        znUtil::Progress progress;
        double last = 0;
        progress.setObserver([&](double fraction, const char*) {
            EXPECT_GE(fraction, last);
            last = fraction;
            if (fraction > stopAt) progress.cancel();
        });
        if (stopAt == 0) progress.cancel();
        std::fill(distances.begin(), distances.end(), -1.0);
        EXPECT_EQ(closest.compute(points.data(), count, nullptr, distances.data(), &progress), stopAt > 1);
        EXPECT_EQ(distances == all, stopAt > 1);
        for (size_t i = 0; i < points.size(); ++i) ASSERT_TRUE(distances[i] == -1.0 || distances[i] == all[i]);
        EXPECT_EQ(progress.get() == 1.0, stopAt > 1);
    }
}

/// One triangle over a cloud of tiny ones spans leaves that have none of its vertices: every engine finds its middle.
TEST(ClosestPoint, ALargeTriangleIsFoundInLeavesWithoutItsVertices)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, 4, 0.5);
    const int numVertices = mesh.getNumVertices(), numTriangles = mesh.getNumTriangles();
    mesh.resizeVertexArray(numVertices + 3);
    mesh.resizeTriangleArray(numTriangles + 1);
    mesh.getVertices()[numVertices].set(-40, -40, 1);
    mesh.getVertices()[numVertices + 1].set(40, -40, 1);
    mesh.getVertices()[numVertices + 2].set(0, 80, 1);
    mesh.getTriangles()[numTriangles] = {{numVertices, numVertices + 1, numVertices + 2}};
    BoundingBox box;
    meshBoundingBox(mesh, box);
    const Octree octree(mesh.getNumVertices(), mesh.getVerticesRaw(), box, true, 16);
    OctreeTris tris;
    computeOctreeTris(mesh, octree, tris);
    MeshAdjTris adjTris;
    meshAdjTris(mesh, adjTris);
    MeshClosestPoint closest(mesh, octree, tris);
    Random random(7);
    expectEngines(Indexed(mesh), makeQueries(random, mesh, 20));
    for (int i = 0; i < 500; ++i) {
        const Point p(random.real(-15, 15), random.real(-15, 15), random.real(0.9, 30));
        MeshCoord found, other;
        double nearest = p.z > 1 ? p.z - 1 : 1 - p.z;
        if (distance(p, Point::origin) < 0.5 + nearest) continue; // the sphere is nearer
        ASSERT_NEAR(closest.compute(p, &found), nearest, 1e-12);
        ASSERT_EQ(found.triangle, numTriangles);
        ASSERT_NEAR(meshClosestPoint(mesh, octree, adjTris, p, &other), nearest, 1e-12);
    }
}
