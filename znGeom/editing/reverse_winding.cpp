#include "znGeom/editing/reverse_winding.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "znGeom/editing/select.h"
#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"

namespace znGeom {

namespace {

void turnOver(MeshTriangle& triangle) { std::swap(triangle[0], triangle[1]); }

void reverse(MeshNormal& normal) { normal.set(-normal.x, -normal.y, -normal.z); }

/// Whether turning a strip over takes two strips.
bool mustSplit(int length) { return length > 4 && length % 2 == 0; }

/// Turns a strip over that need not be split. Every second triangle of a strip is wound against the order of its
/// points, so that reversal turns a strip over where its first and its last triangle are wound alike.
void turnStripOver(int* points, int length)
{
    if (length == 4)
        std::swap(points[1], points[2]);
    else if (length >= 3)
        std::reverse(points, points + length);
}

void turnStripsOverInPlace(CompactMesh& mesh)
{
    const int* lengths = mesh.getTriStripLengths();
    int* points = mesh.getTriStripPoints();
    for (int strip = 0; strip < mesh.getNumTriStrips(); points += lengths[strip++])
        turnStripOver(points, lengths[strip]);
}

/// \param numSplit  how many strips are to be split
void rebuildStripsTurnedOver(CompactMesh& mesh, int numSplit)
{
    const int numStrips = mesh.getNumTriStrips(), numPoints = mesh.getNumTriStripPoints();
    const zn::vector<int> oldLengths(mesh.getTriStripLengths(), mesh.getTriStripLengths() + numStrips);
    const zn::vector<int> oldPoints(mesh.getTriStripPoints(), mesh.getTriStripPoints() + numPoints);
    mesh.resizeTriStripArrays(zn::checkedSize(numPoints + std::int64_t{2} * numSplit), numStrips + numSplit);
    int *lengths = mesh.getTriStripLengths(), *points = mesh.getTriStripPoints();
    const int* old = oldPoints.data();
    for (const int length : oldLengths) {
        if (mustSplit(length)) {
            *lengths++ = 3;
            points = std::reverse_copy(old, old + 3, points);
            *lengths++ = length - 1;
            points = std::copy(old + 1, old + length, points);
        } else {
            *lengths++ = length;
            int* const strip = std::exchange(points, std::copy(old, old + length, points));
            turnStripOver(strip, length);
        }
        old += length;
    }
}

void turnStripsOver(CompactMesh& mesh)
{
    const int* lengths = mesh.getTriStripLengths();
    const auto numSplit = static_cast<int>(std::count_if(lengths, lengths + mesh.getNumTriStrips(), mustSplit));
    if (numSplit == 0)
        turnStripsOverInPlace(mesh);
    else
        rebuildStripsTurnedOver(mesh, numSplit);
}

void turnFansOver(CompactMesh& mesh)
{
    const int* lengths = mesh.getTriFanLengths();
    int* points = mesh.getTriFanPoints();
    for (int fan = 0; fan < mesh.getNumTriFans(); points += lengths[fan++])
        if (lengths[fan] > 0) std::reverse(points + 1, points + lengths[fan]);
}

/// \param normals  may be null
void reverseAll(MeshNormal* normals, int count)
{
    if (normals) std::for_each_n(normals, count, reverse);
}

} // namespace

void meshReverseWinding(CompactMesh& mesh, bool reverseNormals)
{
    debugChannel().print("meshReverseWinding: %d triangles\n", mesh.getNumTriangles());
    znOS::StopWatch watch;
    std::for_each_n(mesh.getTriangles(), mesh.getNumTriangles(), turnOver);
    turnStripsOver(mesh);
    turnFansOver(mesh);
    if (reverseNormals) reverseAll(mesh.getNormals(), mesh.getNumVertices());
    reverseAll(mesh.getTriangleNormals(), mesh.getNumTriangles());

    MeshModification modification(&mesh, MeshModification::TopologyChanged);
    if (reverseNormals)
        modification.normalsModified();
    else
        modification.normalsValid();
    modification.triangleNormalsModified();
    modification.uvsValid();
    modification.stripsAndFansModified();
    mesh.modified(modification);
    debugChannel().print("  remapped triangle indices: %f s\n", watch.clear());
}

void meshReverseSelectedWinding(CompactMesh& mesh)
{
    // The size of the selection, not how much of it is selected: this line has always told that.
    debugChannel().print("meshReverseSelectedWinding: %d triangles\n", mesh.getSelectedTriangles().getSize());
    znOS::StopWatch watch;
    BitVector reversed(mesh.getNumVertices());
    MeshTriangle* triangles = mesh.getTriangles();
    MeshNormal *normals = mesh.getNormals(), *triangleNormals = mesh.getTriangleNormals();
    forEachSetBit(mesh.getSelectedTriangles(), [&, numTriangles = mesh.getNumTriangles()](int t) {
        if (t >= numTriangles) return;
        turnOver(triangles[t]);
        for (const int corner : triangles[t].corners) {
            if (!normals || reversed.isSet(corner)) continue;
            reversed.setBit(corner);
            reverse(normals[corner]);
        }
        if (triangleNormals) reverse(triangleNormals[t]);
    });

    MeshModification modification(&mesh, MeshModification::TopologyChanged);
    modification.normalsModified();
    modification.triangleNormalsModified();
    modification.uvsValid();
    mesh.modified(modification);
    debugChannel().print("  mesh reverse selected winding: %f s\n", watch.clear());
}

void meshReverseWinding(CompactMesh& mesh, const MeshAdjTris& adjacency, int triangle)
{
    MeshSelect select(mesh, adjacency);
    select.getSelectedTriangles().setBit(triangle);
    select.selectTrianglesRecursive(false);
    meshReverseSelectedWinding(mesh);
}

} // namespace znGeom
