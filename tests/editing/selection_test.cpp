#include "znGeom/editing.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>

#include <gtest/gtest.h>

#include "tests/support/moving_allocator.h"
#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"

using namespace znGeom;
using znTest::toVector;

namespace {

using Set = std::set<int>;
using Subsets = zn::list<zn::Reference<MeshSubset>>;

void select(BitVector& bits, int size, const Set& members)
{
    bits.resize(size);
    bits.clearBits();
    for (const int i : members) bits.setBit(i);
}

/// All of every tenth set.
Set randomSet(znTest::Random& random, int size, int percent)
{
    Set members;
    if (random.oneIn(10)) percent = 100;
    for (int i = 0; i < size; ++i)
        if (random.below(100) < percent) members.insert(i);
    return members;
}

Set membersOf(const BitVector& bits)
{
    Set members;
    for (int i = 0; i < bits.getSize(); ++i)
        if (bits.isSet(i)) members.insert(i);
    EXPECT_EQ(bits.getNumSetBits(), static_cast<int>(members.size()));
    return members;
}

Set trianglesWith(const CompactMesh& mesh, const Set& vertices, int minCorners)
{
    Set triangles;
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        const auto [a, b, c] = mesh.getTriangles()[t].corners;
        if (int(vertices.count(a) + vertices.count(b) + vertices.count(c)) >= minCorners) triangles.insert(t);
    }
    return triangles;
}

Set cornersOf(const CompactMesh& mesh, const Set& triangles)
{
    Set corners;
    for (const int t : triangles)
        for (const int corner : mesh.getTriangles()[t].corners) corners.insert(corner);
    return corners;
}

/// Expects these vertices, by their x and v, and triangles of an older mesh; corners without image are -1.
void expectPart(const CompactMesh& mesh, const CompactMesh& before, const Set& vertices, const Set& triangles)
{
    std::vector<int> xs, corners, expected;
    for (int v = 0; v < mesh.getNumVertices(); ++v) xs.push_back(int(mesh.getVertices()[v].x));
    ASSERT_EQ(xs, std::vector<int>(vertices.begin(), vertices.end()));
    for (size_t v = 0; before.getUVs() && v < xs.size(); ++v) ASSERT_EQ(int(mesh.getUVs()[v].v), xs[v]);
    for (const int t : triangles)
        for (const int corner : before.getTriangles()[t].corners)
            expected.push_back(vertices.count(corner) ? corner : -1);
    for (const int corner : toVector(mesh.getTrianglesRaw(), 3 * mesh.getNumTriangles()))
        corners.push_back(corner < 0 ? -1 : xs[size_t(corner)]);
    ASSERT_EQ(corners, expected);
}

CompactMesh makeSelectedMesh(znTest::Random& random, int round)
{
    CompactMesh mesh = znTest::makeAnyMesh(random, round);
    if (random.oneIn(2)) mesh.allocUVArray();
    for (int v = 0; mesh.getUVs() && v < mesh.getNumVertices(); ++v) mesh.getUVs()[v].set(0.0f, float(v));
    select(mesh.getSelectedTriangles(), mesh.getNumTriangles(), randomSet(random, mesh.getNumTriangles(), 50));
    select(mesh.getSelectedVertices(), mesh.getNumVertices(), randomSet(random, mesh.getNumVertices(), 80));
    return mesh;
}

Subsets partition(const CompactMesh& mesh, int parts)
{
    Subsets subsets;
    subsets.append(nullptr); // goes
    MeshPartition(mesh, znTest::adjTrisOf(mesh), parts).compute(subsets);
    return subsets;
}

using Lists = std::vector<std::vector<int>>;

Lists triangleLists(const Subsets& subsets)
{
    Lists lists;
    for (const auto& subset : subsets) lists.push_back(toVector(subset->triangles, subset->numTriangles));
    return lists;
}

} // namespace

TEST(MeshSelect, derivesAndGrowsAsSetsDo)
{
    znTest::Random random(1);
    for (int round = 0; round < 150; ++round) {
        SCOPED_TRACE(round);
        const CompactMesh mesh = znTest::makeAnyMesh(random, round);
        const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
        const Set chosen = randomSet(random, mesh.getNumVertices(), random.below(101));
        Set flood = randomSet(random, mesh.getNumTriangles(), random.below(10));
        BitVector triangles, vertices;
        select(triangles, mesh.getNumTriangles(), flood);
        select(vertices, mesh.getNumVertices(), chosen);
        MeshSelect meshSelect(mesh, adjTris, triangles, vertices);
        const auto grow = [&flood, &mesh] { flood.merge(trianglesWith(mesh, cornersOf(mesh, flood), 1)); };

        grow();
        meshSelect.selectTrianglesRecursive(true);
        ASSERT_EQ(membersOf(triangles), flood);
        for (size_t before = 0; std::exchange(before, flood.size()) != flood.size();) grow();
        meshSelect.selectTrianglesRecursive(false);
        ASSERT_EQ(membersOf(triangles), flood);
        meshSelect.invertTriangleSelection();
        flood.merge(membersOf(triangles));
        ASSERT_EQ(int(flood.size()), mesh.getNumTriangles());
        for (int minCorners = 4; minCorners > 0; --minCorners) {
            meshSelect.selectTrianglesFromVertices(minCorners);
            ASSERT_EQ(membersOf(triangles), trianglesWith(mesh, chosen, minCorners));
        }
        meshSelect.selectVerticesFromTriangles();
        ASSERT_EQ(membersOf(vertices), cornersOf(mesh, membersOf(triangles)));
        triangles.clearBits();
        meshSelect.selectVerticesFromTriangles();
        ASSERT_EQ(vertices.getNumSetBits(), 0) << "cleared also where nothing follows";
    }
}

TEST(MeshSelect, findsWhatPlacesLieOn)
{
    CompactMesh mesh;
    znTest::makeGrid(mesh, 5, 5);
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    const auto affected = [&](double a, double b, double c) { // in the triangle 6, 7, 12
        MeshCoord coord;
        coord.triangle = 10;
        coord.weights[0] = a, coord.weights[1] = b, coord.weights[2] = c;
        BitVector triangles, vertices;
        MeshSelect(mesh, adjTris, triangles, vertices).selectAffectedTriangles({MeshCoord(), coord});
        return membersOf(triangles);
    };
    EXPECT_EQ(affected(0.5, 0.5 - 1e-11, 1e-11), trianglesWith(mesh, {6, 7}, 1)) << "within the tolerance";
    EXPECT_EQ(affected(1e-11, 1 - 1e-11, 0), trianglesWith(mesh, {7}, 1));
    for (int v = 0; v < 25; ++v) mesh.getVertices()[v].x += 1e6f; // where rounding is coarse
    EXPECT_EQ(affected(0, 0, 0), Set());
    EXPECT_EQ(affected(0, 1, 0), trianglesWith(mesh, {7}, 1));
    EXPECT_EQ(affected(1.0 / 3, 2.0 / 3, 0), trianglesWith(mesh, {6, 7}, 1));
    EXPECT_EQ(affected(0.3, 0, 0.7), trianglesWith(mesh, {12, 6}, 1));
    EXPECT_EQ(affected(0.3, 0.3, 0.4), trianglesWith(mesh, {6, 7, 12}, 1));
}

TEST(MeshSelect, seesThroughAPolygonAndSaysWhatItDid)
{
    CompactMesh mesh;
    znTest::makeGrid(mesh, 4, 4);
    mesh.getVertices()[15].z = -1; // w = 0
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    znLinear::ProjMatrix halving(1.0);
    halving[2][3] = halving[3][3] = 2; // w = 2 z + 2
    select(mesh.getSelectedVertices(), 1, {0});
    select(mesh.getSelectedTriangles(), 40, {3, 33});
    const znTest::ChangeRecorder changes(mesh);
    znTest::LogRecorder log;
    MeshSelect meshSelect(mesh, adjTris);
    EXPECT_EQ(membersOf(meshSelect.getSelectedTriangles()), Set{3}) << "old bits stay as far as there are triangles";
    meshSelect.selectVertices(halving, {{-9, -9, 0}, {9, 9, 0}});
    log.clear();
    meshSelect.selectVertices(halving, {{0.25, 0.25, 9}, {0.25, 9, 9}, {9, 9, 9}, {9, 0.25, 9}});
    EXPECT_EQ(membersOf(mesh.getSelectedVertices()), (Set{0, 5, 6, 7, 9, 10, 11, 13, 14})) << "0 stays";
    meshSelect.selectAllTrianglesFromVertices();
    EXPECT_EQ(
        withoutTimes(log),
        (znTest::Lines{"MeshSelect::selectVertices: vertices(16) triangles(18)\n", "  selected vertices(9): # s\n",
                       "MeshSelect::selectAllTrianglesFromVertices: vertices(16) triangles(18)\n",
                       "  selected triangles(18): # s\n"}));
    EXPECT_TRUE(changes.changes().empty());
}

TEST(MeshSelection, isDeletedOrExtracted)
{
    znTest::Random random(1);
    znTest::MovingAllocator* allocator = new znTest::MovingAllocator;
    const zn::Reference<ArrayAllocator> owner(allocator);
    CompactMesh target;
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        const CompactMesh before = makeSelectedMesh(random, round);
        const Set selected = membersOf(before.getSelectedTriangles());
        meshExtract(target, before);
        expectPart(target, before, membersOf(before.getSelectedVertices()), selected);
        if (selected.empty()) continue;
        Set triangles = trianglesWith(before, {}, 0);
        for (const int t : selected) triangles.erase(t);
        Set vertices = cornersOf(before, triangles);
        for (int v = 0; v < before.getNumVertices(); ++v)
            if (!triangles.empty() && !before.getSelectedVertices().isSet(v)) vertices.insert(v);
        CompactMesh mesh;
        if (round % 5 == 0) mesh.setArrayAllocator(owner);
        mesh = before;
        MeshDeleteSelected deleteSelected(mesh);
        deleteSelected();
        expectPart(mesh, before, vertices, triangles);
        EXPECT_EQ(mesh.getSelectedVertices().getSize() + mesh.getSelectedTriangles().getSize(), 0);
        const Remap& remap = *deleteSelected.vertexRemap();
        ASSERT_TRUE(remap.range == mesh.getNumVertices() && remap.getDomainSize() == before.getNumVertices());
        for (int v = 0, next = 0; v < before.getNumVertices(); ++v)
            ASSERT_EQ(remap(v), vertices.count(v) ? next++ : -1);
    }
    EXPECT_EQ(allocator->numFaults(), 0);
}

TEST(MeshDeleteSelected, tellsOnceWhatItDid)
{
    CompactMesh mesh;
    znTest::makeGrid(mesh, 4, 4);
    mesh.allocUVArray();
    mesh.allocSTArray();
    mesh.allocNormalArray();
    select(mesh.getSelectedTriangles(), 18, {0, 1});
    select(mesh.getSelectedVertices(), 5, {0, 1});
    const znTest::ChangeRecorder recorder(mesh);
    znTest::LogRecorder log;
    MeshDeleteSelected deleteSelected(mesh);
    EXPECT_FALSE(deleteSelected.vertexRemap());
    deleteSelected();
    deleteSelected(); // nothing selected: nothing happens
    select(mesh.getSelectedTriangles(), 40, {33});
    deleteSelected(); // beyond the triangles: nothing either
    EXPECT_EQ(deleteSelected.vertexRemap()->getDomainSize(), 16);
    EXPECT_TRUE(mesh.getUVs() && !mesh.getSTs() && !mesh.getNormals());
    ASSERT_EQ(recorder.changes().size(), 1u);
    const znTest::Change& change = recorder.changes()[0];
    EXPECT_TRUE(change.type == MeshModification::TopologyChanged && change.hasVertexRemap && change.hasTriangleRemap);
    EXPECT_EQ(change.valid, (znTest::Change::Channels{MeshModification::UVs}));
    EXPECT_EQ(withoutTimes(log), (znTest::Lines{"meshDeleteSelected:  vertices 2(16)  triangles 2(18)\n",
                                                "  delete vertices: # s\n", "  delete triangles: # s\n"}));

    deleteSelected(znTest::adjTrisOf(mesh), {14, 15, 15});
    EXPECT_TRUE(mesh.getNumTriangles() == 14 && mesh.getNumVertices() == 14) << "a list replaces what was selected";
    select(mesh.getSelectedTriangles(), 14, trianglesWith(mesh, {}, 0));
    log.clear();
    deleteSelected();
    EXPECT_EQ(log.lines(), znTest::Lines{"meshDeleteSelected:  deleting all vertices(14) and triangles(14)\n"});
    ASSERT_EQ(recorder.changes().size(), 3u);
    EXPECT_FALSE(recorder.changes()[2].hasVertexRemap || recorder.changes()[2].hasTriangleRemap);
    EXPECT_EQ(toVector(deleteSelected.vertexRemap()->data(), 14), std::vector<int>(14, -1));
}

TEST(Extract, copiesAllChannelsAndTellsTheTarget)
{
    CompactMesh target, source = znTest::makeMesh(5, {{{0, 1, 2}}, {{2, 1, 3}}});
    source.allocNormalArray();
    source.setNormalsComputed(true);
    source.allocAttributes("flow", 4)->asFloat()[13] = 7.0f;
    source.getAttributes("flow")->setStoreable(false);
    source.getVertices()[3].z = NAN;
    target.allocUVArray();
    target.allocAttributes("flow", 3);
    const int vertices[] = {3, 1, 2}, triangles[] = {1, 1};
    const znTest::ChangeRecorder changes(target), sourceChanges(source);
    znTest::LogRecorder log;
    meshExtract(target, source, MeshSubset(3, vertices, 2, triangles));
    EXPECT_EQ(toVector(target.getTrianglesRaw(), 6), (std::vector<int>{2, 1, 0, 2, 1, 0}));
    EXPECT_TRUE(std::isnan(target.getVertices()[0].z) && target.getVertices()[2].x == 2.0f);
    EXPECT_TRUE(target.getNormals() && target.getNormalsComputed() && !target.getUVs());
    EXPECT_EQ(target.getAttributes("flow")->asFloat4()[0].y, 7.0f);
    EXPECT_FALSE(target.getAttributes("flow")->isStoreable());
    ASSERT_TRUE(changes.changes().size() == 1 && sourceChanges.changes().empty());
    EXPECT_EQ(changes.changes()[0].type, MeshModification::TopologyChanged);
    EXPECT_EQ(changes.changes()[0].attributes, (std::vector<std::string>{"normals", "flow"}));
    EXPECT_EQ(withoutTimes(log),
              (znTest::Lines{"meshExtract: vertices(3) triangles(2)\n", "  copied triangles: # s\n"}));
}

TEST(ExtractParts, givesEachPartWithItsMaps)
{
    znTest::Random random(1);
    for (int round = 0; round < 100; ++round) {
        SCOPED_TRACE(round);
        CompactMesh mesh = znTest::makeAnyMesh(random, round);
        if (round % 2) mesh.allocUVArray();
        for (int v = 0; round % 2 && v < mesh.getNumVertices(); ++v) mesh.getUVs()[v].set(0.0f, float(v));
        const int numParts = random.below(8);
        std::vector<int> partOf(mesh.getNumTriangles());
        for (int& part : partOf) part = random.below(numParts + 1) - 1;
        MeshExtractParts parts(mesh, partOf.data(), numParts);
        ASSERT_EQ(parts.getNumParts(), numParts);
        CompactMesh part; // the same one again and again
        for (int i = numParts - 1; i >= 0; --i) {
            Set triangles;
            for (size_t t = 0; t < partOf.size(); ++t)
                if (partOf[t] == i) triangles.insert(int(t));
            parts.extract(i, part);
            expectPart(part, mesh, cornersOf(mesh, triangles), triangles);
            ASSERT_EQ(Set(parts.triangles(i).begin(), parts.triangles(i).end()), triangles);
            ASSERT_EQ(int(parts.vertices(i).size()), part.getNumVertices());
            for (int v = 0; v < part.getNumVertices(); ++v)
                ASSERT_EQ(float(parts.vertices(i)[v]), part.getVertices()[v].x);
        }
    }
}

TEST(ExtractParts, givesAllComponentsOrNoneAfterACancel)
{
    const CompactMesh mesh = znTest::makeMesh(9, {{{1, 2, 3}}, {{4, 5, 6}}, {{6, 5, 7}}, {{3, 1, 8}}, {{8, 4, 4}}});
    MeshTriangleComponents components;
    meshVertexComponents(mesh, znTest::adjTrisOf(mesh), components);
    zn::vector<MeshPart> parts;
    meshExtractComponents(mesh, components, parts);
    ASSERT_EQ(parts.size(), 1);
    EXPECT_EQ(parts[0].mesh.getNumVertices(), 8);

    MeshEdgeSides sides;
    meshEdgeSides(mesh, sides);
    meshEdgeComponents(mesh, sides, components);
    for (const double fraction : {0.0, 0.5, 1.0}) {
        znUtil::Progress progress;
        progress.setObserver([&progress, fraction](double done, const char*) {
            if (done >= fraction) progress.cancel();
        });
        EXPECT_FALSE(meshExtractComponents(mesh, components, progress, parts));
        EXPECT_EQ(parts.size(), 1);
    }
    meshExtractComponents(mesh, components, parts);
    ASSERT_EQ(parts.size(), 3);
    EXPECT_EQ(parts[0].triangles, (zn::vector<int>{0, 3}));
    EXPECT_EQ(parts[1].vertices, (zn::vector<int>{4, 5, 6, 7}));
    expectPart(parts[2].mesh, mesh, {4, 8}, {4});
}

TEST(Partition, holdsEachTriangleOnce)
{
    znTest::Random random(1);
    for (int round = 0; round < 150; ++round) {
        SCOPED_TRACE(round);
        const CompactMesh mesh = znTest::makeAnyMesh(random, round);
        const Subsets subsets = partition(mesh, random.below(12) - 1);
        Remap ofTriangle(100, 100);
        ofTriangle.setSequential();
        ArrayOfSets ofVertex;
        meshTriSubsetMembership(mesh, subsets, ofTriangle);
        meshVertSubsetMembership(mesh, subsets, ofVertex);
        int number = 0;
        Set seen;
        for (const auto& subset : subsets) {
            const std::vector<int> list = toVector(subset->triangles, subset->numTriangles);
            const Set triangles(list.begin(), list.end()), corners = cornersOf(mesh, triangles);
            ASSERT_EQ(list, std::vector<int>(triangles.begin(), triangles.end())) << "ascending";
            ASSERT_EQ(toVector(subset->vertices, subset->numVertices),
                      std::vector<int>(corners.begin(), corners.end()));
            ASSERT_LE(std::abs(subset->numTriangles - mesh.getNumTriangles() / subsets.size()), 1);
            seen.insert(list.begin(), list.end());
            for (const int t : triangles) ASSERT_EQ(ofTriangle(t), number);
            for (int v = 0; v < mesh.getNumVertices(); ++v)
                ASSERT_EQ(std::count(ofVertex.getSet(v), ofVertex.getSet(v) + ofVertex.getSetSize(v), number),
                          corners.count(v));
            ++number;
        }
        ASSERT_EQ(seen, trianglesWith(mesh, {}, 0));
        ASSERT_EQ(triangleLists(subsets), triangleLists(partition(mesh, subsets.size()))) << "the same in every run";
    }
    CompactMesh ribbon, bare; // a ribbon has one way to grow: from its end, along it
    znTest::makeGrid(ribbon, 7, 2);
    EXPECT_EQ(triangleLists(partition(ribbon, 3)), (Lists{{0, 1, 2, 3}, {4, 5, 6, 7}, {8, 9, 10, 11}}));
    EXPECT_EQ(partition(ribbon, 100).size(), 12);
    EXPECT_TRUE(partition(bare, 2).empty());
    bare.resizeVertexArray(3);
    bare.resizePolyArrays(3, 1);
    EXPECT_EQ(partition(bare, 2).front()->numVertices, 3);

    zn::vector<CompactMesh*> parts(1);
    znTest::LogRecorder log;
    meshSplit(ribbon, 3, parts);
    ASSERT_EQ(parts.size(), 4) << "appended";
    EXPECT_EQ(log.lines().back(), "meshSplit: s\n");
    for (const CompactMesh* part : parts) {
        const std::unique_ptr<const CompactMesh> owner(part);
        EXPECT_TRUE(!part || (part->getNumTriangles() == 4 && part->getNumVertices() == 6));
    }
}
