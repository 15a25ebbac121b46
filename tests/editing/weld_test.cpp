#include "znGeom/editing/weld.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <regex>

#include <gtest/gtest.h>

#include "tests/support/meshes.h"
#include "tests/support/moving_allocator.h"
#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"
#include "znGeom/editing/internal/vertex_order.h"

using namespace znGeom;

namespace {

using Key = std::vector<float>;

/// The numbers that take part in the order, most significant first.
Key keyOf(const CompactMesh& mesh, int vertex)
{
    const auto take = [vertex](Key& key, const float* values, int count) {
        if (values) key.insert(key.end(), values + count * vertex, values + count * (vertex + 1));
    };
    Key key;
    take(key, mesh.getVerticesRaw(), 3);
    if (mesh.getNormalsRaw() && !mesh.getNormalsComputed()) {
        take(key, mesh.getNormalsRaw(), 3);
        take(key, mesh.getUVsRaw(), 2);
    }
    return key;
}

/// What welding promises, written down plainly: the map, and the number of vertices that stay.
std::vector<int> expectedRemap(const CompactMesh& mesh, const IMeshVertexEqualityChecker& checker, int& count)
{
    std::vector<int> order(static_cast<size_t>(mesh.getNumVertices())), remap(order.size());
    std::iota(order.begin(), order.end(), 0);
    std::vector<Key> keys;
    for (const int v : order) keys.push_back(keyOf(mesh, v));
    const auto key = [&keys](int v) -> Key& { return keys[static_cast<size_t>(v)]; };
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return key(a) < key(b); });
    int first = -1;
    count = 0;
    for (const int v : order) {
        const bool same = first >= 0 && checker.areEqual(key(first).data(), key(v).data()) &&
                          std::equal(key(first).begin() + 3, key(first).end(), key(v).begin() + 3);
        if (!same) {
            first = v;
            ++count;
        }
        remap[static_cast<size_t>(v)] = count - 1;
    }
    if (count == mesh.getNumVertices()) std::iota(remap.begin(), remap.end(), 0);
    return remap;
}

/// Equality within a distance along x: merges neighbours, and would chain if it could.
class NearInX : public IMeshVertexEqualityChecker
{
public:
    bool areEqual(const float* a, const float* b) const override
    {
        return std::fabs(a[0] - b[0]) <= 1.0f && a[1] == b[1] && a[2] == b[2];
    }
};

/// Vertices, normals and UVs of few different values, both zeros among them; triangles, strips and fans over them.
CompactMesh makeRandomMesh(znTest::Random& random, int numVertices, bool normals, bool computed, bool uvs)
{
    const auto number = [&random] { return static_cast<float>(random.below(3)) * (random.oneIn(2) ? -1.0f : 1.0f); };
    CompactMesh mesh;
    mesh.resizeVertexArray(numVertices);
    if (normals) mesh.allocNormalArray();
    mesh.setNormalsComputed(computed);
    if (uvs) mesh.allocUVArray();
    for (int v = 0; v < numVertices; ++v) {
        mesh.getVertices()[v].set(number(), number(), 0.0f);
        if (normals) mesh.getNormals()[v].set(0, 0, random.oneIn(4) ? -1.0f : 1.0f);
        if (uvs) mesh.getUVs()[v].set(random.oneIn(4) ? 0.5f : 0.0f, 0.0f);
    }
    std::vector<int> corners(static_cast<size_t>(3 * numVertices));
    for (int& corner : corners) corner = random.below(numVertices);
    mesh.copyTriangles(numVertices, corners.data());
    mesh.resizeTriStripArrays(4, 1);
    mesh.resizeTriFanArrays(3, 1);
    std::copy_n(corners.begin(), 4, mesh.getTriStripPoints());
    std::copy_n(corners.begin(), 3, mesh.getTriFanPoints());
    *mesh.getTriStripLengths() = 4;
    *mesh.getTriFanLengths() = 3;
    return mesh;
}

void expectMapped(const int* before, const int* after, int count, const std::vector<int>& remap)
{
    for (int i = 0; i < count; ++i) ASSERT_EQ(after[i], remap[static_cast<size_t>(before[i])]) << i;
}

/// Every surviving record of a channel is that of the highest old vertex which came there, bit for bit.
void expectMoved(const float* before, const float* after, int width, const std::vector<int>& remap)
{
    std::vector<int> lastOf(remap.size(), -1);
    for (size_t v = 0; v < remap.size(); ++v) lastOf[static_cast<size_t>(remap[v])] = static_cast<int>(v);
    for (size_t i = 0; i < lastOf.size() && lastOf[i] >= 0; ++i)
        for (int c = 0; c < width; ++c) {
            const float expected = before[width * lastOf[i] + c], actual = after[width * static_cast<int>(i) + c];
            ASSERT_EQ(actual, expected);
            ASSERT_EQ(std::signbit(actual), std::signbit(expected));
        }
}

void expectWelded(const CompactMesh& before, IMeshVertexEqualityChecker* checker)
{
    int count = 0;
    DefaultMeshVertexEqualityChecker defaultChecker;
    const IMeshVertexEqualityChecker& exact = defaultChecker;
    const IMeshVertexEqualityChecker& asked =
        checker ? static_cast<const IMeshVertexEqualityChecker&>(*checker) : exact;
    const std::vector<int> expected = expectedRemap(before, asked, count);
    CompactMesh mesh = before;
    znUtil::Progress progress;
    Remap remap;
    if (checker)
        meshCompact(mesh, progress, remap, *checker);
    else
        meshCompact(mesh, progress, remap);

    ASSERT_EQ(mesh.getNumVertices(), count);
    ASSERT_EQ(remap.range, count);
    ASSERT_EQ(std::vector<int>(remap.data(), remap.data() + remap.getDomainSize()), expected);
    expectMapped(before.getTrianglesRaw(), mesh.getTrianglesRaw(), 3 * before.getNumTriangles(), expected);
    expectMapped(before.getTriStripPoints(), mesh.getTriStripPoints(), 4, expected);
    expectMapped(before.getTriFanPoints(), mesh.getTriFanPoints(), 3, expected);
    expectMoved(before.getVerticesRaw(), mesh.getVerticesRaw(), 3, expected);
    if (before.getUVs()) expectMoved(before.getUVsRaw(), mesh.getUVsRaw(), 2, expected);
    if (mesh.getNormals()) expectMoved(before.getNormalsRaw(), mesh.getNormalsRaw(), 3, expected);
    EXPECT_EQ(progress.get(), 1.0);
}

CompactMesh makeSoupCube()
{
    CompactMesh cube, soup;
    znTest::makeCube(cube);
    znTest::makeSoup(soup, cube);
    return soup;
}

} // namespace

TEST(Weld, equalsThePlainAlgorithm)
{
    znTest::Random random(1);
    NearInX nearInX;
    DefaultMeshVertexEqualityChecker exact;
    IMeshVertexEqualityChecker* const checkers[] = {nullptr, &nearInX, &exact};
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        const int numVertices = 4 + random.below(60);
        const CompactMesh mesh = makeRandomMesh(random, numVertices, round & 1, round & 2, round & 4);
        expectWelded(mesh, checkers[round % 3]);
    }
}

/// Runs of every length: all vertices at few places, in planes, on lines, and apart.
TEST(Weld, orderOfManyVerticesIsTheSameOnAnyPool)
{
    znUtil::ThreadPool one(1), two(2), seven(7);
    znTest::Random random(2);
    const int count = 150000;
    for (const auto& [nx, ny, nz] : {std::array{1, 1, 1}, {1, 5, 40000}, {2, 60, 30}, {50000, 2, 2}, {300, 300, 300}}) {
        std::vector<float> positions;
        for (int i = 0; i < count; ++i)
            for (const int n : {nx, ny, nz}) positions.push_back(static_cast<float>(random.below(n)) - 0.25f);
        for (int i = 0; i < 50; ++i) positions[static_cast<size_t>(random.below(3 * count))] = NAN;
        const zn::vector<VertexKey> keys{{positions.data(), 3}, {positions.data() + 1, 3}, {positions.data() + 2, 3}};
        const VertexOrder order = sortVertices(count, keys, one);
        std::vector<bool> seen(count);
        for (int i = 0; i < count; ++i) {
            ASSERT_FALSE(seen[static_cast<size_t>(order.vertex(i))]);
            seen[static_cast<size_t>(order.vertex(i))] = true;
            if (i == 0) continue;
            const float *a = positions.data() + 3 * order.vertex(i - 1), *b = positions.data() + 3 * order.vertex(i);
            ASSERT_EQ(order.sameAsBefore(i), std::equal(a, a + 3, b));
            if (std::isnan(a[0] + a[1] + a[2] + b[0] + b[1] + b[2])) continue;
            ASSERT_TRUE(std::lexicographical_compare(a, a + 3, b, b + 3) || std::equal(a, a + 3, b));
        }
        for (znUtil::ThreadPool* pool : {&two, &seven}) {
            const VertexOrder other = sortVertices(count, keys, *pool);
            for (int i = 0; i < count; ++i) ASSERT_EQ(order.vertex(i), other.vertex(i));
        }
    }
}

TEST(Weld, aMeshWithoutDuplicatesStaysAsItIs)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, 2);
    mesh.allocSTArray();
    const CompactMesh before = mesh;
    const znTest::ChangeRecorder changes(mesh);
    znUtil::Progress progress;
    Remap remap;
    meshCompact(mesh, progress, remap);
    EXPECT_TRUE(changes.changes().empty());
    EXPECT_TRUE(mesh.getSTs());
    EXPECT_TRUE(std::equal(before.getTrianglesRaw(), before.getTrianglesRaw() + 3 * before.getNumTriangles(),
                           mesh.getTrianglesRaw()));
    EXPECT_EQ(remap.range, mesh.getNumVertices());
    for (int v = 0; v < mesh.getNumVertices(); ++v) ASSERT_EQ(remap(v), v);

    CompactMesh empty;
    meshCompact(empty, progress, remap);
    EXPECT_EQ(remap.getDomainSize(), 0);
}

TEST(Weld, tellsOnceWhatItDidAndLeavesOtherChannelsAlone)
{
    CompactMesh mesh = makeSoupCube();
    mesh.allocNormalArray();
    mesh.setNormalsComputed(true);
    mesh.allocUVArray();
    mesh.allocSTArray();
    mesh.allocTriangleNormalArray();
    mesh.allocAttributes("heat", 1)->asFloat()[0] = 7.0f;
    mesh.resizeLineArray(1);
    mesh.getLines()[0] = {{30, 31}};
    mesh.resizeTriStripArrays(3, 1);
    std::fill_n(mesh.getTriStripPoints(), 3, 35);
    const znTest::ChangeRecorder recorder(mesh);
    znUtil::Progress progress;
    meshCompact(mesh, progress);

    EXPECT_EQ(mesh.getNumVertices(), 8);
    EXPECT_FALSE(mesh.getNormals()) << "computed normals are not moved, and dropped";
    EXPECT_FALSE(mesh.getSTs());
    EXPECT_TRUE(mesh.getUVs() && mesh.getTriangleNormals());
    EXPECT_EQ(mesh.getAttributes("heat")->asFloat()[0], 7.0f);
    EXPECT_EQ(mesh.getLines()[0][0], 30);
    ASSERT_EQ(recorder.changes().size(), 1u);
    const znTest::Change& change = recorder.changes()[0];
    EXPECT_EQ(change.type, MeshModification::TopologyChanged);
    EXPECT_TRUE(change.hasVertexRemap && !change.hasTriangleRemap);
    EXPECT_EQ(change.modified, (znTest::Change::Channels{MeshModification::UVs, MeshModification::StripsAndFans}));
    EXPECT_EQ(change.valid, (znTest::Change::Channels{MeshModification::TriangleNormals}));
}

TEST(Weld, linesOfTheLog)
{
    CompactMesh mesh = makeSoupCube();
    mesh.allocNormalArray();
    znTest::LogRecorder log;
    znUtil::Progress progress;
    meshCompact(mesh, progress);
    const char* const stages[] = {"sorted vertices", "initialized remap", "remapped vertices", "remapped normals",
                                  "remapped triangles"};
    ASSERT_EQ(log.lines().size(), 6u);
    EXPECT_EQ(log.lines()[0], "meshCompact: 36 vertices, 12 triangles\n");
    for (size_t i = 0; i < 5; ++i)
        EXPECT_TRUE(
            std::regex_match(log.lines()[i + 1], std::regex("  " + std::string(stages[i]) + ": \\d+\\.\\d{6} s\n")));
    log.clear();
    meshCompact(mesh, progress);
    EXPECT_EQ(log.lines().size(), 3u) << "nothing to weld: nothing remapped";
}

TEST(Weld, notANumbersAreSameAsNothing)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(600);
    for (int v = 0; v < 600; ++v) mesh.getVertices()[v].set(v % 2 ? NAN : INFINITY, v % 3 ? 1.0f : -NAN, 0.0f);
    znUtil::Progress progress;
    Remap remap;
    meshCompact(mesh, progress, remap);
    EXPECT_EQ(mesh.getNumVertices(), 600 - 199) << "the 200 vertices without one become one";
}

TEST(Weld, worksWhereverTheArraysAreKept)
{
    znTest::MovingAllocator* allocator = new znTest::MovingAllocator;
    const zn::Reference<ArrayAllocator> owner(allocator);
    CompactMesh kept, plain = makeSoupCube();
    kept.setArrayAllocator(owner);
    kept = plain;
    znUtil::Progress progress;
    meshCompact(kept, progress);
    meshCompact(plain, progress);
    ASSERT_EQ(kept.getNumVertices(), 8);
    const CompactMesh &a = kept, &b = plain;
    EXPECT_TRUE(std::equal(a.getVerticesRaw(), a.getVerticesRaw() + 24, b.getVerticesRaw()));
    EXPECT_TRUE(std::equal(a.getTrianglesRaw(), a.getTrianglesRaw() + 36, b.getTrianglesRaw()));
    EXPECT_EQ(allocator->numFaults(), 0);
}
