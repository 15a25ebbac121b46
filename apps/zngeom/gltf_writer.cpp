#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

#include "apps/zngeom/byte_sink.h"
#include "apps/zngeom/mesh_writers.h"
#include "apps/zngeom/pacer.h"

namespace tool {

namespace {

/// The binary chunk of the file, part by part, and what the JSON chunk says of it.
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

    /// Filled up with blanks to a multiple of four.
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

    /// The format wants the bounds of the positions.
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

} // namespace

void writeGlb(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress)
{
    if (mesh.getNumVertices() == 0) throw Failure("can't be written: glTF has no place for a mesh without vertices");
    const GlbLayout layout(mesh);
    const std::string json = layout.json();
    const std::size_t total = 12 + 8 + json.size() + 8 + layout.binarySize();
    if (total > std::numeric_limits<std::uint32_t>::max()) throw Failure("can't be written: too large for a .glb file");

    ByteSink sink(path);
    sink.text("glTF");
    for (const std::size_t value : {std::size_t(2), total, json.size()}) sink.binary(static_cast<std::uint32_t>(value));
    sink.text("JSON" + json);
    sink.binary(static_cast<std::uint32_t>(layout.binarySize()));
    sink.text(std::string_view("BIN\0", 4));
    sink.floats(mesh.getVerticesRaw(), 3 * mesh.getNumVertices());
    if (mesh.getNormals()) sink.floats(mesh.getNormalsRaw(), 3 * mesh.getNumVertices());
    checkCancelled(progress);
    for (int vertex = 0; mesh.getUVs() && vertex < mesh.getNumVertices(); ++vertex) {
        sink.binary(mesh.getUVs()[vertex].u);
        sink.binary(1 - mesh.getUVs()[vertex].v); // this format counts from the upper edge of the image
    }
    for (int corner = 0; corner < 3 * mesh.getNumTriangles(); ++corner) sink.binary(mesh.getTrianglesRaw()[corner]);
    sink.finish();
}

} // namespace tool
