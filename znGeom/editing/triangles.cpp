#include "znGeom/editing/triangles.h"

#include <algorithm>
#include <cstdint>

#include "znGeom/foundation/containers/checked_size.h"

namespace znGeom {

namespace {

/// How many triangles the fans of all polygons have.
int countFanTriangles(const int* lengths, int numPolys)
{
    std::int64_t count = 0;
    for (int i = 0; i < numPolys; ++i) count += std::max(lengths[i] - 2, 0);
    return zn::checkedSize(count);
}

/// Writes the fan of each polygon, and for each triangle its polygon.
void writeFans(const int* lengths, const int* points, int numPolys, int* corners, int* polygonOf)
{
    for (int polygon = 0; polygon < numPolys; points += lengths[polygon++]) {
        for (int i = 2; i < lengths[polygon]; ++i) {
            *corners++ = points[0];
            *corners++ = points[i - 1];
            *corners++ = points[i];
            *polygonOf++ = polygon;
        }
    }
}

} // namespace

void meshTriangulate(CompactMesh& mesh)
{
    Remap unused;
    meshTriangulate(mesh, unused);
}

void meshTriangulate(CompactMesh& mesh, Remap& remap)
{
    if (mesh.getNumTriangles() > 0 || mesh.getNumPolys() == 0) return;
    const int* lengths = mesh.getPolyLengths();
    const int numTriangles = countFanTriangles(lengths, mesh.getNumPolys());
    remap.resize(numTriangles, mesh.getNumPolys());
    if (numTriangles == 0) return;
    mesh.resizeTriangleArray(numTriangles);
    writeFans(lengths, mesh.getPolyPoints(), mesh.getNumPolys(), mesh.getTrianglesRaw(), remap.data());

    MeshModification modification(&mesh, MeshModification::TopologyChanged);
    modification.normalsValid();
    modification.uvsValid();
    modification.stsValid();
    modification.coloursValid();
    mesh.modified(modification);
}

} // namespace znGeom
