#include <cstring>

#include "znGeom/files/internal/growing_array.h"
#include "znGeom/files/internal/save_sink.h"
#include "znGeom/foundation/containers/vector.h"

namespace znGeom::internal {

namespace {

/// Entries of a channel, each written once per vertex that has it: the corners at a vertex usually agree.
class CornerEntries
{
public:
    /// \param values  per corner of the triangles, `width` numbers each; null when the channel is per vertex or absent
    CornerEntries(const char* keyword, const float* values, int width, const CompactMesh& mesh, SaveSink& sink);

    /// The number of the entry of a corner, from 1.
    int operator[](int corner) const { return m_ofCorner[corner]; }

private:
    bool isSame(int corner, int other) const
    {
        const size_t bytes = static_cast<size_t>(m_width) * sizeof(float);
        return std::memcmp(at(corner), at(other), bytes) == 0;
    }
    const float* at(int corner) const { return m_values + std::ptrdiff_t(corner) * m_width; }

    const float* m_values;
    int m_width;
    zn::vector<int> m_ofCorner;
};

CornerEntries::CornerEntries(const char* keyword, const float* values, int width, const CompactMesh& mesh,
                             SaveSink& sink)
    : m_values(values), m_width(width)
{
    if (!values) return;
    constexpr int mostCompared = 8; // a vertex at which all corners differ must not cost the square of their number
    const int numCorners = 3 * mesh.getNumTriangles();
    const int* vertices = mesh.getTrianglesRaw();
    m_ofCorner = zn::vector<int>(numCorners);
    zn::vector<int> lastAt(mesh.getNumVertices(), -1), before(numCorners); // corners with an entry of their own
    int numEntries = 0;
    for (int corner = 0; corner < numCorners && !sink.hasStopped(); ++corner) {
        int& last = lastAt[vertices[corner]];
        int known = last;
        for (int compared = 0; known >= 0 && !isSame(corner, known); known = before[known])
            if (++compared == mostCompared) known = -1;
        if (known >= 0) {
            m_ofCorner[corner] = m_ofCorner[known];
            continue;
        }
        m_ofCorner[corner] = ++numEntries;
        before[corner] = last;
        last = corner;
        sink.text(keyword);
        sink.decimals(at(corner), width);
        sink.text("\n");
    }
}

void saveLines(const char* keyword, const float* values, int width, int count, SaveSink& sink)
{
    for (int i = 0; i < count && !sink.hasStopped(); ++i) {
        sink.text(keyword);
        sink.decimals(values + std::ptrdiff_t(i) * width, width);
        sink.text("\n");
    }
}

/// Control characters would end the line.
void saveGroup(const MeshGroups& groups, int group, SaveSink& sink)
{
    std::string name = group < 0 || group >= groups.names.size() ? "" : groups.names[group];
    for (char& c : name)
        if (static_cast<unsigned char>(c) < ' ' || c == 127 || c == '#' || c == '\\') c = '_';
    sink.text(name.empty() ? "g" : "g ");
    sink.text(name);
    sink.text("\n");
}

/// The faces with the numbers of their entries.
class ObjFaces
{
public:
    ObjFaces(const CompactMesh& mesh, const MeshSaveOptions& options, SaveSink& sink)
        : m_mesh(mesh), m_sink(sink), m_hasUVs(options.cornerUVs || mesh.getUVs()),
          m_hasNormals(options.cornerNormals || mesh.getNormals()),
          m_normals("vn", reinterpret_cast<const float*>(options.cornerNormals), 3, mesh, sink),
          m_uvs("vt", reinterpret_cast<const float*>(options.cornerUVs), 2, mesh, sink),
          m_isCornerUVs(options.cornerUVs), m_isCornerNormals(options.cornerNormals),
          m_groups(options.groups && options.groups->ofTriangle.size() == mesh.getNumTriangles() ? options.groups
                                                                                                 : nullptr)
    {}

    void save()
    {
        int triangle = 0, group = -1; // the first of the face's fan
        forEachFace(m_mesh, m_sink, [&](const int* corners, int numCorners) {
            if (m_groups && m_groups->ofTriangle[triangle] != group)
                saveGroup(*m_groups, group = m_groups->ofTriangle[triangle], m_sink);
            m_sink.text("f");
            for (int i = 0; i < numCorners; ++i) saveCorner(corners[i], cornerInFan(triangle, i));
            m_sink.text("\n");
            triangle += numCorners - 2;
        });
    }

private:
    /// v, v/vt, v//vn or v/vt/vn.
    void saveCorner(int vertex, int corner)
    {
        const std::int64_t number = std::int64_t(vertex) + 1;
        m_sink.text(" ");
        m_sink.decimal(number);
        if (m_hasUVs || m_hasNormals) m_sink.text("/");
        if (m_hasUVs) m_sink.decimal(m_isCornerUVs ? m_uvs[corner] : number);
        if (m_hasNormals) m_sink.text("/");
        if (m_hasNormals) m_sink.decimal(m_isCornerNormals ? m_normals[corner] : number);
    }

    const CompactMesh& m_mesh;
    SaveSink& m_sink;
    const bool m_hasUVs, m_hasNormals;
    const CornerEntries m_normals, m_uvs;
    const bool m_isCornerUVs, m_isCornerNormals;
    const MeshGroups* const m_groups;
};

} // namespace

void saveObj(const CompactMesh& mesh, const MeshSaveOptions& options, SaveSink& sink)
{
    const int numVertices = mesh.getNumVertices();
    const MeshSaveOptions none;
    forEachVertex(mesh, sink, [&](int vertex) {
        sink.text("v");
        sink.decimals(mesh.getVerticesRaw() + 3 * std::ptrdiff_t(vertex), 3);
        sink.text("\n");
    });
    // Without triangles there are no corners that options could refer to.
    const MeshSaveOptions& used = mesh.getNumTriangles() > 0 ? options : none;
    if (mesh.getNormals() && !used.cornerNormals) saveLines("vn", mesh.getNormalsRaw(), 3, numVertices, sink);
    if (mesh.getUVs() && !used.cornerUVs) saveLines("vt", mesh.getUVsRaw(), 2, numVertices, sink);
    ObjFaces(mesh, used, sink).save();
}

} // namespace znGeom::internal
