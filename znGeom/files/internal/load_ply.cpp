#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

#include "znGeom/files/internal/corner_channel.h"
#include "znGeom/files/internal/loaders.h"
#include "znGeom/files/internal/ply_header.h"

namespace znGeom::internal {

namespace {

/// The numbers of a text body, one after the other.
class TextNumbers
{
public:
    explicit TextNumbers(const TextScanner& scanner) : m_scanner(scanner) {}

    bool read(PlyType, float& value) { return m_scanner.read(value); }
    bool read(PlyType, int& value) { return m_scanner.read(value); }
    bool atEnd() { return m_scanner.atEnd(); }

private:
    TextScanner m_scanner;
};

/// The numbers of a binary body.
class BinaryNumbers
{
public:
    BinaryNumbers(LoadContext& context, const char* at, PlyEncoding encoding)
        : m_context(context), m_at(at),
          m_swap((encoding == PlyEncoding::BigEndian) != (std::endian::native == std::endian::big))
    {}

    bool read(PlyType type, float& value)
    {
        return visit(type, [&value](auto number) { value = static_cast<float>(number); });
    }
    /// What cannot be an index is clamped to the limit of `int`, where the check of the corners finds it.
    bool read(PlyType type, int& value)
    {
        return visit(type, [&value](auto number) {
            const double wide = static_cast<double>(number);
            constexpr int largest = std::numeric_limits<int>::max();
            value = wide > -2147483649.0 && wide < 2147483648.0 ? static_cast<int>(wide) : largest;
        });
    }
    bool atEnd() { return !m_context.text().requireBytes(m_at, 1); }

private:
    template <typename Use>
    bool visit(PlyType type, const Use& use)
    {
        switch (type) {
        case PlyType::Int8:
            return take<std::int8_t>(use);
        case PlyType::UInt8:
            return take<std::uint8_t>(use);
        case PlyType::Int16:
            return take<std::int16_t>(use);
        case PlyType::UInt16:
            return take<std::uint16_t>(use);
        case PlyType::Int32:
            return take<std::int32_t>(use);
        case PlyType::UInt32:
            return take<std::uint32_t>(use);
        case PlyType::Float32:
            return take<float>(use);
        default:
            return take<double>(use);
        }
    }

    template <typename Number, typename Use>
    bool take(const Use& use)
    {
        if (!m_context.requireBytes(m_at, sizeof(Number))) return false;
        std::array<char, sizeof(Number)> bytes;
        std::memcpy(bytes.data(), m_at, bytes.size());
        m_at += bytes.size();
        if (m_swap) std::reverse(bytes.begin(), bytes.end());
        use(std::bit_cast<Number>(bytes));
        return true;
    }

    LoadContext& m_context;
    const char* m_at;
    bool m_swap;
};

template <typename Numbers>
class BodyReader
{
public:
    BodyReader(LoadContext& context, Numbers numbers, MeshParts& parts)
        : m_context(context), m_numbers(numbers), m_parts(parts)
    {}

    bool read(const PlyHeader& header)
    {
        for (const PlyElement& element : header.elements)
            for (const PlyProperty& property : element.properties) m_hasCornerUVs |= property.isCornerUVs;
        for (const PlyElement& element : header.elements)
            for (int i = 0; i < element.count && !element.properties.empty(); ++i)
                if (!(element.name == "vertex" ? readVertex(element) : readOther(element))) return addPlace(element, i);
        const bool atEnd = m_numbers.atEnd();
        if (!atEnd) m_context.note("bytes behind the last element: left out");
        return !m_context.hasFailed();
    }

    /// Those of the corners come before those of the vertices.
    void publishUVs()
    {
        if (m_cornerUVs.isComplete() && m_parts.uvs.size() > 0) {
            m_context.note("texture coordinates: of vertices and of face corners, those of the corners kept");
            m_parts.uvs.clear();
        }
        GrowingArray<float> channel;
        m_cornerUVs.publish(m_context, m_parts.numVertices(), channel);
        if (channel.size() > 0) m_parts.uvs = std::move(channel);
        if (m_cornerUVs.isPerCorner()) m_context.result().cornerUVs = m_cornerUVs.cornerValues<MeshUV>(m_parts.faces);
    }

private:
    /// Says in the message where in the file it was.
    bool addPlace(const PlyElement& element, int instance)
    {
        if (m_context.result().status == MeshLoadResult::Status::Malformed)
            m_context.result().message += printable(", in " + element.name + " " + std::to_string(instance + 1) +
                                                    " of " + std::to_string(element.count));
        return false;
    }

    bool readVertex(const PlyElement& element)
    {
        float values[8] = {};
        unsigned found = 0;
        for (const PlyProperty& property : element.properties) {
            float unused;
            if (property.isList ? !readList(property)
                                : !m_numbers.read(property.type, property.slot < 0 ? unused : values[property.slot]))
                return false;
            if (property.slot >= 0) found |= 1u << property.slot;
        }
        const bool hasRoom = ((found & 0x38) != 0x38 || m_parts.normals.append(values + 3, 3)) &&
                             ((found & 0xC0) != 0xC0 || m_parts.uvs.append(values + 6, 2));
        return hasRoom ? m_parts.addVertex(values) : m_context.tooLarge();
    }

    bool readOther(const PlyElement& element)
    {
        const bool isFace = element.name == "face";
        m_corners.clear();
        m_uvs.clear();
        for (const PlyProperty& property : element.properties) {
            float unused;
            if (property.isCornerUVs ? !readReals(property)
                : property.isList    ? !readList(property)
                                     : !m_numbers.read(property.type, unused))
                return false;
            if (property.isCorners && !addCorners(isFace)) return false;
        }
        return !m_hasCornerUVs || addCornerUVs();
    }

    /// Leaves the list in `m_uvs`.
    bool readReals(const PlyProperty& property)
    {
        int count = 0;
        if (!m_numbers.read(property.countType, count)) return false;
        if (count < 0) return m_context.malformed("a list has a negative length");
        m_uvs.clear();
        for (int i = 0; i < count; ++i) {
            float entry;
            if (!m_numbers.read(property.type, entry)) return false;
            m_uvs.append(entry);
        }
        return true;
    }

    /// Leaves the list in `m_list`.
    bool readList(const PlyProperty& property)
    {
        int count = 0;
        if (!m_numbers.read(property.countType, count)) return false;
        if (count < 0) return m_context.malformed("a list has a negative length");
        m_list.clear();
        for (int i = 0; i < count; ++i) {
            int entry = -1;
            float unused;
            const bool isReal = property.type == PlyType::Float32 || property.type == PlyType::Float64;
            if (isReal ? !m_numbers.read(property.type, unused) : !m_numbers.read(property.type, entry)) return false;
            m_list.append(entry);
        }
        return true;
    }

    /// Strips follow one another in one list, separated by -1. Every second triangle of a strip is wound the other way.
    bool addCorners(bool isFace)
    {
        if (m_hasCornerUVs) m_corners.append(m_list);
        if (isFace) return m_parts.addFace(m_list.data(), m_list.size());
        int begin = 0;
        for (int i = 0; i < m_list.size(); ++i) {
            if (m_list[i] == -1) begin = i + 1;
            if (i < begin + 2) continue;
            const bool odd = (i - begin) % 2 != 0;
            if (!m_parts.addTriangle(m_list[i - 2], m_list[odd ? i : i - 1], m_list[odd ? i - 1 : i])) return false;
        }
        return true;
    }

    /// Of the face or the strip that was read.
    bool addCornerUVs()
    {
        if (m_corners.size() < 3) return true;
        const bool isComplete = m_uvs.size() / 2 == m_corners.size() && m_uvs.size() % 2 == 0;
        for (int i = 0; i < m_corners.size(); ++i) {
            if (isComplete && !m_cornerUVs.add(m_uvs.data() + 2 * std::ptrdiff_t(i))) return m_context.tooLarge();
            m_cornerUVs.use(m_corners[i], isComplete ? m_cornerUVs.count() - 1 : -1, m_parts.numVertices());
        }
        return true;
    }

    LoadContext& m_context;
    Numbers m_numbers;
    MeshParts& m_parts;
    zn::vector<int> m_list;
    bool m_hasCornerUVs = false;
    CornerChannel m_cornerUVs{"texture coordinates", 2};
    zn::vector<int> m_corners; ///< of the face that is being read, where faces have texture coordinates
    zn::vector<float> m_uvs;   ///< likewise
};

template <typename Numbers>
bool readBody(LoadContext& context, Numbers numbers, const PlyHeader& header, MeshParts& parts)
{
    BodyReader reader(context, numbers, parts);
    if (!reader.read(header)) return false;
    reader.publishUVs();
    return true;
}

} // namespace

bool loadPly(LoadContext& context, CompactMesh& mesh)
{
    TextScanner scanner(context);
    PlyHeader header;
    if (!readPlyHeader(context, scanner, header)) return false;
    MeshParts parts(context);
    const bool hasBody = header.encoding == PlyEncoding::Text
                             ? readBody(context, TextNumbers(scanner), header, parts)
                             : readBody(context, BinaryNumbers(context, scanner.at(), header.encoding), header, parts);
    return hasBody && parts.publish(mesh);
}

} // namespace znGeom::internal
