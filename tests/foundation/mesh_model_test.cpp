#include "znGeom/foundation/mesh_model.h"

#include <gtest/gtest.h>

#include <map>
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

template <typename T>
std::vector<T> copied(const T* values, int count)
{
    return std::vector<T>(values, values + count);
}

std::vector<bool> copied(const BitVector& bits)
{
    std::vector<bool> all;
    for (int i = 0; i < bits.getSize(); ++i) all.push_back(bits.isSet(i));
    return all;
}

/// All that a mesh holds.
struct Snapshot
{
    std::map<std::string, std::vector<float>> attributes;
    std::vector<std::vector<int>> indices;
    std::vector<float> triangleNormals;
    std::vector<bool> selectedVertices, selectedTriangles;
    bool normalsComputed;

    explicit Snapshot(const CompactMesh& m)
        : selectedVertices(copied(m.getSelectedVertices())), selectedTriangles(copied(m.getSelectedTriangles())),
          normalsComputed(m.getNormalsComputed())
    {
        for (int i = 0; const MeshAttributes* a = m.getAttributes(i); ++i)
            attributes[a->getName().asChar()] = copied(a->asFloat(), a->getNumElements() * a->getNumComponents());
        const auto add = [this](const int* values, int count) { indices.push_back(copied(values, count)); };
        add(m.getTrianglesRaw(), 3 * m.getNumTriangles());
        add(reinterpret_cast<const int*>(m.getLines()), 2 * m.getNumLines());
        add(m.getLineStripLengths(), m.getNumLineStrips()), add(m.getLineStripPoints(), m.getNumLineStripPoints());
        add(m.getTriStripLengths(), m.getNumTriStrips()), add(m.getTriStripPoints(), m.getNumTriStripPoints());
        add(m.getTriFanLengths(), m.getNumTriFans()), add(m.getTriFanPoints(), m.getNumTriFanPoints());
        add(m.getPolyLengths(), m.getNumPolys()), add(m.getPolyPoints(), m.getNumPolyPoints());
        add(m.getPolyMaterials(), m.getPolyMaterials() ? m.getNumPolys() : 0);
        add(m.getPolyGroups(), m.getPolyGroups() ? m.getNumPolys() : 0);
        if (m.getTriangleNormals()) triangleNormals = copied(m.getTriangleNormalsRaw(), 3 * m.getNumTriangles());
    }
    friend bool operator==(const Snapshot&, const Snapshot&) = default;
};

/// Every array there is, filled with random numbers.
void fillMesh(CompactMesh& m, std::uint64_t seed)
{
    Random random(seed);
    const int size = 3 + random.below(20);
    const auto number = [&random](int* values, int count) {
        for (int i = 0; i < count; ++i) values[i] = random.below(100);
    };
    m.resizeVertexArray(size);
    m.allocNormalArray(), m.allocUVArray(), m.allocSTArray();
    m.setNormalsComputed(random.oneIn(2));
    m.allocAttributes("heat", 1), m.allocAttributes("colours", 4);
    for (int i = 0; MeshAttributes* a = m.getAttributes(i); ++i) {
        float* const values = a->asFloat();
        for (int k = 0; k < size * a->getNumComponents(); ++k) values[k] = float(random.real());
    }
    m.resizeTriangleArray(2 * size);
    m.allocTriangleNormalArray();
    number(m.getTrianglesRaw(), 6 * size);
    float* const triangleNormals = m.getTriangleNormalsRaw();
    for (int i = 0; i < 6 * size; ++i) triangleNormals[i] = float(random.real());
    m.resizeLineArray(size);
    number(m.getLines()->ends, 2 * size);
    m.resizeLineStripArrays(size, 2), number(m.getLineStripPoints(), size), number(m.getLineStripLengths(), 2);
    m.resizeTriStripArrays(size, 3), number(m.getTriStripPoints(), size), number(m.getTriStripLengths(), 3);
    m.resizeTriFanArrays(size, 1), number(m.getTriFanPoints(), size), number(m.getTriFanLengths(), 1);
    m.resizePolyArrays(size, 4), number(m.getPolyPoints(), size), number(m.getPolyLengths(), 4);
    m.allocPolyMaterialArray(), number(m.getPolyMaterials(), 4);
    m.getSelectedVertices().resize(size), m.getSelectedVertices().setBit(random.below(size));
    m.getSelectedTriangles().resize(2 * size), m.getSelectedTriangles().setBit(random.below(size));
}

TEST(CompactMesh, MayBeMadeWithoutPositions)
{
    const CompactMesh mesh(3, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(copied(mesh.getVerticesRaw(), 9), std::vector<float>(9, 0.0f));
}

TEST(CompactMesh, RefusesMoreVerticesThanItsArraysCanIndex)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(3);
    EXPECT_THROW(mesh.resizeVertexArray(800000000), std::length_error); // 3 floats each would leave `int`
    EXPECT_EQ(mesh.getNumVertices(), 3);
}

TEST(CompactMesh, CopiesAssignsAndSwapsAllItHoldsButNoListeners)
{
    CompactMesh a, b;
    fillMesh(a, 2), fillMesh(b, 3);
    a.getAttributes("heat")->setStoreable(false);
    const Snapshot first(a), second(b);
    ChangeRecorder heardA(a), heardB(b);
    a.swap(b);
    EXPECT_TRUE(Snapshot(a) == second && Snapshot(b) == first);
    EXPECT_FALSE(b.getAttributes("heat")->isStoreable());
    CompactMesh copy = b;
    const CompactMesh& alias = b;
    a = b;
    b = alias;
    EXPECT_TRUE(Snapshot(a) == first && Snapshot(b) == first && Snapshot(copy) == first);
    EXPECT_FALSE(copy.getAttributes("heat")->isStoreable());
    copy.getVertices()[0].set(77, 0, 0);
    copy.getUVs()[0].set(7.0, 0.5);
    EXPECT_TRUE(Snapshot(b) == first);
    EXPECT_TRUE(heardA.changes().empty() && heardB.changes().empty()); // nobody is told
    for (CompactMesh* mesh : {&a, &copy}) {
        MeshModification change(mesh, MeshModification::AttributesChanged);
        mesh->modified(change);
    }
    EXPECT_EQ(heardA.changes().size(), 1u);
    EXPECT_EQ(heardB.changes().size(), 0u);
}

/// Something of everything that changes arrays.
void workOn(CompactMesh& mesh)
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
    mesh.resizeLineArray(1);
    mesh.getLines()[0][1] = 6;
}

TEST(CompactMesh, IsTheSameWhereverItsArraysAreKept)
{
    const zn::Reference<MovingAllocator> allocator = new MovingAllocator;
    {
        CompactMesh plain, elsewhere, late;
        workOn(plain);
        elsewhere.setArrayAllocator(allocator.get());
        workOn(elsewhere);
        const CompactMesh& readOnly = elsewhere; // asks to read: nothing moves
        EXPECT_EQ(readOnly.getVerticesRaw(), readOnly.getVerticesRaw());
        EXPECT_EQ(readOnly.getNormalsRaw(), readOnly.getNormalsRaw());
        EXPECT_EQ(readOnly.getAttributes("strain")->asFloat(), readOnly.getAttributes("strain")->asFloat());
        fillMesh(late, 6);
        late.setArrayAllocator(allocator.get()); // takes the contents along
        EXPECT_GT(allocator->numBlocks(), 20);
        EXPECT_TRUE(Snapshot(plain) == Snapshot(elsewhere));
        workOn(late);
        EXPECT_TRUE(Snapshot(plain) == Snapshot(late));
        CompactMesh copy = elsewhere;
        elsewhere.setArrayAllocator(nullptr);
        EXPECT_TRUE(Snapshot(plain) == Snapshot(elsewhere) && Snapshot(plain) == Snapshot(copy));
        late = elsewhere;
        EXPECT_TRUE(Snapshot(plain) == Snapshot(late));
    }
    EXPECT_EQ(allocator->numBlocks(), 0);
    EXPECT_EQ(allocator->numFaults(), 0);
    EXPECT_EQ(allocator->getCount(), 1);
}

TEST(Attributes, AreFoundByNameAndNumber)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(4);
    EXPECT_EQ(mesh.getAttributes("heat"), nullptr);
    EXPECT_EQ(mesh.getNumAttributes(), 1); // asking creates nothing
    MeshAttributes* heat = mesh.allocAttributes("heat", 2);
    EXPECT_EQ(mesh.allocAttributes("heat", 2), heat);
    EXPECT_TRUE(mesh.getAttributes(1) == heat && !mesh.getAttributes(2) && !mesh.getAttributes(-1));
    EXPECT_TRUE(heat->getNumComponents() == 2 && heat->getNumElements() == 4 && heat->isStoreable());
    EXPECT_TRUE(heat->asFloat2() && heat->asMeshUV() && !heat->asFloat1() && !heat->asFloat3() && !heat->asFloat4());
    const struct
    {
        const char* name;
        int components;
    } refused[] = {{"", 1}, {"x", 0}, {"x", 5}, {"vertices", 2}, {"normals", 4}, {"uvs", 3}, {"sts", 1}};
    for (const auto& [name, components] : refused) EXPECT_EQ(mesh.allocAttributes(name, components), nullptr) << name;
    EXPECT_EQ(mesh.allocAttributes("heat", 3)->getNumComponents(), 3); // another shape replaces it
    EXPECT_EQ(mesh.getNumAttributes(), 2);

    // The channels with functions of their own are attributes too.
    EXPECT_EQ(mesh.getAttributes(PointMesh::VerticesName)->asFloat(), mesh.getVerticesRaw());
    mesh.allocAttributes(PointMesh::NormalsName, 3);
    EXPECT_TRUE(mesh.getNormals());
    mesh.allocUVArray(), mesh.allocSTArray();
    EXPECT_EQ(mesh.getAttributes("uvs")->asMeshUV(), mesh.getUVs());
    EXPECT_EQ(mesh.getAttributes("sts")->asMeshUV(), mesh.getSTs());
    zn::set<znString::CString> names;
    mesh.getAttributeNames(names);
    EXPECT_TRUE(names.size() == 5 && names.contains("vertices") && names.contains("normals") && names.contains("heat"));
    mesh.deleteAttributes(PointMesh::VerticesName);
    EXPECT_EQ(mesh.getNumVertices(), 4);
    mesh.deleteAttributes("sts");
    EXPECT_FALSE(mesh.getSTs());
    for (const bool byName : {false, true}) { // either way the flag goes with the normals
        mesh.allocNormalArray();
        mesh.setNormalsComputed(true);
        byName ? mesh.deleteAttributes(PointMesh::NormalsName) : mesh.deleteNormals();
        EXPECT_FALSE(mesh.getNormals() || mesh.getNormalsComputed());
    }
}

TEST(Modified, DropsWhatTheFlagsDoNotKeep)
{
    using Channel = MeshModification;
    struct Row
    {
        MeshModification::Channel channel;
        bool ofGeometry; // goes when vertices move
        void (MeshModification::*modified)();
        void (MeshModification::*valid)();
        bool (*present)(const CompactMesh&);
    };
    const Row rows[] = {
        {Channel::Normals, true, &Channel::normalsModified, &Channel::normalsValid,
         [](const CompactMesh& m) { return m.getNormals() && m.getNormalsComputed(); }},
        {Channel::TriangleNormals, true, &Channel::triangleNormalsModified, &Channel::triangleNormalsValid,
         [](const CompactMesh& m) { return m.getTriangleNormals() != nullptr; }},
        {Channel::UVs, false, &Channel::uvsModified, &Channel::uvsValid,
         [](const CompactMesh& m) { return m.getUVs() != nullptr; }},
        {Channel::STs, false, &Channel::stsModified, &Channel::stsValid,
         [](const CompactMesh& m) { return m.getSTs() != nullptr; }},
        {Channel::StripsAndFans, false, &Channel::stripsAndFansModified, nullptr,
         [](const CompactMesh& m) { return m.getNumTriStrips() && m.getNumTriFans() && m.getNumTriFanPoints(); }},
    };
    for (const auto type :
         {MeshModification::GeometryChanged, MeshModification::TopologyChanged, MeshModification::AttributesChanged})
        for (const Row& flagged : rows)
            for (const auto flag : {flagged.modified, flagged.valid}) {
                CompactMesh mesh;
                fillMesh(mesh, 7);
                mesh.setNormalsComputed(true);
                ChangeRecorder recorder(mesh);
                MeshModification change(&mesh, type);
                if (flag) (change.*flag)();
                mesh.modified(change);
                for (const Row& row : rows) {
                    const bool dropped = type == MeshModification::TopologyChanged ||
                                         (type == MeshModification::GeometryChanged && row.ofGeometry);
                    EXPECT_EQ(row.present(mesh), !dropped || (flag && &row == &flagged))
                        << type << " " << row.channel << " " << flagged.channel;
                }
                EXPECT_TRUE(mesh.getAttributes("heat") && mesh.getAttributes("colours") && mesh.getNumLines() &&
                            mesh.getNumLineStrips() && mesh.getNumPolys() &&
                            mesh.getSelectedVertices().getNumSetBits());
                ASSERT_EQ(recorder.changes().size(), 1u);
                const Change& heard = recorder.changes()[0];
                EXPECT_TRUE(heard.type == type && heard.entity == &mesh && !heard.hasVertexRemap);
                EXPECT_EQ(heard.modified, Change::Channels(flag == flagged.modified, flagged.channel));
                EXPECT_EQ(heard.valid, Change::Channels(flag && flag == flagged.valid, flagged.channel));
            }
}

/// Hears its own messages before anybody else.
class Proxy : public CompactMesh
{
public:
    void sendMessage(EntityModification& modification) const override
    {
        ++sent;
        normalsWhenSent = getNormals() != nullptr;
        CompactMesh::sendMessage(modification);
        resendMessage(modification);
    }
    mutable int sent = 0;
    mutable bool normalsWhenSent = true;
};

TEST(Entity, SendsThroughTheVirtualTableWhenAllIsDone)
{
    auto proxy = std::make_unique<Proxy>();
    fillMesh(*proxy, 9);
    ChangeRecorder recorder(*proxy);
    MeshModification change(proxy.get(), MeshModification::GeometryChanged);
    static_cast<PointMesh&>(*proxy).modified(change);
    EXPECT_TRUE(proxy->sent == 1 && !proxy->normalsWhenSent);
    EXPECT_EQ(recorder.changes().size(), 2u); // sent and sent again
    EXPECT_FALSE(recorder.meshDestroyed());
    proxy.reset();
    EXPECT_TRUE(recorder.meshDestroyed());
}

TEST(GridMesh, HasAVertexPerGridPoint)
{
    GridMesh grid(4, 3), other(2, 5);
    EXPECT_EQ(grid.getNumVertices(), 12);
    const GridMesh copy = grid;
    EXPECT_TRUE(copy.getNumColumns() == 4 && copy.getNumRows() == 3 && copy.getNumVertices() == 12);
    grid.swap(other);
    for (const GridMesh* each : {&grid, &other})
        EXPECT_EQ(each->getNumColumns() * each->getNumRows(), each->getNumVertices());
    grid.setGridDimensions(-1, 4);
    EXPECT_EQ(grid.getNumVertices(), 0);
}

} // namespace
