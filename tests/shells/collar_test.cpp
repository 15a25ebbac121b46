#include "znGeom/shells/collar.h"

#include <gtest/gtest.h>

#include <numbers>

#include "tests/support/same_bits.h"
#include "tests/support/shapes.h"
#include "tests/support/shared_meshes.h"
#include "tests/support/tangles.h"
#include "znGeom/analysis/boundaries.h"
#include "znGeom/analysis/path_length.h"
#include "znGeom/shells/collar_ribbon.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Vector;
using Points = zn::vector<MeshCollar::Point>;

namespace {

/// A mesh with what a collar needs of it.
struct Bordered
{
    CompactMesh mesh;
    MeshAdjTris adjTris;
    MeshBoundaries loops;

    explicit Bordered(const CompactMesh& source) : mesh(source)
    {
        meshAdjTris(mesh, adjTris);
        MeshAdjVertices adjVertices;
        meshAdjVertices(mesh, adjTris, adjVertices);
        meshComputeBoundary(mesh, adjTris, adjVertices, loops);
    }
    MeshCollar collar() const { return {mesh, adjTris, loops}; }

    MeshCoord at(int vertex) const { return between(vertex, vertex, 0); }
    MeshCoord at(int loop, int place) const { return at(loops.getStart(loop)[place % loops.getLength(loop)]); }
    /// On the edge between two vertices, or on the first triangle around the one.
    MeshCoord between(int from, int to, double part) const
    {
        for (const int triangle : adjTris.around(from)) {
            const MeshTriangle& corners = mesh.getTriangles()[triangle];
            if (!hasVertex(corners, to)) continue;
            MeshCoord coord;
            coord.triangle = triangle;
            coord.weights[cornerOf(corners, from)] += 1 - part;
            coord.weights[cornerOf(corners, to)] += part;
            return coord;
        }
        return {};
    }
    /// At a part of the edge that leads on from a place of a loop.
    MeshCoord on(int loop, int place, double part) const
    {
        const int* vertices = loops.getStart(loop);
        const int length = loops.getLength(loop);
        return between(vertices[place % length], vertices[(place + 1) % length], part);
    }
    Points points(const MeshCoord& a, const MeshCoord& b, int loop, bool forward, int count = 0) const
    {
        return points(a, b, loop, forward, MeshCollar::Params{false, false, count});
    }
    Points points(const MeshCoord& a, const MeshCoord& b, int loop, bool forward, MeshCollar::Params params) const
    {
        Points out(3);
        collar().getPoints(a, b, params, loop, forward, out);
        return out;
    }
};

/// A sheet of columns round a piece of a cylinder of radius 1, whose axis is x, faced outward; turned and scaled.
CompactMesh makeCurvedSheet(int columns, int rows, double turn, double scale)
{
    CompactMesh mesh = makeGrid(columns, rows);
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        MeshVertex& vertex = mesh.getVertices()[v];
        const znLinear::Point flat = vertex.asPoint();
        const double angle = std::numbers::pi * flat.x / (columns - 1), axis = 0.3 + 0.137 * flat.y;
        const Vector place(axis, -std::cos(angle), std::sin(angle));
        const Vector turned = rotate(place, znLinear::Normal(1, 2, 3), turn) * scale;
        vertex.set(float(turned.dx), float(turned.dy), float(turned.dz));
    }
    return mesh;
}

void expectNear(const Vector& actual, const Vector& wanted, double tolerance)
{
    EXPECT_TRUE(equivalent(actual, wanted, tolerance)) << actual.dx << ' ' << actual.dy << ' ' << actual.dz;
}

/// Whether the frames are units at right angles.
void expectFrames(const Points& points)
{
    for (const auto& point : points) {
        EXPECT_NEAR(point.direction.length(), 1, 1e-9);
        EXPECT_NEAR(point.normal.length(), 1, 1e-9);
        EXPECT_NEAR(dot(point.direction, point.normal), 0, 1e-9);
    }
}

} // namespace

TEST(MeshCollar, FramesOfAnAnnulusStandByFormula)
{
    constexpr int segments = 24;
    CompactMesh annulus;
    makeAnnulus(annulus, segments);
    const Bordered shape(annulus);
    ASSERT_EQ(shape.loops.size(), 2);
    for (const int loop : {0, 1})
        for (const bool forward : {true, false}) {
            SCOPED_TRACE(testing::Message() << loop << forward);
            const MeshCoord a = shape.at(loop, forward ? 0 : 9), b = shape.at(loop, forward ? 9 : 0);
            const Points points = shape.points(a, b, loop, forward);
            ASSERT_EQ(points.size(), 10);
            const double radius = points[0].position.asVector().length();
            const double half = std::numbers::pi / segments, chord = 2 * radius * std::sin(half);
            const double inward = radius < 1.5 ? 1 : -1;
            EXPECT_NEAR(shape.collar().getDistance(a, b, loop, forward), 9 * chord, 1e-5);
            EXPECT_NEAR(shape.collar().getDistance(a, b, loop, !forward), (segments - 9) * chord, 1e-5);
            for (int i = 0; i < 10; ++i) {
                expectNear(points[i].direction, {0, 0, -1}, 1e-6);
                const Vector radial = points[i].position.asVector() * (inward / radius);
                // At the ends the frame is square to the one edge on the path.
                if (i > 0 && i < 9)
                    expectNear(points[i].normal, radial, 1e-6);
                else
                    EXPECT_NEAR(dot(points[i].normal, radial), std::cos(half), 1e-6);
                EXPECT_GT(dot(points[i].normal, points[i == 0 ? 1 : i - 1].normal), std::cos(2.1 * half));
            }
            // Steps as long as an edge have their beginnings at the vertices, and leave the end out.
            const Points divided = shape.points(a, b, loop, forward, 9);
            ASSERT_EQ(divided.size(), 9);
            for (int i = 0; i < 9; ++i) {
                EXPECT_TRUE(equivalent(divided[i].position, points[i].position, 1e-6));
                expectNear(divided[i].normal, points[i].normal, 1e-6);
            }
        }
}

TEST(MeshCollar, StepsAreEqualAndFramesBreakAtCorners)
{
    const Bordered shape(makeGrid(5, 4)); // 4 x 3
    const double perimeter = 14;
    for (const bool forward : {true, false}) {
        const MeshCoord a = shape.between(1, 2, 0.25), b = shape.between(2, 3, 0.5); // at x = 1.25 and 2.5
        const double length = shape.collar().getDistance(a, b, 0, forward);
        EXPECT_NEAR(length, forward ? 1.25 : perimeter - 1.25, 1e-6);
        MeshCollar::Params params;
        EXPECT_EQ(shape.points(a, b, 0, forward, params).size(), shape.points(a, b, 0, forward).size());
        const int count = 1000;
        const Points points = shape.points(a, b, 0, forward, count);
        ASSERT_EQ(points.size(), count);
        expectFrames(points);
        for (int i = 1; i < count; ++i) {
            const Vector step = points[i].position - points[i - 1].position;
            EXPECT_LE(step.length(), length / count * (1 + 1e-9));
            EXPECT_GE(step.length(), length / count * 0.7); // across corners
        }
        for (const auto& point : points) { // each side has its own frame up to its corners
            const auto [x, y, z] = point.position;
            const bool isCorner = (x == 0 || x == 4) && (y == 0 || y == 3);
            const Vector inward = {double(x == 0) - double(x == 4), double(y == 0) - double(y == 3), 0};
            expectNear(point.normal, Vector(inward).normalized().asVector(), isCorner ? 1e-9 : 1e-12);
            expectNear(point.direction, {0, 0, -1}, 1e-12);
        }
    }
    MeshCollar::Params round{false, false, 8, 1.5}; // no turn up to 90 degrees is a corner
    const Points beside = shape.points(shape.at(3), shape.at(9), 0, true, round);
    EXPECT_LT(beside[2].normal.dx, -0.1); // at x = 3.5 half-way to the corner's frame
    EXPECT_GT(beside[2].normal.dy, 0.1);
    // A chord through the surface is no way along the border.
    const Bordered quad(makeGrid(2, 2));
    for (const bool forward : {true, false}) {
        EXPECT_NEAR(quad.collar().getDistance(quad.at(1), quad.at(2), 0, forward), 2, 1e-9);
        EXPECT_NEAR(quad.collar().getDistance(quad.at(0), quad.at(3), 0, forward), 2, 1e-9);
    }
}

TEST(MeshCollar, PlacesThatAreNotOnTheBorderHaveNoPoints)
{
    CompactMesh annulus;
    makeAnnulus(annulus, 12);
    const Bordered shape(annulus);
    const MeshCoord good = shape.at(0, 0), alsoGood = shape.on(0, 3, 0.5);
    MeshCoord inside = good, outside, beyond = good, undefined = good, spoke;
    inside.weights[0] = inside.weights[1] = 0.25, inside.weights[2] = 0.5;
    beyond.triangle = shape.mesh.getNumTriangles();
    undefined.weights[0] = std::numeric_limits<double>::quiet_NaN();
    spoke = shape.between(shape.loops.getStart(0)[2], shape.loops.getStart(1)[2], 0.5);
    const auto expectNothing = [&](const MeshCoord& a, const MeshCoord& b, int loop) {
        for (const bool forward : {true, false}) {
            EXPECT_EQ(shape.collar().getDistance(a, b, loop, forward), 0);
            EXPECT_TRUE(shape.points(a, b, loop, forward).empty());
        }
    };
    for (const MeshCoord& bad : {inside, outside, beyond, undefined, spoke, shape.at(1, 0), shape.on(1, 2, 0.5)}) {
        expectNothing(good, bad, 0);
        expectNothing(bad, alsoGood, 0);
    }
    for (const int loop : {-1, 1, 2}) expectNothing(good, alsoGood, loop);
    expectNothing(good, good, 0);

    // Within one edge the order counts: back to the same place it is once round.
    const double round = shape.collar().getDistance(alsoGood, alsoGood, 0, true);
    const double edge = shape.collar().getDistance(shape.at(0, 3), shape.at(0, 4), 0, true);
    EXPECT_NEAR(round, 12 * edge, 1e-5);
    EXPECT_EQ(shape.points(alsoGood, shape.on(0, 3, 0.75), 0, true).size(), 2);
    EXPECT_NEAR(shape.collar().getDistance(alsoGood, shape.on(0, 3, 0.75), 0, false), round - edge / 4, 1e-6);
    EXPECT_EQ(shape.points(alsoGood, alsoGood, 0, false).size(), 14);
    EXPECT_NEAR(shape.collar().getDistance(alsoGood, shape.at(0, 4), 0, true), edge / 2, 1e-6);
    EXPECT_NEAR(shape.collar().getDistance(shape.at(0, 4), alsoGood, 0, true), round - edge / 2, 1e-6);
}

TEST(MeshCollar, WalksKeepToOneSideWhereBordersTouch)
{
    // Two square holes that meet at a corner.
    CompactMesh grid = makeGrid(6, 6);
    zn::vector<MeshTriangle> kept;
    for (int t = 0; t < grid.getNumTriangles(); ++t)
        if (t / 2 != 1 * 5 + 1 && t / 2 != 2 * 5 + 2) kept.append(grid.getTriangles()[t]);
    grid.resizeTriangleArray(kept.size());
    std::copy(kept.begin(), kept.end(), grid.getTriangles());
    const Bordered shape(grid);
    const auto loopOf = [&](int vertex) {
        for (int loop = 0; loop < shape.loops.size(); ++loop)
            if (std::count(shape.loops.getStart(loop), shape.loops.getEnd(loop), vertex)) return loop;
        return -1;
    };
    const int shared = 2 * 6 + 2, first = loopOf(7), second = loopOf(21);
    const MeshCollar collar = shape.collar();
    for (const bool forward : {true, false}) {
        for (const int vertex : {8, 13}) { // both neighbours of the shared one
            const double there = collar.getDistance(shape.at(vertex), shape.at(7), first, forward);
            EXPECT_NEAR(there + collar.getDistance(shape.at(7), shape.at(vertex), first, forward), 4, 1e-6);
        }
        EXPECT_NEAR(collar.getDistance(shape.at(7), shape.at(shared), first, forward), 2, 1e-6);
        EXPECT_NEAR(collar.getDistance(shape.at(shared), shape.at(7), first, forward), 2, 1e-6);
        // The other loop comes in pieces: there is a way within one, and none past the shared vertex.
        EXPECT_NEAR(collar.getDistance(shape.at(20), shape.at(21), second, forward) +
                        collar.getDistance(shape.at(21), shape.at(20), second, forward),
                    1, 1e-6);
        for (const auto& point : shape.points(shape.at(8), shape.at(13), first, forward))
            EXPECT_LE(point.position.x, 2);
    }
}

TEST(MeshCollar, CurvatureIsOneOverTheRadiusHoweverTheMeshIsTurnedAndScaled)
{
    constexpr int columns = 30, rows = 10;
    const double wanted = std::cos(std::numbers::pi / (columns - 1) / 2);
    for (const double turn : {0.0, 1.1})
        for (const double scale : {1e-3, 1.0, 1e3}) {
            SCOPED_TRACE(testing::Message() << turn << ' ' << scale);
            const Bordered shape(makeCurvedSheet(columns, rows, turn, scale));
            const MeshCoord from = shape.at(columns - 1), to = shape.at(columns * rows - 1); // along the axis
            for (const int count : {0, 25})
                for (const bool forward : {true, false}) {
                    const Points points = shape.points(forward ? from : to, forward ? to : from, 0, forward,
                                                       MeshCollar::Params{true, false, count});
                    ASSERT_EQ(points.size(), count == 0 ? rows : count);
                    for (const auto& point : points) EXPECT_NEAR(point.curvature * scale, wanted, 1e-4);
                }
            // The ends of the cylinder bend along the border, not across.
            for (const auto& point : shape.points(shape.at(0), from, 0, true, MeshCollar::Params{true, false, 50}))
                EXPECT_NEAR(point.curvature * scale, 0, 1e-4);
            std::deque<MeshCoord> coords;
            for (int row = 1; row + 1 < rows; ++row) coords.push_back(shape.at(row * columns + 12));
            Points along;
            shape.collar().getPoints(MeshCollar::Params{true}, MeshCurve(coords, false), along);
            ASSERT_EQ(along.size(), rows - 2);
            for (const auto& point : along) EXPECT_NEAR(point.curvature * scale, wanted, 1e-4);
        }
}

TEST(MeshCollar, CurvesAreFramedToTheirLeftAndTrimmed)
{
    const Bordered shape(makeGrid(6, 6)); // z = 0, facing +z
    const MeshCollar collar = shape.collar();
    std::deque<MeshCoord> coords; // a square of 3 x 3, counter-clockwise
    for (const int vertex : {7, 8, 9, 10, 16, 22, 28, 27, 26, 25, 19, 13}) coords.push_back(shape.at(vertex));
    const MeshCurve square(coords, true);
    Points points;
    collar.getPoints({}, square, points);
    ASSERT_EQ(points.size(), 12);
    expectFrames(points);
    for (const auto& point : points) {
        expectNear(point.normal, {0, 0, -1}, 1e-12);
        EXPECT_GT(dot(point.direction, znLinear::Point(2.5, 2.5, 0) - point.position), 0);
    }
    const auto expectPart = [&](const MeshCoord& a, const MeshCoord& b, const std::vector<double>& xy) {
        for (const bool exchanged : {false, true}) {
            collar.getPoints(exchanged ? b : a, exchanged ? a : b, {}, square, points);
            ASSERT_EQ(2 * points.size(), static_cast<int>(xy.size()));
            for (int i = 0; i < points.size(); ++i)
                expectNear(points[i].position.asVector(), {xy[2 * size_t(i)], xy[2 * size_t(i) + 1], 0}, 1e-12);
        }
    };
    expectPart(shape.between(8, 9, 0.5), shape.between(10, 16, 0.25), {2.5, 1, 3, 1, 4, 1, 4, 1.25});
    expectPart(shape.between(8, 9, 0.25), shape.between(8, 9, 0.5), {2.25, 1, 2.5, 1});
    expectPart(shape.at(8), shape.at(10), {2, 1, 3, 1, 4, 1});
    expectPart(shape.between(19, 13, 0.5), shape.between(13, 7, 0.5), {1, 2.5, 1, 2, 1, 1.5}); // the closing segment
    expectPart(shape.at(9), shape.at(9), {});
    expectPart({}, shape.at(9), {});

    // A place that is there twice doesn't lose its frame; one that is none leaves the curve without points.
    std::deque<MeshCoord> doubled{shape.at(7), shape.at(7), shape.at(8), shape.at(8), shape.at(9)};
    collar.getPoints({}, MeshCurve(doubled, false), points);
    ASSERT_EQ(points.size(), 5);
    for (const auto& point : points) expectNear(point.direction, {0, 1, 0}, 1e-12);
    doubled[1].triangle = -1;
    collar.getPoints({}, MeshCurve(doubled, false), points);
    EXPECT_TRUE(points.empty());
    collar.getPoints(shape.at(7), shape.at(8), {}, MeshCurve({shape.at(7)}, true), points);
    EXPECT_LE(points.size(), 1);
}

TEST(MeshCollar, RibbonsContinueTheSurfaceAndTellTurnedQuads)
{
    const Bordered shape(makeGrid(5, 4));
    Points points = shape.points(shape.at(0), shape.at(18), 0, true); // the lower side, the right one, and one edge
    ASSERT_EQ(points.size(), 9);
    CompactMesh ribbon;
    meshCollarRibbon(points, 0.5, false, ribbon);
    ASSERT_EQ(ribbon.getNumTriangles(), 16);
    for (int i = 0; i < points.size(); ++i) {
        EXPECT_EQ(ribbon.getVertices()[2 * i].asPoint(), points[i].position);
        EXPECT_EQ(ribbon.getVertices()[2 * i + 1].z, -0.5f);
    }
    // Against the border's own edges, so that neighbours are wound alike.
    EXPECT_TRUE(hasDirectedEdge(ribbon.getTriangles()[0], 2, 0));
    meshCollarRibbon(points, -0.5, true, ribbon);
    EXPECT_EQ(ribbon.getNumTriangles(), 18);
    EXPECT_EQ(meshCollarTurnedQuads(points, 100, true), 0);
    points[3].direction = Vector(2, 0, -1).normalized().asVector(); // leans over its neighbour
    EXPECT_EQ(meshCollarTurnedQuads(points, 1, true), 0);
    EXPECT_EQ(meshCollarTurnedQuads(points, 1.2, true), 1);
    EXPECT_EQ(meshCollarTurnedQuads(points, -1.2, true), 1);
    points[3].direction = Vector::x; // along its step
    EXPECT_EQ(meshCollarTurnedQuads(points, 1e-6, true), 2);
    Points twisted(2); // which fold over their own diagonal, while each triangle by itself has turned by less
    twisted[1].position = {1, 0, 0};
    twisted[0].direction = {0.906, 0, -0.423}, twisted[1].direction = {-0.517, 0.763, -0.388};
    EXPECT_EQ(meshCollarTurnedQuads(twisted, 0.4, false), 0);
    EXPECT_EQ(meshCollarTurnedQuads(twisted, 0.817, false), 1);
    for (const int count : {0, 1}) {
        EXPECT_EQ(meshCollarTurnedQuads(Points(count), 1, true), 0);
        meshCollarRibbon(Points(count), 1, true, ribbon);
        EXPECT_EQ(ribbon.getNumVertices(), 0);
    }
}

TEST(MeshCollar, BothWaysRoundALoopAddUpOnRealMeshes)
{
    const bool found = forEachSharedMesh(50000, [](const CompactMesh& mesh) {
        const Bordered shape(mesh);
        const MeshCollar collar = shape.collar();
        int numWalked = 0;
        for (int loop = 0; loop < std::min(shape.loops.size(), 20); ++loop) {
            const int length = shape.loops.getLength(loop), half = length / 2;
            const MeshCoord a = shape.at(loop, 0), b = shape.at(loop, half);
            const double there = collar.getDistance(a, b, loop, true), back = collar.getDistance(b, a, loop, true);
            const int* vertices = shape.loops.getStart(loop);
            if (length < 2 || !Boundary::hasEdge(mesh, shape.adjTris, vertices[length - 1], *vertices)) continue;
            ++numWalked;
            const double around =
                meshPathLength(shape.mesh, {shape.loops.getStart(loop), shape.loops.getEnd(loop)}, true);
            EXPECT_NEAR(there + back, around, 1e-9 * around);
            EXPECT_NEAR(collar.getDistance(b, a, loop, false), there, 1e-9 * around);
            const Points points = shape.points(a, b, loop, true, MeshCollar::Params{true});
            EXPECT_EQ(points.size(), half + 1);
            for (const auto& point : points) EXPECT_TRUE(std::isfinite(point.curvature));
            EXPECT_EQ(meshCollarTurnedQuads(points, 1e-4 * there / points.size(), false), 0);
        }
        EXPECT_TRUE(sameBits(shape.mesh, mesh));
        EXPECT_TRUE(numWalked > 0 || shape.loops.size() == 0);
    });
    if (!found) GTEST_SKIP();
}

TEST(MeshCollar, TanglesEndTheWalkWithoutHarm)
{
    Random random(11);
    for (int round = 0; round < 90; ++round) {
        const Bordered shape(makeAnyMesh(random, round));
        for (int loop = 0; loop < shape.loops.size(); ++loop) {
            const int length = shape.loops.getLength(loop);
            const MeshCoord a = shape.on(loop, random.below(length), random.below(3) * 0.5);
            const MeshCoord b = shape.on(loop, random.below(length), random.below(3) * 0.5);
            const bool forward = random.below(2) == 0;
            const double distance = shape.collar().getDistance(a, b, loop, forward);
            EXPECT_TRUE(distance >= 0 && distance < 1e6);
            const Points points = shape.points(a, b, loop, forward, MeshCollar::Params{true, false, 7});
            EXPECT_EQ(points.size(), distance > 0 ? 7 : points.size());
            Points along;
            shape.collar().getPoints(a, b, MeshCollar::Params{true}, MeshCurve({b, a, b}, true), along);
        }
    }
}
