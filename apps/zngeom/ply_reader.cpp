#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>

#include "apps/zngeom/mesh_readers.h"
#include "apps/zngeom/pacer.h"
#include "apps/zngeom/read_file.h"
#include "apps/zngeom/text_scanner.h"

namespace tool {

namespace {

enum class Type { Int8, UInt8, Int16, UInt16, Int32, UInt32, Float32, Float64 };
enum class Encoding { Text, LittleEndian, BigEndian };

struct Property
{
    std::string name;
    Type type;
    bool isList;
    Type countType; ///< of lists
};

struct Element
{
    std::string name;
    int count;
    std::vector<Property> properties;
};

struct Header
{
    Encoding encoding = Encoding::Text;
    std::vector<Element> elements;
    std::size_t bodyBegin = 0;
    int bodyLine = 1;
};

// The header

Type parseType(std::string_view word, const TextScanner& scanner)
{
    static constexpr std::array<std::array<std::string_view, 2>, 8> names{{{"char", "int8"},
                                                                           {"uchar", "uint8"},
                                                                           {"short", "int16"},
                                                                           {"ushort", "uint16"},
                                                                           {"int", "int32"},
                                                                           {"uint", "uint32"},
                                                                           {"float", "float32"},
                                                                           {"double", "float64"}}};
    for (std::size_t type = 0; type < names.size(); ++type)
        if (word == names[type][0] || word == names[type][1]) return static_cast<Type>(type);
    scanner.fail("an unknown type of number in the header");
}

Encoding parseEncoding(std::string_view word, const TextScanner& scanner)
{
    if (word == "ascii") return Encoding::Text;
    if (word == "binary_little_endian") return Encoding::LittleEndian;
    if (word == "binary_big_endian") return Encoding::BigEndian;
    scanner.fail("an unknown format in the header");
}

Property parseProperty(TextScanner& scanner)
{
    Property property{};
    const std::string_view type = scanner.word();
    property.isList = type == "list";
    if (property.isList) property.countType = parseType(scanner.word(), scanner);
    property.type = parseType(property.isList ? scanner.word() : type, scanner);
    property.name = scanner.word();
    return property;
}

/// The position behind the line end of a line that was read to its last word.
std::size_t behindLineEnd(const std::string& file, std::size_t position)
{
    const bool two = file.compare(position, 2, "\r\n") == 0;
    return std::min(position + (two ? 2 : 1), file.size());
}

Header readHeader(const std::string& file)
{
    TextScanner scanner(file);
    if (!file.starts_with("ply")) scanner.fail("this is not a PLY file, which would begin with the word ply");
    scanner.skipLine();
    Header header;
    for (std::string_view word = scanner.word(); word != "end_header"; word = scanner.word()) {
        if (word == "format") {
            header.encoding = parseEncoding(scanner.word(), scanner);
        } else if (word == "element") {
            const std::string name(scanner.word());
            header.elements.push_back({name, scanner.integer(), {}});
            if (header.elements.back().count < 0) scanner.fail("a count is negative");
        } else if (word == "property") {
            if (header.elements.empty()) scanner.fail("a property in front of the first element");
            header.elements.back().properties.push_back(parseProperty(scanner));
        } else if (word != "comment" && word != "obj_info") {
            scanner.fail("an unknown word in the header");
        }
        scanner.skipLine();
    }
    scanner.skipLine();
    header.bodyBegin = behindLineEnd(file, scanner.position());
    header.bodyLine = scanner.line() + 1;
    return header;
}

// The numbers of the body, one after the other

class TextNumbers
{
public:
    TextNumbers(const std::string& file, const Header& header)
        : m_scanner(std::string_view(file).substr(header.bodyBegin), header.bodyLine)
    {}

    double next(Type type)
    {
        return type == Type::Float64 ? m_scanner.number<double>() : static_cast<double>(m_scanner.number<float>());
    }
    int nextInt(Type) { return m_scanner.integer(); }
    std::size_t position() const { return m_scanner.position(); }
    bool atEnd() { return m_scanner.atEnd(); }

private:
    TextScanner m_scanner;
};

class BinaryNumbers
{
public:
    BinaryNumbers(const std::string& file, const Header& header)
        : m_bytes(std::string_view(file).substr(header.bodyBegin)),
          m_swap((header.encoding == Encoding::BigEndian) != (std::endian::native == std::endian::big))
    {}

    double next(Type type)
    {
        switch (type) {
        case Type::Int8:
            return static_cast<double>(take<std::int8_t>());
        case Type::UInt8:
            return static_cast<double>(take<std::uint8_t>());
        case Type::Int16:
            return static_cast<double>(take<std::int16_t>());
        case Type::UInt16:
            return static_cast<double>(take<std::uint16_t>());
        case Type::Int32:
            return static_cast<double>(take<std::int32_t>());
        case Type::UInt32:
            return static_cast<double>(take<std::uint32_t>());
        case Type::Float32:
            return static_cast<double>(take<float>());
        default:
            return take<double>();
        }
    }
    /// What is no index of ours is pulled to the ends of `int`, where the check of the corners finds it.
    int nextInt(Type type)
    {
        const double value = next(type);
        return value >= INT_MIN && value <= INT_MAX ? static_cast<int>(value) : INT_MAX;
    }
    std::size_t position() const { return m_position; }
    bool atEnd() const { return m_position == m_bytes.size(); }

private:
    template <typename Number>
    Number take()
    {
        if (m_bytes.size() - m_position < sizeof(Number)) throw Failure("the file ends too soon");
        std::array<char, sizeof(Number)> bytes;
        std::memcpy(bytes.data(), m_bytes.data() + m_position, bytes.size());
        m_position += bytes.size();
        if (m_swap) std::reverse(bytes.begin(), bytes.end());
        return std::bit_cast<Number>(bytes);
    }

    std::string_view m_bytes;
    bool m_swap;
    std::size_t m_position = 0;
};

// The elements

/// Where a number of a vertex goes: 0 to 2 position, 3 to 5 normal, 6 and 7 texture coordinates, -1 nowhere.
int vertexSlot(const Property& property)
{
    static constexpr std::array<std::string_view, 8> names{"x", "y", "z", "nx", "ny", "nz", "s", "t"};
    static constexpr std::array<std::array<std::string_view, 3>, 2> otherUVs{
        {{"u", "texture_u", "texture_s"}, {"v", "texture_v", "texture_t"}}};
    if (property.isList) return -1;
    const auto found = std::find(names.begin(), names.end(), property.name);
    if (found != names.end()) return static_cast<int>(found - names.begin());
    for (std::size_t axis = 0; axis < 2; ++axis)
        if (std::find(otherUVs[axis].begin(), otherUVs[axis].end(), property.name) != otherUVs[axis].end())
            return 6 + static_cast<int>(axis);
    return -1;
}

bool isFaceCorners(const Element& element, const Property& property)
{
    return property.isList && (element.name == "face" || element.name == "tristrips") &&
           (property.name == "vertex_indices" || property.name == "vertex_index");
}

template <typename Numbers>
class BodyReader
{
public:
    BodyReader(Numbers numbers, MeshParts& parts, Pacer& pacer) : m_numbers(numbers), m_parts(parts), m_pacer(pacer) {}

    void read(const Header& header)
    {
        for (const Element& element : header.elements) {
            for (int i = 0; i < element.count && !element.properties.empty(); ++i) {
                readInstance(element, i);
                m_pacer.at(m_numbers.position());
            }
        }
        if (!m_numbers.atEnd()) m_parts.lost.push_back("bytes behind the last element: left out");
    }

private:
    void readInstance(const Element& element, int instance)
    try {
        if (element.name == "vertex")
            readVertex(element);
        else
            readOther(element);
    } catch (const Failure& failure) {
        throw Failure(std::string(failure.what()) + ", in " + element.name + " " + std::to_string(instance + 1) +
                      " of " + std::to_string(element.count));
    }

    void readVertex(const Element& element)
    {
        std::array<float, 8> values{};
        unsigned found = 0;
        for (const Property& property : element.properties) {
            const int slot = vertexSlot(property);
            if (slot < 0) {
                readProperty(property);
                continue;
            }
            values[static_cast<std::size_t>(slot)] = static_cast<float>(m_numbers.next(property.type));
            found |= 1u << slot;
        }
        m_parts.positions.insert(m_parts.positions.end(), values.begin(), values.begin() + 3);
        if ((found & 0x38) == 0x38)
            m_parts.normals.insert(m_parts.normals.end(), values.begin() + 3, values.begin() + 6);
        if ((found & 0xC0) == 0xC0) m_parts.uvs.insert(m_parts.uvs.end(), values.begin() + 6, values.end());
    }

    void readOther(const Element& element)
    {
        for (const Property& property : element.properties) {
            readProperty(property);
            if (!isFaceCorners(element, property)) continue;
            if (element.name == "face")
                m_parts.addFace(m_list.data(), m_list.size());
            else
                addStrips();
        }
    }

    /// Leaves a list in `m_list`.
    void readProperty(const Property& property)
    {
        if (!property.isList) {
            m_numbers.next(property.type);
            return;
        }
        const int count = m_numbers.nextInt(property.countType);
        if (count < 0) throw Failure("a list has a negative length");
        m_list.clear();
        for (int i = 0; i < count; ++i) m_list.push_back(nextListEntry(property));
    }

    int nextListEntry(const Property& property)
    {
        const bool isReal = property.type == Type::Float32 || property.type == Type::Float64;
        if (!isReal) return m_numbers.nextInt(property.type);
        m_numbers.next(property.type);
        return -1;
    }

    /// Strips follow one another in one list, divided by -1. Every second triangle of a strip runs the other way.
    void addStrips()
    {
        std::size_t begin = 0;
        for (std::size_t i = 0; i < m_list.size(); ++i) {
            if (m_list[i] == -1) begin = i + 1;
            if (i < begin + 2) continue;
            const bool odd = (i - begin) % 2 != 0;
            const int triangle[3] = {m_list[i - 2], m_list[odd ? i : i - 1], m_list[odd ? i - 1 : i]};
            m_parts.addFace(triangle, 3);
        }
    }

    Numbers m_numbers;
    MeshParts& m_parts;
    Pacer& m_pacer;
    std::vector<int> m_list;
};

/// Notes what the header announces and the reader passes over.
void noteLost(const Header& header, MeshParts& parts)
{
    for (const Element& element : header.elements) {
        std::string names;
        for (const Property& property : element.properties) {
            const bool taken = element.name == "vertex" ? vertexSlot(property) >= 0 : isFaceCorners(element, property);
            if (!taken) names += (names.empty() ? "" : ", ") + property.name;
        }
        if (!names.empty()) parts.lost.push_back(element.name + " properties: " + names + ", not kept");
    }
}

void checkHeader(const Header& header)
{
    const auto isVertex = [](const Element& element) { return element.name == "vertex"; };
    const auto vertex = std::find_if(header.elements.begin(), header.elements.end(), isVertex);
    if (vertex == header.elements.end()) throw Failure("the header names no vertices");
    if (std::any_of(vertex + 1, header.elements.end(), isVertex)) throw Failure("the header names vertices twice");
    unsigned found = 0;
    for (const Property& property : vertex->properties)
        found |= vertexSlot(property) < 0 ? 0 : 1u << vertexSlot(property);
    if ((found & 7) != 7) throw Failure("the vertices have no x, y and z");
}

} // namespace

void readPly(const std::string& path, znUtil::Progress& progress, LoadedMesh& result)
{
    const std::string file = readFile(path, progress);
    const Header header = readHeader(file);
    checkHeader(header);
    MeshParts parts;
    Pacer pacer(progress, file.size());
    if (header.encoding == Encoding::Text)
        BodyReader(TextNumbers(file, header), parts, pacer).read(header);
    else
        BodyReader(BinaryNumbers(file, header), parts, pacer).read(header);
    noteLost(header, parts);
    buildMesh(parts, 0, result);
}

} // namespace tool
