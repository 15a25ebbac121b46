#include "znGeom/files/internal/decimal.h"
#include "znGeom/files/internal/parsers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

namespace znGeom::internal {

namespace {

/// Reads "inf", "infinity" or "nan" in any case, with an optional sign.
bool scanWord(const char*& at, float& value)
{
    using Limits = std::numeric_limits<float>;
    const bool negative = *at == '-';
    const char* const word = at + (negative || *at == '+');
    const auto isAt = [word](std::string_view name) {
        return std::equal(name.begin(), name.end(), word, [](char a, char b) { return a == (b | 0x20); });
    };
    const bool isNan = isAt("nan");
    if (!isNan && !isAt("inf")) return false;
    at = word + (isAt("infinity") ? 8 : 3);
    value = std::copysign(isNan ? Limits::quiet_NaN() : Limits::infinity(), negative ? -1.0f : 1.0f);
    return true;
}

/// Reads numbers with white space between them. The first thing that is no number ends the reading for good, as the
/// end of the text does.
///
/// A `float` out of range is an infinity, an `int` out of range the nearest one. Besides decimal numbers "inf",
/// "infinity" and "nan" are known, in any case, so that what was written is read back; hexadecimal forms are not.
class NumberReader
{
public:
    explicit NumberReader(TextReader& text) : m_text(text), m_at(text.begin()) {}

    /// False, with `value` as it was, when there are no more numbers.
    bool read(int& value) { return seek() && (scanInt(m_at, value) != Scan::None || end()); }
    bool read(float& value)
    {
        if (!seek()) return false;
        const char* const begin = m_at;
        float number;
        if (scanFloat(m_at, number) == Scan::None && !scanWord(m_at = begin, number)) return end();
        value = number;
        return true;
    }

    bool hasEnded() const { return m_hasEnded; }

private:
    /// To the next number; a number never goes beyond a block, which ends with a line end.
    bool seek()
    {
        while (!m_hasEnded) {
            while (m_at != m_text.end() && isSpace(*m_at)) ++m_at;
            if (m_at != m_text.end()) return true;
            m_hasEnded = !m_text.nextBlock();
            m_at = m_text.begin();
        }
        return false;
    }

    bool end()
    {
        m_hasEnded = true;
        return false;
    }

    TextReader& m_text;
    const char* m_at;
    bool m_hasEnded = false;
};

/// New triangles are zeros.
void resizeTriangles(CompactMesh& mesh, int count)
{
    const int old = mesh.getNumTriangles();
    mesh.resizeTriangleArray(count);
    if (count > old) std::fill_n(mesh.getTriangles() + old, count - old, MeshTriangle{});
}

/// Makes room for one more vertex or triangle, of which there will be `count`. The array grows with what is read and
/// not by what the header claims.
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
/// memory. Up to that, vertices and triangles that are missing are zeros.
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

} // namespace znGeom::internal
