#include "znGeom/spatial/closest_point.h"

#include <limits>
#include <regex>
#include <set>

#include <gtest/gtest.h>

#include "tests/support/allocations.h"
#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/analysis/edges.h"
#include "znGeom/spatial/octree_closest.h"
#include "znGeom/spatial/octree_partition.h"

using namespace znGeom;
using namespace znLinear;
using znTest::Random;

namespace {

constexpr double largest = std::numeric_limits<double>::max();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct Indexed
{
    CompactMesh mesh;
    BoundingBox box;
    zn::Reference<Octree> octree;
    OctreeTris tris;
    MeshAdjTris adjTris;
    std::vector<BoundingBox> neighbourBoxes;
    double longestEdge;

    explicit Indexed(const CompactMesh& source, int leafCapacity = 16) : mesh(source)
    {
        meshBoundingBox(mesh, box);
        const CompactMesh& read = mesh;
        octree = new Octree(read.getNumVertices(), read.getVerticesRaw(), box, true, leafCapacity);
        computeOctreeTris(mesh, *octree, tris);
        meshAdjTris(mesh, adjTris);
        neighbourBoxes.resize(static_cast<size_t>(mesh.getNumVertices()));
        meshComputeNeighbourBBoxes(mesh, adjTris, neighbourBoxes.data());
        longestEdge = meshLongestEdge(mesh);
    }
};

/// What a query finds.
struct Found
{
    double distance;
    MeshCoord coord;

    friend bool operator==(const Found& a, const Found& b)
    {
        return a.distance == b.distance && a.coord.triangle == b.coord.triangle &&
               std::equal(a.coord.weights, a.coord.weights + 3, b.coord.weights);
    }
};

std::ostream& operator<<(std::ostream& out, const Found& found)
{
    return out << found.distance << " triangle " << found.coord.triangle;
}

/// Keeps the first of the strictly nearer triangles, testing each once and all of it.
class PlainSearch
{
public:
    PlainSearch(const CompactMesh& mesh, const Point& query, double limit2)
        : best2(limit2), m_mesh(mesh), m_query(query)
    {}
    void test(int triangle)
    {
        if (!m_seen.insert(triangle).second) return;
        const CompactMesh& mesh = m_mesh;
        const MeshCoord candidate = meshTriClosestPt(mesh.getVerticesRaw(), mesh.getTrianglesRaw(), triangle, m_query);
        if (!candidate.valid()) return;
        const double d2 = distance2(m_query, candidate.evaluate(mesh.getVertices(), mesh.getTriangles()));
        if (!(best2 > d2)) return;
        best2 = d2;
        coord = candidate;
    }
    Found found() const { return {std::sqrt(best2), coord}; }

    double best2;
    MeshCoord coord;

private:
    const CompactMesh& m_mesh;
    Point m_query;
    std::set<int> m_seen;
};

Found byTris(const Indexed& on, const Point& query)
{
    PlainSearch search(on.mesh, query, largest);
    for (OctreeClosestIt it(*on.octree, query); it.valid() && !(it.getDistance2() >= search.best2); it.next())
        for (int i = 0; i < on.tris.numTris(it.get().node->leafIndex); ++i)
            search.test(on.tris.firstTri(it.get().node->leafIndex)[i]);
    return search.found();
}

Found byVertices(const Indexed& on, const Point& query, double longestEdge, double limit2)
{
    const double reach2 = (longestEdge / std::sqrt(2.0)) * (longestEdge / std::sqrt(2.0));
    PlainSearch search(on.mesh, query, limit2);
    for (OctreeClosestIt it(*on.octree, query); it.valid(); it.next()) {
        const OctreeIterator leaf = it.get();
        if (leaf.box.distance2(PointFlt(query)) >= std::max(reach2, search.best2)) break;
        for (int i = leaf.node->firstPoint; i < leaf.node->endPoint; ++i) {
            const int v = on.octree->pointIndices()[i];
            if (!(search.best2 > on.neighbourBoxes[static_cast<size_t>(v)].distance2(PointFlt(query)))) continue;
            for (int j = 0; j < on.adjTris.numTris(v); ++j) search.test(on.adjTris.triIndices(v)[j]);
        }
    }
    return search.found();
}

Found byBruteForce(const Indexed& on, const Point& query)
{
    PlainSearch search(on.mesh, query, largest);
    for (int t = 0; t < on.mesh.getNumTriangles(); ++t) search.test(t);
    return search.found();
}

/// What comparing leaves with a query narrowed to `float` may cost.
double narrowing(const Indexed& on, const Point& query)
{
    return 2e-7 * (query.asVector().length() + static_cast<double>(on.box.diagonalLength()) +
                   static_cast<double>(on.box.maxPt().asVector().length()));
}

/// Both engines against their plain forms, bit for bit; against brute force by distance.
void expectEngines(const Indexed& on, const std::vector<Point>& queries, bool vertexEngineIsExact = true)
{
    MeshClosestPoint engine(on.mesh, *on.octree, on.tris);
    for (const Point& query : queries) {
        Found actual{0, {}};
        actual.distance = engine.compute(query, &actual.coord);
        ASSERT_EQ(actual, byTris(on, query));
        const double nearest = byBruteForce(on, query).distance;
        ASSERT_NEAR(actual.distance, nearest, narrowing(on, query));

        const BoundingBox* const boxes[] = {nullptr, on.neighbourBoxes.data()};
        for (const BoundingBox* given : boxes) {
            Found vertexwise{0, {}};
            vertexwise.distance = meshClosestPoint(on.mesh, *on.octree, on.adjTris, query, on.longestEdge, largest,
                                                   given, &vertexwise.coord);
            ASSERT_EQ(vertexwise, byVertices(on, query, on.longestEdge, largest));
            if (vertexEngineIsExact) {
                ASSERT_NEAR(vertexwise.distance, nearest, narrowing(on, query));
            }
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

CompactMesh makeTriangles(const std::vector<Point>& corners)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(static_cast<int>(corners.size()));
    mesh.resizeTriangleArray(static_cast<int>(corners.size() / 3));
    for (size_t i = 0; i < corners.size(); ++i) {
        mesh.getVertices()[i].set(&corners[i].x);
        mesh.getTrianglesRaw()[i] = static_cast<int>(i);
    }
    return mesh;
}

CompactMesh makeRandomTriangles(Random& random, int count)
{
    std::vector<Point> corners;
    for (int i = 0; i < count; ++i) {
        const Point middle = random.point();
        const double size = random.oneIn(10) ? 2.0 : 0.1;
        for (int corner = 0; corner < 3; ++corner) corners.push_back(middle + random.vector(size));
        if (random.oneIn(10)) corners.back() = corners[corners.size() - 2];
    }
    return makeTriangles(corners);
}

/// The walk as it is stated: a heap of whole iterators, distances by the boxes themselves.
class PlainClosestIt
{
public:
    PlainClosestIt(const Octree& octree, const Point& query) : m_query(query)
    {
        push(octree.getRoot());
        if (!octree.getRoot().node->isLeaf) next();
    }
    bool valid() const { return !m_heap.empty(); }
    const OctreeIterator& get() const { return m_heap[0].cell; }
    double distance2() const { return m_heap[0].distance2; }
    void next()
    {
        do {
            const OctreeIterator cell = pop();
            for (int child = 0; child < 8; ++child) {
                OctreeIterator below = cell;
                if (below.descend(child)) push(below);
            }
        } while (valid() && !get().node->isLeaf);
    }

private:
    struct Entry
    {
        double distance2;
        OctreeIterator cell;
    };
    void push(const OctreeIterator& cell)
    {
        m_heap.push_back({cell.box.distance2(m_query), cell});
        for (size_t at = m_heap.size() - 1; at > 0 && m_heap[(at - 1) / 2].distance2 > m_heap[at].distance2;
             at = (at - 1) / 2)
            std::swap(m_heap[at], m_heap[(at - 1) / 2]);
    }
    OctreeIterator pop()
    {
        const OctreeIterator top = m_heap[0].cell;
        m_heap[0] = m_heap.back();
        m_heap.pop_back();
        for (size_t at = 0, child = 1; child < m_heap.size(); at = child, child = 2 * at + 1) {
            if (child + 1 < m_heap.size() && m_heap[child].distance2 > m_heap[child + 1].distance2) ++child;
            if (!(m_heap[at].distance2 > m_heap[child].distance2)) break;
            std::swap(m_heap[at], m_heap[child]);
        }
        return top;
    }

    PointFlt m_query;
    std::vector<Entry> m_heap;
};

} // namespace

TEST(OctreeClosest, walksAsStatedAlsoAmongEqualDistances)
{
    CompactMesh grid, torus;
    znTest::makeGrid(grid, 17, 17);
    znTest::makeTorus(torus, 40, 20);
    Random random(1);
    for (const CompactMesh* mesh : {&grid, &torus})
        for (const int capacity : {1, 16, 1000000}) {
            const Indexed on(*mesh, capacity);
            OctreeClosestIt it;
            std::vector<Point> queries = makeQueries(random, *mesh, 5);
            queries.push_back({8, 8, 0});
            queries.push_back({notANumber, 0, 0});
            for (const Point& query : queries) {
                PlainClosestIt plain(*on.octree, query);
                int count = 0;
                for (it.reset(*on.octree, query); it.valid(); it.next(), plain.next(), ++count) {
                    ASSERT_EQ(it.get().node, plain.get().node);
                    ASSERT_EQ(it.get().box, plain.get().box);
                    if (!std::isnan(query.x)) {
                        ASSERT_EQ(it.getDistance2(), plain.distance2());
                    }
                }
                ASSERT_EQ(count, on.octree->numLeaves());
                ASSERT_FALSE(plain.valid());
            }
        }
}

TEST(ClosestPoint, enginesEqualTheirPlainForms)
{
    Random random(2);
    CompactMesh torus, scan, grid;
    znTest::makeTorus(torus, 40, 25);
    znTest::makeNoisyScan(scan, 25, 25);
    znTest::makeGrid(grid, 20, 20);
    CompactMesh coincident = grid;
    coincident.resizeTriangleArray(2 * grid.getNumTriangles());
    std::copy_n(grid.getTrianglesRaw(), 3 * grid.getNumTriangles(),
                coincident.getTrianglesRaw() + 3 * grid.getNumTriangles());
    for (const CompactMesh* mesh : {&torus, &scan, &grid, &coincident})
        for (const int capacity : {3, 16, 1000000})
            expectEngines(Indexed(*mesh, capacity), makeQueries(random, *mesh, 12), capacity == 16);
    for (int round = 0; round < 6; ++round) {
        const CompactMesh soup = makeRandomTriangles(random, 150);
        expectEngines(Indexed(soup, 4), makeQueries(random, soup, 6), false);
    }
}

TEST(ClosestPoint, anotherScaleAndPlaceChangesNothing)
{
    Random random(3);
    for (const double scale : {1e-24, 1e-6, 1e5, 1e18}) {
        CompactMesh torus;
        znTest::makeTorus(torus, 30, 20);
        std::vector<Point> queries;
        for (const Point& query : makeQueries(random, torus, 5))
            queries.push_back((query.asVector() * scale + Vector(3 * scale, 0, 0)).asPoint());
        for (int v = 0; v < torus.getNumVertices(); ++v) {
            const Point p = (torus.getVertices()[v].asPoint().asVector() * scale + Vector(3 * scale, 0, 0)).asPoint();
            torus.getVertices()[v].set(&p.x);
        }
        expectEngines(Indexed(torus), queries, false);
    }
}

TEST(ClosestPoint, aTriangleIsFoundInLeavesWithoutItsVertices)
{
    // Many small triangles keep the octree fine; one spans it all, and is the nearest over its middle.
    Random random(4);
    std::vector<Point> corners{{-10, -10, 1}, {10, -10, 1}, {0, 10, 1}};
    for (int i = 0; i < 200; ++i)
        for (const Vector& side : {Vector(), Vector(0.05, 0, 0), Vector(0, 0.05, 0)})
            corners.push_back(Point(-9 + 0.001 * i, 9, -1) + side);
    const Indexed on(makeTriangles(corners));
    MeshClosestPoint engine(on.mesh, *on.octree, on.tris);
    for (int i = 0; i < 100; ++i) {
        const Point query(random.real(-2, 2), random.real(-3, 3), random.real(0, 3));
        MeshCoord coord;
        EXPECT_NEAR(engine.compute(query, &coord), std::fabs(query.z - 1.0), 1e-14);
        EXPECT_EQ(coord.triangle, 0);
    }
}

TEST(ClosestPoint, limitsAndNothingToFind)
{
    CompactMesh sphere;
    znTest::makeSphere(sphere, 3);
    const Indexed on(sphere), nothing{CompactMesh()};
    MeshCoord untouched;
    untouched.triangle = 77;
    // From two units outside: nothing within 1.5, something within 2.5.
    const Point query(0, 0, 3);
    EXPECT_EQ(meshClosestPoint(on.mesh, *on.octree, on.adjTris, query, on.longestEdge, 2.25, nullptr, &untouched), 1.5);
    EXPECT_EQ(untouched.triangle, 77);
    EXPECT_EQ(meshClosestPoint(on.mesh, *on.octree, on.adjTris, query, on.longestEdge, 6.25, nullptr, nullptr), 2.0);

    const double none = std::sqrt(largest);
    MeshClosestPoint engine(nothing.mesh, *nothing.octree, nothing.tris), onSphere(on.mesh, *on.octree, on.tris);
    EXPECT_EQ(engine.compute(query, &untouched), none);
    EXPECT_EQ(meshClosestPoint(nothing.mesh, *nothing.octree, nothing.adjTris, query, &untouched), none);
    const Point noPoint(notANumber, 0, 0);
    EXPECT_EQ(onSphere.compute(noPoint, &untouched), none);
    EXPECT_EQ(meshClosestPoint(on.mesh, *on.octree, on.adjTris, noPoint, &untouched), none);
    EXPECT_EQ(untouched.triangle, 77);
    EXPECT_EQ(onSphere.compute(query, &untouched), 2.0) << "and goes on afterwards";
}

TEST(ClosestPoint, verticesThatAreNoNumbersHideOnlyTheirTriangles)
{
    Random random(6);
    CompactMesh torus;
    znTest::makeTorus(torus, 30, 20);
    for (int i = 0; i < 40; ++i) (&torus.getVertices()[random.below(600)].x)[random.below(3)] = i % 4 ? NAN : INFINITY;
    for (int i = 0; i < 3; ++i) torus.getVertices()[i].set(NAN, NAN, NAN);
    expectEngines(Indexed(torus), makeQueries(random, torus, 1), false);
    CompactMesh noNumbers = torus;
    for (int v = 0; v < 600; ++v) noNumbers.getVertices()[v].set(NAN, NAN, NAN);
    expectEngines(Indexed(noNumbers), {{0, 0, 0}}, false);
}

TEST(ClosestPoint, queriesTakeNoMemoryAndCopiesShareTheirs)
{
    Random random(7);
    CompactMesh torus;
    znTest::makeTorus(torus, 40, 25);
    const Indexed on(torus);
    const std::vector<Point> queries = makeQueries(random, torus, 20);
    MeshClosestPoint engine(on.mesh, *on.octree, on.tris);
    MeshClosestPoint copy(engine);
    double sum = 0, sumOfCopy = 0;
    for (const Point& query : queries) sum += engine.compute(query, nullptr);
    const long before = znTest::numAllocations();
    for (const Point& query : queries) sumOfCopy += copy.compute(query, nullptr);
    EXPECT_EQ(znTest::numAllocations(), before);
    EXPECT_EQ(sum, sumOfCopy);
    const MeshClosestPoint moved(std::move(engine));
}

TEST(ClosestPoint, nearestVertex)
{
    Random random(8);
    CompactMesh scan;
    znTest::makeNoisyScan(scan, 25, 25);
    const Indexed on(scan, 5), nothing{CompactMesh()};
    const znTest::LogRecorder log;
    for (const Point& query : makeQueries(random, scan, 10)) {
        double expected = largest;
        for (int v = 0; v < scan.getNumVertices(); ++v)
            expected = std::min(expected, distance2(query, scan.getVertices()[v].asPoint()));
        // Leaves are compared in float: far away another vertex may come out, as near but for that.
        ASSERT_NEAR(meshClosestVertex2(on.mesh, *on.octree, query) / std::max(expected, 1e-30), expected > 0, 1e-6);
    }
    EXPECT_EQ(meshClosestVertex2(nothing.mesh, *nothing.octree, {0, 0, 0}), largest);
    EXPECT_EQ(log.lines().size(), 51u);
    EXPECT_TRUE(std::regex_match(log.lines().back(), std::regex("   meshClosestVertex: \\d+\\.\\d{6} s\n")));
}

TEST(ClosestPoint, fromARayLevelWithAPoint)
{
    CompactMesh sphere;
    znTest::makeSphere(sphere, 4);
    const Indexed on(sphere);
    // The ray along z passes the point's level at (2, 0, 0.5).
    const Line line(Point(2, 0, -7), Vector::z);
    const MeshCoord coord = meshRayClosestPt(on.mesh, on.longestEdge, *on.octree, on.adjTris, line, Point(-1, 4, 0.5));
    const Point place = coord.evaluate(sphere.getVertices(), sphere.getTriangles());
    const Vector expected = Point(2, 0, 0.5).asVector().normalized().asVector();
    EXPECT_TRUE(equivalent(place, expected.asPoint(), 0.02));
}

/// The search by boxes finds the same triangle and the same bits as the walk leaf by leaf, which is what a table
/// without boxes gets; also where several triangles are exactly as near.
TEST(ClosestPoint, theSearchByBoxesEqualsTheWalk)
{
    znTest::Random random(11);
    CompactMesh meshes[5];
    znTest::makeTorus(meshes[0], 60, 30);
    znTest::makeGrid(meshes[1], 40, 33); // flat: distances to its plane, to sides and to corners are exactly equal
    znTest::makeCube(meshes[2]);
    znTest::makeNoisyScan(meshes[3], 50, 50);
    znTest::makeSphere(meshes[4], 4);
    int ties = 0;
    for (const CompactMesh& mesh : meshes) {
        BoundingBox box;
        meshBoundingBox(mesh, box);
        const Octree octree(mesh.getNumVertices(), mesh.getVerticesRaw(), box, true, 16);
        OctreeTris tris;
        computeOctreeTris(mesh, octree, tris);
        ArrayOfSets table = tris.getData();
        const OctreeTris plain(table);
        ASSERT_TRUE(tris.searchData() && !plain.searchData());
        MeshClosestPoint search(mesh, octree, tris), walk(mesh, octree, plain);
        const Point middle = box.center();
        const double size = static_cast<double>(box.diagonalLength());
        for (int i = 0; i < 4000; ++i) {
            Point p = middle + random.vector(i % 2 ? 0.6 * size : 20 * size);
            if (i % 4 == 0) p = mesh.getVertices()[random.below(mesh.getNumVertices())].asPoint();
            if (i % 3 == 0) p = Point(std::round(2 * p.x) / 2, std::round(2 * p.y) / 2, std::round(2 * p.z) / 2);
            MeshCoord found, expected;
            ASSERT_EQ(search.compute(p, &found), walk.compute(p, &expected));
            ASSERT_EQ(found.triangle, expected.triangle) << p.x << ' ' << p.y << ' ' << p.z;
            ASSERT_TRUE(std::equal(found.weights, found.weights + 3, expected.weights));
            ties += expected.onVertex(mesh.getVerticesRaw(), mesh.getTrianglesRaw(), 1e-9, nullptr);
        }
    }
    EXPECT_GT(ties, 4000);
}
