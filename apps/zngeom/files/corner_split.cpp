#include "apps/zngeom/files/corner_split.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <numeric>
#include <vector>

namespace tool {

namespace {

/// The corners of a mesh with what they have beside a position.
class Corners
{
public:
    Corners(const znGeom::CompactMesh& mesh, const znGeom::MeshUV* uvs, const znGeom::MeshNormal* normals)
        : m_vertices(mesh.getTrianglesRaw()), m_count(3 * mesh.getNumTriangles()), m_uvs(uvs), m_normals(normals)
    {}

    int count() const { return m_count; }
    int vertex(int corner) const { return m_vertices[corner]; }

    /// For each corner the first of those that are like it.
    zn::vector<int> firstAlike() const
    {
        std::vector<int> order(static_cast<std::size_t>(m_count));
        std::iota(order.begin(), order.end(), 0);
        const auto key = [this](int corner) { return std::pair(vertex(corner), valuesAt(corner)); };
        std::stable_sort(order.begin(), order.end(), [&key](int a, int b) { return key(a) < key(b); });
        zn::vector<int> first(m_count);
        int current = -1;
        for (const int corner : order) {
            if (current < 0 || key(corner) != key(current)) current = corner;
            first[corner] = current;
        }
        return first;
    }

private:
    /// Equal for equal numbers, of which there are two zeros.
    std::array<std::uint32_t, 5> valuesAt(int corner) const
    {
        std::array<std::uint32_t, 5> values{};
        const auto put = [&values](std::size_t at, float value) {
            values[at] = value == 0 ? 0 : std::bit_cast<std::uint32_t>(value);
        };
        if (m_uvs) put(0, m_uvs[corner].u), put(1, m_uvs[corner].v);
        if (m_normals) put(2, m_normals[corner].x), put(3, m_normals[corner].y), put(4, m_normals[corner].z);
        return values;
    }

    const int* m_vertices;
    int m_count;
    const znGeom::MeshUV* m_uvs;
    const znGeom::MeshNormal* m_normals;
};

/// Which vertex of the result each corner has, and the corners for which a vertex was added.
struct Numbering
{
    zn::vector<int> ofCorner, added;

    Numbering(const Corners& corners, int numVertices) : ofCorner(corners.firstAlike())
    {
        zn::vector<bool> isTaken(numVertices);
        for (int corner = 0; corner < corners.count(); ++corner) {
            int& number = ofCorner[corner];
            if (number != corner) {
                number = ofCorner[number];
            } else if (bool& taken = isTaken[corners.vertex(corner)]; !taken) {
                taken = true;
                number = corners.vertex(corner);
            } else {
                number = numVertices + added.size();
                added.append(corner);
            }
        }
    }
};

/// The values of one channel of a mesh, written to the vertices of another.
template <typename Value>
void fillChannel(const znGeom::CompactMesh& mesh, const Numbering& numbering, const Value* ofVertices,
                 const Value* ofCorners, Value* out)
{
    const int numVertices = mesh.getNumVertices();
    if (ofVertices) std::copy_n(ofVertices, numVertices, out);
    for (int i = 0; ofVertices && i < numbering.added.size(); ++i)
        out[numVertices + i] = ofVertices[mesh.getTrianglesRaw()[numbering.added[i]]];
    for (int corner = 0; ofCorners && corner < numbering.ofCorner.size(); ++corner)
        out[numbering.ofCorner[corner]] = ofCorners[corner];
}

} // namespace

znGeom::CompactMesh splitCorners(const znGeom::CompactMesh& mesh, const znGeom::MeshUV* cornerUVs,
                                 const znGeom::MeshNormal* cornerNormals)
{
    const Numbering numbering(Corners(mesh, cornerUVs, cornerNormals), mesh.getNumVertices());
    znGeom::CompactMesh split;
    split.resizeVertexArray(mesh.getNumVertices() + numbering.added.size());
    fillChannel<znGeom::MeshVertex>(mesh, numbering, mesh.getVertices(), nullptr, split.getVertices());
    split.copyTriangles(mesh.getNumTriangles(), numbering.ofCorner.data());
    if (cornerUVs || mesh.getUVs()) {
        split.allocUVArray();
        fillChannel(mesh, numbering, cornerUVs ? nullptr : mesh.getUVs(), cornerUVs, split.getUVs());
    }
    if (cornerNormals || mesh.getNormals()) {
        split.allocNormalArray();
        fillChannel(mesh, numbering, cornerNormals ? nullptr : mesh.getNormals(), cornerNormals, split.getNormals());
    }
    return split;
}

} // namespace tool
