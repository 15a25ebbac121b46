#include "znGeom/spatial/trees/octree_partition.h"

#include <regex>

#include <gtest/gtest.h>

#include "tests/spatial/spatial_support.h"
#include "tests/support/recorder.h"
#include "znGeom/spatial/trees/internal/partition_on_pool.h"
#include "znGeom/spatial/trees/octree_traversal.h"

using namespace znGeom;
using znLinear::PointFlt;
using znUtil::ThreadPool;

namespace {

/// Triangles or lines against a single-threaded partition, by the public iterator and the full test alone.
template <bool areTriangles>
void expectPartition(const CompactMesh& mesh, int leafCapacity)
{
    const zn::Reference<Octree> octree = znTest::makeOctree(mesh, leafCapacity);
    const int count = areTriangles ? mesh.getNumTriangles() : mesh.getNumLines();
    std::vector<std::vector<int>> sets(static_cast<size_t>(octree->numLeaves()));
    int coherent = 0, entries = 0;
    OctreeIterator lastLeaf;
    for (int element = 0; element < count; ++element) {
        const auto at = [&](int i) {
            return mesh.getVerticesRaw() +
                   3 * (areTriangles ? mesh.getTriangles()[element][i] : mesh.getLines()[element][i]);
        };
        BoundingBox box;
        for (int i = 0; i < (areTriangles ? 3 : 2); ++i) box.extend(PointFlt(at(i)));
        const bool isCoherent = lastLeaf.node && lastLeaf.box.contains(box);
        const auto record = [&] { sets[size_t(lastLeaf.node->leafIndex)].push_back(element), ++entries; };
        if (isCoherent) record(), ++coherent;
        for (OctreeBBoxIntersectIt it(*octree, box); it.valid() && !isCoherent; it.next()) {
            lastLeaf = it.get();
            const bool touches =
                areTriangles ? intersects(lastLeaf.box, at(0), at(1), at(2)) : intersects(lastLeaf.box, at(0), at(1));
            if (touches) record();
        }
    }
    char ratios[60];
    std::snprintf(ratios, sizeof ratios, "(%.2f coherence, %.2f ", double(float(coherent) / float(count)),
                  double(float(entries) / float(count)));
    for (const int numThreads : {1, 2, 7}) {
        ThreadPool pool(numThreads);
        const znTest::LogRecorder log;
        OctreeTris tris;
        OctreeLines lines;
        areTriangles ? internal::computeOctreeTris(mesh, *octree, tris, pool)
                     : internal::meshOctreeLines(mesh, *octree, lines, pool);
        const ArrayOfSets& table = areTriangles ? tris.getData() : lines.getData();
        ASSERT_EQ(table.getNumSets(), static_cast<int>(sets.size()));
        for (int k = 0; k < table.getNumSets(); ++k)
            ASSERT_EQ(std::vector<int>(table.getSet(k), table.getSet(k) + table.getSetSize(k)), sets[size_t(k)])
                << "leaf " << k << " with threads: " << numThreads;
        ASSERT_EQ(log.lines().size(), 1u);
        EXPECT_NE(log.lines()[0].find(ratios), std::string::npos) << ratios << log.lines()[0];
    }
}

} // namespace

TEST(OctreePartition, EqualsThePlainAlgorithmOnAnyPool)
{
    CompactMesh torus, scan, grid;
    znTest::makeTorus(torus, 60, 40);
    znTest::makeNoisyScan(scan, 40, 40);
    znTest::makeGrid(grid, 33, 33);
    for (const CompactMesh* mesh : {&torus, &scan, &grid})
        for (const int capacity : {1, 16, 100000}) expectPartition<true>(*mesh, capacity);
    znTest::Random random(4);
    for (int round = 0; round < 10; ++round) {
        CompactMesh mesh = znTest::makeRandomSoup(random, 300);
        expectPartition<true>(mesh, 4);
        mesh.resizeLineArray(mesh.getNumVertices() - 1);
        for (int i = 0; i < mesh.getNumLines(); ++i) mesh.getLines()[i] = {{i, i + 1}};
        for (int v = 0; v < mesh.getNumVertices(); ++v)
            if (std::isnan(mesh.getVertices()[v].y)) mesh.getVertices()[v].set(0, 0, 0);
        expectPartition<false>(mesh, 8);
    }
}

TEST(OctreePartition, EqualsItWhereNearlyAllLiesOnTheFacesOfCells)
{
    CompactMesh grid; // on the plane that halves the box, so that each triangle lies within cells on both sides
    znTest::makeGrid(grid, 40, 40);
    const int numVertices = grid.getNumVertices();
    grid.resizeVertexArray(numVertices + 2);
    grid.getVertices()[numVertices].set(0, 0, -40);
    grid.getVertices()[numVertices + 1].set(0, 0, 40);
    for (const int capacity : {1, 16, 1000}) expectPartition<true>(grid, capacity);

    // Points 0 to 99 on a face of the first cell, 100 to 102 within it, the rest far off. Which cell a slice begins
    // with was decided by the last triangle that does not lie on the face, which may be thousands of places earlier.
    znTest::Random random(5);
    CompactMesh mesh;
    mesh.resizeVertexArray(400);
    for (int v = 0; v < 400; ++v) {
        const float x = float(random.real()), y = float(random.real());
        mesh.getVertices()[v].set(x, y, v < 100 ? 1.0f : v < 103 ? 0.5f : 1.25f);
        if (v >= 103) mesh.getVertices()[v].set(1 + x, 1 + y, float(random.real(1, 2)));
    }
    mesh.getVertices()[398].set(0, 0, 0);
    mesh.getVertices()[399].set(2, 2, 2);
    for (const int rarity : {1000000, 2000, 300}) {
        mesh.resizeTriangleArray(4000);
        mesh.resizeLineArray(4000);
        for (int i = 0; i < 4000; ++i) {
            const int first = i == 0 ? 100 : !random.oneIn(rarity) ? 0 : random.oneIn(2) ? 100 : 200;
            const auto corner = [&] { return first + random.below(first == 0 ? 100 : 3); };
            mesh.getTriangles()[i] = {{corner(), corner(), corner()}};
            mesh.getLines()[i] = {{corner(), corner()}};
        }
        expectPartition<true>(mesh, 128);
        expectPartition<false>(mesh, 128);
    }
}

TEST(OctreePartition, MessagesAndEmptyInputs)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(1);
    mesh.getVertices()[0].set(1, 2, 3);
    const zn::Reference<Octree> octree = znTest::makeOctree(mesh, 16), empty = znTest::makeOctree(CompactMesh(), 16);
    const znTest::LogRecorder log;
    OctreeTris tris;
    OctreeLines lines;
    computeOctreeTris(mesh, *octree, tris);
    meshOctreeLines(mesh, *octree, lines);
    computeOctreeTris(mesh, *empty, tris);
    EXPECT_EQ(tris.getData().getNumSets(), 1) << "left as it was by a tree without points, without a word";
    EXPECT_EQ(tris.numTris(0), 0);
    const char* const beginnings[] = {"OctreeTris:  Partitioned 0 triangles", "OctreeLines:  Partitioned 0 lines"};
    const char* const units[] = {"voxels/tri", "duplication"};
    ASSERT_EQ(log.lines().size(), 2u);
    for (size_t i = 0; i < 2; ++i) {
        const std::string pattern = std::string(beginnings[i]) +
                                    " into 1 voxels in \\d+\\.\\d{3} seconds\\.\n {13}\\(-?nan coherence, -?nan " +
                                    units[i] + ", 0 tri/sec\\)\n";
        EXPECT_TRUE(std::regex_match(log.lines()[i], std::regex(pattern))) << log.lines()[i];
    }
}
