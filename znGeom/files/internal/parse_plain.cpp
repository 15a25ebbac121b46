#include <algorithm>
#include <limits>

#include "znGeom/files/internal/number_reader.h"
#include "znGeom/files/internal/parsers.h"

namespace znGeom::internal {

namespace {

/// New triangles are zeros.
void resizeTriangles(CompactMesh& mesh, int count)
{
    const int old = mesh.getNumTriangles();
    mesh.resizeTriangleArray(count);
    if (count > old) std::fill_n(mesh.getTriangles() + old, count - old, MeshTriangle{});
}

/// Makes room for one more vertex or triangle, of which there will be `count`. The array grows with what is read, not
/// with what the header claims.
int grownSize(int size, int count)
{
    return static_cast<int>(std::min<std::int64_t>(count, 2 * std::int64_t(size) + 1000));
}

void readVertices(NumberReader& numbers, int count, CompactMesh& mesh)
{
    for (int i = 0; i < count && !numbers.hasEnded(); ++i) {
        if (i == mesh.getNumVertices()) mesh.resizeVertexArray(grownSize(i, count));
        MeshVertex& vertex = mesh.getVertices()[i];
        if (numbers.read(vertex.x) && numbers.read(vertex.y)) numbers.read(vertex.z);
    }
}

void readTriangles(NumberReader& numbers, int count, CompactMesh& mesh)
{
    for (int i = 0; i < count && !numbers.hasEnded(); ++i) {
        if (i == mesh.getNumTriangles()) resizeTriangles(mesh, grownSize(i, count));
        MeshTriangle& triangle = mesh.getTriangles()[i];
        int numCorners;
        if (numbers.read(numCorners) && numbers.read(triangle[0]) && numbers.read(triangle[1]))
            numbers.read(triangle[2]);
    }
}

} // namespace

/// A count is cut down to what the bytes of the text could hold at two bytes a number, so that a header alone takes no
/// memory. Up to that limit, missing vertices and triangles are zeros.
void parsePlain(TextReader& text, CompactMesh& mesh)
{
    constexpr int mostElements = std::numeric_limits<int>::max() / 3;
    NumberReader numbers(text);
    int numVertices = 0, numTriangles = 0;
    if (numbers.read(numVertices)) numbers.read(numTriangles);
    numVertices = std::clamp(numVertices, 0, mostElements);
    numTriangles = std::clamp(numTriangles, 0, mostElements);

    CompactMesh result;
    readVertices(numbers, numVertices, result);
    readTriangles(numbers, numTriangles, result);
    const std::int64_t size = text.passToEnd();
    result.resizeVertexArray(static_cast<int>(std::min<std::int64_t>(numVertices, size / 6)));
    resizeTriangles(result, static_cast<int>(std::min<std::int64_t>(numTriangles, size / 8)));
    mesh.swap(result);
}

namespace {

zn::vector<TopoMeshVertex> readVertices(NumberReader& numbers, int count, TopoMesh& mesh)
{
    zn::vector<TopoMeshVertex> vertices;
    for (int i = 0; i < count; ++i) {
        znLinear::Point point;
        if (!numbers.read(point.x)) break;
        if (numbers.read(point.y)) numbers.read(point.z);
        vertices.append(mesh.allocVertex(point));
    }
    return vertices;
}

/// Reads the corners of a face; none when the text ends or an index names no vertex.
void readCorners(NumberReader& numbers, const zn::vector<TopoMeshVertex>& vertices, zn::vector<TopoMeshVertex>& corners)
{
    corners.clear();
    int count = 0, index = 0;
    bool whole = numbers.read(count);
    for (int i = 0; i < count && !numbers.hasEnded(); ++i) {
        const bool isVertex = numbers.read(index) && index >= 0 && index < vertices.size();
        whole = whole && isVertex;
        if (whole) corners.append(vertices[index]);
    }
    if (!whole) corners.clear();
}

} // namespace

void parsePlain(TextReader& text, TopoMesh& mesh)
{
    NumberReader numbers(text);
    int numVertices = 0, numFaces = 0;
    if (numbers.read(numVertices)) numbers.read(numFaces);
    const zn::vector<TopoMeshVertex> vertices = readVertices(numbers, numVertices, mesh);
    zn::vector<TopoMeshVertex> corners;
    for (int i = 0; i < numFaces && !numbers.hasEnded(); ++i) {
        readCorners(numbers, vertices, corners);
        if (corners.size() >= 3) mesh.allocFace(corners);
    }
}

} // namespace znGeom::internal
