#include "znGeom/files/internal/decimal.h"
#include "znGeom/files/internal/growing_array.h"
#include "znGeom/files/internal/parsers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "znGeom/foundation/containers/vector.h"

namespace znGeom::internal {

namespace {

// Every line ends with '\n', which belongs to no number and is no blank: nothing runs beyond it. One carriage return in
// front of it belongs to the line end.
bool isLineEnd(const char* at) { return *at == '\n' || (*at == '\r' && at[1] == '\n'); }

const char* skipBlanks(const char* at)
{
    while (isBlank(*at) && !isLineEnd(at)) ++at;
    return at;
}

/// False when the rest of the line is not to be read: no number stands here, which counts as 0, or one that is too
/// large, which counts as the largest.
bool readFloat(const char*& at, float& value)
{
    at = skipBlanks(at);
    const Scan scan = scanFloat(at, value);
    if (scan == Scan::TooLarge) value = std::copysign(std::numeric_limits<float>::max(), value);
    return scan == Scan::Number;
}

bool readInt(const char*& at, int& value)
{
    at = skipBlanks(at);
    return scanInt(at, value) == Scan::Number;
}

/// Reads v, v/vt, v//vn or v/vt/vn. Blanks may stand in front of each number, not in front of a slash. A broken entry
/// is as good as its v, which is 0 when it cannot be read; what follows it on the line is not to be read, and the
/// result is false.
bool readEntry(const char*& at, int& vertex)
{
    int unused;
    if (!readInt(at, vertex)) return vertex = 0, false;
    if (*at != '/') return true;
    ++at;
    if (*at != '/' && !readInt(at, unused)) return false;
    if (*at != '/') return true;
    return readInt(++at, unused);
}

/// Faces with equally many corners that follow one another. Most files are one run.
struct FaceRun
{
    int numCorners;
    int numFaces;
};

class ObjParser
{
public:
    /// Reads whole lines; false when there are more of them than a mesh can hold.
    bool readLines(const char* begin, const char* end);
    void publish(CompactMesh& mesh);

private:
    const char* readVertex(const char* at);
    const char* readFace(const char* at);
    void eraseFacesOutOfRange();
    void publishPolygons(CompactMesh& mesh);
    void publishTriangles(CompactMesh& mesh);

    GrowingArray<MeshVertex> m_vertices;
    GrowingArray<int> m_corners; ///< counted from 1, none below
    zn::vector<FaceRun> m_runs;
    int m_largestCorner = 0;
};

/// Vertices and faces count. All other lines are passed over: normals and UVs as well, which go no further than the
/// file, and comments.
bool ObjParser::readLines(const char* begin, const char* end)
{
    // The shortest vertex is "v \n", and no line has an entry for less than two characters.
    const std::int64_t size = end - begin;
    if (!m_vertices.reserve(size / 3) || !m_corners.reserve(size / 2)) return false;
    for (const char* at = begin; at != end; ++at) {
        while (isBlank(*at)) ++at;
        if (at[0] == 'v' && at[1] == ' ')
            at = readVertex(at + 2);
        else if (at[0] == 'f' && at[1] == ' ')
            at = readFace(at + 2);
        if (*at != '\n') at = static_cast<const char*>(std::memchr(at, '\n', static_cast<size_t>(end - at)));
    }
    return true;
}

/// Numbers that are missing are 0.
const char* ObjParser::readVertex(const char* at)
{
    MeshVertex* const vertex = m_vertices.end();
    vertex->set(0, 0, 0);
    if (readFloat(at, vertex->x) && readFloat(at, vertex->y)) readFloat(at, vertex->z);
    m_vertices.setEnd(vertex + 1);
    return at;
}

/// Keeps the face unless it has too few corners or one below 1. A blank at the end of the line makes one more entry,
/// which cannot be read, and with it the face is lost.
const char* ObjParser::readFace(const char* at)
{
    int* const face = m_corners.end();
    int* corner = face;
    int smallest = 1, largest = 0;
    bool more = true;
    while (more) {
        more = readEntry(at, *corner) && !isLineEnd(at);
        smallest = std::min(smallest, *corner);
        largest = std::max(largest, *corner++);
    }
    const int numCorners = static_cast<int>(corner - face);
    if (numCorners < 3 || smallest < 1) return at;
    m_corners.setEnd(corner);
    m_largestCorner = std::max(m_largestCorner, largest);
    if (m_runs.empty() || m_runs.back().numCorners != numCorners) m_runs.append({numCorners, 0});
    ++m_runs.back().numFaces;
    return at;
}

/// Now that the number of vertices is known.
void ObjParser::eraseFacesOutOfRange()
{
    const int numVertices = m_vertices.size();
    if (m_largestCorner <= numVertices) return;
    const int* face = m_corners.begin();
    int* kept = m_corners.begin();
    for (FaceRun& run : m_runs) {
        const int numFaces = run.numFaces;
        for (int i = 0; i < numFaces; ++i, face += run.numCorners) {
            if (*std::max_element(face, face + run.numCorners) <= numVertices)
                kept = std::copy_n(face, run.numCorners, kept);
            else
                --run.numFaces;
        }
    }
    m_corners.setEnd(kept);
}

void ObjParser::publish(CompactMesh& mesh)
{
    eraseFacesOutOfRange();
    mesh.resizeVertexArray(0);
    mesh.copyVertices(m_vertices.size(), m_vertices.begin());
    m_vertices.clear();
    const auto isPolygons = [](const FaceRun& run) { return run.numCorners > 3 && run.numFaces > 0; };
    if (std::any_of(m_runs.begin(), m_runs.end(), isPolygons))
        publishPolygons(mesh);
    else
        publishTriangles(mesh);
}

/// One polygon makes all faces polygons, and the triangles of the mesh stay as they were.
void ObjParser::publishPolygons(CompactMesh& mesh)
{
    int numPolygons = 0;
    for (const FaceRun& run : m_runs) numPolygons += run.numFaces;
    mesh.resizePolyArrays(m_corners.size(), numPolygons);
    int* length = mesh.getPolyLengths();
    for (const FaceRun& run : m_runs) length = std::fill_n(length, run.numFaces, run.numCorners);
    std::transform(m_corners.begin(), m_corners.end(), mesh.getPolyPoints(), [](int corner) { return corner - 1; });
}

void ObjParser::publishTriangles(CompactMesh& mesh)
{
    mesh.resizeTriangleArray(m_corners.size() / 3);
    std::transform(m_corners.begin(), m_corners.end(), mesh.getTrianglesRaw(), [](int corner) { return corner - 1; });
}

} // namespace

void parseObj(TextReader& text, CompactMesh& mesh)
{
    ObjParser parser;
    bool hasRoom = true;
    while (hasRoom && text.nextBlock()) hasRoom = parser.readLines(text.begin(), text.end());
    parser.publish(mesh);
}

} // namespace znGeom::internal
