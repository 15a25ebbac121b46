#include "znGeom/topology/twin.h"

#include <gtest/gtest.h>

#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"
#include "tests/topology/polygon_meshes.h"

using namespace znGeom;
using namespace znTest;

namespace {

/// Three vertices on an axis and one triangle for each of the given tips, along the axis or against it.
std::vector<TopoMeshFace> makeBook(TopoMesh& mesh, std::initializer_list<bool> along)
{
    const auto a = mesh.allocVertex({0, 0, 0}), b = mesh.allocVertex({0, 0, 1});
    std::vector<TopoMeshFace> pages;
    for (const bool forward : along) {
        const auto tip = mesh.allocVertex({1, double(pages.size()), 0});
        pages.push_back(forward ? mesh.allocTriangle(a, b, tip) : mesh.allocTriangle(b, a, tip));
    }
    return pages;
}

} // namespace

TEST(Twin, PairsFromTheLeftWhateverTheDirection)
{
    TopoMesh mesh;
    const auto pages = makeBook(mesh, {true, true, true});
    ASSERT_EQ(countBoundary(mesh), 9);
    TopoListener listener(mesh);
    LogRecorder log;
    meshTwin(mesh);
    EXPECT_EQ(pages[0]->edge->twin, pages[1]->edge);
    EXPECT_FALSE(pages[2]->edge->twin);
    EXPECT_EQ(countBoundary(mesh), 7);
    EXPECT_TRUE(checkTopology(mesh, false));
    EXPECT_EQ(listener.types, std::vector<int>{1});
    meshTwin(mesh); // nothing left to pair
    EXPECT_EQ(listener.types.size(), 1u);
    EXPECT_EQ(log.count("meshTwin: 5 vertices: "), 2);

    TopoMesh empty;
    meshTwin(empty);
    EXPECT_EQ(log.count("meshTwin: 0 vertices: "), 1);
}

TEST(Twin, CompletesMeshesBuiltInAnyOrder)
{
    CompactMesh torus;
    makeTorus(torus, 40, 30);
    Random random(5);
    MeshTriangle* t = torus.getTriangles();
    for (int i = torus.getNumTriangles() - 1; i > 0; --i) std::swap(t[i], t[random.below(i + 1)]);
    TopoMesh mesh;
    fill(mesh, torus);
    EXPECT_GT(countBoundary(mesh), 0);
    meshTwin(mesh);
    EXPECT_EQ(countBoundary(mesh), 0);
    EXPECT_TRUE(checkTopology(mesh));
    for (const auto v : verticesOf(mesh)) EXPECT_TRUE(v.valence() == 6 && !v.onBoundary());
}

TEST(Twin, OfNewFacesAloneDoesTheSame)
{
    Random random(9);
    for (int round = 0; round < 40; ++round) {
        // Random triangles over a few vertices: edges with any number of sides, in any direction.
        TopoMesh meshes[2];
        zn::vector<TopoMeshFace> faces[2];
        const std::uint64_t seed = random.below(1 << 30);
        LogRecorder log;
        for (int form = 0; form < 2; ++form) {
            Random same(seed);
            std::vector<TopoMeshVertex> vertices;
            for (int i = 0; i < 12; ++i) vertices.push_back(meshes[form].allocVertex({double(i), 0, 0}));
            for (int i = 0; i < 30; ++i) {
                const auto a = size_t(same.below(12)), b = (a + 1 + size_t(same.below(11))) % 12;
                const auto c = size_t(same.below(12));
                if (i == 15) meshTwin(meshes[form]);
                const TopoMeshFace face = meshes[form].allocTriangle(vertices[a], vertices[b], vertices[c]);
                if (i >= 15) faces[form].append(face);
            }
        }
        meshTwin(meshes[0]);
        meshTwin(meshes[1], faces[1]);
        EXPECT_EQ(log.count("meshTwin: 12 vertices: "), 4);
        std::vector<int> twins[2];
        for (int form = 0; form < 2; ++form)
            for (const TopoMeshEdge e : edgesOf(meshes[form])) twins[form].push_back(e->twin ? e->twin.number() : -1);
        EXPECT_EQ(twins[0], twins[1]) << round;
    }
}
