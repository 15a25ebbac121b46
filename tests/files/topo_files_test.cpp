// Half-edge meshes in the plain format.
#include <cstring>

#include <gtest/gtest.h>

#include "tests/files/temporary_file.h"
#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"
#include "znGeom/files/mesh_files.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Point;

namespace {

const char* const twoPolygons = "6 2\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n2 0.1 1e-300\n2 1 -3.14159265358979\n"
                                "4 0 1 2 3\n4 1 4 5 2\n";

void readText(TopoMesh& mesh, const std::string& text)
{
    const TemporaryFile file;
    file.write(text);
    meshRead(mesh, file.name());
}

} // namespace

TEST(TopoFiles, PolygonsAreReadWithTheirTwinsAndAddedToWhatIsThere)
{
    TopoMesh mesh;
    LogRecorder log;
    readText(mesh, twoPolygons);
    EXPECT_TRUE(mesh.numVertices() == 6 && mesh.numFaces() == 2);
    EXPECT_TRUE(checkTopology(mesh));
    EXPECT_EQ(countBoundary(mesh), 6);
    EXPECT_EQ(listed(verticesOf(mesh))[5]->point, Point(2, 1, -3.14159265358979)); // in double
    EXPECT_EQ(listed(verticesOf(mesh))[4]->point.z, 1e-300);
    readText(mesh, twoPolygons);
    EXPECT_TRUE(mesh.numVertices() == 12 && mesh.numFaces() == 4);
    EXPECT_TRUE(checkTopology(mesh));
    EXPECT_EQ(log.count("meshTwin: "), 2);

    TopoMesh none;
    meshRead(none, TemporaryFile().name());
    EXPECT_TRUE(none.numVertices() == 0 && log.count("meshTwin: ") == 2);
}

TEST(TopoFiles, WhatIsWrittenIsReadBack)
{
    CompactMesh grid;
    makeGrid(grid, 6, 6);
    TopoMesh mesh, back;
    fill(mesh, grid);
    // Deletions leave gaps in the numbers, and a face has more corners than fit in one piece of a line.
    mesh.deleteVertex(listed(verticesOf(mesh))[14]);
    zn::vector<Point> points;
    Random random(1);
    for (int i = 0; i < 40; ++i) points.append(random.point());
    const TopoMeshFace f = mesh.firstFace();
    const TopoMeshFace large = mesh.subdivideFace(f, f->edge->origin, f->edge->next->origin, points);

    const TemporaryFile file;
    meshWrite(mesh, file.name());
    meshRead(back, file.name());
    EXPECT_TRUE(checkTopology(back));
    EXPECT_EQ(back.numFaces(), mesh.numFaces());
    EXPECT_EQ(listed(facesOf(back)).back().numVertices(), large.numVertices());
    const auto written = listed(verticesOf(mesh)), read = listed(verticesOf(back));
    ASSERT_EQ(read.size(), written.size());
    for (size_t i = 0; i < read.size(); ++i) {
        char text[64], copy[64];
        std::snprintf(text, sizeof text, "%.10g", written[i]->point.x);
        std::snprintf(copy, sizeof copy, "%.10g", read[i]->point.x);
        EXPECT_STREQ(text, copy);
    }
    const TemporaryFile again;
    meshWrite(back, again.name());
    EXPECT_EQ(again.read(), file.read());
    TopoMesh empty;
    meshWrite(empty, file.name());
    EXPECT_EQ(file.read(), "0 0\n");
}

TEST(TopoFiles, BadFacesAreLeftOutAndTruncatedFilesEnd)
{
    TopoMesh mesh;
    readText(mesh, "3 6\n0 0 0\n1 0 0\n0 1 0\n3 0 1 3\n3 -1 0 1\n2 0 1\n-5\n3 0 1 2\n0\n");
    EXPECT_TRUE(mesh.numFaces() == 1 && mesh.numVertices() == 3);
    EXPECT_TRUE(checkTopology(mesh));

    for (size_t length = 0; length <= std::strlen(twoPolygons); ++length) {
        TopoMesh cut;
        readText(cut, std::string(twoPolygons, length));
        EXPECT_TRUE(checkTopology(cut)) << length;
    }
    for (const char* hostile : {"2147483647 2147483647\n", "-3 -4\n1 2 3", "1 1\n0 0 0\n2147483647 0 0 0",
                                "1 2\n0 0 0\n3 0 0 0\n4 0 0 0 0\n", "x", "3 nan"}) {
        TopoMesh small;
        readText(small, hostile);
        EXPECT_TRUE(small.numVertices() <= 1 && checkTopology(small, false)) << hostile;
    }
}
