#include "znGeom/spatial/octree_partition.h"

#include <regex>

#include <gtest/gtest.h>

#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/spatial/box_predicates.h"
#include "znGeom/spatial/internal/partition_on_pool.h"
#include "znGeom/spatial/octree_traversal.h"

using namespace znGeom;
using znUtil::ThreadPool;

namespace {

zn::Reference<Octree> makeOctree(const CompactMesh& mesh, int leafCapacity)
{
    BoundingBox box;
    meshBoundingBox(mesh, box);
    return new Octree(mesh.getNumVertices(), mesh.getVerticesRaw(), box, true, leafCapacity);
}

struct Expected
{
    std::vector<std::vector<int>> sets;
    int coherent = 0, entries = 0;
};

/// The partition in one thread, by the public iterator and the full test alone.
template <typename MakeBox, typename Touches>
Expected partitionPlainly(const Octree& octree, int count, const MakeBox& makeBox, const Touches& touches)
{
    Expected result;
    result.sets.resize(static_cast<size_t>(octree.numLeaves()));
    const auto record = [&result](const OctreeIterator& leaf, int element) {
        result.sets[static_cast<size_t>(leaf.node->leafIndex)].push_back(element);
        ++result.entries;
    };
    OctreeIterator lastLeaf;
    for (int element = 0; element < count; ++element) {
        const BoundingBox box = makeBox(element);
        if (lastLeaf.node && lastLeaf.box.contains(box)) {
            record(lastLeaf, element);
            ++result.coherent;
            continue;
        }
        for (OctreeBBoxIntersectIt it(octree, box); it.valid(); it.next()) {
            lastLeaf = it.get();
            if (touches(lastLeaf.box, element)) record(lastLeaf, element);
        }
    }
    return result;
}

void expectSets(const ArrayOfSets& table, const Expected& expected)
{
    ASSERT_EQ(table.getNumSets(), static_cast<int>(expected.sets.size()));
    for (int k = 0; k < table.getNumSets(); ++k)
        ASSERT_EQ(std::vector<int>(table.getSet(k), table.getSet(k) + table.getSetSize(k)),
                  expected.sets[static_cast<size_t>(k)])
            << "leaf " << k;
}

void expectPartition(const CompactMesh& mesh, int leafCapacity)
{
    const zn::Reference<Octree> octree = makeOctree(mesh, leafCapacity);
    const auto corner = [&mesh](int triangle, int i) {
        return mesh.getVerticesRaw() + 3 * mesh.getTriangles()[triangle][i];
    };
    const auto makeBox = [&](int triangle) {
        BoundingBox box;
        meshTriBoundingBox(mesh.getVertices(), mesh.getTriangles()[triangle], box);
        return box;
    };
    const Expected expected =
        partitionPlainly(*octree, mesh.getNumTriangles(), makeBox, [&](const BoundingBox& leaf, int t) {
            return intersects(leaf, corner(t, 0), corner(t, 1), corner(t, 2));
        });
    for (const int numThreads : {1, 2, 7}) {
        SCOPED_TRACE(numThreads);
        ThreadPool pool(numThreads);
        const znTest::LogRecorder log;
        OctreeTris tris;
        computeOctreeTris(mesh, *octree, tris, pool);
        expectSets(tris.getData(), expected);
        char ratios[60];
        const float count = static_cast<float>(mesh.getNumTriangles());
        std::snprintf(ratios, sizeof ratios, "(%.2f coherence, %.2f voxels/tri, ",
                      static_cast<double>(static_cast<float>(expected.coherent) / count),
                      static_cast<double>(static_cast<float>(expected.entries) / count));
        ASSERT_EQ(log.lines().size(), 1u);
        EXPECT_NE(log.lines()[0].find(ratios), std::string::npos) << ratios << log.lines()[0];
    }
}

/// Small and large triangles; of the coordinates many lie where cells are split, and some are no numbers.
CompactMesh makeRandomSoup(znTest::Random& random, int numTriangles)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(3 * numTriangles);
    mesh.resizeTriangleArray(numTriangles);
    for (int t = 0; t < numTriangles; ++t) {
        const znLinear::Point middle = random.point(8.0);
        const double size = random.oneIn(8) ? 8.0 : 0.5;
        for (int i = 0; i < 3; ++i) {
            MeshVertex& vertex = mesh.getVertices()[3 * t + i];
            const znLinear::Point p = middle + random.vector(size);
            vertex.set(&p.x);
            if (t % 2) vertex.set(std::round(vertex.x), std::round(vertex.y), std::round(vertex.z));
            if (random.oneIn(200)) vertex.y = NAN;
            mesh.getTriangles()[t][i] = 3 * t + i;
        }
    }
    for (int i = 0; i < 3; ++i) mesh.getVertices()[i].set(NAN, NAN, NAN);
    return mesh;
}

} // namespace

TEST(OctreePartition, equalsThePlainAlgorithmOnAnyPool)
{
    CompactMesh torus, scan, grid;
    znTest::makeTorus(torus, 60, 40);
    znTest::makeNoisyScan(scan, 40, 40);
    znTest::makeGrid(grid, 33, 33);
    for (const CompactMesh* mesh : {&torus, &scan, &grid})
        for (const int capacity : {1, 16, 100000}) expectPartition(*mesh, capacity);
    znTest::Random random(4);
    for (int round = 0; round < 10; ++round) expectPartition(makeRandomSoup(random, 300), 4);
}

TEST(OctreePartition, linesEqualThePlainAlgorithmOnAnyPool)
{
    znTest::Random random(5);
    CompactMesh mesh = makeRandomSoup(random, 300);
    mesh.resizeLineArray(mesh.getNumVertices() - 1);
    for (int i = 0; i < mesh.getNumLines(); ++i) mesh.getLines()[i] = {{i, i + 1}};
    for (int v = 0; v < mesh.getNumVertices(); ++v)
        if (std::isnan(mesh.getVertices()[v].x + mesh.getVertices()[v].y)) mesh.getVertices()[v].set(0, 0, 0);
    const zn::Reference<Octree> octree = makeOctree(mesh, 8);
    const auto end = [&mesh](int line, int i) { return mesh.getVerticesRaw() + 3 * mesh.getLines()[line][i]; };
    const auto makeBox = [&end](int line) {
        BoundingBox box(end(line, 0));
        box.extend(end(line, 1));
        return box;
    };
    const Expected expected =
        partitionPlainly(*octree, mesh.getNumLines(), makeBox,
                         [&](const BoundingBox& leaf, int i) { return intersects(leaf, end(i, 0), end(i, 1)); });
    for (const int numThreads : {1, 2, 7}) {
        ThreadPool pool(numThreads);
        OctreeLines lines;
        meshOctreeLines(mesh, *octree, lines, pool);
        expectSets(lines.getData(), expected);
    }
}

TEST(OctreePartition, messagesAndEmptyInputs)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(1);
    mesh.getVertices()[0].set(1, 2, 3);
    const zn::Reference<Octree> octree = makeOctree(mesh, 16), empty = new Octree(0, nullptr, BoundingBox(), true, 16);
    znTest::LogRecorder log;
    OctreeTris tris;
    OctreeLines lines;
    computeOctreeTris(mesh, *octree, tris);
    meshOctreeLines(mesh, *octree, lines);
    EXPECT_EQ(tris.getData().getNumSets(), 1);
    EXPECT_EQ(tris.numTris(0), 0);
    const char* const rest = "in \\d+\\.\\d{3} seconds\\.\n {13}\\(-?nan coherence, -?nan ";
    ASSERT_EQ(log.lines().size(), 2u);
    EXPECT_TRUE(std::regex_match(log.lines()[0], std::regex(std::string("OctreeTris:  Partitioned 0 triangles into 1 "
                                                                        "voxels ") +
                                                            rest + "voxels/tri, 0 tri/sec\\)\n")))
        << log.lines()[0];
    EXPECT_TRUE(std::regex_match(log.lines()[1], std::regex(std::string("OctreeLines:  Partitioned 0 lines into 1 "
                                                                        "voxels ") +
                                                            rest + "duplication, 0 tri/sec\\)\n")))
        << log.lines()[1];
    log.clear();
    computeOctreeTris(mesh, *empty, tris);
    EXPECT_EQ(tris.getData().getNumSets(), 1) << "left as it was";
    EXPECT_TRUE(log.lines().empty());
}
