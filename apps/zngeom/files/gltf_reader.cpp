#include "apps/zngeom/files/gltf_reader.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "apps/zngeom/files/gltf_document.h"
#include "apps/zngeom/frame/pacer.h"

namespace tool {

namespace {

using Json = GltfDocument::Json;

/// Affine: three columns of a matrix, and where it moves the origin.
struct Placing
{
    std::array<std::array<double, 3>, 4> columns{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}}};

    std::array<double, 3> direction(double x, double y, double z) const
    {
        std::array<double, 3> result{};
        for (std::size_t i = 0; i < 3; ++i) result[i] = columns[0][i] * x + columns[1][i] * y + columns[2][i] * z;
        return result;
    }
    std::array<double, 3> point(double x, double y, double z) const
    {
        std::array<double, 3> result = direction(x, y, z);
        for (std::size_t i = 0; i < 3; ++i) result[i] += columns[3][i];
        return result;
    }
    bool operator==(const Placing&) const = default;
    Placing operator*(const Placing& inner) const
    {
        Placing result;
        for (std::size_t i = 0; i < 3; ++i)
            result.columns[i] = direction(inner.columns[i][0], inner.columns[i][1], inner.columns[i][2]);
        result.columns[3] = point(inner.columns[3][0], inner.columns[3][1], inner.columns[3][2]);
        return result;
    }
};

std::array<double, 3> cross(const std::array<double, 3>& a, const std::array<double, 3>& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double determinant(const Placing& placing)
{
    const std::array<double, 3> normal = cross(placing.columns[0], placing.columns[1]);
    return normal[0] * placing.columns[2][0] + normal[1] * placing.columns[2][1] + normal[2] * placing.columns[2][2];
}

template <std::size_t size>
std::array<double, size> numbersOf(const Json& node, const char* key, const std::array<double, size>& otherwise)
{
    const Json* found = GltfDocument::find(node, key);
    if (!found) return otherwise;
    std::array<double, size> numbers{};
    if (!found->is_array() || found->size() != size) throw Failure("a node has a broken " + std::string(key));
    for (std::size_t i = 0; i < size; ++i) {
        if (!(*found)[i].is_number()) throw Failure("a node has a broken " + std::string(key));
        numbers[i] = (*found)[i].get<double>();
    }
    return numbers;
}

/// A matrix, or a scaling, a rotation as a quaternion and a translation.
Placing placingOf(const Json& node)
{
    Placing placing;
    if (GltfDocument::find(node, "matrix")) {
        const auto matrix = numbersOf<16>(node, "matrix", {});
        for (std::size_t i = 0; i < 16; ++i)
            if (i % 4 < 3) placing.columns[i / 4][i % 4] = matrix[i];
        return placing;
    }
    const auto [x, y, z, w] = numbersOf<4>(node, "rotation", {0, 0, 0, 1});
    placing.columns[0] = {1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w)};
    placing.columns[1] = {2 * (x * y - z * w), 1 - 2 * (x * x + z * z), 2 * (y * z + x * w)};
    placing.columns[2] = {2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y)};
    const auto scale = numbersOf<3>(node, "scale", {1, 1, 1});
    for (std::size_t i = 0; i < 3; ++i)
        for (double& component : placing.columns[i]) component *= scale[i];
    placing.columns[3] = numbersOf<3>(node, "translation", {0, 0, 0});
    return placing;
}

/// One part of a mesh at one place in the scene.
struct Part
{
    const Json* primitive;
    Placing placing;
    std::size_t mesh; ///< which placement of a mesh it belongs to

    std::optional<std::size_t> attribute(const char* name) const
    {
        const Json* attributes = GltfDocument::find(*primitive, "attributes");
        return attributes ? GltfDocument::number(*attributes, name) : std::nullopt;
    }
};

/// All parts, in the order in which the scene's tree names them.
class Scene
{
public:
    explicit Scene(GltfDocument& document) : m_document(document), m_seen(document.count("nodes"), false)
    {
        for (const std::size_t root : roots()) visitTree(root);
    }

    std::vector<Part> parts;

private:
    static std::vector<std::size_t> children(const Json& holder, const char* key)
    {
        std::vector<std::size_t> result;
        const Json* list = GltfDocument::find(holder, key);
        if (!list || !list->is_array()) return result;
        for (const Json& entry : *list) {
            if (!entry.is_number_unsigned()) throw Failure("the list of " + std::string(key) + " is broken");
            result.push_back(entry.get<std::size_t>());
        }
        return result;
    }

    /// The nodes of the scene; without a scene, those that have no parent.
    std::vector<std::size_t> roots() const
    {
        if (m_document.count("scenes") > 0)
            return children(m_document.entry("scenes", GltfDocument::number(m_document.root(), "scene").value_or(0)),
                            "nodes");
        std::vector<bool> isHeld(m_seen.size(), false);
        for (std::size_t node = 0; node < isHeld.size(); ++node)
            for (const std::size_t child : children(m_document.entry("nodes", node), "children"))
                if (child < isHeld.size()) isHeld[child] = true;
        std::vector<std::size_t> result;
        for (std::size_t node = 0; node < isHeld.size(); ++node)
            if (!isHeld[node]) result.push_back(node);
        return result;
    }

    /// Every node is in one place only: a tree grows no faster than the file.
    void visitTree(std::size_t root)
    {
        std::vector<std::pair<std::size_t, Placing>> open{{root, Placing()}};
        while (!open.empty()) {
            const auto [number, outer] = open.back();
            open.pop_back();
            const Json& node = m_document.entry("nodes", number);
            if (m_seen[number]) throw Failure("node " + std::to_string(number) + " stands in two places");
            m_seen[number] = true;
            const Placing placing = outer * placingOf(node);
            if (const auto mesh = GltfDocument::number(node, "mesh")) addMesh(*mesh, placing);
            const std::vector<std::size_t> inner = children(node, "children");
            for (std::size_t i = inner.size(); i-- > 0;) open.emplace_back(inner[i], placing);
        }
    }

    void addMesh(std::size_t number, const Placing& placing)
    {
        const Json* primitives = GltfDocument::find(m_document.entry("meshes", number), "primitives");
        ++m_numMeshes;
        for (std::size_t i = 0; primitives && primitives->is_array() && i < primitives->size(); ++i) {
            m_document.claim(2 * sizeof(Part));
            parts.push_back({&(*primitives)[i], placing, m_numMeshes});
        }
    }

    GltfDocument& m_document;
    std::vector<bool> m_seen;
    std::size_t m_numMeshes = 0;
};

/// Several meshes become one.
class SceneJoiner
{
public:
    SceneJoiner(GltfDocument& document, const std::vector<Part>& parts, LoadedMesh& result)
        : m_document(document), m_result(result), m_normals(allHave(parts, "NORMAL", "normals")),
          m_uvs(allHave(parts, "TEXCOORD_0", "texture coordinates"))
    {
        if (std::any_of(parts.begin(), parts.end(), [](const Part& part) { return part.attribute("COLOR_0"); }))
            m_result.notes.emplace_back("colours: not kept");
    }

    void add(const Part& part) { addFaces(part, addVertices(part)); }

    void finish()
    {
        znGeom::CompactMesh& mesh = m_result.mesh;
        mesh.copyVertices(static_cast<int>(m_positions.size()), m_positions.data());
        mesh.resizeTriangleArray(static_cast<int>(m_triangles.size()));
        std::copy(m_triangles.begin(), m_triangles.end(), mesh.getTriangles());
        if (m_normals && !m_positions.empty()) {
            mesh.allocNormalArray();
            mesh.setNormalsComputed(false);
            std::copy(m_normalValues.begin(), m_normalValues.end(), mesh.getNormals());
        }
        if (m_uvs && !m_positions.empty()) {
            mesh.allocUVArray();
            std::copy(m_uvValues.begin(), m_uvValues.end(), mesh.getUVs());
        }
        m_result.numFaces = mesh.getNumTriangles();
        if (m_numOther > 0)
            m_result.notes.push_back("parts of points or lines: " + std::to_string(m_numOther) + ", without faces");
    }

private:
    struct Vertices
    {
        std::size_t first, count;
    };

    /// A channel of the whole mesh needs all parts to have it.
    bool allHave(const std::vector<Part>& parts, const char* attribute, const char* name)
    {
        const auto has = [attribute](const Part& part) { return part.attribute(attribute).has_value(); };
        const auto count = std::count_if(parts.begin(), parts.end(), has);
        const bool all = count > 0 && count == static_cast<std::ptrdiff_t>(parts.size());
        if (count > 0 && !all)
            m_result.notes.push_back(std::string(name) + ": not in all meshes of the scene, not kept");
        return all;
    }

    /// Parts of a mesh that refer to the same vertices share them.
    Vertices addVertices(const Part& part)
    {
        const auto positions = part.attribute("POSITION");
        if (!positions) throw Failure("a mesh has no positions");
        const std::array<std::size_t, 4> key{part.mesh, *positions, m_normals ? *part.attribute("NORMAL") : 0,
                                             m_uvs ? *part.attribute("TEXCOORD_0") : 0};
        if (const auto known = m_known.find(key); known != m_known.end()) return known->second;
        const std::size_t first = m_positions.size(), count = m_document.numElements(*positions);
        if (count > maxElements - first) throw Failure("is larger than a mesh can be");
        addPositions(m_document.floats(*positions, 3), part.placing);
        if (m_normals) addNormals(m_document.floats(key[2], 3), part.placing);
        if (m_uvs) addUVs(m_document.floats(key[3], 2));
        if ((m_normals && m_normalValues.size() != first + count) || (m_uvs && m_uvValues.size() != first + count))
            throw Failure("the channels of a mesh have different lengths");
        return m_known[key] = {first, count};
    }

    /// What stays where it is keeps its bits: 0 times infinity would be none.
    void addPositions(const std::vector<float>& values, const Placing& placing)
    {
        const bool isMoved = placing != Placing();
        for (std::size_t i = 0; i < values.size(); i += 3) {
            znGeom::MeshVertex& vertex = m_positions.emplace_back();
            if (isMoved)
                vertex.set(placing.point(double(values[i]), double(values[i + 1]), double(values[i + 2])).data());
            else
                vertex.set(&values[i]);
        }
    }

    /// By the inverse transpose of the matrix, up to a factor.
    void addNormals(const std::vector<float>& values, const Placing& placing)
    {
        const auto& [x, y, z, origin] = placing.columns;
        const double sign = determinant(placing) < 0 ? -1 : 1;
        const Placing toWorld{{cross(y, z), cross(z, x), cross(x, y), {0, 0, 0}}};
        for (std::size_t i = 0; i < values.size(); i += 3) {
            const auto normal = toWorld.direction(double(values[i]), double(values[i + 1]), double(values[i + 2]));
            const double length = sign * std::hypot(normal[0], normal[1], normal[2]);
            const double factor = length != 0 && std::isfinite(length) ? 1 / length : 0;
            m_normalValues.emplace_back().set(static_cast<float>(normal[0] * factor),
                                              static_cast<float>(normal[1] * factor),
                                              static_cast<float>(normal[2] * factor));
        }
    }

    /// This format counts from the upper edge of the image.
    void addUVs(const std::vector<float>& values)
    {
        for (std::size_t i = 0; i < values.size(); i += 2) m_uvValues.emplace_back().set(values[i], 1 - values[i + 1]);
    }

    /// A placement that mirrors turns the triangles around, so that their fronts stay in front.
    void addFaces(const Part& part, const Vertices& vertices)
    {
        enum Mode { Triangles = 4, Strip = 5, Fan = 6 };
        const std::size_t mode = GltfDocument::number(*part.primitive, "mode").value_or(Triangles);
        if (mode < Triangles || mode > Fan) {
            ++m_numOther;
            return;
        }
        const std::vector<std::uint32_t> corners = cornersOf(part, vertices.count);
        if (mode == Triangles && corners.size() % 3 != 0) throw Failure("a mesh ends amid a triangle");
        const bool mirrored = determinant(part.placing) < 0;
        for (std::size_t i = 2; i < corners.size(); i += mode == Triangles ? 3 : 1) {
            std::array<std::size_t, 3> at{mode == Fan ? 0 : i - 2, i - 1, i};
            if (mode == Strip && i % 2 != 0) std::swap(at[1], at[2]);
            if (mirrored) std::swap(at[0], at[2]);
            znGeom::MeshTriangle& triangle = m_triangles.emplace_back();
            for (int corner = 0; corner < 3; ++corner)
                triangle[corner] = static_cast<int>(vertices.first + corners[at[static_cast<std::size_t>(corner)]]);
        }
        if (m_triangles.size() > maxElements) throw Failure("is larger than a mesh can be");
    }

    /// Without indices the vertices themselves, in their order.
    std::vector<std::uint32_t> cornersOf(const Part& part, std::size_t numVertices)
    {
        std::vector<std::uint32_t> corners;
        if (const auto indices = GltfDocument::number(*part.primitive, "indices")) {
            corners = m_document.indices(*indices);
        } else {
            m_document.claim(numVertices * sizeof(std::uint32_t));
            for (std::uint32_t i = 0; i < numVertices; ++i) corners.push_back(i);
        }
        m_document.claim(corners.size() * sizeof(znGeom::MeshTriangle));
        for (const std::uint32_t corner : corners)
            if (corner >= numVertices)
                throw Failure("a face names vertex " + std::to_string(corner) + ", its mesh has " +
                              std::to_string(numVertices) + ", counted from 0");
        return corners;
    }

    GltfDocument& m_document;
    LoadedMesh& m_result;
    const bool m_normals, m_uvs;
    std::map<std::array<std::size_t, 4>, Vertices> m_known; ///< what was placed already
    std::size_t m_numOther = 0;
    std::vector<znGeom::MeshVertex> m_positions;
    std::vector<znGeom::MeshNormal> m_normalValues;
    std::vector<znGeom::MeshUV> m_uvValues;
    std::vector<znGeom::MeshTriangle> m_triangles;
};

} // namespace

void readGltf(std::string_view file, const std::string& folder, znUtil::Progress& progress, LoadedMesh& result)
{
    GltfDocument document(file, folder);
    checkCancelled(progress);
    const Scene scene(document);
    SceneJoiner joiner(document, scene.parts, result);
    for (std::size_t i = 0; i < scene.parts.size(); ++i) {
        checkCancelled(progress);
        progress.set(static_cast<double>(i) / static_cast<double>(scene.parts.size()));
        joiner.add(scene.parts[i]);
    }
    joiner.finish();
}

} // namespace tool
