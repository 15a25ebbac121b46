#include "znGeom/foundation/mesh.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/moving_allocator.h"
#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"

namespace {

using namespace znGeom;
using znTest::Change;
using znTest::ChangeRecorder;
using znTest::MovingAllocator;
using znTest::Random;

/// All that a mesh holds, array by array.
using Snapshot = std::vector<std::vector<double>>;

Snapshot snapshot(const CompactMesh& m)
{
    Snapshot all;
    const auto add = [&all](const auto* values, int count) {
        values ? all.emplace_back(values, values + count) : all.emplace_back();
    };
    for (const BitVector* bits : {&m.getSelectedVertices(), &m.getSelectedTriangles()})
        add(bits->getWords(), bits->getNumWords());
    for (int i = 0; const MeshAttributes* a = m.getAttributes(i); ++i)
        add(a->asFloat(), a->getNumElements() * a->getNumComponents());
    add(m.getTrianglesRaw(), 3 * m.getNumTriangles()), add(m.getTriangleNormalsRaw(), 3 * m.getNumTriangles());
    add(m.getLines() ? m.getLines()->ends : nullptr, 2 * m.getNumLines());
    add(m.getLineStripLengths(), m.getNumLineStrips()), add(m.getLineStripPoints(), m.getNumLineStripPoints());
    add(m.getTriStripLengths(), m.getNumTriStrips()), add(m.getTriStripPoints(), m.getNumTriStripPoints());
    add(m.getTriFanLengths(), m.getNumTriFans()), add(m.getTriFanPoints(), m.getNumTriFanPoints());
    add(m.getPolyLengths(), m.getNumPolys()), add(m.getPolyPoints(), m.getNumPolyPoints());
    add(m.getPolyMaterials(), m.getNumPolys()), add(m.getPolyGroups(), m.getNumPolys());
    all.push_back({double(m.getNormalsComputed())});
    return all;
}

/// Every array there is, filled with random numbers.
void fillMesh(CompactMesh& m, std::uint64_t seed)
{
    Random random(seed);
    const int size = 3 + random.below(20);
    const auto number = [&random](auto* values, int count) {
        for (int i = 0; i < count; ++i) values[i] = std::remove_pointer_t<decltype(values)>(random.below(100));
    };
    m.resizeVertexArray(size);
    m.allocNormalArray(), m.allocUVArray(), m.allocSTArray();
    m.setNormalsComputed(random.oneIn(2));
    m.allocAttributes("heat", 1), m.allocAttributes("colours", 4);
    for (int i = 0; MeshAttributes* a = m.getAttributes(i); ++i) number(a->asFloat(), size * a->getNumComponents());
    m.resizeTriangleArray(2 * size), number(m.getTrianglesRaw(), 6 * size);
    m.allocTriangleNormalArray(), number(m.getTriangleNormalsRaw(), 6 * size);
    m.resizeLineArray(size), number(m.getLines()->ends, 2 * size);
    m.resizeLineStripArrays(size, 2), number(m.getLineStripPoints(), size), number(m.getLineStripLengths(), 2);
    m.resizeTriStripArrays(size, 3), number(m.getTriStripPoints(), size), number(m.getTriStripLengths(), 3);
    m.resizeTriFanArrays(size, 1), number(m.getTriFanPoints(), size), number(m.getTriFanLengths(), 1);
    m.resizePolyArrays(size, 4), number(m.getPolyPoints(), size), number(m.getPolyLengths(), 4);
    m.allocPolyMaterialArray(), number(m.getPolyMaterials(), 4);
    m.getSelectedVertices().resize(size), m.getSelectedVertices().setBit(random.below(size));
    m.getSelectedTriangles().resize(2 * size), m.getSelectedTriangles().setBit(random.below(size));
}

TEST(CompactMesh, StartsAtZeroAndRefusesMoreThanItsArraysCanIndex)
{
    CompactMesh mesh(3, nullptr, nullptr, nullptr, nullptr);
    EXPECT_THROW(mesh.resizeVertexArray(800000000), std::length_error); // 3 floats each would leave `int`
    EXPECT_EQ(snapshot(mesh)[2], std::vector<double>(9, 0.0));
}

TEST(CompactMesh, CopiesAssignsAndSwapsAllItHoldsButNoListeners)
{
    CompactMesh a, b;
    fillMesh(a, 2), fillMesh(b, 3);
    a.getAttributes("heat")->setStoreable(false);
    const Snapshot first = snapshot(a), second = snapshot(b);
    ChangeRecorder heardA(a), heardB(b);
    a.swap(b);
    EXPECT_TRUE(snapshot(a) == second && snapshot(b) == first);
    CompactMesh copy = b;
    const CompactMesh& alias = b;
    a = b;
    b = alias;
    EXPECT_TRUE(snapshot(a) == first && snapshot(b) == first && snapshot(copy) == first);
    EXPECT_FALSE(b.getAttributes("heat")->isStoreable() || copy.getAttributes("heat")->isStoreable());
    copy.getVertices()[0].set(77, 0, 0);
    EXPECT_TRUE(snapshot(b) == first);
    EXPECT_TRUE(heardA.changes().empty()); // no listener is notified
    for (CompactMesh* mesh : {&a, &copy}) {
        MeshModification change(mesh, MeshModification::AttributesChanged);
        mesh->modified(change);
    }
    EXPECT_TRUE(heardA.changes().size() == 1 && heardB.changes().empty());
}

/// A little of everything that changes arrays.
Snapshot workOn(CompactMesh& mesh)
{
    fillMesh(mesh, 4);
    CompactMesh other, torus;
    fillMesh(other, 5);
    mesh.swap(other);
    znTest::makeTorus(torus, 5, 4);
    mesh.copyVertices(torus.getNumVertices(), torus.getVertices());
    mesh.copyTriangles(torus.getNumTriangles(), torus.getTrianglesRaw());
    mesh.deleteAttributes("heat");
    mesh.allocAttributes("strain", 3)->asFloat()[4] = 1.5f;
    mesh.resizeVertexArray(mesh.getNumVertices() + 3);
    mesh.allocPolyGroupArray();
    MeshModification change(&mesh, MeshModification::TopologyChanged);
    change.uvsValid();
    mesh.modified(change);
    mesh.allocNormalArray();
    mesh.getNormals()[2] = znLinear::Normal::z;
    return snapshot(mesh);
}

TEST(CompactMesh, IsTheSameWhereverItsArraysAreKept)
{
    const zn::Reference<MovingAllocator> allocator = new MovingAllocator;
    {
        CompactMesh plain, elsewhere, late;
        const Snapshot expected = workOn(plain);
        elsewhere.setArrayAllocator(allocator.get());
        EXPECT_EQ(workOn(elsewhere), expected);
        const CompactMesh& readOnly = elsewhere; // asks to read: nothing moves
        EXPECT_EQ(readOnly.getVerticesRaw(), readOnly.getVerticesRaw());
        EXPECT_EQ(readOnly.getNormalsRaw(), readOnly.getNormalsRaw());
        EXPECT_EQ(readOnly.getAttributes("strain")->asFloat(), readOnly.getAttributes("strain")->asFloat());
        fillMesh(late, 6);
        late.setArrayAllocator(allocator.get()); // takes the contents along
        EXPECT_GT(allocator->numBlocks(), 20);
        EXPECT_EQ(workOn(late), expected);
        CompactMesh copy = elsewhere;
        elsewhere.setArrayAllocator(nullptr);
        fillMesh(late, 7);
        late = elsewhere;
        for (CompactMesh* each : {&elsewhere, &copy, &late}) EXPECT_EQ(snapshot(*each), expected);
    }
    EXPECT_TRUE(allocator->numBlocks() == 0 && allocator->numFaults() == 0 && allocator->getCount() == 1);
}

TEST(Attributes, AreFoundByNameAndNumber)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(4);
    EXPECT_TRUE(!mesh.getAttributes("heat") && mesh.getNumAttributes() == 1); // asking creates nothing
    MeshAttributes* heat = mesh.allocAttributes("heat", 2);
    EXPECT_EQ(mesh.allocAttributes("heat", 2), heat);
    EXPECT_TRUE(mesh.getAttributes(1) == heat && !mesh.getAttributes(2) && !mesh.getAttributes(-1));
    EXPECT_TRUE(heat->asFloat2() && heat->asMeshUV() && !heat->asFloat1() && !heat->asFloat3() && !heat->asFloat4());
    for (const auto& [name, components] :
         {std::pair("", 1), {"x", 0}, {"x", 5}, {"vertices", 2}, {"normals", 4}, {"uvs", 3}, {"sts", 1}})
        EXPECT_EQ(mesh.allocAttributes(name, components), nullptr) << name;
    EXPECT_EQ(mesh.allocAttributes("heat", 3)->getNumComponents(), 3); // another shape replaces it
    EXPECT_EQ(mesh.getNumAttributes(), 2);

    // The channels that have their own functions are attributes too.
    mesh.allocAttributes(PointMesh::NormalsName, 3);
    EXPECT_TRUE(mesh.getNormals());
    mesh.allocSTArray();
    EXPECT_EQ(mesh.getAttributes("sts")->asMeshUV(), mesh.getSTs());
    zn::set<znString::CString> names;
    mesh.getAttributeNames(names);
    EXPECT_TRUE(names.size() == 4 && names.contains("vertices") && names.contains("normals") && names.contains("heat"));
    mesh.deleteAttributes(PointMesh::VerticesName);
    mesh.deleteAttributes("sts");
    EXPECT_TRUE(mesh.getNumVertices() == 4 && !mesh.getSTs());
    for (const bool byName : {false, true}) { // either way the flag goes with the normals
        mesh.allocNormalArray();
        mesh.setNormalsComputed(true);
        byName ? mesh.deleteAttributes(PointMesh::NormalsName) : mesh.deleteNormals();
        EXPECT_FALSE(mesh.getNormals() || mesh.getNormalsComputed());
    }
}

TEST(Modified, DropsWhatTheFlagsDoNotKeep)
{
    using M = MeshModification;
    const struct
    {
        M::Channel channel;
        bool ofGeometry; // is dropped when vertices move
        void (M::*modified)();
        void (M::*valid)();
        bool (*present)(const CompactMesh&);
    } rows[] = {
        {M::Normals, true, &M::normalsModified, &M::normalsValid,
         [](const CompactMesh& m) { return m.getNormals() && m.getNormalsComputed(); }},
        {M::TriangleNormals, true, &M::triangleNormalsModified, &M::triangleNormalsValid,
         [](const CompactMesh& m) { return m.getTriangleNormals() != nullptr; }},
        {M::UVs, false, &M::uvsModified, &M::uvsValid, [](const CompactMesh& m) { return m.getUVs() != nullptr; }},
        {M::STs, false, &M::stsModified, &M::stsValid, [](const CompactMesh& m) { return m.getSTs() != nullptr; }},
        {M::StripsAndFans, false, &M::stripsAndFansModified, nullptr,
         [](const CompactMesh& m) { return m.getNumTriStrips() && m.getNumTriFans() && m.getNumTriFanPoints(); }},
    };
    for (const auto type : {M::GeometryChanged, M::TopologyChanged, M::AttributesChanged})
        for (const auto& flagged : rows)
            for (const auto flag : {flagged.modified, flagged.valid}) {
                CompactMesh mesh;
                fillMesh(mesh, 7);
                mesh.setNormalsComputed(true);
                ChangeRecorder recorder(mesh);
                M change(&mesh, type);
                if (flag) (change.*flag)();
                mesh.modified(change);
                for (const auto& row : rows) {
                    const bool dropped = type == M::TopologyChanged || (type == M::GeometryChanged && row.ofGeometry);
                    EXPECT_EQ(row.present(mesh), !dropped || (flag && &row == &flagged))
                        << type << " " << row.channel << " " << flagged.channel;
                }
                EXPECT_TRUE(mesh.getAttributes("heat") && mesh.getNumLines() && mesh.getNumLineStrips() &&
                            mesh.getNumPolys() && mesh.getSelectedVertices().getNumSetBits());
                ASSERT_EQ(recorder.changes().size(), 1u);
                const Change& heard = recorder.changes()[0];
                EXPECT_TRUE(heard.type == type && heard.entity == &mesh && !heard.hasVertexRemap);
                EXPECT_EQ(heard.modified, Change::Channels(flag == flagged.modified, flagged.channel));
                EXPECT_EQ(heard.valid, Change::Channels(flag && flag == flagged.valid, flagged.channel));
            }
}

/// Hears its own messages before anybody else.
struct Proxy : CompactMesh
{
    void sendMessage(EntityModification& modification) const override
    {
        EXPECT_FALSE(getNormals()); // all is done
        CompactMesh::sendMessage(modification);
        resendMessage(modification);
    }
};

TEST(Entity, SendsThroughTheVirtualTableWhenAllIsDone)
{
    auto proxy = std::make_unique<Proxy>();
    proxy->allocNormalArray();
    ChangeRecorder recorder(*proxy);
    MeshModification change(proxy.get(), MeshModification::GeometryChanged);
    static_cast<PointMesh&>(*proxy).modified(change);
    EXPECT_TRUE(recorder.changes().size() == 2 && !recorder.meshDestroyed()); // sent and sent again
    proxy.reset();
    EXPECT_TRUE(recorder.meshDestroyed());
}

TEST(GridMesh, HasAVertexPerGridPoint)
{
    GridMesh grid(4, 3), other(2, 5);
    GridMesh copy = grid;
    grid.swap(other);
    for (GridMesh* each : {&grid, &other, &copy})
        EXPECT_EQ(each->getNumColumns() * each->getNumRows(), each->getNumVertices());
    EXPECT_EQ(copy.getNumVertices(), 12);
    grid.setGridDimensions(-1, 4);
    EXPECT_EQ(grid.getNumVertices(), 0);
}

} // namespace
