#include "znGeom/curves/mesh_cut.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "tests/support/shared_meshes.h"
#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/analysis/components.h"
#include "znGeom/curves/lay_polyline.h"
#include "znGeom/curves/plane_section.h"
#include "znGeom/scopes/convert_rep.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Plane;
using znLinear::Point;
using znLinear::Vector;

namespace {

using Places = std::deque<std::deque<MeshCoord>>;
using Polyline = zn::vector<Point>;

double diagonalOf(const CompactMesh& mesh)
{
    double min[3], max[3];
    meshBoundingBox(mesh, min, max);
    return distance(Point(min), Point(max));
}

void addCurve(const zn::Reference<MeshCurve>& curve, Places& places)
{
    if (!curve || curve->coords.empty()) return;
    places.push_back(curve->coords);
    if (curve->closed) places.back().push_back(curve->coords.front());
}

/// A whole mesh as a half-edge mesh, with curves on it.
struct Cutting
{
    static BitVector all(int size)
    {
        BitVector bits(size);
        bits.setAllBits();
        return bits;
    }

    MeshAdjTris adjTris;
    MeshConvertRep rep;
    TopoMesh& topoMesh;
    TopoMeshCurves curves;

    Cutting(const CompactMesh& mesh, const Places& places, double tolerance)
        : adjTris(adjTrisOf(mesh)), rep(mesh, all(mesh.getNumTriangles()), all(mesh.getNumVertices()), adjTris),
          topoMesh(rep.extract())
    {
        for (const auto& run : places) {
            std::deque<TopoMeshCoord> coords;
            for (const MeshCoord& place : run) coords.push_back(rep.copy(place));
            MeshCurveTopology::convert(curves, coords, tolerance);
        }
    }
    TopoMeshCutResult operator()(double tolerance)
    {
        MeshCurveTopology::extend(curves, tolerance);
        MeshCurveTopology topology(topoMesh, curves, tolerance);
        topology.trimInteriorEndPoints();
        return meshCut(topoMesh, topology, nullptr);
    }
};

struct Sizes
{
    double area = 0, volume = 0, border = 0;
    int odd = 0; ///< faces that are no triangles

    explicit Sizes(const TopoMesh& mesh)
    {
        for (const TopoMeshFace face : facesOf(mesh)) {
            const auto corners = cornersOf(face);
            odd += corners.size() != 3;
            const Point a = corners[0]->point;
            const Vector normal = cross(corners[1]->point - a, corners[2]->point - a);
            area += 0.5 * normal.length();
            volume += dot(normal, a.asVector()) / 6;
            for (const TopoMeshEdge side : sidesOf(face))
                if (!side->twin) border += distance(side->origin->point, endOf(side)->point);
        }
    }
};

/// Curves that turn, cross themselves and each other, and end anywhere.
Places randomStrokes(const CompactMesh& mesh, const MeshLayPolyline& lay, Random& random, double size)
{
    Places places;
    for (int stroke = 1 + random.below(3); stroke > 0; --stroke) {
        Polyline points;
        Point at = mesh.getVertices()[random.below(mesh.getNumVertices())].asPoint();
        at += random.vector(0.2 * size);
        Vector step = random.vector(0.15 * size);
        for (int i = 2 + random.below(12); i > 0; --i) {
            points.append(at);
            step += random.vector(0.12 * size);
            at += step;
        }
        addCurve(lay(points, random.oneIn(2)).curve, places);
        if (random.oneIn(4))
            for (const auto& curve : meshPlaneSection(mesh, Plane(at, random.direction()))) addCurve(curve, places);
    }
    return places;
}

bool haveSameBits(const CompactMesh& a, const CompactMesh& b)
{
    const auto bytes = [](int count) { return static_cast<std::size_t>(count) * 12; };
    return a.getNumVertices() == b.getNumVertices() && a.getNumTriangles() == b.getNumTriangles() &&
           std::memcmp(a.getVertices(), b.getVertices(), bytes(a.getNumVertices())) == 0 &&
           std::memcmp(a.getTriangles(), b.getTriangles(), bytes(a.getNumTriangles())) == 0;
}

/// \return the number of cuts that were made
int checkRandomCuts(const CompactMesh& mesh, int rounds, std::uint64_t seed)
{
    const MeshAdjTris adjTris = adjTrisOf(mesh);
    const MeshLayPolyline lay(mesh, adjTris);
    const double size = diagonalOf(mesh), tolerance = 1e-6 * size;
    const Cutting uncut(mesh, {}, tolerance);
    const Sizes before(uncut.topoMesh);
    const bool isOriented = static_cast<bool>(checkTopology(uncut.topoMesh));
    int made = 0;
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        Random random(seed + static_cast<std::uint64_t>(round));
        const Places places = randomStrokes(mesh, lay, random, size);
        Cutting cutting(mesh, places, tolerance);
        const TopoMeshCutResult result = cutting(tolerance);
        if (result) {
            ++made;
            const Sizes after(cutting.topoMesh);
            EXPECT_TRUE(checkTopology(cutting.topoMesh, isOriented));
            EXPECT_EQ(after.odd, 0);
            EXPECT_NEAR(after.area, before.area, 1e-6 * before.area);
            EXPECT_TRUE(before.border > 0 || !isOriented ||
                        std::fabs(after.volume - before.volume) <= 5e-5 * std::fabs(before.volume));
            EXPECT_NEAR(after.border, before.border + 2 * result.account.openedLength, 1e-5 * size);
        }
        if (round % 8 != 0) continue;
        CompactMesh flat(mesh);
        const CompactMeshCutResult compact = meshCut(flat, adjTris, places, tolerance);
        EXPECT_EQ(static_cast<bool>(compact), static_cast<bool>(result));
        EXPECT_TRUE(compact || haveSameBits(flat, mesh));
        EXPECT_TRUE(!compact || flat.getNumTriangles() == cutting.topoMesh.numFaces());
    }
    return made;
}

/// A cut of a grid of 8 by 8 cells along polylines.
struct GridCut
{
    CompactMesh mesh = makeGrid(9, 9);
    CompactMeshCutResult result;
    int numPieces = 0;

    explicit GridCut(const std::vector<std::pair<Polyline, bool>>& polylines, double tolerance = 1e-5)
    {
        const MeshAdjTris adjTris = adjTrisOf(mesh);
        const MeshLayPolyline lay(mesh, adjTris);
        Places places;
        for (const auto& [points, closed] : polylines) addCurve(lay(points, closed).curve, places);
        result = meshCut(mesh, adjTris, places, tolerance);
        numPieces = meshComponents(mesh, adjTrisOf(mesh), nullptr);
    }
};

} // namespace

TEST(MeshCut, PartsTheSurfaceWhereCurvesCross)
{
    struct Case
    {
        std::vector<std::pair<Polyline, bool>> polylines;
        int numPieces;
        double length;
    };
    const Polyline level{{0, 4.3, 0}, {8, 4.3, 0}}, upright{{3.7, 0, 0}, {3.7, 8, 0}}, half{{3.7, 0, 0}, {3.7, 4.3, 0}};
    const Polyline ring{{2.2, 2.1, 0}, {5.3, 2.4, 0}, {5.1, 5.6, 0}, {2.4, 5.3, 0}};
    const Polyline eight{{1.2, 1.3, 0}, {6.3, 6.1, 0}, {6.4, 1.2, 0}, {1.1, 6.3, 0}};
    const Polyline hook{{0, 2.5, 0}, {5, 2.6, 0}, {5.1, 5.2, 0}, {2.4, 5.1, 0}, {2.5, 1.2, 0}};
    const double ringLength = 3.1 + 3.2 + 2.7 + 3.2;
    const Case cases[] = {
        {{{level, false}}, 2, 8},
        {{{{{0, 4, 0}, {8, 4, 0}}, false}}, 2, 8},                    // along edges
        {{{{{0, 0, 0}, {8, 8, 0}}, false}, {level, false}}, 4, 19.3}, // along diagonals, or across them
        {{{level, false}, {upright, false}}, 4, 16},
        {{{level, false}, {half, false}}, 3, 12.3},
        {{{level, false}, {level, false}}, 2, 8}, // once is enough
        {{{ring, true}}, 2, ringLength},
        {{{ring, true}, {level, false}}, 4, ringLength + 8},
        {{{eight, true}}, 3, 24.3},
        // Within one triangle, but for a point on its side, or at its corner; the second turns in and out.
        {{{{{2.5, 2, 0}, {2.7, 2.1, 0}, {2.6, 2.2, 0}}, true}}, 2, 0.59},
        {{{{{2, 2, 0}, {2.8, 2.1, 0}, {2.4, 2.16, 0}, {2.5, 2.3, 0}, {2.3, 2.12, 0}}, true}}, 2, 2.03},
        {{{hook, false}}, 2, 12.9}, // crosses itself, and its loose end is taken off
        {{{{{1.2, 4.3, 0}, {6.6, 4.3, 0}}, false}}, 0, 0},
    };
    for (const Case& each : cases) {
        const GridCut cut(each.polylines);
        SCOPED_TRACE(each.length);
        if (each.numPieces == 0) {
            EXPECT_EQ(cut.result.getStatus(), CompactMeshCutResult::NothingToCut);
            EXPECT_EQ(cut.result.account.curves.numTrimmed, 1);
            EXPECT_NEAR(cut.result.account.curves.trimmedLength, 5.4, 1.5);
            continue;
        }
        EXPECT_TRUE(cut.result);
        EXPECT_EQ(cut.numPieces, each.numPieces);
        EXPECT_NEAR(cut.result.account.openedLength, each.length, 0.35);
        EXPECT_EQ(cut.result.account.numUnopenedEdges, 0);
    }
    const GridCut along(cases[1].polylines);
    EXPECT_EQ(along.mesh.getNumVertices(), 90); // those of the row, twice
    EXPECT_EQ(GridCut(cases[5].polylines).result.account.curves.numRepeated, 1);
}

TEST(MeshCut, HoldsOnRandomStrokes)
{
    CompactMesh cube, torus, band;
    makeCube(cube);
    makeTorus(torus, 30, 20);
    makeNoisyScan(band, 20, 20);
    EXPECT_GT(checkRandomCuts(cube, 150, 1), 70);
    EXPECT_GT(checkRandomCuts(torus, 60, 2), 30);
    EXPECT_GT(checkRandomCuts(makeGrid(12, 12), 60, 3), 15);
    checkRandomCuts(band, 40, 4);
    // Unit and place of a mesh don't matter.
    for (const float scale : {1e-3F, 1e3F}) {
        CompactMesh scaled(torus);
        for (int v = 0; v < scaled.getNumVertices(); ++v) {
            MeshVertex& vertex = scaled.getVertices()[v];
            vertex.set(scale * (vertex.x + 3), scale * vertex.y, scale * vertex.z);
        }
        EXPECT_GT(checkRandomCuts(scaled, 20, 5), 8);
    }
}

TEST(MeshCut, HoldsOnRealMeshes)
{
    const auto check = [](const CompactMesh& mesh) {
        for (int v = 0; v < mesh.getNumVertices(); ++v)
            if (!isFinite(mesh.getVertices()[v])) return;
        if (mesh.getNumTriangles() > 0) checkRandomCuts(mesh, 6, 11);
    };
    if (!forEachSharedMesh(8000, check)) GTEST_SKIP() << "no meshes";
}

TEST(MeshCut, OpensClosedSurfaces)
{
    CompactMesh sphere, torus;
    makeSphere(sphere, 3);
    makeTorus(torus, 24, 16);
    for (const auto& [mesh, plane, pieces] : {std::tuple(&sphere, Plane({0.1, 0.2, 0.3}, znLinear::Normal(1, 2, 3)), 2),
                                              {&torus, Plane({0, 0, 0}, znLinear::Normal(0, 0.1, 1)), 2}}) {
        const MeshAdjTris adjTris = adjTrisOf(*mesh);
        Places places;
        double length = 0;
        for (const auto& curve : meshPlaneSection(*mesh, plane)) {
            addCurve(curve, places);
            length += curve->length(*mesh);
        }
        Cutting cutting(*mesh, places, 1e-7);
        const TopoMeshCutResult result = cutting(1e-7);
        EXPECT_TRUE(result);
        EXPECT_EQ(meshComponents(cutting.topoMesh), pieces);
        EXPECT_NEAR(result.account.openedLength, length, 1e-5);
        EXPECT_NEAR(Sizes(cutting.topoMesh).border, 2 * length, 1e-4);
        EXPECT_TRUE(checkTopology(cutting.topoMesh));
    }
}

TEST(MeshCut, TellsWhatIsWrongAndWhere)
{
    const CompactMesh grid = makeGrid(3, 3);
    const MeshAdjTris adjTris = adjTrisOf(grid);
    const auto at = [](int triangle, double w0, double w1, double w2) {
        MeshCoord coord;
        coord.triangle = triangle;
        coord.weights[0] = w0, coord.weights[1] = w1, coord.weights[2] = w2;
        return coord;
    };
    const Point centre = at(2, 1 / 3.0, 1 / 3.0, 1 / 3.0).evaluate(grid.getVertices(), grid.getTriangles());
    const std::deque<MeshCoord> loop{at(2, .6, .2, .2), at(2, .2, .6, .2), at(2, .2, .2, .6), at(2, .6, .2, .2)};
    const std::deque<MeshCoord> loose{at(2, .6, .2, .2), at(2, .2, .6, .2)};
    const std::deque<MeshCoord> nowhere{at(2, .6, .2, .2), at(8, 1, 0, 0)}, ahead{at(2, .6, .2, .2), at(-1, 1, 0, 0)};
    const std::deque<MeshCoord> notNumbers{at(2, .6, .2, .2), at(2, std::nan(""), 0, 0)};
    using Status = CompactMeshCutResult::Status;
    for (const auto& [curve, status] : {std::pair<std::deque<MeshCoord>, Status>{loop, Status::CurveLoopsInFace},
                                        {nowhere, Status::InvalidCurves},
                                        {ahead, Status::InvalidCurves},
                                        {notNumbers, Status::InvalidCurves},
                                        {{}, Status::NothingToCut},
                                        {{loop[0]}, Status::NothingToCut}}) {
        CompactMesh mesh(grid);
        const CompactMeshCutResult result = meshCut(mesh, adjTris, {curve}, 1e-6);
        EXPECT_FALSE(result);
        EXPECT_EQ(result.getStatus(), status);
        EXPECT_TRUE(haveSameBits(mesh, grid));
        EXPECT_TRUE(status != Status::CurveLoopsInFace || distance(result.getProblemPoint(), centre) < 1e-12);
    }
    CompactMesh mesh(grid);
    EXPECT_EQ(meshCut(mesh, adjTris, {}, 1e-6).getStatus(), Status::NothingToCut);
    // The two ends of this one are neither on the boundary nor on an edge, and nobody has extended or trimmed it.
    Cutting cutting(grid, {loose}, 1e-6);
    MeshCurveTopology topology(cutting.topoMesh, cutting.curves, 1e-6);
    const LogRecorder log;
    const TopoMeshCutResult result = meshCut(cutting.topoMesh, topology, nullptr);
    EXPECT_EQ(result.getStatus(), TopoMeshCutResult::CurveEndsInFace);
    EXPECT_EQ(result.getProblemPoint().w0, 0.6);
    EXPECT_EQ(log.lines().front(), "meshCut:  curves(1) IPoints(2) faces(8)\n");
    EXPECT_EQ(log.count("  after: faces(8)  "), 1);
    TopoMeshCurves none;
    MeshCurveTopology empty(cutting.topoMesh, none, 1e-6);
    EXPECT_EQ(meshCut(cutting.topoMesh, empty, nullptr).getStatus(), TopoMeshCutResult::InvalidCurves);
}

TEST(MeshCut, OpensSlitsAsFarAsVerticesAllow)
{
    // Along edges inside the surface: one does not open, two do, and so does one that comes from the boundary.
    for (const auto& [vertices, opened, unopened] : {std::tuple(std::vector<int>{20, 21}, 0, 1),
                                                     {std::vector<int>{20, 21, 22}, 2, 0},
                                                     {std::vector<int>{18, 19, 20, 21}, 3, 0}}) {
        const CompactMesh grid = makeGrid(9, 5);
        Cutting cutting(grid, {}, 1e-6);
        cutting.curves.append(TopoMeshCurve());
        for (const int vertex : vertices) {
            const TopoMeshVertex v = cutting.rep.getTopoMeshVertex(vertex);
            cutting.curves.front().append(zn::Reference<TopoMeshPoint>(new TopoMeshPoint(v, v->edge->face)));
        }
        MeshCurveTopology topology(cutting.topoMesh, cutting.curves, 1e-6);
        const TopoMeshCutResult result = meshCut(cutting.topoMesh, topology, nullptr);
        EXPECT_TRUE(result);
        EXPECT_EQ(result.account.numOpenedEdges, opened);
        EXPECT_EQ(result.account.numUnopenedEdges, unopened);
        EXPECT_EQ(Sizes(cutting.topoMesh).border, 24 + 2 * opened);
        EXPECT_TRUE(checkTopology(cutting.topoMesh));
    }
}

TEST(MeshCut, CleansUpBesideTheCut)
{
    // Just above a row of vertices: what stands between there and the row is taken out where the cut is straight.
    const auto cutAt = [](double bend, double tolerance) {
        Polyline points;
        for (int i = 0; i <= 16; ++i) points.append({0.5 * i, 4.02 + (i % 2 ? bend : -bend), 0});
        return GridCut({{points, false}}, tolerance).mesh.getNumVertices();
    };
    const int straight = cutAt(0, 1e-4);
    EXPECT_LT(straight, 81 + 12);
    EXPECT_GT(cutAt(5e-3, 1e-4), 81 + 24);
    EXPECT_EQ(cutAt(5e-5, 1e-3), straight);
    // No corner of a cube goes, however near the cut.
    CompactMesh cube;
    makeCube(cube);
    Places places;
    for (const auto& curve : meshPlaneSection(cube, Plane({0.98, 0.98, 0.98}, znLinear::Normal(1, 1, 1))))
        addCurve(curve, places);
    Cutting corner(cube, places, 1e-6);
    EXPECT_TRUE(corner(1e-6));
    EXPECT_NEAR(Sizes(corner.topoMesh).volume, 8, 1e-12);
    EXPECT_EQ(meshComponents(corner.topoMesh), 2);
}

TEST(MeshCut, CancelsWithoutATraceWherever)
{
    CompactMesh torus;
    makeTorus(torus, 40, 25);
    const MeshAdjTris adjTris = adjTrisOf(torus);
    Places places;
    for (const Vector& normal : {Vector(0, 1, 3), Vector(1, 0, -2), Vector(2, 1, 0)})
        for (const auto& curve : meshPlaneSection(torus, Plane({0, 0, 0.1}, znLinear::Normal(normal))))
            addCurve(curve, places);
    znUtil::Progress progress;
    int seen = 0, cancelAt = -1;
    progress.setObserver([&](double, const char*) {
        if (++seen == cancelAt) progress.cancel();
    });
    const auto begin = [&](int at) {
        progress.reset();
        seen = 0, cancelAt = at;
        if (at == 0) progress.cancel();
    };
    const auto cutFlat = [&] {
        CompactMesh mesh(torus);
        const CompactMeshCutResult result = meshCut(mesh, adjTris, places, 1e-6, progress);
        EXPECT_EQ(haveSameBits(mesh, torus), !result);
        return result.getStatus();
    };
    begin(-1);
    EXPECT_EQ(cutFlat(), CompactMeshCutResult::Success);
    const int numReports = seen;
    EXPECT_GT(numReports, 40);
    for (int at = 0; at <= numReports; at += at < 5 ? 1 : 3) {
        begin(at);
        EXPECT_EQ(cutFlat(), CompactMeshCutResult::Cancelled) << at << " of " << numReports;
    }
    // The half-edge mesh stays one of triangles, with the same surface.
    const double area = Sizes(Cutting(torus, {}, 0).topoMesh).area;
    TopoMeshCutResult::Status status = TopoMeshCutResult::Cancelled;
    for (int at = 0; status == TopoMeshCutResult::Cancelled; at += at < 5 ? 1 : 3) {
        SCOPED_TRACE(at);
        Cutting cutting(torus, places, 1e-6);
        MeshCurveTopology topology(cutting.topoMesh, cutting.curves, 1e-6);
        begin(at);
        status = meshCut(cutting.topoMesh, topology, nullptr, progress).getStatus();
        const Sizes after(cutting.topoMesh);
        EXPECT_EQ(after.odd, 0);
        EXPECT_NEAR(after.area, area, 1e-6 * area);
        EXPECT_TRUE(checkTopology(cutting.topoMesh));
        ASSERT_LE(at, numReports);
    }
}
