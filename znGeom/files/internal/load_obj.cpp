#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "znGeom/files/internal/corner_channel.h"
#include "znGeom/files/internal/decimal.h"
#include "znGeom/files/internal/loaders.h"
#include "znGeom/files/internal/number_reader.h"
#include "znGeom/files/internal/obj_groups.h"

namespace znGeom::internal {

namespace {

/// The words of one line, which is followed by a byte that belongs to no number.
class ObjLine
{
public:
    ObjLine(const char* begin, const char* end) : m_at(begin), m_end(end) {}

    bool hasWord()
    {
        while (m_at != m_end && isBlank(*m_at)) ++m_at;
        return m_at != m_end;
    }
    /// The next word; empty at the end of the line.
    std::string_view word()
    {
        if (!hasWord()) return {};
        const char* const begin = m_at;
        while (m_at != m_end && !isBlank(*m_at)) ++m_at;
        return {begin, static_cast<size_t>(m_at - begin)};
    }
    bool read(float& value)
    {
        hasWord();
        const char* const begin = m_at;
        if ((scanFloat(m_at, value) != Scan::None || scanWord(m_at = begin, value)) && isAtBreak()) return true;
        m_at = begin;
        return false;
    }
    /// A number of a face corner.
    Scan readIndex(int& value) { return scanInt(m_at, value); }
    bool take(char c) { return m_at != m_end && *m_at == c && (++m_at, true); }
    bool isAtBreak() const { return m_at == m_end || isBlank(*m_at); }
    const char* at() const { return m_at; }
    void goTo(const char* at) { m_at = at; }
    /// What is left, without blanks around it.
    std::string_view rest()
    {
        if (!hasWord()) return {};
        const char* end = m_end;
        while (isBlank(end[-1])) --end;
        return {m_at, static_cast<size_t>(end - m_at)};
    }

private:
    const char *m_at, *m_end;
};

class ObjLoader
{
public:
    explicit ObjLoader(LoadContext& context)
        : m_context(context), m_parts(context, 1), m_normals("normals", 3), m_uvs("texture coordinates", 2)
    {}

    bool read();
    bool publish(CompactMesh& mesh);

private:
    bool readBlock(const char* at, const char* end);
    bool readPiece(const char* begin, const char* end);
    bool readLine(const char* begin, const char* end);
    void readOther(std::string_view keyword, ObjLine line);
    bool readVertex(ObjLine line);
    bool readEntry(ObjLine line, CornerChannel& channel);
    bool readFace(ObjLine line);
    bool readCorner(ObjLine& line, int (&indices)[3]);
    bool fail(const std::string& what);
    bool failForCorner(const char* begin, ObjLine line);
    void noteLost();

    LoadContext& m_context;
    MeshParts m_parts;
    CornerChannel m_normals, m_uvs;
    ObjGroups m_groups;
    zn::vector<int> m_corners; ///< vertex, uv and normal of each corner of one face
    std::string m_continued;   ///< the beginning of a line that continues in the next one
    std::int64_t m_lineNumber = 0;
    bool m_hasColours = false, m_hasMaterials = false;
    int m_numLinesAndPoints = 0, m_numFreeForms = 0;
};

bool ObjLoader::read()
{
    TextReader& text = m_context.text();
    bool isFirst = true;
    while (m_context.nextBlock()) {
        if (!readBlock(text.begin() + (isFirst ? text.markSize() : 0), text.end())) return false;
        isFirst = false;
    }
    if (m_context.hasFailed()) return false;
    if (!m_continued.empty() && !readPiece(nullptr, nullptr)) return false;
    return m_parts.numVertices() > 0 || m_context.malformed("no vertices in it, is this an OBJ file?");
}

/// Lines end with a line feed, a carriage return or both.
bool ObjLoader::readBlock(const char* at, const char* end)
{
    while (at != end) {
        const char* lineEnd = static_cast<const char*>(std::memchr(at, '\n', static_cast<size_t>(end - at)));
        if (const void* early = std::memchr(at, '\r', static_cast<size_t>(lineEnd - at)))
            lineEnd = static_cast<const char*>(early);
        ++m_lineNumber;
        if (!readPiece(at, lineEnd)) return false;
        at = lineEnd + (lineEnd[0] == '\r' && lineEnd + 1 != end && lineEnd[1] == '\n' ? 2 : 1);
    }
    return true;
}

/// A line, or a part of one that a backslash continues.
bool ObjLoader::readPiece(const char* begin, const char* end)
{
    const bool goesOn = begin != end && end[-1] == '\\';
    if (!goesOn && m_continued.empty()) return readLine(begin, end);
    m_continued.append(begin, goesOn ? end - 1 : end);
    m_continued += ' ';
    if (goesOn) return true;
    const std::string whole = std::move(m_continued);
    m_continued.clear();
    return readLine(whole.data(), whole.data() + whole.size());
}

/// A comment begins with "#" at the beginning of a word.
bool ObjLoader::readLine(const char* begin, const char* end)
{
    const char* at = begin;
    while (const void* found = std::memchr(at, '#', static_cast<size_t>(end - at))) {
        at = static_cast<const char*>(found);
        if (at == begin || isBlank(at[-1])) {
            end = at;
            break;
        }
        ++at;
    }
    ObjLine line(begin, end);
    const std::string_view keyword = line.word();
    if (keyword == "v") return readVertex(line);
    if (keyword == "f") return readFace(line);
    if (keyword == "vt") return readEntry(line, m_uvs);
    if (keyword == "vn") return readEntry(line, m_normals);
    readOther(keyword, line);
    return true;
}

void ObjLoader::readOther(std::string_view keyword, ObjLine line)
{
    if (keyword == "g" || keyword == "o") m_groups.begin(line.rest(), m_parts.faces.numFaces());
    if (keyword == "usemtl") m_hasMaterials = true;
    if (keyword == "l" || keyword == "p") ++m_numLinesAndPoints;
    if (keyword == "curv" || keyword == "curv2" || keyword == "surf") ++m_numFreeForms;
}

/// The position may be followed by a weight or a colour.
bool ObjLoader::readVertex(ObjLine line)
{
    float position[3];
    for (float& coordinate : position) {
        if (line.read(coordinate)) continue;
        const bool isShort = !line.hasWord();
        return fail(isShort ? "a vertex has fewer than three coordinates" : quoted(line.word()) + " is not a number");
    }
    int further = 0;
    while (further < 3 && !line.word().empty()) ++further;
    m_hasColours = m_hasColours || further == 3;
    return m_parts.addVertex(position);
}

/// Missing numbers are 0.
bool ObjLoader::readEntry(ObjLine line, CornerChannel& channel)
{
    float values[3] = {};
    for (int i = 0; i < channel.width() && line.hasWord(); ++i)
        if (!line.read(values[i])) return fail(quoted(line.word()) + " is not a number");
    return channel.add(values) || m_context.tooLarge();
}

/// Reads v, v/vt, v//vn or v/vt/vn as indices from 0; -1 for what is not there, and for texture coordinates and normals
/// with impossible indices.
bool ObjLoader::readCorner(ObjLine& line, int (&indices)[3])
{
    const int counts[3] = {m_parts.numVertices(), m_uvs.count(), m_normals.count()};
    const char* const begin = line.at();
    for (int which = 0; which < 3; ++which) {
        indices[which] = -1;
        if (which > 0 && !line.take('/')) continue;
        int number = 0;
        const Scan scan = line.readIndex(number);
        const std::int64_t index = number > 0 ? std::int64_t(number) - 1 : std::int64_t(number) + counts[which];
        if (scan == Scan::Number && number != 0 && index >= 0) indices[which] = static_cast<int>(index);
    }
    return (indices[0] >= 0 && line.isAtBreak()) || failForCorner(begin, line);
}

bool ObjLoader::failForCorner(const char* begin, ObjLine line)
{
    line.goTo(begin);
    const std::string_view word = line.word();
    return fail("a face names vertex " + printable(word.substr(0, std::min<size_t>(word.find('/'), 24))) +
                ", and the file has " + std::to_string(m_parts.numVertices()) + " up to there");
}

bool ObjLoader::readFace(ObjLine line)
{
    m_corners.clear();
    zn::vector<int>& corners = m_corners;
    while (line.hasWord()) {
        int indices[3];
        if (!readCorner(line, indices)) return false;
        for (const int index : indices) corners.append(index);
    }
    const int numCorners = corners.size() / 3;
    for (int i = 0; numCorners >= 3 && i < numCorners; ++i) {
        m_uvs.use(corners[3 * i], corners[3 * i + 1], m_parts.numVertices());
        m_normals.use(corners[3 * i], corners[3 * i + 2], m_parts.numVertices());
    }
    for (int i = 0; i < numCorners; ++i) corners[i] = corners[3 * i];
    return m_parts.addFace(corners.data(), numCorners);
}

bool ObjLoader::fail(const std::string& what)
{
    return m_context.malformed("line " + std::to_string(m_lineNumber) + ": " + what);
}

void ObjLoader::noteLost()
{
    if (m_hasColours) m_context.note("colours: not kept");
    if (m_hasMaterials) m_context.note("materials: not kept");
    if (m_numLinesAndPoints > 0)
        m_context.note("lines and points: " + std::to_string(m_numLinesAndPoints) + ", left out");
    if (m_numFreeForms > 0)
        m_context.note("curves and free-form surfaces: " + std::to_string(m_numFreeForms) + ", left out");
}

bool ObjLoader::publish(CompactMesh& mesh)
{
    noteLost();
    m_normals.publish(m_context, m_parts.numVertices(), m_parts.normals);
    m_uvs.publish(m_context, m_parts.numVertices(), m_parts.uvs);
    MeshLoadResult& result = m_context.result();
    m_groups.publish(m_parts.faces, result.groups);
    if (m_normals.isPerCorner()) result.cornerNormals = m_normals.cornerValues<MeshNormal>(m_parts.faces);
    if (m_uvs.isPerCorner()) result.cornerUVs = m_uvs.cornerValues<MeshUV>(m_parts.faces);
    return m_parts.publish(mesh);
}

} // namespace

bool loadObj(LoadContext& context, CompactMesh& mesh)
{
    ObjLoader loader(context);
    return loader.read() && loader.publish(mesh);
}

} // namespace znGeom::internal
