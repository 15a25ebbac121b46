#include "znGeom/files/internal/decimal.h"
#include "znGeom/files/internal/face_list.h"
#include "znGeom/files/internal/growing_array.h"
#include "znGeom/files/internal/parsers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "znGeom/foundation/containers/vector.h"

namespace znGeom::internal {

namespace {

// Every line ends with '\n', which belongs to no number and is not a blank: nothing runs beyond it. One carriage return
// before it belongs to the line end.
bool isLineEnd(const char* at) { return *at == '\n' || (*at == '\r' && at[1] == '\n'); }

const char* skipBlanks(const char* at)
{
    while (isBlank(*at) && !isLineEnd(at)) ++at;
    return at;
}

/// False when the rest of the line is not to be read: there is no number here, which counts as 0, or one that is too
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

/// Reads v, v/vt, v//vn or v/vt/vn. Blanks may come before each number, but not before a slash. A broken entry is as
/// good as its v, which is 0 when it cannot be read; what follows it on the line is not to be read, and the result is
/// false.
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

class ObjParser
{
public:
    /// Reads whole lines; false when there are more of them than a mesh can hold.
    bool readLines(const char* begin, const char* end);
    void publish(CompactMesh& mesh);

private:
    const char* readVertex(const char* at);
    const char* readFace(const char* at);

    GrowingArray<float> m_positions;
    FaceList m_faces;
    int m_largestCorner = 0; ///< counted from 1
};

/// Vertices and faces count. All other lines are skipped: comments, and also normals and UVs, which are not kept.
bool ObjParser::readLines(const char* begin, const char* end)
{
    // The shortest vertex is "v \n", and no line has an entry for less than two characters.
    const std::int64_t size = end - begin;
    if (!m_positions.reserve(size) || !m_faces.reserve(size / 2)) return false;
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

/// Missing numbers are 0.
const char* ObjParser::readVertex(const char* at)
{
    float* const vertex = m_positions.end();
    std::fill_n(vertex, 3, 0.0f);
    if (readFloat(at, vertex[0]) && readFloat(at, vertex[1])) readFloat(at, vertex[2]);
    m_positions.setEnd(vertex + 3);
    return at;
}

/// Keeps the face unless it has too few corners or one below 1. A blank at the end of the line makes one more entry,
/// which cannot be read, and with it the face is lost.
const char* ObjParser::readFace(const char* at)
{
    int* const face = m_faces.end();
    int* corner = face;
    int smallest = 1, largest = 0;
    bool more = true;
    while (more) {
        more = readEntry(at, *corner) && !isLineEnd(at);
        smallest = std::min(smallest, *corner);
        largest = std::max(largest, *corner++);
    }
    if (corner - face < 3 || smallest < 1) return at;
    for (int* each = face; each != corner; ++each) --*each;
    m_largestCorner = std::max(m_largestCorner, largest);
    m_faces.add(static_cast<int>(corner - face));
    return at;
}

/// One polygon makes all faces polygons, and the triangles of the mesh stay as they were.
void ObjParser::publish(CompactMesh& mesh)
{
    const int numVertices = m_positions.size() / 3;
    if (m_largestCorner > numVertices) m_faces.eraseFrom(numVertices);
    Array<float> positions = m_positions.take();
    mesh.resizeVertexArray(0);
    mesh.takeVertices(positions);
    if (m_faces.numPolygons() > 0)
        m_faces.publishPolygons(mesh);
    else
        m_faces.publishTriangles(mesh);
}

} // namespace

void parseObj(TextReader& text, CompactMesh& mesh)
{
    ObjParser parser;
    bool hasRoom = true;
    for (bool isFirst = true; hasRoom && text.nextBlock(); isFirst = false)
        hasRoom = parser.readLines(text.begin() + (isFirst ? text.markSize() : 0), text.end());
    parser.publish(mesh);
}

} // namespace znGeom::internal
