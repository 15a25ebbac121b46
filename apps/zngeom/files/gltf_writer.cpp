#include "apps/zngeom/files/gltf_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

#include "apps/zngeom/frame/pacer.h"
#include "znGeom/version.h"

namespace tool {

namespace {

/// The binary chunk of the file, part by part, and what the JSON chunk says about it.
class GlbLayout
{
public:
    explicit GlbLayout(const znGeom::CompactMesh& mesh) : m_mesh(mesh)
    {
        const int numVertices = mesh.getNumVertices();
        addPart("POSITION", "VEC3", floatType, numVertices, 12, vertexTarget);
        addBounds();
        if (mesh.getNormals()) addPart("NORMAL", "VEC3", floatType, numVertices, 12, vertexTarget);
        if (mesh.getUVs()) addPart("TEXCOORD_0", "VEC2", floatType, numVertices, 8, vertexTarget);
        const bool points = mesh.getNumTriangles() == 0;
        if (!points) addPart(nullptr, "SCALAR", unsignedType, 3 * mesh.getNumTriangles(), 4, indexTarget);
        m_primitive["mode"] = points ? 0 : 4;
    }

    std::size_t binarySize() const { return m_size; }

    /// Padded with blanks to a multiple of four.
    std::string json() const
    {
        Json document;
        document["asset"] = {{"version", "2.0"}, {"generator", "zngeom " ZNGEOM_VERSION}};
        document["scene"] = 0;
        document["scenes"] = {{{"nodes", {0}}}};
        document["nodes"] = {{{"mesh", 0}}};
        document["meshes"] = Json::array({Json{{"primitives", Json::array({m_primitive})}}});
        document["buffers"] = {{{"byteLength", m_size}}};
        document["bufferViews"] = m_views;
        document["accessors"] = m_accessors;
        std::string text = document.dump();
        text.append((4 - text.size() % 4) % 4, ' ');
        return text;
    }

private:
    using Json = nlohmann::ordered_json;
    static constexpr int floatType = 5126, unsignedType = 5125, vertexTarget = 34962, indexTarget = 34963;

    /// \param attribute  null for the indices
    void addPart(const char* attribute, const char* shape, int type, int count, int bytesEach, int target)
    {
        const std::size_t bytes = static_cast<std::size_t>(count) * static_cast<std::size_t>(bytesEach);
        if (attribute)
            m_primitive["attributes"][attribute] = m_accessors.size();
        else
            m_primitive["indices"] = m_accessors.size();
        m_accessors.push_back(
            {{"bufferView", m_views.size()}, {"componentType", type}, {"count", count}, {"type", shape}});
        m_views.push_back({{"buffer", 0}, {"byteOffset", m_size}, {"byteLength", bytes}, {"target", target}});
        m_size += bytes;
    }

    /// The format requires the bounds of the positions.
    void addBounds()
    {
        float low[3], high[3];
        for (int axis = 0; axis < 3; ++axis) {
            low[axis] = std::numeric_limits<float>::infinity();
            high[axis] = -low[axis];
        }
        for (int i = 0; i < 3 * m_mesh.getNumVertices(); ++i) {
            const float value = m_mesh.getVerticesRaw()[i];
            if (!std::isfinite(value))
                throw Failure("can't be written: glTF has no place for coordinates that are not finite");
            low[i % 3] = std::min(low[i % 3], value);
            high[i % 3] = std::max(high[i % 3], value);
        }
        m_accessors.back()["min"] = low;
        m_accessors.back()["max"] = high;
    }

    const znGeom::CompactMesh& m_mesh;
    Json m_views = Json::array(), m_accessors = Json::array(), m_primitive;
    std::size_t m_size = 0;
};

/// Collects numbers and passes them on in large pieces, the lowest byte first.
class Pieces
{
public:
    Pieces(const znGeom::MeshByteWriter& write, const znUtil::Progress& progress) : m_write(write), m_progress(progress)
    {}

    void text(std::string_view text)
    {
        m_buffer += text;
        if (m_buffer.size() >= pieceSize) flush();
    }
    template <typename Number>
    void number(Number value)
    {
        auto bytes = std::bit_cast<std::array<char, sizeof(Number)>>(value);
        if constexpr (std::endian::native == std::endian::big) std::reverse(bytes.begin(), bytes.end());
        text({bytes.data(), bytes.size()});
    }
    template <typename Number>
    void numbers(const Number* values, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i) number(values[i]);
    }
    void flush()
    {
        checkCancelled(m_progress);
        m_taken = m_taken && m_write(m_buffer.data(), m_buffer.size());
        m_buffer.clear();
    }

private:
    static constexpr std::size_t pieceSize = 1 << 18;

    const znGeom::MeshByteWriter& m_write;
    const znUtil::Progress& m_progress;
    std::string m_buffer;
    bool m_taken = true;
};

} // namespace

std::size_t writeGlb(const znGeom::CompactMesh& mesh, const znGeom::MeshByteWriter& write, znUtil::Progress& progress)
{
    if (mesh.getNumVertices() == 0) throw Failure("can't be written: glTF has no place for a mesh without vertices");
    const GlbLayout layout(mesh);
    const std::string json = layout.json();
    const std::size_t total = 12 + 8 + json.size() + 8 + layout.binarySize();
    if (total > std::numeric_limits<std::uint32_t>::max()) throw Failure("can't be written: too large for a .glb file");

    const auto numVertices = static_cast<std::size_t>(mesh.getNumVertices());
    Pieces pieces(write, progress);
    pieces.text("glTF");
    for (const std::size_t value : {std::size_t(2), total, json.size()})
        pieces.number(static_cast<std::uint32_t>(value));
    pieces.text("JSON" + json);
    pieces.number(static_cast<std::uint32_t>(layout.binarySize()));
    pieces.text(std::string_view("BIN\0", 4));
    pieces.numbers(mesh.getVerticesRaw(), 3 * numVertices);
    if (mesh.getNormals()) pieces.numbers(mesh.getNormalsRaw(), 3 * numVertices);
    for (int vertex = 0; mesh.getUVs() && vertex < mesh.getNumVertices(); ++vertex) {
        pieces.number(mesh.getUVs()[vertex].u);
        pieces.number(1 - mesh.getUVs()[vertex].v); // this format counts from the upper edge of the image
    }
    pieces.numbers(mesh.getTrianglesRaw(), 3 * static_cast<std::size_t>(mesh.getNumTriangles()));
    pieces.flush();
    return total;
}

} // namespace tool
