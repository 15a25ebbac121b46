#include <algorithm>
#include <cstdint>

#include "znGeom/files/internal/save_sink.h"

namespace znGeom::internal {

namespace {

class PlySaver
{
public:
    PlySaver(const CompactMesh& mesh, const MeshSaveOptions& options, SaveSink& sink)
        : m_mesh(mesh), m_sink(sink), m_cornerUVs(mesh.getNumTriangles() > 0 ? options.cornerUVs : nullptr),
          m_hasVertexUVs(mesh.getUVs() && !m_cornerUVs), m_isLarge(hasLargePolygons())
    {}

    void saveHeader()
    {
        m_sink.text("ply\nformat binary_little_endian 1.0\nelement vertex ");
        m_sink.decimal(m_mesh.getNumVertices());
        m_sink.text("\nproperty float x\nproperty float y\nproperty float z\n");
        if (m_mesh.getNormals()) m_sink.text("property float nx\nproperty float ny\nproperty float nz\n");
        if (m_hasVertexUVs) m_sink.text("property float s\nproperty float t\n");
        m_sink.text("element face ");
        m_sink.decimal(countFaces(m_mesh, m_sink));
        const std::string list = std::string("\nproperty list ") + (m_isLarge ? "int " : "uchar ");
        m_sink.text(list + "int vertex_indices");
        if (m_cornerUVs) m_sink.text(list + "float texcoord");
        m_sink.text("\nend_header\n");
    }

    void saveVertices()
    {
        forEachVertex(m_mesh, m_sink, [&](int vertex) {
            m_sink.binaries(m_mesh.getVerticesRaw() + 3 * std::ptrdiff_t(vertex), 3);
            if (m_mesh.getNormals()) m_sink.binaries(m_mesh.getNormalsRaw() + 3 * std::ptrdiff_t(vertex), 3);
            if (m_hasVertexUVs) m_sink.binaries(m_mesh.getUVsRaw() + 2 * std::ptrdiff_t(vertex), 2);
        });
    }

    void saveFaces()
    {
        int triangle = 0; // the first of the face's fan
        forEachFace(m_mesh, m_sink, [&](const int* corners, int numCorners) {
            saveLength(numCorners);
            for (int i = 0; i < numCorners; ++i) m_sink.binary(corners[i]);
            if (!m_cornerUVs) return;
            saveLength(2 * numCorners);
            for (int i = 0; i < numCorners; ++i) m_sink.binaries(&m_cornerUVs[cornerInFan(triangle, i)].u, 2);
            triangle += numCorners - 2;
        });
    }

private:
    /// The length of a list takes one byte where all fit.
    bool hasLargePolygons() const
    {
        const int* lengths = m_mesh.getPolyLengths();
        const int numPolys = m_sink.takesPolygons() ? m_mesh.getNumPolys() : 0, most = m_cornerUVs ? 127 : 255;
        return std::any_of(lengths, lengths + numPolys, [most](int length) { return length > most; });
    }

    void saveLength(int length)
    {
        if (m_isLarge)
            m_sink.binary(length);
        else
            m_sink.binary(static_cast<std::uint8_t>(length));
    }

    const CompactMesh& m_mesh;
    SaveSink& m_sink;
    const MeshUV* const m_cornerUVs;
    const bool m_hasVertexUVs, m_isLarge;
};

} // namespace

void savePly(const CompactMesh& mesh, const MeshSaveOptions& options, SaveSink& sink)
{
    PlySaver saver(mesh, options, sink);
    saver.saveHeader();
    saver.saveVertices();
    saver.saveFaces();
}

} // namespace znGeom::internal
