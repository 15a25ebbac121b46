#include "znGeom/analysis/curvature.h"

#include <cmath>
#include <cstring>
#include <functional>
#include <numbers>

#include <gtest/gtest.h>

#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"
#include "znGeom/analysis/areas.h"
#include "znGeom/analysis/normals.h"
#include "znGeom/foundation/mesh/mesh_transform.h"

using namespace znGeom;
using namespace znLinear;

namespace {

constexpr double pi = std::numbers::pi;
constexpr MeshCurvature allTypes[] = {MeanCurvature, GaussianCurvature, MinCurvature, MaxCurvature};

std::vector<float> curvature(const CompactMesh& mesh, MeshCurvature type,
                             const AffineMatrixFlt& matrix = AffineMatrixFlt(), int numThreads = 2)
{
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    MeshAdjVertices adjVertices;
    meshAdjVertices(mesh, adjTris, adjVertices);
    std::vector<float> result(size_t(mesh.getNumVertices()), 77.0f);
    znUtil::ThreadPool pool(numThreads);
    meshCurvature(mesh, adjTris, adjVertices, matrix, type, result.data(), pool);
    return result;
}

CompactMesh withNormals(CompactMesh mesh)
{
    meshComputeNormals(mesh);
    return mesh;
}

CompactMesh sphere(int levels, double radius)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, levels, radius);
    return withNormals(mesh);
}

/// The columns x rows vertices of a sheet, moved to where `place` says.
CompactMesh sheet(int columns, int rows, const std::function<Point(double, double)>& place)
{
    CompactMesh mesh = znTest::makeGrid(columns, rows);
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        const Point at = place(double(mesh.getVertices()[v].x), double(mesh.getVertices()[v].y));
        mesh.getVertices()[v].set(&at.x);
    }
    return withNormals(mesh);
}

/// Sums at each vertex that need no fans: each triangle adds to its three corners what it knows.
struct CornerSums
{
    std::vector<Vector> edges;
    std::vector<double> angles, areas;

    explicit CornerSums(const CompactMesh& mesh)
        : edges(size_t(mesh.getNumVertices())), angles(edges.size(), 0.0), areas(edges.size(), 0.0)
    {
        for (int t = 0; t < mesh.getNumTriangles(); ++t)
            for (int i = 0; i < 3; ++i) add(mesh, mesh.getTriangles()[t], i);
    }
    void add(const CompactMesh& mesh, const MeshTriangle& triangle, int corner)
    {
        const int a = triangle[corner], b = triangle[(corner + 1) % 3], c = triangle[(corner + 2) % 3];
        const Point at[] = {mesh.getVertices()[a].asPoint(), mesh.getVertices()[b].asPoint(),
                            mesh.getVertices()[c].asPoint()};
        const Vector ab = at[1] - at[0], ac = at[2] - at[0], bc = at[2] - at[1];
        const double twice = cross(ab, ac).length();
        angles[size_t(a)] += std::atan2(twice, dot(ab, ac));
        // The angle at a weighs the side opposite, for the vertices at its ends.
        edges[size_t(b)] -= bc * (dot(ab, ac) / twice);
        edges[size_t(c)] += bc * (dot(ab, ac) / twice);
        const bool obtuse = dot(ab, ac) < 0 || dot(ab, bc) > 0 || dot(ac, bc) < 0;
        if (obtuse)
            areas[size_t(a)] += twice / (dot(ab, ac) < 0 ? 4 : 8);
        else
            areas[size_t(a)] += (ab.length2() * dot(ac, bc) + ac.length2() * -dot(ab, bc)) / twice / 8;
    }
    double value(const CompactMesh& mesh, MeshCurvature type, int vertex) const
    {
        const size_t v = size_t(vertex);
        const bool inward = dot(edges[v], mesh.getNormals()[vertex].asVector()) < 0;
        const double mean = edges[v].length() / areas[v] / 4 * (inward ? -1 : 1);
        const double gaussian = (2 * pi - angles[v]) / areas[v], spread = std::sqrt(std::fabs(mean * mean - gaussian));
        const double first = mean + spread, second = mean - spread;
        const bool firstLarger = std::fabs(first) >= std::fabs(second);
        if (type == MeanCurvature || type == GaussianCurvature) return type == MeanCurvature ? mean : gaussian;
        return firstLarger == (type == MaxCurvature) ? first : second;
    }
};

bool isInterior(const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices, int v)
{
    return adjVertices.numNeighbours(v) == adjTris.numTris(v) && adjTris.numTris(v) > 0;
}

} // namespace

TEST(Curvature, AgreesWithSumsEdgeByEdge)
{
    znTest::Random random(1);
    CompactMesh torus, ball = sphere(3, 0.02), scan = sheet(20, 15, [&random](double x, double y) {
                                                   return Point(x, y, std::sin(x / 3) + random.real(0, 0.4));
                                               });
    znTest::makeTorus(torus, 30, 17);
    for (int v = 0; v < torus.getNumVertices(); ++v) torus.getVertices()[v].x += float(random.real(0, 0.05));
    int numCompared = 0;
    for (const CompactMesh& mesh : {withNormals(torus), ball, scan}) {
        const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
        MeshAdjVertices adjVertices;
        meshAdjVertices(mesh, adjTris, adjVertices);
        const CornerSums sums(mesh);
        for (const MeshCurvature type : allTypes) {
            const std::vector<float> found = curvature(mesh, type);
            for (int v = 0; v < mesh.getNumVertices(); ++v) {
                if (!isInterior(adjTris, adjVertices, v)) continue;
                const double expected = sums.value(mesh, type, v);
                ASSERT_NEAR(found[size_t(v)], expected, 1e-5 * (std::fabs(expected) + 1)) << type << " " << v;
                ++numCompared;
            }
        }
    }
    EXPECT_GT(numCompared, 4 * (510 + 258 + 200));
}

TEST(Curvature, MeetsClosedForms)
{
    // Half a unit per cell around a cylinder, which has borders at both ends and a seam.
    const CompactMesh cylinder =
        sheet(80, 30, [](double x, double y) { return Point(2 * std::sin(x / 40), y / 20, -2 * std::cos(x / 40)); });
    const double onCylinder[] = {-0.25, 0, 0, -0.5};
    for (const MeshCurvature type : allTypes) {
        for (const float k : curvature(cylinder, type))
            EXPECT_NEAR(k, onCylinder[type], type == MinCurvature ? 2e-2 : 2e-3);
        for (const float k : curvature(znTest::makeGrid(5, 4), type)) EXPECT_EQ(k, 0);
    }
    const CompactMesh ball = sphere(5, 2);
    CompactMesh inward = ball;
    for (int i = 0; i < 3 * inward.getNumVertices(); ++i) inward.getNormalsRaw()[i] *= -1;
    for (const float h : curvature(ball, MeanCurvature)) EXPECT_NEAR(h, 0.5, 0.002);
    for (const float h : curvature(inward, MeanCurvature)) EXPECT_NEAR(h, -0.5, 0.002);
    for (const float k : curvature(ball, GaussianCurvature)) EXPECT_NEAR(k, 0.25, 0.012);
    CompactMesh torus;
    znTest::makeTorus(torus, 240, 120, 1, 0.25);
    const std::vector<float> means = curvature(withNormals(torus), MeanCurvature),
                             products = curvature(torus, GaussianCurvature);
    for (int v = 0; v < torus.getNumVertices(); ++v) {
        const MeshVertex& at = torus.getVertices()[v];
        const double around = std::hypot(double(at.x), double(at.y)), cosine = (around - 1) / 0.25;
        EXPECT_NEAR(means[size_t(v)], (1 + 0.5 * cosine) / (0.5 * around), 0.02);
        EXPECT_NEAR(products[size_t(v)], cosine / (0.25 * around), 0.02 * 5.34);
    }
}

TEST(Curvature, AddsUpToTheEulerNumber)
{
    // Closed, with a handle; with holes, where the turning of the border belongs to the sum; with two borders.
    znTest::Random random(4);
    CompactMesh torus, annulus, holes;
    znTest::makeTorus(torus, 20, 12), znTest::makeAnnulus(annulus, 17);
    holes = torus;
    const int removed[] = {0, 1, 40, 41, 42, 200};
    for (int i = 5; i >= 0; --i)
        std::copy(&holes.getTriangles()[removed[i] + 1], holes.getTriangles() + 480 - (5 - i),
                  &holes.getTriangles()[removed[i]]);
    holes.resizeTriangleArray(474);
    for (CompactMesh mesh : {torus, annulus, holes, sphere(2, 3)}) {
        for (int i = 0; i < 3 * mesh.getNumVertices(); ++i) mesh.getVerticesRaw()[i] += float(random.real(0, 0.05));
        const CornerSums sums(mesh);
        const std::vector<float> found = curvature(mesh, GaussianCurvature);
        const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
        MeshAdjVertices adjVertices;
        meshAdjVertices(mesh, adjTris, adjVertices);
        double sum = 0, total = 0;
        int numEdgeEnds = 0;
        for (int v = 0; v < mesh.getNumVertices(); ++v) {
            const int numBorders = adjVertices.numNeighbours(v) - adjTris.numTris(v);
            numEdgeEnds += adjVertices.numNeighbours(v);
            sum += numBorders == 0 ? double(found[size_t(v)]) * sums.areas[size_t(v)]
                                   : 2 * pi - sums.angles[size_t(v)] - pi * numBorders;
            total += sums.areas[size_t(v)];
        }
        const int euler = mesh.getNumVertices() - numEdgeEnds / 2 + mesh.getNumTriangles();
        EXPECT_NEAR(sum, 2 * pi * euler, 1e-4);
        EXPECT_NEAR(total / double(meshArea(mesh, MeshChannelVertices)), 1, 1e-5);
    }
}

TEST(Curvature, IsThatOfTheTransformedSurface)
{
    AffineMatrixFlt shear, twice(2.0f), mirror;
    shear[0][1] = 0.5f, shear[2][0] = -0.3f, shear[3][2] = 4, mirror[0][0] = -1;
    const CompactMesh mesh = sphere(3, 1);
    for (const MeshCurvature type : allTypes) {
        for (const AffineMatrixFlt& matrix : {shear, twice, mirror}) {
            CompactMesh moved = mesh;
            meshTransform(moved, matrix);
            EXPECT_EQ(curvature(mesh, type, matrix), curvature(moved, type));
        }
        const std::vector<float> plain = curvature(mesh, type), larger = curvature(mesh, type, twice),
                                 mirrored = curvature(mesh, type, mirror);
        for (size_t v = 0; v < plain.size(); ++v) {
            EXPECT_EQ(larger[v], plain[v] / (type == GaussianCurvature ? 4 : 2));
            EXPECT_FLOAT_EQ(mirrored[v], plain[v]);
        }
    }
    EXPECT_EQ(mesh.getVertices()[0].x, sphere(3, 1).getVertices()[0].x);
}

TEST(Curvature, GivesBordersTheMeanOfTheirNeighbours)
{
    // On 4 x 4 vertices, 0 and 15 are corners of two triangles, 3 and 12 of one; 16 is unused.
    CompactMesh mesh = sheet(4, 4, [](double x, double y) { return Point(x, y, 0.1 * x * x + 0.05 * y * y); });
    mesh.resizeVertexArray(17);
    for (const MeshCurvature type : allTypes) {
        const std::vector<float> k = curvature(mesh, type);
        EXPECT_EQ(k[0], k[5]);
        EXPECT_EQ(k[1], (k[5] + k[6]) / 2) << type;
        EXPECT_EQ(k[4], (k[5] + k[9]) / 2);
        EXPECT_EQ(k[3], (k[2] + k[7]) / 2);
        EXPECT_EQ(k[12], (k[8] + k[13]) / 2);
        EXPECT_EQ(k[16], 0);
        EXPECT_NE(k[5], k[9]);
    }
    EXPECT_EQ(curvature(mesh, MeshCurvature(4)), std::vector<float>(17, 0.0f));
    // Without a neighbour to take from.
    for (const float k : curvature(withNormals(znTest::makeMesh(3, {{0, 1, 2}})), GaussianCurvature)) EXPECT_EQ(k, 0);
    EXPECT_TRUE(curvature(CompactMesh(), MeanCurvature).empty());
}

TEST(Curvature, KeepsFlawsToThemselves)
{
    // Vertex 15 moves onto its right neighbour: two triangles lose their area.
    CompactMesh mesh = sheet(6, 6, [](double x, double y) { return Point(x, y, 0.1 * x * x + 0.05 * y); });
    const std::vector<float> sound = curvature(mesh, GaussianCurvature);
    mesh.getVertices()[15] = mesh.getVertices()[16];
    const std::vector<float> flawed = curvature(mesh, GaussianCurvature);
    std::vector<int> touched, broken;
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    for (const int t : adjTris.around(15))
        if (hasVertex(mesh.getTriangles()[t], 16))
            for (const int v : mesh.getTriangles()[t].corners) touched.push_back(v);
    for (int v = 0; v < 36; ++v)
        if (!std::isfinite(flawed[size_t(v)])) broken.push_back(v);
    for (const int v : broken) {
        const bool onBorder = v % 6 == 0 || v % 6 == 5 || v < 6 || v > 29;
        EXPECT_TRUE(onBorder || std::count(touched.begin(), touched.end(), v)) << v;
    }
    EXPECT_GE(broken.size(), 2u);
    EXPECT_EQ(flawed[0], sound[0]);
    EXPECT_EQ(flawed[7], sound[7]);
}

TEST(Curvature, DoesNotDependOnWindingOrOnTheOrderAroundAVertex)
{
    CompactMesh mesh = sphere(3, 1), mixed = mesh;
    for (int t = 0; t < mixed.getNumTriangles(); t += 3)
        std::swap(mixed.getTriangles()[t][0], mixed.getTriangles()[t][1]);
    for (const MeshCurvature type : allTypes) {
        const std::vector<float> expected = curvature(mesh, type), found = curvature(mixed, type);
        for (size_t v = 0; v < found.size(); ++v) EXPECT_NEAR(found[v], expected[v], 1e-5);
    }
    // Large enough to be worked on piece by piece; in disorder it is not.
    CompactMesh large, disordered;
    znTest::makeTorus(large, 300, 150);
    disordered = large;
    znTest::Random random(9);
    for (int t = large.getNumTriangles() - 1; t > 0; --t)
        std::swap(disordered.getTriangles()[t], disordered.getTriangles()[random.below(t + 1)]);
    const std::vector<float> expected = curvature(large, GaussianCurvature, {}, 1);
    EXPECT_EQ(curvature(large, GaussianCurvature, {}, 3), expected);
    const std::vector<float> found = curvature(disordered, GaussianCurvature);
    for (size_t v = 0; v < found.size(); ++v) ASSERT_NEAR(found[v], expected[v], 1e-5);
}

TEST(Curvature, HasTheSameBitsOnAnyNumberOfThreads)
{
    znTest::Random random(3);
    for (int round = 0; round < 60; ++round) {
        CompactMesh mesh = znTest::makeAnyMesh(random, round);
        for (int i = 0; round % 2 && i < 3 * mesh.getNumVertices(); ++i)
            mesh.getVerticesRaw()[i] = float(random.real(-1, 1));
        if (round % 4) meshComputeNormals(mesh);
        for (const MeshCurvature type : allTypes) {
            const std::vector<float> once = curvature(mesh, type, {}, 1);
            for (const int numThreads : {2, 7}) {
                const std::vector<float> again = curvature(mesh, type, {}, numThreads);
                ASSERT_EQ(std::memcmp(once.data(), again.data(), once.size() * sizeof(float)), 0) << round;
            }
        }
    }
    const znTest::LogRecorder log;
    curvature(znTest::makeGrid(2, 2), MeanCurvature);
    znTest::Lines lines = znTest::withoutTimes(log);
    lines.erase(lines.begin(), lines.begin() + 2); // of the adjacency
    EXPECT_EQ(lines, (znTest::Lines{"meshCurvature:  vertices 4  triangles 2\n", " cotangents computed in: # s\n",
                                    "  interior curvature computed: # s\n", "  boundary curvature computed: # s\n"}));
}
