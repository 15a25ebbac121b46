#include "znGeom/editing/weld.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <numeric>
#include <utility>

#include <gtest/gtest.h>

#include "tests/support/moving_allocator.h"
#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"
#include "znGeom/editing/duplicates.h"
#include "znGeom/editing/internal/vertex_order.h"

using namespace znGeom;
using znTest::toVector;

namespace {

using Key = std::vector<float>;

/// The numbers that take part in the order, most significant first.
Key keyOf(const CompactMesh& mesh, int vertex)
{
    Key key;
    const auto take = [&key, vertex](const float* values, int count) {
        if (values) key.insert(key.end(), values + count * vertex, values + count * (vertex + 1));
    };
    take(mesh.getVerticesRaw(), 3);
    if (!mesh.getNormalsRaw() || mesh.getNormalsComputed()) return key;
    take(mesh.getNormalsRaw(), 3);
    take(mesh.getUVsRaw(), 2);
    return key;
}

/// What welding promises, written down plainly: the map, and the number of vertices that stay.
std::vector<int> expectedRemap(const CompactMesh& mesh, const IMeshVertexEqualityChecker& checker, int& count)
{
    std::vector<int> order(mesh.getNumVertices()), remap(order);
    std::iota(order.begin(), order.end(), 0);
    std::vector<Key> keys;
    for (const int v : order) keys.push_back(keyOf(mesh, v));
    std::stable_sort(order.begin(), order.end(), [&keys](int a, int b) { return keys[a] < keys[b]; });
    const Key* first = nullptr;
    count = 0;
    for (const int v : order) {
        const Key& key = keys[v];
        const bool same = first && checker.areEqual(first->data(), key.data()) &&
                          std::equal(first->begin() + 3, first->end(), key.begin() + 3);
        if (!same) first = &key, ++count;
        remap[v] = count - 1;
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

/// Triangles over vertices of few different places, both zeros among them; by turns with normals, given or computed,
/// and with UVs.
CompactMesh makeRandomMesh(znTest::Random& random, int round)
{
    const auto number = [&random] { return static_cast<float>(random.below(3)) * (random.oneIn(2) ? -1.0f : 1.0f); };
    CompactMesh mesh = znTest::makeAnyMesh(random, random.oneIn(9) ? 1 : 0);
    if (round & 1) mesh.allocNormalArray();
    mesh.setNormalsComputed(round & 2);
    if (round & 4) mesh.allocUVArray();
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        mesh.getVertices()[v].set(number(), number(), 0.0f);
        if (mesh.getNormals()) mesh.getNormals()[v].set(0, 0, random.oneIn(4) ? -1.0f : 1.0f);
        if (mesh.getUVs()) mesh.getUVs()[v].set(random.oneIn(4) ? 0.5f : 0.0f, 0.0f);
    }
    return mesh;
}

/// Every surviving record of a channel is that of the highest old vertex that ended up there, bit for bit.
void expectMoved(const float* before, const float* after, int width, const std::vector<int>& remap)
{
    std::map<int, int> lastOf;
    for (int v = 0; v < int(remap.size()); ++v) lastOf[remap[v]] = v;
    for (const auto& [to, from] : lastOf)
        ASSERT_EQ(std::memcmp(after + width * to, before + width * from, width * sizeof(float)), 0) << to;
}

void expectWelded(const CompactMesh& before, IMeshVertexEqualityChecker* checker, CompactMesh& mesh)
{
    const DefaultMeshVertexEqualityChecker standard;
    const IMeshVertexEqualityChecker& exact = standard;
    int count = 0;
    const std::vector<int> expected = expectedRemap(before, checker ? *checker : exact, count);
    mesh = before;
    znUtil::Progress progress;
    Remap remap;
    if (checker)
        meshCompact(mesh, progress, remap, *checker);
    else
        meshCompact(mesh, progress, remap);

    const CompactMesh& after = mesh;
    ASSERT_EQ(after.getNumVertices(), count);
    ASSERT_EQ(remap.range, count);
    ASSERT_EQ(toVector(remap.data(), remap.getDomainSize()), expected);
    for (int i = 0; i < 3 * before.getNumTriangles(); ++i)
        ASSERT_EQ(after.getTrianglesRaw()[i], expected[before.getTrianglesRaw()[i]]);
    expectMoved(before.getVerticesRaw(), after.getVerticesRaw(), 3, expected);
    if (before.getUVs()) expectMoved(before.getUVsRaw(), after.getUVsRaw(), 2, expected);
    if (after.getNormals()) expectMoved(before.getNormalsRaw(), after.getNormalsRaw(), 3, expected);
    EXPECT_EQ(progress.get(), 1.0);
}

} // namespace

TEST(Weld, EqualsThePlainAlgorithm)
{
    znTest::Random random(1);
    NearInX nearInX;
    DefaultMeshVertexEqualityChecker exact;
    IMeshVertexEqualityChecker* const checkers[] = {nullptr, &nearInX, &exact};
    znTest::MovingAllocator* allocator = new znTest::MovingAllocator;
    const zn::Reference<ArrayAllocator> owner(allocator);
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        CompactMesh mesh;
        if (round % 5 == 0) mesh.setArrayAllocator(owner);
        expectWelded(makeRandomMesh(random, round), checkers[round % 3], mesh);
    }
    EXPECT_EQ(allocator->numFaults(), 0);
}

/// Runs of every length: all vertices at few places, in planes, on lines, and apart.
TEST(Weld, OrderOfManyVerticesIsTheSameOnAnyPool)
{
    znUtil::ThreadPool one(1), two(2), seven(7);
    znTest::Random random(2);
    const int count = 150000;
    for (const auto& [nx, ny, nz] : {std::array{1, 1, 1}, {1, 5, 40000}, {2, 60, 30}, {50000, 2, 2}, {300, 300, 300}}) {
        std::vector<float> positions;
        for (int i = 0; i < count; ++i)
            for (const int n : {nx, ny, nz}) positions.push_back(static_cast<float>(random.below(n)) - 0.25f);
        for (int i = 0; i < 50; ++i) positions[random.below(3 * count)] = NAN;
        const zn::vector<internal::VertexKey> keys{
            {positions.data(), 3}, {positions.data() + 1, 3}, {positions.data() + 2, 3}};
        const internal::VertexOrder order = internal::sortVertices(count, keys, one);
        std::vector<char> seen(count);
        for (int i = 0; i < count; ++i) {
            ASSERT_FALSE(std::exchange(seen[order.vertex(i)], true));
            if (i == 0) continue;
            const float *a = positions.data() + 3 * order.vertex(i - 1), *b = positions.data() + 3 * order.vertex(i);
            ASSERT_EQ(order.sameAsBefore(i), std::equal(a, a + 3, b));
            if (std::isnan(a[0] + a[1] + a[2] + b[0] + b[1] + b[2])) continue;
            ASSERT_TRUE(std::lexicographical_compare(a, a + 3, b, b + 3) || std::equal(a, a + 3, b));
        }
        for (znUtil::ThreadPool* pool : {&two, &seven}) {
            const internal::VertexOrder other = internal::sortVertices(count, keys, *pool);
            for (int i = 0; i < count; ++i) ASSERT_EQ(order.vertex(i), other.vertex(i));
        }
    }
}

TEST(Weld, ReportsOnceWhatItDidAndLeavesOtherChannelsAlone)
{
    CompactMesh mesh, cube;
    znTest::makeCube(cube);
    znTest::makeSoup(mesh, cube);
    mesh.allocNormalArray();
    mesh.setNormalsComputed(true);
    mesh.allocUVArray();
    mesh.allocSTArray();
    mesh.allocTriangleNormalArray();
    mesh.allocAttributes("heat", 1)->asFloat()[0] = 7.0f;
    mesh.resizeLineArray(1);
    mesh.getLines()[0] = {{30, 31}};
    mesh.resizeTriStripArrays(36, 1);
    mesh.resizeTriFanArrays(36, 1);
    std::copy_n(mesh.getTrianglesRaw(), 36, mesh.getTriStripPoints());
    std::copy_n(mesh.getTrianglesRaw(), 36, mesh.getTriFanPoints());
    const znTest::ChangeRecorder recorder(mesh);
    znUtil::Progress progress;
    meshCompact(mesh, progress);

    EXPECT_EQ(mesh.getNumVertices(), 8);
    EXPECT_FALSE(mesh.getNormals()) << "computed normals are dropped, not moved";
    EXPECT_FALSE(mesh.getSTs());
    EXPECT_TRUE(mesh.getUVs() && mesh.getTriangleNormals());
    EXPECT_EQ(mesh.getAttributes("heat")->asFloat()[0], 7.0f);
    EXPECT_EQ(mesh.getLines()[0][0], 30);
    EXPECT_TRUE(std::equal(mesh.getTriStripPoints(), mesh.getTriStripPoints() + 36, mesh.getTrianglesRaw()));
    EXPECT_TRUE(std::equal(mesh.getTriFanPoints(), mesh.getTriFanPoints() + 36, mesh.getTrianglesRaw()));
    ASSERT_EQ(recorder.changes().size(), 1u);
    const znTest::Change& change = recorder.changes()[0];
    EXPECT_EQ(change.type, MeshModification::TopologyChanged);
    EXPECT_TRUE(change.hasVertexRemap && !change.hasTriangleRemap);
    EXPECT_EQ(change.modified, (znTest::Change::Channels{MeshModification::UVs, MeshModification::StripsAndFans}));
    EXPECT_EQ(change.valid, (znTest::Change::Channels{MeshModification::TriangleNormals}));

    znTest::makeSoup(mesh, cube);
    mesh.allocNormalArray();
    znTest::LogRecorder log;
    meshCompact(mesh, progress);
    const znTest::Lines stages{"meshCompact: 36 vertices, 12 triangles\n",
                               "  sorted vertices: # s\n",
                               "  initialized remap: # s\n",
                               "  remapped vertices: # s\n",
                               "  remapped normals: # s\n",
                               "  remapped triangles: # s\n"};
    EXPECT_EQ(withoutTimes(log), stages);

    // Now that nothing is left to weld, nothing is remapped, dropped or reported.
    log.clear();
    mesh.allocSTArray();
    const znTest::ChangeRecorder again(mesh);
    const std::vector<int> corners = toVector(mesh.getTrianglesRaw(), 36);
    Remap remap;
    meshCompact(mesh, progress, remap);
    EXPECT_EQ(log.lines().size(), 3u);
    EXPECT_TRUE(again.changes().empty() && mesh.getSTs());
    EXPECT_EQ(toVector(mesh.getTrianglesRaw(), 36), corners);
    EXPECT_EQ(toVector(remap.data(), remap.getDomainSize()), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7}));

    CompactMesh empty;
    meshCompact(empty, progress, remap);
    EXPECT_EQ(remap.getDomainSize(), 0);
}

TEST(Weld, NaNsAreTheSameAsNothing)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(600);
    for (int v = 0; v < 600; ++v) mesh.getVertices()[v].set(v % 2 ? NAN : INFINITY, v % 3 ? 1.0f : -NAN, 0.0f);
    znUtil::Progress progress;
    Remap remap;
    meshCompact(mesh, progress, remap);
    EXPECT_EQ(mesh.getNumVertices(), 600 - 199) << "the 200 vertices without one become one";
}

TEST(Duplicates, AreAsManyAsWeldingMergesOfWhatIsFinite)
{
    znTest::Random random(5);
    for (int round = 0; round < 100; ++round) {
        CompactMesh mesh;
        mesh.resizeVertexArray(random.below(60));
        const float values[] = {0.0f, -0.0f, 1.0f, -1.0f, NAN, INFINITY};
        const int numValues = round % 2 ? 4 : 6;
        for (int i = 0; i < 3 * mesh.getNumVertices(); ++i) mesh.getVerticesRaw()[i] = values[random.below(numValues)];
        CompactMesh finite;
        std::vector<MeshVertex> kept;
        for (int v = 0; v < mesh.getNumVertices(); ++v)
            if (const float* p = &mesh.getVertices()[v].x; std::isfinite(p[0] + p[1] + p[2]))
                kept.push_back(mesh.getVertices()[v]);
        finite.copyVertices(int(kept.size()), kept.data());
        Remap remap;
        meshCompact(finite, remap);
        ASSERT_EQ(meshCountDuplicates(mesh), int(kept.size()) - remap.range);
    }
    CompactMesh cube;
    znTest::makeCube(cube);
    CompactMesh soup;
    znTest::makeSoup(soup, cube);
    znUtil::Progress progress;
    EXPECT_EQ(meshCountDuplicates(soup, progress), 28);
    EXPECT_EQ(progress.get(), 1);
    progress.cancel();
    EXPECT_EQ(meshCountDuplicates(soup, progress), 0);
}
