#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "znGeom/files/internal/loaders.h"
#include "znGeom/files/internal/text_scanner.h"

namespace znGeom::internal {

namespace {

constexpr size_t headerSize = 84, recordSize = 50;

std::uint32_t readUInt32(const char* bytes)
{
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
}

/// Three vertices of its own for every triangle.
bool addTriangle(const float* positions, MeshParts& parts)
{
    const int first = parts.numVertices();
    return parts.addVertex(positions) && parts.addVertex(positions + 3) && parts.addVertex(positions + 6) &&
           parts.addTriangle(first, first + 1, first + 2);
}

/// Its normal comes before the corners and a word of no fixed meaning after them.
bool readBinary(LoadContext& context, MeshParts& parts)
{
    const char* at = context.text().begin();
    if (!context.requireBytes(at, headerSize)) return false;
    const std::uint32_t numTriangles = readUInt32(at + 80);
    at += headerSize;
    bool hasAttributes = false;
    for (std::uint32_t i = 0; i < numTriangles; ++i, at += recordSize) {
        if (!context.requireBytes(at, recordSize)) return false;
        float positions[9];
        for (int number = 0; number < 9; ++number)
            positions[number] = std::bit_cast<float>(readUInt32(at + 12 + 4 * number));
        if (!addTriangle(positions, parts)) return false;
        hasAttributes = hasAttributes || at[48] != 0 || at[49] != 0;
    }
    if (hasAttributes) context.note("attributes of triangles: not kept");
    return !context.text().requireBytes(at, 1) || context.malformed("the file goes on behind its last triangle");
}

bool expect(TextScanner& scanner, std::string_view expected)
{
    std::string_view word;
    if (!scanner.readWord(word)) return false;
    return word == expected || scanner.fail(quoted(word) + " stands where " + quoted(expected) + " was expected");
}

bool readLoop(TextScanner& scanner, MeshParts& parts)
{
    float normal[3], positions[9];
    if (!expect(scanner, "normal") || !scanner.readThree(normal) || !expect(scanner, "outer") ||
        !expect(scanner, "loop"))
        return false;
    for (int corner = 0; corner < 3; ++corner)
        if (!expect(scanner, "vertex") || !scanner.readThree(positions + 3 * corner)) return false;
    return expect(scanner, "endloop") && expect(scanner, "endfacet") && addTriangle(positions, parts);
}

/// A file may have several solids, one after the other. Their names are any words to the end of the line.
bool readText(LoadContext& context, MeshParts& parts)
{
    TextScanner scanner(context);
    while (!scanner.atEnd()) {
        if (!expect(scanner, "solid")) return false;
        scanner.skipLine();
        std::string_view word;
        while (scanner.readWord(word) && word == "facet")
            if (!readLoop(scanner, parts)) return false;
        if (context.hasFailed()) return false;
        if (word != "endsolid")
            return scanner.fail(quoted(word) + " stands where \"facet\" or \"endsolid\" was expected");
        scanner.skipLine();
    }
    return !context.hasFailed();
}

/// The header of a binary file may begin with the word of the text form too: then the size decides, or what follows.
bool isText(LoadContext& context)
{
    constexpr size_t looked = 1024;
    TextReader& text = context.text();
    const char* at = text.begin();
    text.requireBytes(at, looked);
    const std::string_view begin(at, std::min(looked, static_cast<size_t>(text.end() - at)));
    if (begin.size() >= headerSize && context.size() > 0 &&
        context.size() == std::int64_t(headerSize) + std::int64_t(recordSize) * readUInt32(at + 80))
        return false;
    text.endBlock(at); // given back: a text is read in lines
    const std::string_view first = begin.substr(std::min(begin.find_first_not_of(" \t\r\n"), begin.size()));
    return first.starts_with("solid") &&
           (first.find("facet") != std::string_view::npos || first.find("endsolid") != std::string_view::npos);
}

} // namespace

bool loadStl(LoadContext& context, CompactMesh& mesh)
{
    MeshParts parts(context);
    return (isText(context) ? readText(context, parts) : readBinary(context, parts)) && parts.publish(mesh);
}

} // namespace znGeom::internal
