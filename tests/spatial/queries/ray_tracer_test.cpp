#include "znGeom/spatial/queries/ray_tracer.h"

#include <limits>
#include <thread>
#include <tuple>

#include <gtest/gtest.h>

#include "tests/spatial/spatial_support.h"
#include "tests/support/allocations.h"
#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"
#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/foundation/mesh/mesh_transform.h"
#include "znGeom/spatial/queries/ray_pick.h"
#include "znGeom/spatial/trees/octree_partition.h"

using namespace znGeom;
using namespace znLinear;
using znTest::Random;

namespace {

constexpr double nowhere = double(BoundingBox::largest);

struct Indexed
{
    CompactMesh mesh;
    zn::Reference<Octree> octree;
    OctreeTris tris;
    TriangleTree tree;

    explicit Indexed(const CompactMesh& source, int leafCapacity = 16)
        : mesh(source), octree(znTest::makeOctree(mesh, leafCapacity)), tree(mesh)
    {
        computeOctreeTris(mesh, *octree, tris);
    }
    RayTracer byTree() const { return {*octree, tris, &mesh, tree}; }
    RayTracer byWalk() const { return {*octree, tris, &mesh}; }
};

struct Cast
{
    PointFlt origin;
    Vector direction;
};

/// Distance, triangle and weights.
using Found = std::tuple<double, int, double, double, double>;

Found castAtAll(const CompactMesh& mesh, const Cast& cast)
{
    Found nearest(nowhere, -1, 0, 0, 0);
    for (int i = 0; i < mesh.getNumTriangles(); ++i) {
        const MeshTriangle& triangle = mesh.getTriangles()[i];
        const auto corner = [&](int k) { return &mesh.getVertices()[triangle[k]].x; };
        double t = 0, u = 0, v = 0;
        if (!intersectRayTriangle(&cast.direction.dx, &cast.origin.x, corner(0), corner(1), corner(2), t, u, v))
            continue;
        if (t > double(epsilonTolFlt) && t < std::get<0>(nearest)) nearest = Found(t, i, 1 - u - v, u, v);
    }
    return nearest;
}

Found castBy(RayTracer& tracer, const Cast& cast)
{
    tracer.setFindNearestHit(true);
    const bool hit = tracer.intersect(cast.origin, cast.direction);
    const MeshCoord& coord = tracer.intersectionCoord();
    EXPECT_EQ(hit, coord.valid());
    return {tracer.intersectionDist(), coord.triangle, coord.weights[0], coord.weights[1], coord.weights[2]};
}

/// By turns: anywhere; along an axis, from whole and half numbers; through a vertex; along a side; in the plane of a
/// triangle, or nearly; from far away.
Cast makeCast(Random& random, const CompactMesh& mesh, int round)
{
    const double size = double(znTest::boxOf(mesh).diagonalLength());
    const MeshTriangle& triangle = mesh.getTriangles()[random.below(mesh.getNumTriangles())];
    const auto corner = [&](int i) { return mesh.getVertices()[triangle[i]].asPoint(); };
    const Point a = corner(0), b = corner(1), c = corner(2), from = random.point(size);
    const Vector axes[] = {Vector::x, Vector::y, Vector::z};
    switch (round % 8) {
    case 0:
        return {PointFlt(from), random.vector(round % 3 ? 1.0 : 1000.0)};
    case 1:
        return {znTest::gridPoint(random, 1), axes[random.below(3)] * (random.oneIn(2) ? 2.0 : -1.0)};
    case 2:
        return {PointFlt(from), a - Point(PointFlt(from))};
    case 3:
        return {PointFlt(a + (a - b) * 2.0), b - a};
    case 4:
        return {PointFlt(a + (c - b) * random.real(-3, 3)), b - a + (c - a) * random.real()};
    case 5:
        return {PointFlt(from), a + (b - a) * 0.5 - Point(PointFlt(from))};
    case 6:
        return {PointFlt(a + random.vector((round % 16 == 6 ? 1e4 : 1e9) * size)), Vector()};
    default:
        return {PointFlt(a), random.vector()};
    }
}

} // namespace

TEST(RayTracer, FindsWhatTestsOfAllTrianglesFind)
{
    Random random(1);
    CompactMesh torus, cube, sphere, soup = znTest::makeRandomSoup(random, 300), grid = znTest::makeGrid(9, 9);
    znTest::makeTorus(torus, 40, 21, 2, 0.7), znTest::makeCube(cube), znTest::makeSphere(sphere, 4, 3);
    CompactMesh doubled = cube;
    doubled.resizeTriangleArray(36);
    for (int i = 0; i < 24; ++i) doubled.getTriangles()[12 + i] = cube.getTriangles()[(i * 7) % 12];
    CompactMesh apart = torus;
    for (int i = 0; i < 3 * apart.getNumVertices(); ++i) apart.getVerticesRaw()[i] += 5000;
    int numHits = 0;
    for (const CompactMesh& mesh : {torus, cube, sphere, soup, grid, doubled, apart}) {
        const Indexed on(mesh, 4);
        for (int round = 0; round < 4000; ++round) {
            Cast cast = makeCast(random, mesh, round);
            if (cast.direction.length2() == 0) {
                const Point at = mesh.getVertices()[random.below(mesh.getNumVertices())].asPoint();
                cast.direction = at - Point(cast.origin);
            }
            RayTracer byTree = on.byTree(), byWalk = on.byWalk();
            const Found expected = castAtAll(mesh, cast);
            ASSERT_EQ(castBy(byTree, cast), expected) << round;
            ASSERT_EQ(castBy(byWalk, cast), expected) << round;
            const bool hit = std::get<1>(expected) >= 0;
            numHits += hit;
            for (RayTracer* any : {&byTree, &byWalk}) {
                any->setFindNearestHit(false);
                ASSERT_EQ(any->intersect(cast.origin, cast.direction), hit);
                ASSERT_EQ(any->intersectionDist(), nowhere);
                ASSERT_FALSE(any->intersectionCoord().valid());
            }
        }
    }
    EXPECT_GT(numHits, 8000);
}

TEST(RayTracer, WalksAndThenMakesATreeWithTheSameAnswers)
{
    Random random(2);
    CompactMesh mesh;
    znTest::makeSphere(mesh, 5);
    const Indexed on(mesh);
    RayTracer byTree = on.byTree(), alone = on.byWalk();
    const int numCasts = 4000;
    std::vector<Cast> casts(numCasts);
    for (Cast& cast : casts) cast = {znTest::pointFlt(random, 2), random.vector(1000)};
    for (const Cast& cast : casts) ASSERT_EQ(castBy(alone, cast), castBy(byTree, cast));
    const long before = znTest::numAllocations();
    for (const Cast& cast : casts) castBy(alone, cast), castBy(byTree, cast);
    EXPECT_EQ(znTest::numAllocations(), before);

    // Two threads, with a tracer each.
    std::vector<Found> found[2];
    const auto work = [&](std::vector<Found>& results) {
        RayTracer tracer = on.byTree();
        for (const Cast& cast : casts) results.push_back(castBy(tracer, cast));
    };
    std::thread other(work, std::ref(found[0]));
    work(found[1]);
    other.join();
    EXPECT_EQ(found[0], found[1]);
}

TEST(RayTracer, SeesTrianglesByTheirDeterminantAndBackSidesByTheirDistance)
{
    CompactMesh small;
    znTest::makeSphere(small, 6, 0.02);
    const Indexed on(small);
    RayTracer byTree = on.byTree(), byWalk = on.byWalk();
    const Cast plain{{1, 0.001f, 0.002f}, {-1, 0, 0}}, longer{plain.origin, plain.direction * 1e4};
    CompactMesh scaled = small;
    meshTransform(scaled, AffineMatrixFlt(1000.0f));
    const Indexed onScaled(scaled);
    RayTracer inScaled = onScaled.byTree();
    for (RayTracer* tracer : {&byTree, &byWalk}) {
        EXPECT_EQ(std::get<0>(castBy(*tracer, plain)), nowhere);
        EXPECT_NEAR(std::get<0>(castBy(*tracer, longer)), 0.98e-4, 1e-7);
    }
    const Found far = castBy(inScaled, {{1000, 1, 2}, {-1, 0, 0}});
    EXPECT_NEAR(std::get<0>(far), 980, 1);
    EXPECT_EQ(std::get<1>(far), std::get<1>(castBy(byTree, longer)));

    // From within, all sides are back sides.
    CompactMesh cube;
    znTest::makeCube(cube);
    const Indexed onCube(cube);
    RayTracer inside = onCube.byTree();
    const Cast outward{{0, 0.1f, 0.2f}, {1, 0, 0}};
    EXPECT_EQ(std::get<0>(castBy(inside, outward)), 1);
    const znTest::CullDistance cull(1.5);
    EXPECT_EQ(std::get<0>(castBy(inside, outward)), nowhere);
    EXPECT_EQ(std::get<0>(castBy(inside, {{-3, 0.1f, 0.2f}, {1, 0, 0}})), 2);
}

TEST(RayTracer, HitsNothingWhereThereIsNothing)
{
    CompactMesh cube, none;
    znTest::makeCube(cube);
    const Indexed on(cube), onNone(none);
    const float notANumber = std::numeric_limits<float>::quiet_NaN(), endless = std::numeric_limits<float>::infinity();
    RayTracer tracers[] = {on.byTree(), on.byWalk(), onNone.byTree(), onNone.byWalk()};
    for (RayTracer& tracer : tracers) {
        EXPECT_EQ(std::get<0>(castBy(tracer, {{5, 0, 0}, {0, 0, 0}})), nowhere);
        EXPECT_EQ(std::get<0>(castBy(tracer, {{5, 0, 0}, {1, 0, 0}})), nowhere);
        EXPECT_EQ(std::get<0>(castBy(tracer, {{notANumber, 0, 0}, {1, 0, 0}})), nowhere);
        EXPECT_EQ(std::get<0>(castBy(tracer, {{endless, 0, 0}, {-1, 0, 0}})), nowhere);
        EXPECT_EQ(std::get<0>(castBy(tracer, {{5, 0, 0}, {-double(endless), 0, 0}})), nowhere);
        EXPECT_EQ(std::get<0>(castBy(tracer, {{5, 0, 0}, {double(notANumber), 1, 0}})), nowhere);
    }
    // Lengths of the direction from one end of the range to the other.
    for (const double length : {1e-5, 1.0, 1e30, 1e100})
        EXPECT_DOUBLE_EQ(std::get<0>(castBy(tracers[0], {{5, 0.1f, 0.3f}, {-length, 0, 0}})),
                         4 / length > 1e-7 ? 4 / length : nowhere);
}

TEST(RayPick, TakesTheFirstTriangleFromTheNearCapOn)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, 4, 2);
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    const auto octree = znTest::makeOctree(mesh, 16);
    Random random(5);
    for (int round = 0; round < 300; ++round) {
        const Frustum frustum = znTest::randomFrustum(random, 0.5);
        const Line line = frustum.getRay();
        const znTest::LogRecorder log;
        PointFlt hit(7, 7, 7);
        int triangle = -7;
        const bool found = meshRayIntersect(mesh, *octree, adjTris, frustum, hit, &triangle);
        PointFlt again;
        EXPECT_EQ(meshRayIntersect(mesh, *octree, adjTris, frustum, again, nullptr), found);
        ASSERT_EQ(log.lines().size(), 2u);
        if (found) {
            PointFlt plain;
            Point wide;
            ASSERT_TRUE(meshRayTriIntersect(mesh, triangle, line, plain));
            ASSERT_TRUE(meshRayTriIntersect(mesh, triangle, line, wide));
            EXPECT_EQ(distance(Point(plain), Point(hit)) + distance(wide, Point(hit)), 0);
            EXPECT_NEAR(Point(hit).asVector().length(), 2, 0.02);
            EXPECT_EQ(log.count("meshRayIntersect:  ("), 2);
        } else {
            EXPECT_EQ(hit.x, 7);
            EXPECT_EQ(triangle, -7);
            EXPECT_EQ(znTest::withoutTimes(log)[0], "meshRayIntersect:  no intersection # s\n");
        }
    }
}
