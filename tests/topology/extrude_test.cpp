#include "znGeom/topology/extrude.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>

#include <gtest/gtest.h>

#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"
#include "tests/topology/polygon_meshes.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/repair/orient.h"
#include "znGeom/scopes/convert_rep.h"

using namespace znGeom;
using namespace znTest;
using znLinear::AffineMatrix;
using znLinear::Point;
using Faces = zn::unordered_set<TopoMeshFace>;
using Edges = zn::vector<TopoMeshEdge>;

namespace {

AffineMatrix up(double height)
{
    AffineMatrix matrix;
    matrix.setRow(3, {0, 0, height});
    return matrix;
}

Faces setOf(const std::vector<TopoMeshFace>& faces)
{
    Faces result;
    for (const TopoMeshFace face : faces) result.insert(face);
    return result;
}

std::vector<TopoMeshFace> listed(const Faces& faces)
{
    std::vector<TopoMeshFace> list;
    for (auto node = faces.firstNode(); node; node = faces.nextItem(node)) list.push_back(node.value());
    return list;
}

std::vector<TopoMeshFace> pick(const std::vector<TopoMeshFace>& faces, const std::vector<int>& which)
{
    std::vector<TopoMeshFace> result;
    for (const int i : which) result.push_back(faces[size_t(i)]);
    return result;
}

bool isRim(TopoMeshEdge e, const Faces& region) { return !e->twin || !region.contains(e->twin->face); }

/// Against the slowest way to find it: faces are added as long as any has a neighbour among those that are in.
void checkExpansion(TopoMesh& mesh, const Faces& in)
{
    Faces out, expected;
    Edges perimeter;
    out.insert(mesh.firstFace()); // dropped
    const bool isWhole = expandRegion(mesh, in, out, perimeter);
    expected.insert(listed(in)[0]);
    for (int before = 0; before < expected.size();) {
        before = expected.size();
        for (const TopoMeshFace face : listed(in))
            for (const TopoMeshEdge e : sidesOf(face))
                if (!isRim(e, expected)) expected.insert(face);
    }
    ASSERT_EQ(out.size(), expected.size());
    for (const TopoMeshFace face : listed(expected)) ASSERT_TRUE(out.contains(face));
    EXPECT_EQ(isWhole, out.size() == in.size());

    int numRims = 0;
    for (const TopoMeshFace face : listed(out))
        for (const TopoMeshEdge e : sidesOf(face)) numRims += isRim(e, out);
    EXPECT_EQ(perimeter.empty(), numRims == 0);
    std::set<TopoMeshEdge> met;
    for (int i = 0; i < perimeter.size(); ++i) {
        EXPECT_TRUE(isRim(perimeter[i], out) && out.contains(perimeter[i]->face));
        EXPECT_TRUE(met.insert(perimeter[i]).second);
        EXPECT_EQ(endOf(perimeter[i]), perimeter[(i + 1) % perimeter.size()]->origin);
    }
}

/// The volume inside what a mesh encloses, once its faces agree on their sides.
double volumeInside(TopoMesh& mesh)
{
    const std::unique_ptr<CompactMesh> flat(meshConvertRep(mesh));
    MeshAdjTris adjTris;
    meshAdjTris(*flat, adjTris);
    EXPECT_TRUE(meshMakeOriented(*flat, adjTris));
    TopoMesh oriented;
    fill(oriented, *flat);
    return std::abs(volumeOf(oriented));
}

} // namespace

TEST(ExpandRegion, EndsFromAnyFirstFace)
{
    Random random(3);
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        TopoMesh mesh;
        const bool isSheet = round % 2 == 0;
        std::vector<TopoMeshFace> faces = isSheet ? addSquares(mesh, 5, 5) : addBox(mesh, 3);
        for (size_t i = faces.size() - 1; i > 0; --i) std::swap(faces[i], faces[size_t(random.below(int(i) + 1))]);
        // From whole sheets, whose inner faces have no rim, down to a few faces that may touch at a corner.
        faces.resize(round < 60 ? faces.size() : size_t(1 + random.below(int(faces.size()))));
        checkExpansion(mesh, setOf(faces));
    }
}

TEST(ExpandRegion, TakesClosedSurfacesAndItsOwnInput)
{
    TopoMesh mesh;
    const auto top = addBox(mesh, 2);
    checkExpansion(mesh, setOf(listed(facesOf(mesh))));

    Faces two = setOf(pick(top, {0, 3})), none, out = two;
    Edges perimeter;
    EXPECT_FALSE(expandRegion(mesh, two, two, perimeter)); // they touch at a corner
    EXPECT_EQ(two.size(), 2);
    EXPECT_EQ(perimeter.size(), 4);
    EXPECT_TRUE(expandRegion(mesh, none, out, perimeter));
    EXPECT_TRUE(out.empty() && perimeter.empty());
}

TEST(ExtrudeFace, OfALoneFaceIsAPrism)
{
    for (const int sides : {3, 4, 7, 60}) {
        TopoMesh mesh;
        zn::vector<TopoMeshVertex> corners;
        for (int i = 0; i < sides; ++i) {
            const double angle = 6.283185307179586 * i / sides;
            corners.append(mesh.allocVertex({std::cos(angle), std::sin(angle), 0}));
        }
        const TopoMeshFace face = mesh.allocFace(corners);
        const TopoListener listener(mesh);
        const LogRecorder log;
        const TopoMeshFace cap = extrudeFace(mesh, face, up(-2));
        EXPECT_TRUE(checkTopology(mesh));
        EXPECT_TRUE(face.isAlive());
        EXPECT_EQ(mesh.numVertices(), 2 * sides);
        EXPECT_EQ(mesh.numFaces(), sides + 2);
        EXPECT_EQ(countBoundary(mesh), 0);
        EXPECT_NEAR(volumeOf(mesh), std::sin(6.283185307179586 / sides) * sides, 1e-12);
        EXPECT_EQ(cap->edge->origin->point, corners.back()->point + znLinear::Vector(0, 0, -2));
        EXPECT_EQ(listener.types, std::vector<int>{1});
        EXPECT_TRUE(log.lines().empty());
    }
}

TEST(ExtrudeFace, StandsOnEveryFaceOfAMesh)
{
    TopoMesh box;
    for (const TopoMeshFace face : addBox(box, 2)) {
        const double before = volumeOf(box);
        const TopoListener listener(box);
        extrudeFace(box, face, up(0.5));
        EXPECT_FALSE(face.isAlive());
        EXPECT_EQ(listener.types, std::vector<int>{1});
        EXPECT_TRUE(checkTopology(box));
        EXPECT_EQ(countBoundary(box), 0);
        EXPECT_EQ(eulerNumber(box), 2);
        EXPECT_NEAR(volumeOf(box) - before, 0.5, 1e-12);
    }
    // At the border the walls that have a neighbour are joined to it, at corners, too.
    for (int at = 0; at < 18; ++at) {
        TopoMesh mesh;
        fill(mesh, makeGrid(4, 4));
        const TopoMeshFace face = listed(facesOf(mesh))[size_t(at)];
        extrudeFace(mesh, face, up(1));
        EXPECT_TRUE(checkTopology(mesh));
        EXPECT_EQ(countBoundary(mesh), 12) << at;
        EXPECT_EQ(eulerNumber(mesh), 1) << at;
    }
}

TEST(ExtrudeRegion, AddsAreaTimesHeight)
{
    struct Case
    {
        std::vector<int> faces; ///< of the 5 x 5 on top
        double area;
        int numTouching = 0; ///< corners at which it meets itself: walls of two rims stand on one edge there
    };
    const Case cases[] = {
        {{12}, 1},
        {{6, 7, 8, 11, 12, 13, 16, 17, 18}, 9}, // a disk
        {{6, 7, 8, 11, 13, 16, 17, 18}, 8},     // a ring
        {{0, 1, 13, 18, 24}, 5, 1},             // patches, up to the edge of the box
        {{6, 12, 18}, 3, 2},                    // that touch
        {{6, 7, 11, 13, 17, 18}, 6, 2},         // a ring that touches itself
        {{0, 1, 2, 3, 4, 5, 9, 10, 14, 15}, 10},
    };
    for (const Case& region : cases)
        for (const double height : {0.25, -0.25}) {
            SCOPED_TRACE(testing::Message() << region.faces.size() << " faces, " << height);
            TopoMesh mesh;
            Faces in = setOf(pick(addBox(mesh, 5), region.faces)), out;
            const double before = volumeOf(mesh);
            const TopoListener listener(mesh);
            ExtrudeTopoFace extrude(mesh);
            ExtrudeTopoFace sharing(extrude);
            sharing(in, out, up(height));
            EXPECT_TRUE(in.empty());
            EXPECT_EQ(out.size(), int(region.faces.size()));
            for (const TopoMeshFace cap : listed(out)) EXPECT_EQ(cap.centroid().z, 5 + height);
            EXPECT_EQ(listener.types, std::vector<int>{1});
            EXPECT_TRUE(checkTopology(mesh));
            EXPECT_EQ(countBoundary(mesh), 0);
            EXPECT_NEAR(volumeOf(mesh) - before, region.area * height, 1e-12);
            EXPECT_EQ(eulerNumber(mesh), 2 - region.numTouching);
        }
}

TEST(ExtrudeRegion, MakesAClosedShellOfASheet)
{
    for (const bool hasHole : {false, true}) {
        TopoMesh mesh;
        std::vector<TopoMeshFace> sheet = addSquares(mesh, 4, 4);
        if (hasHole) mesh.deleteFace(sheet[5]), sheet.erase(sheet.begin() + 5);
        Faces in = setOf(sheet), out;
        const TopoListener listener(mesh);
        ExtrudeTopoFace extrude(mesh);
        extrude(in, out, up(3));
        EXPECT_EQ(in.size(), int(sheet.size())) << "a sheet stays";
        EXPECT_EQ(listener.types, std::vector<int>{1});
        EXPECT_TRUE(checkTopology(mesh, false));
        EXPECT_EQ(countBoundary(mesh), 0);
        EXPECT_EQ(eulerNumber(mesh), hasHole ? 0 : 2);
        EXPECT_NEAR(volumeInside(mesh), 3.0 * double(sheet.size()), 1e-12);
    }
}

TEST(ExtrudeRegion, TreatsEachPatchByItself)
{
    // A sheet, a closed box, and a part of another sheet at its border, all at once.
    TopoMesh mesh;
    const auto whole = addSquares(mesh, 2, 1), part = addSquares(mesh, 4, 3);
    addBox(mesh, 1);
    std::vector<TopoMeshFace> chosen = whole;
    for (const TopoMeshFace face : facesOf(mesh))
        if (face.number() >= 14) chosen.push_back(face);
    for (const int i : {0, 1, 4, 5}) chosen.push_back(part[size_t(i)]);
    Faces in = setOf(chosen), out;
    const TopoListener listener(mesh);
    ExtrudeTopoFace extrude(mesh);
    extrude(in, out, up(1));
    EXPECT_EQ(in.size(), 8) << "the sheet and the box";
    EXPECT_EQ(out.size(), 12);
    EXPECT_EQ(listener.types, std::vector<int>{1});
    EXPECT_TRUE(checkTopology(mesh, false));
    EXPECT_EQ(countBoundary(mesh), 14) << "the border of the sheet that stays open";
    EXPECT_EQ(mesh.numFaces(), 2 + 2 + 6 + 6 + 6 + 8 + 4 + 8);

    Faces none;
    extrude(none, out, up(1));
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(listener.types.size(), 1u);
}

TEST(ExtrudeRegion, LeavesAWholeMeshWhateverTheRegion)
{
    // Any faces of closed meshes and bands, by matrices that mirror, flatten and make one point of all.
    const AffineMatrix matrices[] = {up(0.3), AffineMatrix(-1), AffineMatrix(0), AffineMatrix(0.5)};
    Random random(11);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        CompactMesh source;
        if (round % 3 == 0) makeTorus(source, 8, 6);
        if (round % 3 == 1) makeMobiusBand(source, 9);
        if (round % 3 == 2) makeSphere(source, 2);
        TopoMesh mesh;
        fill(mesh, source);
        meshTwin(mesh);
        Faces in, out;
        const int oneIn = 1 + random.below(5);
        for (const TopoMeshFace face : facesOf(mesh))
            if (random.oneIn(oneIn)) in.insert(face);
        if (in.empty()) in.insert(mesh.firstFace());
        const int numFaces = in.size(), before = countBoundary(mesh);
        const TopoListener listener(mesh);
        ExtrudeTopoFace extrude(mesh);
        extrude(in, out, matrices[random.below(4)]);
        EXPECT_EQ(out.size(), numFaces);
        EXPECT_EQ(listener.types, std::vector<int>{1});
        EXPECT_TRUE(checkTopology(mesh, round % 3 != 1));
        if (round % 3 != 1) {
            EXPECT_EQ(countBoundary(mesh), before);
        }
    }
}
