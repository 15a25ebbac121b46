#include "znGeom/files/internal/ply_header.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace znGeom::internal {

namespace {

bool readType(TextScanner& scanner, std::string_view word, PlyType& type)
{
    static constexpr std::string_view names[][2]{{"char", "int8"},     {"uchar", "uint8"},   {"short", "int16"},
                                                 {"ushort", "uint16"}, {"int", "int32"},     {"uint", "uint32"},
                                                 {"float", "float32"}, {"double", "float64"}};
    const auto isNamed = [word](const auto& both) { return word == both[0] || word == both[1]; };
    const auto* const found = std::find_if(std::begin(names), std::end(names), isNamed);
    if (found == std::end(names)) return scanner.fail("an unknown type of number in the header");
    type = static_cast<PlyType>(found - names);
    return true;
}

bool readType(TextScanner& scanner, PlyType& type)
{
    std::string_view word;
    return scanner.readWord(word) && readType(scanner, word, type);
}

bool readEncoding(TextScanner& scanner, PlyEncoding& encoding)
{
    static constexpr std::string_view names[]{"ascii", "binary_little_endian", "binary_big_endian"};
    std::string_view word;
    if (!scanner.readWord(word)) return false;
    const auto* const found = std::find(std::begin(names), std::end(names), word);
    if (found == std::end(names)) return scanner.fail("an unknown format in the header");
    encoding = static_cast<PlyEncoding>(found - names);
    return true;
}

int vertexSlot(std::string_view name)
{
    static constexpr std::string_view names[]{"x", "y", "z", "nx", "ny", "nz", "s", "t"};
    static constexpr std::string_view otherUVs[][3]{{"u", "texture_u", "texture_s"}, {"v", "texture_v", "texture_t"}};
    const auto* const found = std::find(std::begin(names), std::end(names), name);
    if (found != std::end(names)) return static_cast<int>(found - names);
    for (int axis = 0; axis < 2; ++axis)
        if (std::find(otherUVs[axis], otherUVs[axis] + 3, name) != otherUVs[axis] + 3) return 6 + axis;
    return -1;
}

bool readProperty(TextScanner& scanner, PlyElement& element)
{
    PlyProperty property;
    std::string_view word;
    if (!scanner.readWord(word)) return false;
    property.isList = word == "list";
    if (property.isList ? !readType(scanner, property.countType) || !readType(scanner, property.type)
                        : !readType(scanner, word, property.type))
        return false;
    if (!scanner.readWord(word)) return false;
    property.name = word;
    if (element.name == "vertex" && !property.isList) property.slot = vertexSlot(word);
    property.isCorners = property.isList && (element.name == "face" || element.name == "tristrips") &&
                         (word == "vertex_indices" || word == "vertex_index");
    property.isCornerUVs = property.isList && element.name == "face" && word == "texcoord";
    element.properties.append(property);
    return true;
}

bool readElement(TextScanner& scanner, PlyHeader& header)
{
    PlyElement element;
    std::string_view word;
    if (!scanner.readWord(word)) return false;
    element.name = word;
    if (!scanner.read(element.count)) return false;
    header.elements.append(element);
    return element.count >= 0 || scanner.fail("a count is negative");
}

bool readLine(TextScanner& scanner, std::string_view word, PlyHeader& header)
{
    if (word == "comment" || word == "obj_info") return true;
    if (word == "format") return readEncoding(scanner, header.encoding);
    if (word == "element") return readElement(scanner, header);
    if (word != "property") return scanner.fail("an unknown word in the header");
    if (header.elements.empty()) return scanner.fail("a property in front of the first element");
    return readProperty(scanner, header.elements.back());
}

bool checkHeader(LoadContext& context, const PlyHeader& header)
{
    const auto isVertex = [](const PlyElement& element) { return element.name == "vertex"; };
    const PlyElement* const vertex = std::find_if(header.elements.begin(), header.elements.end(), isVertex);
    if (vertex == header.elements.end()) return context.malformed("the header names no vertices");
    if (std::any_of(vertex + 1, header.elements.end(), isVertex))
        return context.malformed("the header names vertices twice");
    unsigned found = 0;
    for (const PlyProperty& property : vertex->properties) found |= property.slot < 0 ? 0 : 1u << property.slot;
    return (found & 7) == 7 || context.malformed("the vertices have no x, y and z");
}

/// What the header announces that no mesh keeps.
void noteLost(LoadContext& context, const PlyHeader& header)
{
    for (const PlyElement& element : header.elements) {
        std::string names;
        for (const PlyProperty& property : element.properties)
            if (property.slot < 0 && !property.isCorners && !property.isCornerUVs)
                names += (names.empty() ? "" : ", ") + property.name;
        if (!names.empty()) context.note(printable(element.name + " properties: " + names + ", not kept"));
    }
}

} // namespace

bool readPlyHeader(LoadContext& context, TextScanner& scanner, PlyHeader& header)
{
    std::string_view word;
    if (!scanner.readWord(word)) return false;
    if (!word.starts_with("ply")) return scanner.fail("this is not a PLY file, which would begin with the word ply");
    scanner.skipLine();
    while (scanner.readWord(word) && word != "end_header") {
        if (!readLine(scanner, word, header)) return false;
        scanner.skipLine();
    }
    if (context.hasFailed() || !checkHeader(context, header)) return false;
    scanner.skipLine();
    scanner.skipLineEnd();
    noteLost(context, header);
    return true;
}

} // namespace znGeom::internal
