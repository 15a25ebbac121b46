#include <tiny_obj_loader.h>

#include <algorithm>
#include <climits>
#include <istream>
#include <streambuf>

#include "apps/zngeom/mesh_readers.h"
#include "apps/zngeom/pacer.h"
#include "apps/zngeom/read_file.h"
#include "apps/zngeom/text_scanner.h"

namespace tool {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n'; }

/// Makes of a text what the parser understands as it stands, without a change of length: every line ends in a line feed
/// alone, a line that a backslash continues becomes blanks and goes on, comments behind other text become blanks.
void prepareLines(std::string& text)
{
    if (text.starts_with("\xEF\xBB\xBF")) text.replace(0, 3, 3, ' ');
    bool comment = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\n';
        if (text[i] == '\r') text[i] = next == '\n' ? ' ' : '\n';
        if (text[i] == '\\' && (next == '\n' || next == '\r')) {
            text[i] = text[i + 1] = ' ';
            if (next == '\r' && i + 2 < text.size() && text[i + 2] == '\n') text[i + 2] = ' ';
        }
        comment = text[i] != '\n' && (comment || (text[i] == '#' && (i == 0 || isBlank(text[i - 1]))));
        if (comment) text[i] = ' ';
    }
}

/// Gives a text to the parser line by line, so that whoever is called back knows the line. Ends early when the user has
/// asked to stop, or when it is told to.
class LineFeeder : public std::streambuf
{
public:
    LineFeeder(std::string& text, znUtil::Progress& progress)
        : m_next(text.data()), m_end(m_next + text.size()), m_begin(m_next), m_progress(progress)
    {}

    /// The present line, its end included.
    std::string_view line() const { return {eback(), static_cast<std::size_t>(egptr() - eback())}; }
    int lineNumber() const { return m_lineNumber; }
    void stop() { m_next = m_end; }

protected:
    int_type underflow() override
    {
        if (m_lineNumber % linesPerLook == 0) {
            m_progress.set(static_cast<double>(m_next - m_begin) / static_cast<double>(m_end - m_begin));
            if (m_progress.cancelled()) stop();
        }
        if (m_next == m_end) return traits_type::eof();
        char* const begin = m_next;
        m_next = std::find(begin, m_end, '\n');
        if (m_next != m_end) ++m_next;
        ++m_lineNumber;
        setg(begin, begin, m_next);
        return traits_type::to_int_type(*begin);
    }

private:
    static constexpr int linesPerLook = 1 << 12;

    char *m_next, *const m_end, *const m_begin;
    int m_lineNumber = 0;
    znUtil::Progress& m_progress;
};

/// The numbers that face corners point to, beside positions, and what each corner points to: -1 for nothing.
struct CornerChannel
{
    std::size_t width; ///< numbers per entry
    std::vector<float> values;
    std::vector<int> ofCorner;

    std::size_t count() const { return values.size() / width; }
    const float* entry(int index) const { return values.data() + static_cast<std::size_t>(index) * width; }
};

/// What the parser calls back.
struct ObjContent
{
    LineFeeder& feeder;
    MeshParts parts;
    CornerChannel normals{3, {}, {}}, uvs{2, {}, {}};
    bool colours = false;
    std::string failure; ///< the first one
    std::vector<int> corners;

    void fail(const std::string& what)
    {
        if (failure.empty()) failure = what;
        feeder.stop();
    }
};

/// A number as it stands in the file becomes an index from 0; -1 for what points nowhere. Negative numbers count back
/// from the entries so far.
int resolveIndex(int number, std::size_t numSoFar)
{
    if (number > 0) return number - 1;
    const long long index = number + static_cast<long long>(numSoFar);
    return number == 0 || index < 0 ? -1 : static_cast<int>(std::min<long long>(index, INT_MAX));
}

/// Takes the numbers from the line itself: the parser knows no not-a-numbers and takes words for zero.
void addVertex(void* user, float, float, float, float)
{
    auto& content = *static_cast<ObjContent*>(user);
    TextScanner scanner(content.feeder.line(), content.feeder.lineNumber());
    try {
        scanner.word();
        for (int axis = 0; axis < 3; ++axis) {
            if (!scanner.hasWordOnLine()) scanner.fail("a vertex has fewer than three coordinates");
            content.parts.positions.push_back(scanner.number<float>());
        }
        int further = 0;
        for (; scanner.hasWordOnLine(); ++further) scanner.word();
        content.colours = content.colours || further >= 3;
    } catch (const Failure& failure) {
        content.fail(failure.what());
    }
}

void addNormal(void* user, float x, float y, float z)
{
    auto& values = static_cast<ObjContent*>(user)->normals.values;
    values.insert(values.end(), {x, y, z});
}

void addUV(void* user, float u, float v, float)
{
    auto& values = static_cast<ObjContent*>(user)->uvs.values;
    values.insert(values.end(), {u, v});
}

void addFace(void* user, tinyobj::index_t* indices, int numIndices)
{
    auto& content = *static_cast<ObjContent*>(user);
    content.corners.clear();
    for (int corner = 0; corner < numIndices; ++corner) {
        const int number = indices[corner].vertex_index;
        const int vertex = resolveIndex(number, content.parts.numVertices());
        if (vertex < 0) {
            const std::string line = "line " + std::to_string(content.feeder.lineNumber());
            content.fail(line + ": a face names vertex " + std::to_string(number) + ", and the file has " +
                         std::to_string(content.parts.numVertices()) + " up to there");
            return;
        }
        content.corners.push_back(vertex);
    }
    content.parts.addFace(content.corners.data(), content.corners.size());
    for (int corner = 0; numIndices >= 3 && corner < numIndices; ++corner) {
        const auto& [vertex, normal, uv] = indices[corner];
        content.normals.ofCorner.push_back(resolveIndex(normal, content.normals.count()));
        content.uvs.ofCorner.push_back(resolveIndex(uv, content.uvs.count()));
    }
}

/// Makes one entry per vertex, zeros where no face uses the vertex. The corners must have been checked. Returns why it
/// can't be done, or nothing.
std::string perVertex(const CornerChannel& channel, const MeshParts& parts, std::vector<float>& result)
{
    std::vector<int> chosen(parts.numVertices(), -1);
    for (std::size_t corner = 0; corner < parts.faceCorners.size(); ++corner) {
        const int index = channel.ofCorner[corner];
        if (index < 0) return "not at every face corner, not kept";
        if (static_cast<std::size_t>(index) >= channel.count())
            return "face corners name more than there are, not kept";
        int& ofVertex = chosen[static_cast<std::size_t>(parts.faceCorners[corner])];
        if (ofVertex < 0) ofVertex = index;
        if (!std::equal(channel.entry(index), channel.entry(index) + channel.width, channel.entry(ofVertex)))
            return "several at one vertex, not kept";
    }
    if (parts.faceCorners.empty()) return "used by no face, not kept";

    result.assign(parts.numVertices() * channel.width, 0);
    for (std::size_t vertex = 0; vertex < chosen.size(); ++vertex)
        if (chosen[vertex] >= 0)
            std::copy_n(channel.entry(chosen[vertex]), channel.width, result.data() + vertex * channel.width);
    return "";
}

void takeChannel(const CornerChannel& channel, const std::string& name, MeshParts& parts, std::vector<float>& result)
{
    if (channel.values.empty()) return;
    const std::string reason = perVertex(channel, parts, result);
    if (!reason.empty()) parts.lost.push_back(name + ": " + reason);
}

} // namespace

void readObj(const std::string& path, znUtil::Progress& progress, LoadedMesh& result)
{
    std::string text = readFile(path, progress);
    prepareLines(text);
    LineFeeder feeder(text, progress);
    std::istream stream(&feeder);
    ObjContent content{feeder, {}, {3, {}, {}}, {2, {}, {}}, false, {}, {}};

    tinyobj::callback_t callbacks;
    callbacks.vertex_cb = addVertex;
    callbacks.normal_cb = addNormal;
    callbacks.texcoord_cb = addUV;
    callbacks.index_cb = addFace;
    tinyobj::LoadObjWithCallback(stream, callbacks, &content);
    checkCancelled(progress);
    if (!content.failure.empty()) throw Failure(content.failure);

    MeshParts& parts = content.parts;
    if (parts.positions.empty()) throw Failure("no vertices in it, is this an OBJ file?");
    checkCorners(parts, 1);
    if (content.colours) parts.lost.push_back("colours: not kept");
    takeChannel(content.normals, "normals", parts, parts.normals);
    takeChannel(content.uvs, "texture coordinates", parts, parts.uvs);
    buildMesh(parts, 1, result);
}

} // namespace tool
