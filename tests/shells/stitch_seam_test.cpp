#include "znGeom/shells/stitch_seam.h"

#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "znGeom/analysis/components.h"
#include "znGeom/topology/topo_walks.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Point;

namespace {

using Vertices = std::vector<TopoMeshVertex>;
using Places = std::vector<Point>;

/// A mesh with what is told about it.
struct Sewing
{
    TopoMesh mesh;
    MeshStitchSeam seam{mesh};
    Vertices gone;
    int numTold = 0;

    Sewing()
    {
        seam.addCallback([this](TopoMeshVertex v) {
            EXPECT_TRUE(v.isAlive());
            gone.push_back(v);
        });
        mesh.modifiedSignal().addCallback([this](EntityModification& change) {
            EXPECT_EQ(static_cast<TopoMeshModification&>(change).getType(), 1);
            ++numTold;
        });
    }

    /// A sheet between two rows of places, the boundary of which runs forward along the first one.
    /// \param closed  whether it is a tube
    Vertices addSheet(const Places& places, const znLinear::Vector& across, bool closed = false)
    {
        Vertices row, other;
        for (const Point& place : places) row.push_back(mesh.allocVertex(place));
        for (const Point& place : places) other.push_back(mesh.allocVertex(place + across));
        for (std::size_t i = 0; i + 1 < row.size() + closed; ++i) {
            const std::size_t next = (i + 1) % row.size();
            mesh.allocTriangle(row[i], row[next], other[next]);
            mesh.allocTriangle(row[i], other[next], other[i]);
        }
        meshTwin(mesh);
        return row;
    }
};

/// Places on a curve, the ends fixed, the others moved along it at random.
Places makeBorder(Random& random, int numSteps, double noise)
{
    Places places;
    for (int i = 0; i <= numSteps; ++i) {
        const bool isEnd = i == 0 || i == numSteps;
        const double x = (i + (isEnd ? 0 : random.real(-0.4, 0.4))) / numSteps;
        places.push_back({x, 0.1 * std::sin(7 * x) + (isEnd ? 0 : random.real(-noise, noise)), 0});
    }
    return places;
}

Places ring(int numSteps, double radius, double z, double phase)
{
    Places places;
    for (int i = 0; i < numSteps; ++i) {
        const double angle = 2 * std::numbers::pi * i / numSteps + phase;
        places.push_back({radius * std::cos(angle), radius * std::sin(angle), z});
    }
    return places;
}

Vertices path(TopoMeshVertex from, TopoMeshVertex to, bool forward)
{
    Vertices found{from};
    TopoMeshBoundaryIterator walk(from, forward);
    while (walk.valid() && found.back() != to) {
        walk.next();
        if (walk.valid()) found.push_back(walk.edge->origin);
    }
    return found;
}

int countWithoutLength(const TopoMesh& mesh)
{
    int count = 0;
    for (const TopoMeshEdge e : edgesOf(mesh)) count += e->origin->point == endOf(e)->point;
    return count;
}

int eulerNumber(const TopoMesh& mesh)
{
    return mesh.numVertices() - (mesh.numEdges() + countBoundary(mesh)) / 2 + mesh.numFaces();
}

} // namespace

TEST(StitchSeam, SharesVerticesOfEqualPathsAndTellsWhichGo)
{
    Sewing sewing;
    const Places places{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}};
    const Vertices below = sewing.addSheet(places, {0, 1, 0});
    const Vertices above = sewing.addSheet({places.rbegin(), places.rend()}, {0, -1, 0});
    sewing.seam.stitch(below[0], below[3], above[3], above[0], 0.1, true);
    EXPECT_TRUE(checkTopology(sewing.mesh));
    EXPECT_TRUE(sewing.seam.isComplete());
    EXPECT_TRUE(sewing.seam.preservedA());
    EXPECT_EQ(sewing.mesh.numVertices(), 12);
    EXPECT_EQ(countBoundary(sewing.mesh), 10);
    EXPECT_EQ(sewing.gone, Vertices(above.rbegin(), above.rend()));
    EXPECT_EQ(sewing.numTold, 1);
}

TEST(StitchSeam, BringsUnequalPathsToTheSamePlacesInPairs)
{
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    Random random(1);
    for (int round = 0; round < 400; ++round) {
        Sewing sewing;
        const int stepsA = 1 + random.below(round % 5 == 0 ? 90 : 12), stepsB = 1 + random.below(12);
        const double noise = round % 3 * 0.02, tolerance = std::vector{0.05, 0.0, 0.4, 1.0, notANumber}[round % 5];
        const Places placesA = makeBorder(random, stepsA, noise);
        Places placesB = makeBorder(random, stepsB, noise);
        std::reverse(placesB.begin(), placesB.end());
        const Vertices a = sewing.addSheet(placesA, {0, 1, 0}), b = sewing.addSheet(placesB, {0, -1, 0});
        const bool merge = round % 2 == 1;
        if (round % 4 < 2)
            sewing.seam.stitch(a.front(), a.back(), b.back(), b.front(), tolerance, merge);
        else
            sewing.seam.stitch(b.front(), b.back(), a.back(), a.front(), tolerance, merge);
        EXPECT_TRUE(checkTopology(sewing.mesh));
        ASSERT_TRUE(sewing.seam.isComplete());
        EXPECT_EQ(sewing.seam.preservedA(), round % 4 < 2 ? stepsB <= stepsA : stepsA <= stepsB);
        EXPECT_EQ(countWithoutLength(sewing.mesh), 0) << round;
        EXPECT_EQ(sewing.numTold, 1);
        if (merge) {
            EXPECT_EQ(meshComponents(sewing.mesh), 1);
            continue;
        }
        const Vertices pathA = path(a.front(), a.back(), true), pathB = path(b.back(), b.front(), false);
        ASSERT_EQ(pathA.size(), pathB.size());
        for (std::size_t i = 0; i < pathA.size(); ++i) EXPECT_EQ(pathA[i]->point, pathB[i]->point);
        if (noise > 0 || !sewing.gone.empty()) continue;
        const bool keepsA = round % 4 < 2 ? stepsA >= stepsB : stepsA > stepsB;
        const Vertices& kept = keepsA ? a : b;
        for (std::size_t i = 0; i < kept.size(); ++i) EXPECT_EQ(kept[i]->point, (keepsA ? placesA : placesB)[i]);
    }
}

TEST(StitchSeam, ContractsTheShorterEdgeWhereTheSidesTurnApart)
{
    // A barb on one side, on A and then on B.
    const Places barbed{{0, 0, 0}, {1, 0, 0}, {1.1, -0.2, 0}, {1, -0.4, 0}, {3, 0, 0}};
    const Places plain{{3, 0, 0}, {2, 0, 0}, {1.05, 0, 0}, {0, 0, 0}};
    for (const bool onA : {true, false}) {
        Sewing sewing;
        const Vertices a = sewing.addSheet(barbed, {0, 2, 0}), b = sewing.addSheet(plain, {0, -2, 0});
        if (onA)
            sewing.seam.stitch(a.front(), a.back(), b.back(), b.front(), 0.1, false);
        else
            sewing.seam.stitch(b.front(), b.back(), a.back(), a.front(), 0.1, false);
        EXPECT_TRUE(checkTopology(sewing.mesh));
        EXPECT_FALSE(sewing.gone.empty());
        for (const TopoMeshVertex v : sewing.gone) EXPECT_FALSE(v.isAlive());
        const Vertices pathA = path(a.front(), a.back(), true), pathB = path(b.back(), b.front(), false);
        ASSERT_EQ(pathA.size(), pathB.size());
        for (std::size_t i = 0; i < pathA.size(); ++i) EXPECT_EQ(pathA[i]->point, pathB[i]->point);
    }
}

TEST(StitchSeam, JoinsRimsAllTheWayRound)
{
    for (const auto& [numA, numB, phase] : {std::tuple{12, 12, 0.0}, {24, 7, 0.1}, {5, 31, 0.2}, {3, 4, 0.0}}) {
        Sewing sewing;
        const Vertices a = sewing.addSheet(ring(numA, 1, 0, 0), {0, 0, 1}, true);
        Places other = ring(numB, 1.01, 0, phase);
        std::reverse(other.begin(), other.end());
        const Vertices b = sewing.addSheet(other, {0, 0, -1}, true);
        const int numFaces = sewing.mesh.numFaces();
        sewing.seam.stitchCircular(a[1], b[0], 0.05, true);
        EXPECT_TRUE(checkTopology(sewing.mesh));
        EXPECT_TRUE(sewing.seam.isComplete());
        EXPECT_EQ(sewing.seam.preservedA(), numA >= numB);
        EXPECT_EQ(meshComponents(sewing.mesh), 1);
        EXPECT_EQ(countBoundary(sewing.mesh), numA + numB);
        EXPECT_EQ(eulerNumber(sewing.mesh), 0);
        EXPECT_GE(sewing.mesh.numFaces(), numFaces);
        EXPECT_EQ(countWithoutLength(sewing.mesh), 0);
        EXPECT_EQ(sewing.numTold, 1);
    }
}

TEST(StitchSeam, ClosesASlitUpToItsEndsAndLeavesEdgesThatWouldEndWhereTheyBegin)
{
    // A third face joins the first vertices of both sides.
    Sewing sewing;
    const Vertices low = sewing.addSheet({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}}, {0, 1, 0});
    const Vertices high = sewing.addSheet({{3, -0.01, 0}, {2, -0.01, 0}, {1, -0.01, 0}, {0, -0.01, 0}}, {0, -1, 0});
    sewing.mesh.allocTriangle(low[0], high[3], sewing.mesh.allocVertex({-1, 0, 0}));
    meshTwin(sewing.mesh);
    sewing.seam.stitch(low[0], low[3], high[3], high[0], 0.1, true);
    EXPECT_TRUE(checkTopology(sewing.mesh));
    EXPECT_TRUE(low[0].isAlive());
    EXPECT_TRUE(high[3].isAlive());
    EXPECT_EQ(sewing.gone, (Vertices{high[2], high[1], high[0]}));
    sewing.seam.stitch(low[0], low[1], high[3], low[1], 0.1, true);
    EXPECT_FALSE(sewing.seam.isComplete());
    EXPECT_EQ(sewing.gone.size(), 3u);
    EXPECT_EQ(sewing.numTold, 1);

    Sewing slit;
    Places lips = ring(8, 1, 0, 0);
    for (Point& place : lips) place.y *= 0.01;
    const Vertices rim = slit.addSheet(lips, {0, 0, 1}, true);
    slit.seam.stitch(rim[0], rim[4], rim[0], rim[4], 0.1, true);
    EXPECT_TRUE(checkTopology(slit.mesh));
    EXPECT_TRUE(slit.seam.isComplete());
    EXPECT_EQ(slit.gone, (Vertices{rim[7], rim[6], rim[5]}));
    EXPECT_EQ(countBoundary(slit.mesh), 8);
    EXPECT_EQ(eulerNumber(slit.mesh), 1);
}

TEST(StitchSeam, ChangesNothingWithoutTwoPaths)
{
    Sewing sewing;
    const Vertices a = sewing.addSheet(ring(6, 1, 0, 0), {0, 0, 1}, true);
    const Vertices b = sewing.addSheet(ring(7, 1, -0.1, 0), {0, 0, -1}, true);
    const TopoMeshVertex loose = sewing.mesh.allocVertex({});
    sewing.seam.stitch(a[0], b[1], b[0], b[1], 0.1, true);
    sewing.seam.stitch(a[0], a[1], b[0], a[1], 0.1, true);
    sewing.seam.stitch(a[0], a[0], b[0], b[1], 0.1, true);
    sewing.seam.stitch(a[0], a[3], b[2], b[2], 0.1, true);
    sewing.seam.stitch(a[0], a[3], a[3], a[0], 0.1, true); // one path there and back
    sewing.seam.stitch(a[0], a[3], loose, b[0], 0.1, true);
    sewing.seam.stitchCircular(a[0], a[2], 0.1, true);
    sewing.seam.stitchCircular(loose, a[2], 0.1, true);
    for (const TopoMeshVertex v : b) sewing.mesh.setPoint(v, {9, 0, 0}); // all are as near
    sewing.seam.stitchCircular(a[0], b[0], 0.1, true);
    EXPECT_FALSE(sewing.seam.isComplete());
    EXPECT_EQ(sewing.numTold, 0);
    EXPECT_EQ(sewing.mesh.numVertices(), 27);
    EXPECT_EQ(sewing.mesh.numFaces(), 26);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(a[static_cast<std::size_t>(i)]->point, ring(6, 1, 0, 0)[static_cast<std::size_t>(i)]);
    EXPECT_TRUE(checkTopology(sewing.mesh));
}
