#include "znGeom/analysis.h"

#include <cmath>
#include <cstring>
#include <numbers>
#include <utility>

#include <gtest/gtest.h>

#include "tests/support/moving_allocator.h"
#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"
#include "znGeom/foundation/linear/tolerance.h"

using namespace znGeom;
using namespace znLinear;

namespace {

constexpr double pi = std::numbers::pi;
constexpr MeshChannel space = MeshChannelVertices;

CompactMesh makeMesh(const std::vector<MeshVertex>& vertices, const std::vector<MeshTriangle>& triangles)
{
    CompactMesh mesh;
    mesh.copyVertices(static_cast<int>(vertices.size()), vertices.data());
    mesh.resizeTriangleArray(static_cast<int>(triangles.size()));
    std::copy(triangles.begin(), triangles.end(), mesh.getTriangles());
    return mesh;
}

/// Triangles in no particular order among few vertices, some degenerate or doubled, with positions whose sums are
/// rounded.
CompactMesh makeTangle(znTest::Random& random, int numVertices, int numTriangles)
{
    std::vector<MeshVertex> vertices(numVertices);
    std::vector<MeshTriangle> triangles(numTriangles);
    for (MeshVertex& v : vertices) v.set(float(random.real()), float(random.real()), float(random.real(-0.3, 1)));
    for (MeshTriangle& t : triangles)
        for (int& corner : t.corners) corner = random.below(numVertices);
    return makeMesh(vertices, triangles);
}

Point cornerOf(const CompactMesh& mesh, int triangle, int i)
{
    return mesh.getVertices()[mesh.getTriangles()[triangle][i % 3]].asPoint();
}

/// The normal of a triangle, computed from corner `first` on.
Normal plainNormal(const CompactMesh& mesh, int triangle, int first = 0)
{
    const Point b = cornerOf(mesh, triangle, first + 1);
    const Vector v = cross(cornerOf(mesh, triangle, first + 2) - b, cornerOf(mesh, triangle, first) - b);
    const double length = std::sqrt(v.length2());
    return length > 0 ? Normal(Promise(), v.dx / length, v.dy / length, v.dz / length) : Normal::z;
}

MeshPlacement place(const CompactMesh* mesh, float scale, float shift = 0)
{
    MeshPlacement placement{AffineMatrixFlt(scale), mesh};
    placement.matrix.m[3][0] = shift;
    return placement;
}

} // namespace

TEST(Normals, OfVerticesAreSumsInTheOrderOfTheTriangles)
{
    znTest::Random random(1);
    for (int round = 0; round < 40; ++round) {
        CompactMesh mesh = makeTangle(random, 3 + random.below(round < 35 ? 30 : 20000), random.below(5000));
        std::vector<float> sums(3 * mesh.getNumVertices());
        for (int i = 0; i < 9 * mesh.getNumTriangles(); ++i)
            sums[3 * mesh.getTrianglesRaw()[i / 3] + i % 3] += float(plainNormal(mesh, i / 9)[i % 3]);
        meshNormalize(sums.data(), mesh.getNumVertices());
        if (round % 2) mesh.setArrayAllocator(new znTest::MovingAllocator);
        for (int again = 0; again < 2; ++again) meshComputeNormals(mesh);
        meshComputeTriangleNormals(mesh);
        const CompactMesh& read = mesh;
        ASSERT_EQ(std::memcmp(read.getNormalsRaw(), sums.data(), sums.size() * sizeof(float)), 0) << round;
        for (int t = 0; t < mesh.getNumTriangles(); ++t)
            ASSERT_EQ(VectorFlt(read.getTriangleNormalsRaw() + 3 * t), VectorFlt(plainNormal(read, t).asVector()));
    }
}

TEST(Normals, WithoutAreaOrLength)
{
    for (const double size : {1.0, 1e-90, 1e90})
        EXPECT_EQ(triNormal({0, 0, 0}, {0, size, 0}, {0, 0, size}), Normal::x) << size;
    for (const double x : {1.0, 0.0, double(NAN), double(INFINITY)})
        EXPECT_EQ(triNormal({x, x, x}, {0, 0, 0}, {2, 2, 2}), Normal::z) << x;

    // A vertex of a triangle towards +x and of a degenerate one, one of a degenerate one, an unused one, one of a
    // triangle and its back.
    CompactMesh mesh = makeMesh({{0, 0, 0}, {9, 9, 9}, {5, 5, 5}, {7, 0, 0}, {0, 2, 0}, {0, 0, 1}, {7, 1, 0}},
                                {{{0, 4, 5}}, {{0, 1, 1}}, {{3, 4, 6}}, {{6, 4, 3}}});
    meshComputeNormals(mesh);
    EXPECT_FLOAT_EQ(mesh.getNormals()[0].x, std::sqrt(0.5f));
    EXPECT_FLOAT_EQ(mesh.getNormals()[0].z, std::sqrt(0.5f));
    for (const int v : {1, 2, 3}) EXPECT_EQ(mesh.getNormals()[v].z, 1.0f);

    const double kept = std::exchange(epsilon2Tol, 0.25);
    MeshNormal normals[] = {{0.5f, 0, 0}, {3, 0, 4}, {NAN, 1, 0}, {3e38f, 3e38f, 0}, {0, -2e19f, 1}, {INFINITY, 0, 0}};
    meshNormalize(&normals[0].x, 6);
    epsilon2Tol = kept;
    EXPECT_EQ(normals[0].z, 1.0f) << "the tolerance itself is too little";
    EXPECT_EQ(normals[1].x, 3 * 0.2f);
    EXPECT_TRUE(std::isnan(normals[2].y) && std::isnan(normals[5].x));
    EXPECT_FLOAT_EQ(normals[3].y, std::sqrt(0.5f));
    EXPECT_EQ(normals[4].y, -1.0f);
}

TEST(Normals, WhatIsReported)
{
    CompactMesh mesh;
    const znTest::ChangeRecorder recorder(mesh);
    const znTest::LogRecorder log;
    const auto run = [&mesh] { meshComputeNormals(mesh), meshNormalize(mesh), meshComputeTriangleNormals(mesh); };
    run();
    EXPECT_TRUE(recorder.changes().empty() && log.lines().empty() && !mesh.getNormals());
    znTest::makeCube(mesh);
    run();
    EXPECT_TRUE(mesh.getNormalsComputed());
    znTest::Change::Channels told;
    for (const znTest::Change& change : recorder.changes()) {
        EXPECT_EQ(change.type, MeshModification::AttributesChanged);
        told.insert(told.end(), change.modified.begin(), change.modified.end());
    }
    using enum MeshModification::Channel;
    EXPECT_EQ(told, (znTest::Change::Channels{Normals, Normals, TriangleNormals}));
    EXPECT_EQ(withoutTimes(log),
              (znTest::Lines{"meshComputeNormals:  vertices 8  triangles 12\n",
                             "meshComputeTriangleNormals:  vertices 8  triangles 12\n", "  normalized: # s\n"}));
}

TEST(Bounds, OfVerticesAndSelections)
{
    znTest::Random random(2);
    for (int round = 0; round < 300; ++round) {
        const int numVertices = round ? random.below(round % 10 ? 60 : 3000) : 0;
        CompactMesh mesh = makeTangle(random, numVertices, 0);
        for (int i = 0; i < numVertices / 3; ++i)
            mesh.getVerticesRaw()[random.below(3 * numVertices)] = random.oneIn(9) ? -INFINITY : NAN;
        BitVector selection(random.below(2 * numVertices + 1));
        for (int i = 0; i < selection.getSize(); ++i)
            if (random.oneIn(1 + round % 40)) selection.setBit(i);
        BoundingBox all, selected, box;
        for (int v = 0; v < numVertices; ++v) {
            all.extend(mesh.getVerticesRaw() + 3 * v);
            if (v < selection.getSize() && selection[v]) selected.extend(mesh.getVerticesRaw() + 3 * v);
        }
        meshBoundingBox(mesh, &selection, box);
        ASSERT_EQ(box, selected) << round;
        meshBoundingBox(mesh, box);
        ASSERT_EQ(box, all) << round;
        double low[3], high[3];
        meshBoundingBox(mesh, low, high);
        ASSERT_TRUE(Point(all.minPt()) == Point(low) && Point(all.maxPt()) == Point(high));
    }
}

TEST(Bounds, OfArrangementsHoldTransformedBoxes)
{
    const CompactMesh diagonal = makeMesh({{0, 0, 0}, {1, 1, 0}}, {}), empty;
    MeshPlacement turned = place(&diagonal, 1); // by an eighth, and grown
    turned.matrix.setRow(0, {1, 1, 0});
    turned.matrix.setRow(1, {-1, 1, 0});
    zn::list<MeshPlacement> placements;
    for (const auto& p : {place(nullptr, 1), place(&empty, 5), turned, place(&diagonal, 2, 10)}) placements.append(p);
    const znTest::LogRecorder log;
    const float old[] = {-99, -99, -99};
    BoundingBox box(old);
    arrangementBoundingBox(placements, box);
    EXPECT_EQ(box.minPt(), PointFlt(-1, 0, 0));
    EXPECT_EQ(box.maxPt(), PointFlt(12, 2, 0));
    EXPECT_EQ(withoutTimes(log).front(), "meshBoundingBox: 0 vertices  # s\n");
    EXPECT_EQ(withoutTimes(log).back(), "arrangementBoundingBox: 4 meshes  # s\n");
}

TEST(Bounds, OfTrianglesAndNeighbourhoods)
{
    znTest::Random random(3);
    const CompactMesh mesh = makeTangle(random, 60, 60);
    zn::vector<BoundingBox> boxes(60), expectedBoxes(60), around(60), expectedAround(60);
    meshTriBoundingBoxes(mesh.getVertices(), mesh.getTriangles(), 60, boxes.data());
    meshComputeNeighbourBBoxes(mesh, znTest::adjTrisOf(mesh), around.data());
    for (int t = 0; t < 60; ++t) {
        for (int i = 0; i < 3; ++i) expectedBoxes[t].extend(PointFlt(cornerOf(mesh, t, i)));
        for (const int v : mesh.getTriangles()[t].corners) expectedAround[v].extend(expectedBoxes[t]);
    }
    EXPECT_EQ(boxes, expectedBoxes);
    EXPECT_EQ(around, expectedAround);
}

TEST(Areas, OfPlacementsAndTextures)
{
    CompactMesh cube;
    znTest::makeCube(cube);
    EXPECT_EQ(meshArea(cube, space), 24.0f);
    EXPECT_EQ(meshArea(place(&cube, -2, 1e9f), space), 96.0f);
    EXPECT_EQ(meshArea(place(nullptr, 1), space) + meshArea(CompactMesh(), space), 0.0f);
    for (int channel = 1; channel < 5; ++channel) EXPECT_EQ(meshArea(cube, static_cast<MeshChannel>(channel)), 0.0f);

    znTest::Random random(4);
    CompactMesh mesh = makeTangle(random, 50, 999);
    mesh.allocSTArray();
    for (int v = 0; v < 50; ++v) mesh.getSTs()[v].set(mesh.getVertices()[v].x, mesh.getVertices()[v].y);
    MeshPlacement placement = place(&mesh, 1);
    for (int row = 0; row < 4; ++row) placement.matrix.setRow(row, VectorFlt(random.vector()));
    double total = 0, flat = 0, asItIs = 0;
    for (int t = 0; t < 999; ++t) {
        const Vector p = cornerOf(mesh, t, 1) - cornerOf(mesh, t, 0), q = cornerOf(mesh, t, 2) - cornerOf(mesh, t, 0);
        total += 0.5 * cross(p * AffineMatrix(placement.matrix), q * AffineMatrix(placement.matrix)).length();
        flat += 0.5 * std::fabs(cross(p, q).dz);
        asItIs += 0.5 * cross(p, q).length();
    }
    EXPECT_FLOAT_EQ(meshArea(mesh, space), float(asItIs));
    EXPECT_FLOAT_EQ(meshArea(placement, space), float(total));
    EXPECT_FLOAT_EQ(meshArea(placement, MeshChannelSTs), float(flat));
}

TEST(Areas, FractionsAndMirrors)
{
    CompactMesh cube;
    znTest::makeCube(cube);
    zn::list<MeshPlacement> placements;
    zn::vector<float> fractions{5};
    zn::vector<bool> mirrored{true};
    for (const float scale : {1.0f, -1.0f, 0.0f}) placements.append(place(&cube, scale));
    placements.append(place(nullptr, -1e-15f));
    EXPECT_EQ(meshArea(placements, space, fractions), 48.0f);
    EXPECT_EQ(fractions, (zn::vector<float>{24 * (1 / 48.0f), 24 * (1 / 48.0f), 0, 0}));
    testDeterminants(placements, mirrored);
    EXPECT_EQ(mirrored, (zn::vector<bool>{false, true, false, true}));
    EXPECT_EQ(meshArea(placements, static_cast<MeshChannel>(1), fractions), 0.0f);
    EXPECT_TRUE(fractions.empty());
    placements.clear();
    placements.append(place(&cube, 0x1p-14f));
    EXPECT_EQ(meshArea(placements, space, fractions), 0.0f) << "below the tolerance";
    EXPECT_EQ(fractions, zn::vector<float>{24 * 0x1p-28f}) << "left as it is";
}

TEST(Edges, TheLongest)
{
    const auto longest2 = [](const MeshVertex& a, const MeshVertex& b, const MeshVertex& c) {
        return std::pow(meshLongestEdge(makeMesh({a, b, c}, {{{0, 0, 0}}, {{0, 1, 2}}})), 2);
    };
    EXPECT_DOUBLE_EQ(longest2({0, 0, 0}, {1, 0, 0}, {0, 1, 0}), 2.0);
    EXPECT_DOUBLE_EQ(longest2({0, 0, 16}, {0, 0, 8}, {0, 0, 0}), 64.0) << "the third side: the root of 16";
    EXPECT_DOUBLE_EQ(longest2({0, 0, 8}, {0, 0, 0}, {0, 0, 16}), 256.0) << "the same triangle";
    EXPECT_DOUBLE_EQ(longest2({2, 3, 0.0625f}, {1, 2, 0}, {0, 0, 0}), 13.25) << "the third side wins by its root";
    EXPECT_DOUBLE_EQ(longest2({0, 0, -1}, {4.5f, 0, -0.5f}, {9, 0, 0}), 20.5) << "a third side that climbs";
    EXPECT_DOUBLE_EQ(longest2({0, 0, 0}, {NAN, 0, 0}, {0, 3, 0}), 9.0);
    const float uvs[] = {0, 0, 1, 1, 3, 4};
    EXPECT_EQ(meshLongestEdge2D(makeMesh({{}, {}, {}}, {{{0, 1, 2}}}), uvs), 5.0);
    EXPECT_EQ(meshLongestEdge(CompactMesh()) + meshLongestEdge2D(CompactMesh(), nullptr), 0.0);
}

TEST(Edges, AnglesOfACube)
{
    CompactMesh cube;
    znTest::makeCube(cube);
    const MeshAdjTris adjTris = znTest::adjTrisOf(cube);
    EXPECT_EQ(meshMaxDihedralAngle(cube, adjTris), pi / 2);
    const znTest::LogRecorder log;
    MeshDihedralAnglesResult result;
    const std::pair<double, int> expected[] = {{180, 18}, {-1, 0}, {89.999, 0}, {NAN, 0}, {90, 12}};
    for (const auto& [degrees, count] : expected) {
        meshFindAnglesLessThan(cube, adjTris, degrees, result);
        EXPECT_EQ(result.edges.size(), count) << degrees;
    }
    EXPECT_EQ(withoutTimes(log), znTest::Lines(5, "   meshFindAnglesLessThan: # s\n"));
    zn::vector<int> adjacent{99};
    result.getAdjacentTriangles(cube, adjTris, adjacent);
    EXPECT_EQ(adjacent, (zn::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    result.edges = {result.edges.front()};
    result.getAdjacentTriangles(cube, adjTris, adjacent);
    EXPECT_EQ(adjacent.size(), 2);
}

TEST(Edges, AnglesAroundAHubTakeNoSquareOfItsValence)
{
    constexpr int rim = 400'000;
    CompactMesh fan;
    fan.resizeVertexArray(rim + 1);
    fan.resizeTriangleArray(rim);
    for (int i = 0; i < rim; ++i) {
        fan.getVertices()[i + 1].set(float(i % 2), float(i), float(i / 2 % 2));
        fan.getTriangles()[i] = {{0, i + 1, (i + 1) % rim + 1}};
    }
    const MeshAdjTris adjTris = znTest::adjTrisOf(fan);
    EXPECT_GT(meshMaxDihedralAngle(fan, adjTris), 0);
    MeshDihedralAnglesResult result;
    meshFindAnglesLessThan(fan, adjTris, 180, result);
    EXPECT_EQ(result.edges.size(), rim);
    zn::vector<int> triangles;
    result.getAdjacentTriangles(fan, adjTris, triangles);
    EXPECT_EQ(triangles.size(), rim);
}

TEST(Edges, AnglesEqualThePlainSearch)
{
    znTest::Random random(5);
    for (int round = 0; round < 60; ++round) {
        CompactMesh mesh = makeTangle(random, 4 + random.below(12), 5 + random.below(60));
        if (round < 3) znTest::makeSphere(mesh, round);
        const MeshTriangle* triangles = mesh.getTriangles();
        const auto cornerAt = [triangles](int t, int v) {
            const int* corners = triangles[t].corners;
            return int(std::find(corners, corners + 3, v) - corners);
        };
        const double degrees = random.real(-20, 200), limit = pi - degrees / 180 * pi;
        double largest = 0;
        zn::vector<MeshDihedralAnglesResult::Edge> sharp;
        for (int i = 0; i < 3 * mesh.getNumTriangles(); ++i)
            for (int t = i / 3, u = t + 1; u < mesh.getNumTriangles(); ++u) {
                const int a = triangles[t][i % 3], next = triangles[t][(i + 1) % 3], at = cornerAt(u, a);
                if (at == 3) continue;
                const Normal normal = plainNormal(mesh, u, at);
                for (const int v : triangles[t].corners)
                    if (v != a && cornerAt(u, v) < 3)
                        largest = std::max(largest, angle(plainNormal(mesh, t, i % 3), normal));
                if (triangles[u][(at + 2) % 3] != next || angle(plainNormal(mesh, t), normal) < limit) continue;
                // A triangle is met once for each of its corners there.
                for (const int v : triangles[u].corners)
                    if (v == a) sharp.append({a, next});
            }
        const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
        EXPECT_EQ(meshMaxDihedralAngle(mesh, adjTris), largest) << round;
        MeshDihedralAnglesResult result;
        meshFindAnglesLessThan(mesh, adjTris, degrees, result);
        EXPECT_EQ(result.edges, sharp) << round;
    }
}
