#include "znGeom/shells/offset.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <set>
#include <vector>

#include "tests/support/check_topology.h"
#include "tests/support/recorder.h"
#include "tests/support/same_bits.h"
#include "tests/support/shapes.h"
#include "tests/support/shared_meshes.h"
#include "tests/support/tangles.h"
#include "znGeom/analysis.h"
#include "znGeom/editing.h"
#include "znGeom/shells/internal/offset_nearness.h"
#include "znGeom/shells/internal/offset_pruning.h"
#include "znGeom/topology.h"

using namespace znGeom;
using znLinear::Point;
using znTest::checkTopology;

namespace {

/// A mesh with all that an offset is made from.
struct Source
{
    CompactMesh mesh;
    MeshAdjTris adjTris;
    MeshAdjVertices adjVertices;
    MeshBoundaries boundaries;
    std::unique_ptr<Octree> octree;

    explicit Source(const CompactMesh& source, double scale = 1) : mesh(source)
    {
        for (int i = 0; i < 3 * mesh.getNumVertices(); ++i)
            mesh.getVerticesRaw()[i] = float(double(mesh.getVerticesRaw()[i]) * scale);
        meshAdjTris(mesh, adjTris);
        meshAdjVertices(mesh, adjTris, adjVertices);
        meshComputeBoundary(mesh, adjTris, adjVertices, boundaries);
        octree = std::make_unique<Octree>(mesh.getNumVertices(), mesh.getVerticesRaw(), box(), true, 16);
    }
    BoundingBox box() const
    {
        BoundingBox result;
        meshBoundingBox(mesh, result);
        return result;
    }
    MeshOffset offset(double distance) const { return {mesh, *octree, boundaries, adjTris, distance}; }
};

using Result = std::unique_ptr<CompactMesh>;

Point placeOf(const CompactMesh& mesh, int vertex) { return mesh.getVertices()[vertex].asPoint(); }

/// Whether a half-edge mesh has no boundary but where a face repeats a vertex.
bool isClosed(const TopoMesh& mesh)
{
    for (const TopoMeshEdge e : edgesOf(mesh))
        if (!e->twin && e->origin != endOf(e)) return false;
    return true;
}

struct Count
{
    int components, euler;
    bool isClosed;
    friend bool operator==(const Count&, const Count&) = default;
};

Count countIn(const CompactMesh& mesh)
{
    TopoMesh topology;
    znTest::fill(topology, mesh);
    meshTwin(topology);
    EXPECT_TRUE(checkTopology(topology, false));
    const int numEdges = (topology.numEdges() + znTest::countBoundary(topology)) / 2;
    return {meshComponents(topology), topology.numVertices() - numEdges + topology.numFaces(), isClosed(topology)};
}

CompactMesh noisy(CompactMesh mesh, double size, std::uint64_t seed)
{
    znTest::Random random(seed);
    for (int i = 0; i < 3 * mesh.getNumVertices(); ++i) mesh.getVerticesRaw()[i] += float(random.real(-size, size));
    return mesh;
}

CompactMesh sphere(int levels, double radius = 1)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, levels, radius);
    return mesh;
}

CompactMesh torus(int around, int across)
{
    CompactMesh mesh;
    znTest::makeTorus(mesh, around, across);
    return mesh;
}

CompactMesh without(CompactMesh mesh, const std::set<int>& triangles)
{
    int kept = 0;
    for (int t = 0; t < mesh.getNumTriangles(); ++t)
        if (!triangles.contains(t)) mesh.getTriangles()[kept++] = mesh.getTriangles()[t];
    mesh.resizeTriangleArray(kept);
    return mesh;
}

/// Several borders, borders that touch at a vertex and at two, a one-sided band, three sheets on an edge, loose ones.
std::vector<CompactMesh> openShapes()
{
    std::vector<CompactMesh> shapes(2);
    znTest::makeAnnulus(shapes[0], 12);
    znTest::makeMobiusBand(shapes[1], 9);
    shapes.push_back(znTest::makeGrid(6, 5));
    shapes.push_back(without(znTest::makeGrid(7, 7), {14, 15, 28, 29, 42, 43, 30}));
    shapes.push_back(without(torus(9, 7), {0, 1, 14, 17, 40}));
    shapes.push_back(znTest::makeMesh(5, {{0, 1, 2}, {0, 3, 4}}));
    shapes.push_back(znTest::makeMesh(5, {{0, 1, 2}, {1, 0, 3}, {0, 1, 4}}));
    shapes.push_back(znTest::makeMesh(5, {{0, 1, 2}, {0, 1, 3}}));
    for (CompactMesh& mesh : shapes) mesh = noisy(mesh, 0.05, 3);
    return shapes;
}

double nearest2(const CompactMesh& mesh, const Point& point)
{
    double best = std::numeric_limits<double>::max();
    for (int i = 0; i < mesh.getNumVertices(); ++i) best = std::min(best, distance2(point, placeOf(mesh, i)));
    return best;
}

/// Pruning without tables: every pass looks at every vertex, and removal reads like its description.
class PlainPruning
{
public:
    PlainPruning(TopoMesh& mesh, const internal::OffsetShell& shell, double leastCosine)
        : m_mesh(mesh), m_shell(shell), m_leastCosine(leastCosine), m_isUntried(shell.size(), true),
          m_isKept(shell.size(), true)
    {}

    void run(const CompactMesh& source, double distance)
    {
        const double limit = distance * distance;
        bool hasRemoved = false;
        for (int i = 0; i < m_shell.size(); ++i)
            if (limit - nearest2(source, m_shell.copies[i].point()) > 1e-9 * limit && remove(m_shell.copies[i])) {
                m_isUntried[i] = m_isKept[i] = false;
                hasRemoved = true;
            }
        for (bool again = hasRemoved; again;) {
            again = false;
            for (int i = 0; i < m_shell.size(); ++i) {
                if (!m_isUntried[i] || !isTurned(i)) continue;
                again = true;
                m_isUntried[i] = false;
                if (remove(m_shell.copies[i])) m_isKept[i] = false;
            }
        }
    }
    bool isKept(int i) const { return m_isKept[i]; }
    bool isUntried(int i) const { return m_isUntried[i]; }
    bool isTurned(int i) const
    {
        const znLinear::Vector normal = m_shell.normals[i];
        for (const TopoMeshEdge e : outgoingOf(m_shell.copies[i])) {
            if (m_shell.isSource(endOf(e)) || m_shell.isSource(e->prev->origin)) continue;
            const znLinear::Vector facing =
                cross(e->prev->origin->point - endOf(e)->point, e->origin->point - endOf(e)->point);
            if (dot(facing, normal) > m_leastCosine * facing.length()) return true;
        }
        return false;
    }

private:
    bool remove(TopoMeshVertex vertex)
    {
        int valence = vertex.valence();
        if (!vertex->edge || int(znTest::listed(fanOf(vertex)).size()) != valence || boundaryOut(vertex->edge))
            return false;
        std::vector<TopoMeshEdge> queue;
        for (TopoMeshEdgeVertexIterator spokes(vertex); valence > 3 && spokes.valid();) {
            const TopoMeshEdge spoke = spokes.edge;
            spokes.next();
            if (m_mesh.swapEdge(spoke)) --valence, queue.push_back(spoke);
        }
        if (valence != 3) return false;
        m_mesh.deleteVertex(vertex);
        const std::set<TopoMeshEdge> swapped(queue.begin(), queue.end());
        const size_t most = 64 + 16 * queue.size();
        for (size_t next = 0, count = 0; next < queue.size() && count < most; ++next) {
            const TopoMeshEdge e = queue[next];
            bool veto = false;
            MeshEdgeSwapper::minimizeOppositeAngleSum(e, veto);
            if (veto || !m_mesh.swapEdge(e)) continue;
            ++count;
            for (const TopoMeshEdge side : {e->next, e->prev, e->twin->next, e->twin->prev})
                if (swapped.contains(side)) queue.push_back(side);
        }
        return true;
    }

    TopoMesh& m_mesh;
    const internal::OffsetShell& m_shell;
    double m_leastCosine;
    zn::vector<bool> m_isUntried, m_isKept;
};

/// A shell as the library makes it, before it becomes a flat mesh.
struct Built
{
    TopoMesh mesh;
    internal::OffsetShell shell;

    Built(const Source& source, double distance)
    {
        znTest::fill(mesh, source.mesh);
        meshTwin(mesh);
        shell = internal::makeOffsetShell(mesh, source.boundaries, distance);
    }
    MeshOffsetPruning prune(const Source& source, double distance, double leastCosine, BitVector& kept)
    {
        zn::vector<Point> points;
        for (const TopoMeshVertex copy : shell.copies) points.append(copy.point());
        const BitVector tooClose = internal::findTooClose(*source.octree, points, distance);
        return internal::pruneOffset(mesh, shell, tooClose, leastCosine, kept);
    }
    std::vector<int> describe() const
    {
        std::vector<int> all;
        for (const TopoMeshFace face : facesOf(mesh))
            for (const TopoMeshEdge e : sidesOf(face)) all.push_back(e->origin.number());
        return all;
    }
};

} // namespace

TEST(Offset, LosesNoVertexOfASphereAtAnySize)
{
    for (double radius = 1e-4; radius < 2e5; radius *= 10)
        for (const double part : {0.01, 0.3, -0.02, -0.5}) {
            const Source source(sphere(4, radius));
            MeshOffset offset = source.offset(part * radius);
            Array<int> remap, indices;
            const Result shell(offset.calculate(remap, indices));
            EXPECT_EQ(shell->getNumVertices(), 2 * source.mesh.getNumVertices()) << radius << " " << part;
            EXPECT_EQ(offset.pruning().tooClose + offset.pruning().turned, 0);
            for (int i = 0; i < indices.size(); ++i) {
                const double reached = distance(placeOf(*shell, indices.read()[i]), Point(0, 0, 0));
                EXPECT_NEAR(reached / radius, 1 - part, 1e-3);
            }
        }
}

TEST(Offset, GivesBoxesWorkedOutByHand)
{
    // The three faces at a corner count alike, however they are divided: it moves along the diagonal.
    CompactMesh cube;
    znTest::makeCube(cube);
    for (const double moved : {0.3, -0.7}) {
        const Source source(cube);
        MeshOffset offset = source.offset(moved);
        const Result shell(offset.calculate(true)), copy(offset.calculate(false));
        EXPECT_EQ(copy->getNumVertices(), 8);
        EXPECT_EQ(copy->getNumTriangles(), 12);
        const double half = 1 - moved / std::sqrt(3.0);
        for (int i = 0; i < 8; ++i)
            for (int axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(placeOf(*copy, i)[axis], half * cube.getVertices()[i].asPoint()[axis], 1e-6);
        EXPECT_NEAR(meshVolume(*copy), -8 * half * half * half, 1e-5);
        EXPECT_NEAR(meshVolume(*shell), 8 - 8 * half * half * half, 1e-5);
    }
    // A flat sheet faces +z: its copy lies below and faces down.
    const Source sheet(znTest::makeGrid(4, 3));
    MeshOffset offset = sheet.offset(0.25);
    const Result box(offset.calculate(true)), below(offset.calculate(false));
    EXPECT_EQ(box->getNumTriangles(), 12 + 12 + 20);
    EXPECT_NEAR(meshVolume(*box), 6 * 0.25, 1e-6);
    EXPECT_EQ(countIn(*box), (Count{1, 2, true}));
    EXPECT_EQ(below->getNumTriangles(), 12);
    EXPECT_EQ(below->getNumVertices(), 12);
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(below->getVertices()[i].z, -0.25f);
        EXPECT_EQ(below->getNormals()[i].z, -1.0f);
    }
}

TEST(Offset, MakesClosedShells)
{
    for (const double distance : {0.02, 0.15, -0.1, 0.9, 0.0}) {
        for (const CompactMesh& mesh : {noisy(sphere(3), 0.02, 1), torus(24, 12), noisy(torus(15, 9), 0.03, 2)}) {
            const Count before = countIn(mesh);
            const Source source(mesh);
            const Result shell(source.offset(distance).calculate(true));
            EXPECT_EQ(countIn(*shell), (Count{2, 2 * before.euler, true})) << distance;
        }
        for (const CompactMesh& mesh : openShapes()) {
            const Source source(mesh);
            const Result shell(source.offset(distance).calculate(true));
            EXPECT_TRUE(countIn(*shell).isClosed) << distance;
            EXPECT_EQ(countIn(*shell).components, countIn(mesh).components);
        }
    }
    const Source fine(sphere(5)), ring(torus(96, 48));
    for (const Source* source : {&fine, &ring}) {
        const Result shell(source->offset(1e-3).calculate(true));
        EXPECT_NEAR(meshVolume(*shell) / (1e-3 * double(meshArea(source->mesh, MeshChannelVertices))), 1, 5e-3);
    }
}

TEST(Offset, PrunesAsPassesOverEverythingDo)
{
    std::vector<CompactMesh> shapes = openShapes();
    for (int seed = 0; seed < 12; ++seed) {
        shapes.push_back(noisy(seed % 2 ? torus(19, 11) : sphere(3), 0.02 * (1 + seed % 4), std::uint64_t(seed)));
        shapes.push_back(noisy(without(torus(14, 12), {3, 4, 5, 90, 200}), 0.07, std::uint64_t(seed)));
    }
    int numTooClose = 0, numTurned = 0, numFailed = 0;
    for (const CompactMesh& mesh : shapes)
        for (const double distance : {0.05, 0.2, -0.15, 0.6}) {
            const Source source(mesh);
            const double leastCosine = mesh.getNumVertices() % 2 ? 0.7 : 0;
            Built built(source, distance), plain(source, distance);
            BitVector kept;
            const MeshOffsetPruning found = built.prune(source, distance, leastCosine, kept);
            PlainPruning pruning(plain.mesh, plain.shell, leastCosine);
            pruning.run(source.mesh, distance);
            EXPECT_TRUE(checkTopology(built.mesh, false));
            EXPECT_TRUE(isClosed(built.mesh));
            EXPECT_EQ(built.describe(), plain.describe());
            int left = 0;
            for (int i = 0; i < kept.getSize(); ++i) {
                EXPECT_EQ(kept[i], pruning.isKept(i));
                left += kept[i] && pruning.isTurned(i);
                EXPECT_FALSE(found.tooClose > 0 && kept[i] && pruning.isUntried(i) && pruning.isTurned(i));
            }
            EXPECT_EQ(found.turnedLeft, left);
            EXPECT_EQ(kept.getNumSetBits(), kept.getSize() - found.tooClose - found.turned);
            numTooClose += found.tooClose, numTurned += found.turned, numFailed += found.turnedLeft;
        }
    EXPECT_GT(numTooClose, 1000);
    EXPECT_GT(numTurned, 500);
    EXPECT_GT(numFailed, 10);
}

TEST(Offset, LeavesThinPartsWhereOnlyWhatFacesBackGoes)
{
    // A disk with a thin rim, which inside is nearer than the distance.
    CompactMesh disk = sphere(5);
    for (int i = 0; i < disk.getNumVertices(); ++i) disk.getVertices()[i].z *= 0.08F;
    const Source source(noisy(disk, 0.002, 2));
    int numTurned[2] = {};
    double width[2] = {};
    for (const bool isBackOnly : {false, true}) {
        MeshOffset offset = source.offset(0.04);
        if (isBackOnly) offset.setTurnedFrom(0.7);
        const Result copy(offset.calculate(false));
        numTurned[isBackOnly] = offset.pruning().turned;
        for (int i = 0; i < copy->getNumVertices(); ++i)
            width[isBackOnly] = std::max(width[isBackOnly], std::hypot(placeOf(*copy, i).x, placeOf(*copy, i).y));
        EXPECT_GT(offset.pruning().tooClose, 0);
    }
    EXPECT_TRUE(width[1] > width[0] && numTurned[1] < numTurned[0])
        << width[0] << ' ' << width[1] << ' ' << numTurned[0] << ' ' << numTurned[1];
}

TEST(Offset, TellsWhereVerticesAre)
{
    const Source source(noisy(without(torus(30, 14), {7, 8}), 0.06, 5));
    for (const double distance : {0.3, -0.3}) {
        MeshOffset offset = source.offset(distance);
        Array<int> remap, indices;
        const Result shell(offset.calculate(remap, indices)), same(offset.calculate(true));
        EXPECT_TRUE(znTest::sameBits(*shell, *same));
        ASSERT_EQ(indices.size(), source.mesh.getNumVertices());
        ASSERT_GE(remap.size(), indices.size());
        int numLeft = 0;
        for (int i = 0; i < indices.size(); ++i) {
            EXPECT_EQ(placeOf(*shell, remap.read()[i]), placeOf(source.mesh, i));
            if (indices.read()[i] < 0) continue;
            ++numLeft;
            EXPECT_NEAR(znLinear::distance(placeOf(*shell, indices.read()[i]), placeOf(source.mesh, i)), 0.3, 1e-6);
        }
        EXPECT_EQ(shell->getNumVertices(), indices.size() + numLeft);
        EXPECT_LT(numLeft, indices.size());
        // The copy alone has the shell's triangles between copies.
        const Result copy(offset.calculate(false));
        int numBetween = 0;
        for (int t = 0; t < shell->getNumTriangles(); ++t) {
            const auto [a, b, c] = shell->getTriangles()[t].corners;
            numBetween += std::min({a, b, c}) >= source.mesh.getNumVertices();
        }
        EXPECT_EQ(copy->getNumTriangles(), numBetween);
        EXPECT_LE(copy->getNumVertices(), numLeft);
    }
}

TEST(Offset, IsWholeOnAnyInput)
{
    const double infinity = std::numeric_limits<double>::infinity();
    znTest::Random random(4);
    for (int round = 0; round < 30; ++round) {
        CompactMesh mesh = noisy(znTest::makeAnyMesh(random, round), 2, std::uint64_t(round));
        if (round % 10 == 9) mesh.getVertices()[1].x = std::numeric_limits<float>::quiet_NaN();
        const Source source(mesh);
        for (const double distance : {0.5, -2.0, infinity, std::nan("")}) {
            Built built(source, distance);
            BitVector kept;
            const MeshOffsetPruning found = built.prune(source, distance, 0, kept);
            EXPECT_TRUE(checkTopology(built.mesh, false)) << round;
            EXPECT_TRUE(isClosed(built.mesh)) << round;
            EXPECT_TRUE(std::isfinite(distance) || found.tooClose == 0);
            const Result shell(source.offset(distance).calculate(true)), copy(source.offset(distance).calculate(false));
            EXPECT_EQ(shell->getNumTriangles(), built.mesh.numFaces());
            EXPECT_LE(copy->getNumTriangles(), built.mesh.numFaces() - mesh.getNumTriangles());
        }
    }
    const Source empty{CompactMesh()}, points(znTest::makeMesh(3, {}));
    EXPECT_EQ(Result(empty.offset(1).calculate(true))->getNumVertices(), 0);
    EXPECT_EQ(Result(points.offset(1).calculate(true))->getNumTriangles(), 0);
}

TEST(Offset, FindsTheSameNearVerticesOnAnyNumberOfThreads)
{
    // From next to nothing to beyond the mesh: queries share what they look at, or go on their own.
    const Source source(noisy(torus(60, 30), 0.02, 9));
    for (const double distance : {1e-4, 0.02, -0.1, 0.4, -3.0}) {
        Built built(source, distance);
        zn::vector<Point> points;
        for (const TopoMeshVertex copy : built.shell.copies) points.append(copy.point());
        points[7].y = std::nan("");
        for (const int numThreads : {1, 2, 7}) {
            znUtil::ThreadPool pool(numThreads);
            const BitVector near = internal::findTooClose(*source.octree, points, distance, pool);
            for (int i = 0; i < points.size(); ++i)
                EXPECT_EQ(near[i], nearest2(source.mesh, points[i]) < distance * distance * (1 - 1e-9)) << i;
        }
    }
}

TEST(Offset, PrintsOneLineForEachQuery)
{
    const Source source(sphere(1));
    const znTest::LogRecorder log;
    const Result shell(source.offset(0.1).calculate(true));
    EXPECT_EQ(log.count("   meshClosestVertex: "), source.mesh.getNumVertices());
    EXPECT_EQ(log.count("meshTwin: "), 2);
}

TEST(RealOffset, RemovesWhatIsTooCloseFromSharedMeshesInAnyUnit)
{
    const bool found = znTest::forEachSharedMesh(12000, [](const CompactMesh& mesh) {
        for (const double scale : {1.0, 1e-3, 1e3})
            for (const double part : {0.005, -0.02}) {
                const Source source(mesh, scale);
                const double distance = part * double(source.box().diagonalLength());
                Built built(source, distance);
                BitVector kept;
                const MeshOffsetPruning pruning = built.prune(source, distance, 0, kept);
                EXPECT_TRUE(checkTopology(built.mesh, false));
                EXPECT_TRUE(isClosed(built.mesh));
                int numTooClose = 0;
                for (int i = 0; i < kept.getSize(); ++i)
                    numTooClose += kept[i] && nearest2(source.mesh, built.shell.copies[i].point()) <
                                                  distance * distance * (1 - 1e-6);
                EXPECT_LE(std::abs(pruning.tooCloseLeft - numTooClose), 2);
            }
    });
    if (!found) GTEST_SKIP() << "no shared meshes";
}
