#include "znGeom/spatial/queries/mesh_intersect.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/spatial/spatial_support.h"
#include "tests/support/timed_lines.h"
#include "znGeom/foundation/mesh/triangle_box.h"
#include "znGeom/spatial/trees/octree_partition.h"

namespace {

using namespace znGeom;
using znLinear::AffineMatrix;
using znLinear::Point;
using znLinear::Vector;
using znTest::LogRecorder;
using znTest::Random;
using znUtil::Progress;
using znUtil::ThreadPool;

using Pairs = std::deque<MeshIntersectPair>;

/// The numbers of the triangles that cross.
using Crossings = std::vector<std::pair<int, int>>;

bool crossesAny(const Point (&a)[3], const Point (&b)[3])
{
    Point p, q;
    return intersect(a[0], a[1], a[2], b[0], b[1], b[2], p, q);
}

struct Corners
{
    Point at[3];
    Corners(const CompactMesh& mesh, int triangle, const AffineMatrix& matrix = {})
    {
        for (int i = 0; i < 3; ++i) at[i] = mesh.getVertices()[mesh.getTriangles()[triangle][i]].asPoint() * matrix;
    }
    bool isFinite() const
    {
        const Vector sum = (at[0] - at[1]) + (at[2] - at[1]);
        return std::isfinite(sum.dx + sum.dy + sum.dz);
    }
};

Crossings selfCrossings(const CompactMesh& mesh)
{
    Crossings result;
    for (int t = 0; t < mesh.getNumTriangles(); ++t)
        for (int u = 0; u < t; ++u) {
            const MeshTriangle &a = mesh.getTriangles()[t], &b = mesh.getTriangles()[u];
            if (hasVertex(a, b[0]) || hasVertex(a, b[1]) || hasVertex(a, b[2])) continue;
            const Corners cornersA(mesh, t), cornersB(mesh, u);
            if (!cornersA.isFinite() || !cornersB.isFinite()) continue;
            if (crossesAny(cornersA.at, cornersB.at)) result.emplace_back(t, u);
        }
    return result;
}

Crossings crossings(const CompactMesh& a, const CompactMesh& b, const AffineMatrix& matrix)
{
    Crossings result;
    for (int i = 0; i < a.getNumTriangles(); ++i)
        for (int j = 0; j < b.getNumTriangles(); ++j)
            if (crossesAny(Corners(a, i, matrix).at, Corners(b, j).at)) result.emplace_back(i, j);
    return result;
}

Crossings numbersOf(const Pairs& first, const Pairs& second)
{
    Crossings result;
    for (size_t i = 0; i < first.size(); ++i) result.emplace_back(first[i].start.triangle, second[i].start.triangle);
    return result;
}

/// Two entries for each crossing.
Crossings numbersOf(const Pairs& result)
{
    Crossings numbers;
    for (size_t i = 0; i < result.size(); i += 2)
        numbers.emplace_back(result[i].start.triangle, result[i + 1].start.triangle);
    return numbers;
}

/// Two spheres of a few hundred triangles in one mesh, the second moved.
CompactMesh makeTwoSpheres(const Vector& move)
{
    CompactMesh sphere, both;
    znTest::makeSphere(sphere, 3);
    const int numVertices = sphere.getNumVertices(), numTriangles = sphere.getNumTriangles();
    both.resizeVertexArray(2 * numVertices);
    both.resizeTriangleArray(2 * numTriangles);
    for (int v = 0; v < numVertices; ++v) {
        const Point moved = sphere.getVertices()[v].asPoint() + move;
        both.getVertices()[v] = sphere.getVertices()[v];
        both.getVertices()[numVertices + v].set(&moved.x);
    }
    for (int corner = 0; corner < 3 * numTriangles; ++corner) {
        both.getTrianglesRaw()[corner] = sphere.getTrianglesRaw()[corner];
        both.getTrianglesRaw()[3 * numTriangles + corner] = sphere.getTrianglesRaw()[corner] + numVertices;
    }
    return both;
}

bool sameBits(const MeshCoord& a, const MeshCoord& b)
{
    return a.triangle == b.triangle && std::equal(a.weights, a.weights + 3, b.weights);
}

TEST(MeshIntersect, FindsWhatAllPairsShowInOrderOnAnyNumberOfThreads)
{
    Random random(3);
    const CompactMesh meshes[] = {makeTwoSpheres({0.3, 0.2, 0.1}), znTest::makeRandomSoup(random, 1200)};
    for (const CompactMesh& mesh : meshes) {
        const Crossings expected = selfCrossings(mesh);
        EXPECT_GT(expected.size(), 100u);
        Pairs first;
        for (const int numThreads : {1, 2, 7}) {
            ThreadPool pool(numThreads);
            Progress progress;
            Pairs result(3);
            MeshIntersect(mesh, pool).selfIntersect(progress, result);
            EXPECT_EQ(numbersOf(result), expected);
            EXPECT_EQ(progress.get(), 1.0);
            if (numThreads == 1) first = result;
            for (size_t i = 0; i < result.size(); ++i)
                ASSERT_TRUE(sameBits(result[i].start, first[i].start) && sameBits(result[i].end, first[i].end));
        }
        for (size_t i = 0; i < first.size(); i += 2)
            for (const auto end : {&MeshIntersectPair::start, &MeshIntersectPair::end}) {
                const Point p = (first[i].*end).evaluate(mesh.getVertices(), mesh.getTriangles());
                const Point q = (first[i + 1].*end).evaluate(mesh.getVertices(), mesh.getTriangles());
                ASSERT_LT(distance(p, q), 1e-8);
            }
    }
}

TEST(MeshIntersect, FindsWhatAllPairsShowBetweenPlacedMeshes)
{
    CompactMesh a, b;
    znTest::makeTorus(a, 40, 16);
    znTest::makeSphere(b, 3, 2.0);
    AffineMatrix matrix;
    matrix.setFrame(Point(0.3, -0.2, 1.5), Vector(0, 1.5, 0.2), Vector(-2, 0, 0), Vector(0, -0.3, 1));
    const Crossings expected = crossings(a, b, matrix);
    EXPECT_GT(expected.size(), 100u);

    for (const int numThreads : {1, 7}) {
        ThreadPool pool(numThreads);
        Progress progress;
        Pairs resultA(1), resultB;
        MeshIntersect(a, pool).intersect(b, matrix, progress, resultA, resultB);
        EXPECT_EQ(numbersOf(resultA, resultB), expected);
        for (size_t i = 0; i < resultA.size(); ++i) {
            const Point onA = resultA[i].end.evaluate(a.getVertices(), a.getTriangles()) * matrix;
            ASSERT_LT(distance(onA, resultB[i].end.evaluate(b.getVertices(), b.getTriangles())), 1e-12);
        }
    }
}

TEST(MeshIntersect, LeavesResultsAloneWhereBoxesAreApart)
{
    CompactMesh a, b;
    znTest::makeCube(a);
    znTest::makeCube(b);
    const zn::Reference<Octree> octreeA = znTest::makeOctree(a, 16), octreeB = znTest::makeOctree(b, 16);
    OctreeTris trisA, trisB;
    computeOctreeTris(a, *octreeA, trisA);
    computeOctreeTris(b, *octreeB, trisB);
    MeshIntersect crossing(a, *octreeA, trisA);
    Progress progress;
    LogRecorder log;
    Pairs resultA(2), resultB(3);
    AffineMatrix matrix;
    const auto run = [&] { crossing.intersect(b, *octreeB, trisB, matrix, progress, resultA, resultB); };

    matrix.setRow(3, Vector(2.5, 0, 0));
    run();
    EXPECT_EQ(resultA.size(), 2u);
    EXPECT_EQ(resultB.size(), 3u);
    matrix.setRow(3, Vector(0.5, 0.4, 0.3));
    run();
    EXPECT_EQ(resultA.size(), resultB.size());
    const int numFound = static_cast<int>(resultA.size());
    EXPECT_EQ(numFound, static_cast<int>(crossings(a, b, matrix).size()));
    matrix.setRow(2, Vector());
    run();
    EXPECT_TRUE(resultA.empty() && resultB.empty()) << "a flat matrix";
    crossing.selfIntersect(progress, resultA);
    const znTest::Lines expected = {"znGeom::meshIntersect: bboxes don't overlap\n",
                                    "meshIntersect: triangles1(12) triangles2(12)\n    " + std::to_string(numFound) +
                                        " intersections, # s\n",
                                    "meshIntersect: triangles1(12) triangles2(12)\n    0 intersections, # s\n",
                                    "znGeom::meshSelfIntersect: 12 triangles\n    0 tri/tri intersections\n    # s\n"};
    EXPECT_EQ(znTest::withoutTimes(log), expected);
}

// A fan that was split from its vertex touches the rest there; a fold through a shared vertex is not looked at.
TEST(MeshIntersect, NeighboursAndTouchingFansDoNotCross)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, 3);
    const int split = mesh.getNumVertices();
    mesh.resizeVertexArray(split + 1);
    mesh.getVertices()[split] = mesh.getVertices()[60];
    for (int t = 0, changed = 0; t < mesh.getNumTriangles() && changed < 3; ++t)
        if (const int corner = cornerOf(mesh.getTriangles()[t], 60); corner >= 0) {
            mesh.getTriangles()[t][corner] = split;
            ++changed;
        }
    Progress progress;
    Pairs result;
    MeshIntersect(mesh).selfIntersect(progress, result);
    EXPECT_EQ(numbersOf(result), selfCrossings(mesh));
    EXPECT_TRUE(result.empty());

    const MeshVertex folded[] = {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}, {1, 1, -1}, {1, 1, 1}};
    const int corners[] = {0, 1, 2, 0, 3, 4};
    mesh = CompactMesh();
    mesh.copyVertices(5, folded);
    mesh.copyTriangles(2, corners);
    MeshIntersect(mesh).selfIntersect(progress, result);
    EXPECT_TRUE(result.empty());
}

TEST(MeshIntersect, StopsAtACancelWithSomeOfTheCrossings)
{
    const CompactMesh mesh = makeTwoSpheres({0.3, 0.2, 0.1});
    const Crossings all = selfCrossings(mesh);
    MeshIntersect crossing(mesh, ThreadPool::getSingleThreadedPool());
    Pairs result(1);
    Progress cancelled;
    cancelled.cancel();
    crossing.selfIntersect(cancelled, result);
    EXPECT_TRUE(result.empty());

    Progress progress;
    progress.setObserver([&progress](double fraction, const char*) {
        if (fraction > 0.4) progress.cancel();
    });
    crossing.selfIntersect(progress, result);
    const Crossings some = numbersOf(result);
    EXPECT_LT(some.size(), all.size());
    EXPECT_TRUE(std::includes(all.begin(), all.end(), some.begin(), some.end()));
    progress.reset();
    progress.setObserver({});
    crossing.selfIntersect(progress, result);
    EXPECT_EQ(numbersOf(result), all);
}

} // namespace
