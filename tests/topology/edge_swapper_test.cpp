#include "znGeom/topology/edge_swapper.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "znGeom/topology/twin.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Point;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();

/// Two triangles on an edge from a to b.
struct Pair
{
    TopoMesh mesh;
    TopoMeshEdge e;

    Pair(const Point& a, const Point& b, const Point& c, const Point& d)
    {
        TopoMeshVertex v[4];
        for (int i = 0; const Point& p : {a, b, c, d}) v[i++] = mesh.allocVertex(p);
        e = mesh.allocTriangle(v[0], v[1], v[2])->edge;
        mesh.allocTriangle(v[1], v[0], v[3]);
    }
};

using Predicate = void (*)(TopoMeshEdge, bool&);

bool vetoes(Predicate predicate, TopoMeshEdge e)
{
    bool veto = false, vetoed = true;
    predicate(e, veto);
    predicate(e, vetoed);
    EXPECT_TRUE(vetoed) << "no veto is withdrawn";
    return veto;
}

/// By number: the whole mesh, a set, a vector.
int swap(int form, bool once, TopoMesh& mesh, const std::vector<TopoMeshEdge>& edges, MeshEdgeSwapper& swapper)
{
    if (form == 0) return once ? meshSwapEdgesOnce(mesh, swapper) : meshSwapEdgesRepeatedly(mesh, swapper);
    zn::set<TopoMeshEdge> inSet;
    for (const TopoMeshEdge e : edges) inSet.insert(e);
    if (form == 1)
        return once ? meshSwapEdgesOnce(mesh, inSet, swapper) : meshSwapEdgesRepeatedly(mesh, inSet, swapper);
    const zn::vector<TopoMeshEdge> all(edges.data(), edges.data() + edges.size());
    return once ? meshSwapEdgesOnce(mesh, all, swapper) : meshSwapEdgesRepeatedly(mesh, all, swapper);
}

const Predicate angleSum = MeshEdgeSwapper::minimizeOppositeAngleSum, foldover = MeshEdgeSwapper::preventFoldover,
                boundary = MeshEdgeSwapper::preserveBoundary, features = MeshEdgeSwapper::preserveFeatures;

/// A grid with its points moved about, so far that some triangles are turned over.
void fillMoved(TopoMesh& mesh, double height, Random& random)
{
    fill(mesh, makeGrid(12, 9));
    meshTwin(mesh);
    for (const TopoMeshVertex v : verticesOf(mesh))
        v->point += znLinear::Vector(random.real(-0.49, 0.49), random.real(-0.49, 0.49), random.real(-height, height));
}

} // namespace

TEST(EdgeSwapper, SwapsNothingUntilSomethingIsConnectedThatDoesNotVeto)
{
    Pair pair({0, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, 0});
    MeshEdgeSwapper swapper;
    EXPECT_FALSE(swapper.shouldSwap(pair.e));
    znRTB::Connection* const first = swapper.getVetoSignal().addCallback([](TopoMeshEdge, bool& veto) { veto = true; });
    int numAsked = 0;
    swapper.getVetoSignal().addCallback([&](TopoMeshEdge, bool&) { ++numAsked; });
    EXPECT_FALSE(swapper.shouldSwap(pair.e));
    EXPECT_EQ(numAsked, 1) << "every function is called, also after a veto";
    first->block();
    EXPECT_TRUE(swapper.shouldSwap(pair.e) && !swapper.shouldSwap(pair.e->next));
    first->unblock();
    int numReports = 0;
    pair.mesh.modifiedSignal().addCallback([&numReports](EntityModification&) { ++numReports; });
    const auto edges = listed(edgesOf(pair.mesh));
    for (const bool isConnected : {true, false}) {
        if (!isConnected) swapper.clearVetoSignal(), swapper.getVetoSignal();
        for (const int form : {0, 1, 2})
            for (const bool once : {true, false}) EXPECT_EQ(swap(form, once, pair.mesh, edges, swapper), 0);
    }
    EXPECT_EQ(numReports, 0);
    swapper.getVetoSignal().addCallback([&](TopoMeshEdge, bool&) { swapper.clearVetoSignal(); });
    EXPECT_TRUE(swapper.shouldSwap(pair.e)) << "a function may drop the whole signal";
    EXPECT_FALSE(swapper.shouldSwap(pair.e));
}

TEST(EdgeSwapper, JudgesByTheAnglesThemselves)
{
    const auto angleAt = [](const Point& at, const Point& p, const Point& q) {
        const znLinear::Normal first(p - at), second(q - at);
        return first.isValid() && second.isValid() ? angle(first, second) : 0;
    };
    Random random(3);
    for (int i = 0; i < 4000; ++i) {
        Point p[4];
        for (Point& corner : p) { // in space, near a circle, flat and thin, on few places
            const double turn = random.real(0, 2 * std::numbers::pi), off = i % 8 < 4 ? 0 : random.real(-1e-9, 1e-9);
            if (i % 4 == 0) corner = {random.real(-1, 1), random.real(-1, 1), random.real(-1, 1)};
            if (i % 4 == 1) corner = {std::cos(turn), std::sin(turn) + off, 0.25};
            if (i % 4 == 2) corner = {random.real(-1, 1), off, 0};
            if (i % 4 == 3) corner = Point(random.below(2), random.below(2), random.below(2));
        }
        const auto& [a, b, c, d] = p;
        const double before = angleAt(c, a, b) + angleAt(d, a, b), after = angleAt(b, c, d) + angleAt(a, c, d);
        const znLinear::Normal first(cross(b - d, c - d)), second(cross(c - d, a - d));
        Pair pair(a, b, c, d);
        EXPECT_EQ(vetoes(angleSum, pair.e), after >= before) << i;
        EXPECT_EQ(vetoes(foldover, pair.e),
                  !first.isValid() || !second.isValid() || angle(first, second) > std::numbers::pi / 2)
            << i;
    }
}

TEST(EdgeSwapper, PredicatesJudgeTheTwoTriangles)
{
    struct Case
    {
        const char* name;
        Point a, b, c, d;
        bool angleSum, foldover, features; ///< vetoes
    };
    const auto bent = [](double degrees) {
        const double angle = degrees * std::numbers::pi / 180;
        return Point(0.5, -std::cos(angle), std::sin(angle));
    };
    const Case cases[] = {
        {"a square: equal sums", {0, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, 0}, true, false, false},
        {"long diagonal", {-2, 0, 0}, {2, 0, 0}, {0, 1, 0}, {0, -1, 0}, false, false, false},
        {"short diagonal", {0, -1, 0}, {0, 1, 0}, {-2, 0, 0}, {2, 0, 0}, true, false, false},
        {"concave at b", {-1, 0, 0}, {0, 0, 0}, {1, 2, 0}, {1, -2, 0}, true, true, true},
        {"flat to begin with", {0, 0, 0}, {4, 0, 0}, {2, 0, 0}, {2, -1, 0}, false, false, true},
        {"flat in the end", {0, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, -1, 0}, true, true, true},
        {"nothing at all", {0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}, true, true, true},
        {"not a number", {0, 0, 0}, {1, 1, 0}, {0, double(NAN), 0}, {1, 0, 0}, false, true, true},
        {"infinite", {0, 0, 0}, {1, 1, 0}, {0, inf, 0}, {1, 0, 0}, false, true, true},
        // A skew quadrilateral is bent the other way, and here twice as much, along the other diagonal.
        {"bent by 2.4 degrees in all", {0, 0, 0}, {1, 0, 0}, {0.5, 1, 0}, bent(0.8), true, false, false},
        {"bent by 2.7 degrees in all", {0, 0, 0}, {1, 0, 0}, {0.5, 1, 0}, bent(0.9), true, false, true},
        {"down instead of up", {0, 0, 0}, {1, 0, 0}, {0.5, 1, 0}, bent(-0.9), true, false, true},
        {"folded after the swap", {0, 0, 0}, {1, 0, 0}, {0.5, 1, 0}, bent(60), true, true, true}};
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        Pair pair(test.a, test.b, test.c, test.d);
        for (const TopoMeshEdge e : {pair.e, pair.e->twin}) {
            EXPECT_EQ(vetoes(angleSum, e), test.angleSum);
            EXPECT_EQ(vetoes(foldover, e), test.foldover);
            EXPECT_EQ(vetoes(features, e), test.features);
            EXPECT_TRUE(vetoes(boundary, e));
        }
        for (const Predicate predicate : {angleSum, foldover, boundary, features})
            EXPECT_TRUE(vetoes(predicate, pair.e->next)) << "an edge of one triangle";
    }
}

TEST(EdgeSwapper, JudgesAngleSumsAsTheAnglesThemselvesDo)
{
    const auto angleAt = [](const Point& corner, const Point& first, const Point& second) {
        const znLinear::Vector u = first - corner, v = second - corner;
        return std::atan2(cross(u, v).length(), dot(u, v));
    };
    Random random(11);
    int numVetoed = 0, numClose = 0;
    for (int round = 0; round < 20000; ++round) {
        const double scale = std::ldexp(1.0, random.below(120) - 60), height = round % 3 == 0 ? 0 : random.real(0, 1);
        Point p[4];
        for (Point& corner : p)
            corner = Point(random.real(-1, 1) * scale, random.real(-1, 1) * scale, random.real(-1, 1) * height * scale);
        if (round % 5 == 0) p[3] = p[2] + 1e-4 * (p[3] - p[2]); // slivers
        if (round % 7 == 0) p[0] = p[1] + 1e-7 * (p[0] - p[1]);
        const double before = angleAt(p[2], p[0], p[1]) + angleAt(p[3], p[0], p[1]),
                     after = angleAt(p[1], p[2], p[3]) + angleAt(p[0], p[2], p[3]);
        numClose += std::fabs(before - after) < 1e-3;
        if (std::fabs(before - after) < 1e-9) continue;
        const Pair pair(p[0], p[1], p[2], p[3]);
        ASSERT_EQ(vetoes(angleSum, pair.e), after >= before) << round;
        numVetoed += after >= before;
    }
    EXPECT_TRUE(numVetoed > 5000 && numVetoed < 15000 && numClose > 20) << numVetoed << " " << numClose;
}

TEST(EdgeSwapper, ASwapThatIsNotVetoedIsVetoedOnceItIsDone)
{
    Random random(1);
    int numSwaps = 0;
    for (int round = 0; round < 4000; ++round) {
        // By turns anywhere, on a circle, and on a line, where rounding alone decides.
        const auto point = [&, turn = random.real(6)]() -> Point {
            const double t = random.real(turn, turn + 6);
            if (round % 3 == 0) return random.point();
            return round % 3 == 1 ? Point(3 + std::cos(t), std::sin(t), 0) : Point(t, 0.3 * t, 0.1 * t);
        };
        Pair pair(point(), point(), point(), point());
        if (vetoes(angleSum, pair.e)) continue;
        ASSERT_TRUE(pair.mesh.swapEdge(pair.e));
        ASSERT_TRUE(vetoes(angleSum, pair.e) && vetoes(angleSum, pair.e->twin));
        ++numSwaps;
    }
    EXPECT_GT(numSwaps, 1500);
}

TEST(EdgeSwapper, PassesTakeTheEdgesAsTheyCome)
{
    Random random(2);
    TopoMesh mesh;
    fillMoved(mesh, 0.4, random);
    int numReports = 0;
    mesh.modifiedSignal().addCallback([&numReports](EntityModification&) { ++numReports; });
    std::vector<TopoMeshEdge> asked, firsts, all, backwards;
    for (const TopoMeshEdge e : edgesOf(mesh)) {
        if (e->twin) all.push_back(e);
        if (e->twin && e < e->twin) firsts.push_back(e);
        backwards.insert(backwards.begin(), e);
    }
    const auto corners = [&mesh] {
        std::vector<std::vector<TopoMeshVertex>> found;
        for (const TopoMeshFace f : facesOf(mesh)) found.push_back(cornersOf(f));
        return found;
    };
    MeshEdgeSwapper swapper;
    swapper.getVetoSignal().addCallback([&](TopoMeshEdge e, bool& veto) {
        asked.push_back(e);
        veto = e.number() % 3 == 0;
    });
    const auto before = corners();
    const int count = swap(0, true, mesh, {}, swapper);
    EXPECT_EQ(std::exchange(asked, {}), firsts);
    EXPECT_NE(corners(), before);
    EXPECT_EQ(swap(2, true, mesh, {firsts.rbegin(), firsts.rend()}, swapper), count) << "back, in the opposite order";
    EXPECT_EQ(std::exchange(asked, {}), std::vector(firsts.rbegin(), firsts.rend()));
    EXPECT_EQ(corners(), before);
    swap(1, true, mesh, backwards, swapper);
    EXPECT_EQ(std::exchange(asked, {}), all) << "both halves, in order of creation";
    swap(2, true, mesh, backwards, swapper);
    EXPECT_EQ(asked, std::vector(all.rbegin(), all.rend()));
    EXPECT_EQ(numReports, 4);
    EXPECT_TRUE(checkTopology(mesh));
}

TEST(EdgeSwapper, RepeatedPassesMakeADelaunayTriangulation)
{
    Random random(3);
    for (const int form : {0, 1, 2}) {
        TopoMesh mesh;
        fillMoved(mesh, 0, random);
        MeshEdgeSwapper swapper;
        swapper.getVetoSignal().addCallback(angleSum);
        int numReports = 0;
        mesh.modifiedSignal().addCallback([&numReports](EntityModification&) { ++numReports; });
        const auto edges = listed(edgesOf(mesh));
        const int total = swap(form, false, mesh, edges, swapper);
        EXPECT_GT(total, 40);
        EXPECT_EQ(meshSwapEdgesRepeatedly(mesh, swapper), 0);
        EXPECT_EQ(numReports, 1);
        EXPECT_TRUE(checkTopology(mesh));
        for (const TopoMeshEdge e : edges) {
            if (!e->twin) continue;
            // d is outside of the circle through a, b and c.
            const auto from = [d = e->twin->prev->origin->point](TopoMeshVertex v) {
                const double x = v->point.x - d.x, y = v->point.y - d.y;
                return znLinear::Vector(x, y, x * x + y * y);
            };
            ASSERT_LT(dot(from(e->origin), cross(from(endOf(e)), from(e->prev->origin))), 1e-9);
        }
    }
}

TEST(EdgeSwapper, KeepsBoundariesAndFeatures)
{
    // Which edges of a grid may go: against those that can be counted.
    TopoMesh mesh;
    fill(mesh, makeGrid(6, 5));
    const auto onRim = [](TopoMeshVertex v) {
        return v->point.x == 0 || v->point.x == 5 || v->point.y == 0 || v->point.y == 4;
    };
    int numVetoed = 0;
    for (const TopoMeshEdge e : edgesOf(mesh)) {
        if (!e->twin) continue;
        const bool expected =
            (onRim(e->origin) && onRim(endOf(e))) || (onRim(e->prev->origin) && onRim(e->twin->prev->origin));
        EXPECT_EQ(vetoes(boundary, e), expected);
        numVetoed += expected;
    }
    EXPECT_EQ(numVetoed, 16);

    // A cube of many triangles: whatever is swapped at random, its six sides stay flat and face outward.
    CompactMesh cube;
    makeCube(cube);
    TopoMesh solid;
    fill(solid, cube);
    meshTwin(solid);
    for (int i = 0; i < 3; ++i)
        for (const TopoMeshFace f : listed(facesOf(solid))) solid.subdivideFace(f, f.centroid());
    Random random(4);
    MeshEdgeSwapper swapper;
    swapper.getVetoSignal().addCallback(MeshEdgeSwapper::preserveFeatures);
    swapper.getVetoSignal().addCallback(MeshEdgeSwapper::preventFoldover);
    swapper.getVetoSignal().addCallback([&random](TopoMeshEdge, bool& veto) { veto = veto || random.oneIn(2); });
    int numSwaps = 0;
    for (int pass = 0; pass < 20; ++pass) numSwaps += meshSwapEdgesOnce(solid, swapper);
    EXPECT_GT(numSwaps, 200);
    EXPECT_TRUE(checkTopology(solid));
    for (const TopoMeshFace f : facesOf(solid)) {
        const auto v = cornersOf(f);
        const znLinear::Normal normal(cross(v[1]->point - v[0]->point, v[2]->point - v[0]->point));
        ASSERT_NEAR(std::max({std::fabs(normal.dx), std::fabs(normal.dy), std::fabs(normal.dz)}), 1, 1e-9);
        ASSERT_NEAR(dot(normal, v[0]->point.asVector()), 1, 1e-9);
    }
}

TEST(EdgeSwapper, EndsOnAnyMesh)
{
    // Five points on a line, but for the last bits: with these the sums of angles have led round in a circle. Points
    // that are none;
    // fans that touch; sides of three triangles; twins that run the same way.
    const double onLine[5][3] = {{1.1203984433004874, -0.76537255672806859, 0.12533812656399457},
                                 {1.8818168234387191, 0.31976969946627171, -0.052365785408313208},
                                 {1.82261179809286, 0.23539312482909902, -0.038548198537782498},
                                 {1.393758395210102, -0.3757911613925331, 0.061539912470342802},
                                 {1.8387170641734447, 0.25834568970955696, -0.042306932054768591}};
    const int faces[][3] = {{0, 1, 2}, {0, 2, 3}, {0, 3, 4}, {3, 4, 5}, {5, 4, 6}, {6, 5, 7}, {6, 7, 8},
                            {8, 9, 1}, {0, 2, 7}, {7, 2, 0}, {9, 8, 6}, {1, 2, 9}, {2, 1, 9}, {5, 6, 9}};
    for (const int numFaces : {3, 14})
        for (const Predicate also : {angleSum, foldover, boundary, features, Predicate()}) {
            if (!also && numFaces > 3) continue; // to swap whatever can be goes round for long there
            Random random(5);
            TopoMesh mesh;
            std::vector<TopoMeshVertex> v;
            for (int i = 0; i < 10; ++i)
                v.push_back(mesh.allocVertex(i < 5 ? Point(onLine[i][0], onLine[i][1], onLine[i][2]) : random.point()));
            v[6]->point.x = inf;
            v[8]->point.y = double(NAN);
            for (int f = 0; f < numFaces; ++f) {
                const auto corner = [&](int i) { return v[static_cast<size_t>(faces[f][i])]; };
                mesh.allocTriangle(corner(0), corner(1), corner(2));
            }
            meshTwin(mesh);
            MeshEdgeSwapper swapper;
            int numCalls = 0;
            if (also) {
                swapper.getVetoSignal().addCallback(angleSum);
                swapper.getVetoSignal().addCallback(also);
            }
            swapper.getVetoSignal().addCallback([&numCalls](TopoMeshEdge, bool&) { ++numCalls; });
            meshSwapEdgesRepeatedly(mesh, swapper);
            EXPECT_TRUE(checkTopology(mesh, false));
            EXPECT_LT(numCalls, 4000);
            for (const int form : {1, 2}) swap(form, false, mesh, listed(edgesOf(mesh)), swapper);
            EXPECT_TRUE(checkTopology(mesh, false));
        }

    // A policy that never has enough is stopped when it goes back and forth; one that counts gets its hundred.
    for (const int limit : {90, 1000000}) {
        Pair pair({0, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, 0});
        MeshEdgeSwapper swapper;
        int numCalls = 0;
        swapper.getVetoSignal().addCallback([&](TopoMeshEdge, bool& veto) { veto = ++numCalls > limit; });
        const int count = meshSwapEdgesRepeatedly(pair.mesh, swapper);
        EXPECT_TRUE(limit == 90 ? count == 90 : count >= 100 && count < 110) << count;
    }
}
