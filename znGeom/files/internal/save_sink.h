/// `znGeom::internal::SaveSink`: where the writers behind `meshSave` put their bytes.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <string>
#include <string_view>

#include "znGeom/files/mesh_save.h"

namespace znGeom::internal {

/// Collects bytes and passes them on in large pieces; reports the progress and notices a cancel as it does so. After a
/// failure nothing is passed on, and a writer need not check before it has finished.
class SaveSink
{
public:
    /// \param takesPolygons  whether the faces that are written are the polygons of the mesh
    /// \param numElements    vertices and faces that will be written, for the progress
    SaveSink(const MeshByteWriter& write, bool takesPolygons, std::int64_t numElements, znUtil::Progress& progress)
        : m_write(write), m_takesPolygons(takesPolygons), m_numElements(numElements), m_progress(progress)
    {}

    bool takesPolygons() const { return m_takesPolygons; }

    void text(std::string_view text)
    {
        m_buffer += text;
        if (m_buffer.size() >= pieceSize) flush();
    }
    /// The shortest decimal number that reads back to the same value.
    template <typename Number>
    void decimal(Number value)
    {
        char digits[32];
        text({digits, static_cast<size_t>(std::to_chars(digits, digits + sizeof digits, value).ptr - digits)});
    }
    /// Decimal numbers, each after a blank.
    void decimals(const float* values, int count)
    {
        for (int i = 0; i < count; ++i) {
            text(" ");
            decimal(values[i]);
        }
    }
    /// The bytes of a number, the lowest first.
    template <typename Number>
    void binary(Number value)
    {
        auto bytes = std::bit_cast<std::array<char, sizeof(Number)>>(value);
        if constexpr (std::endian::native == std::endian::big) std::reverse(bytes.begin(), bytes.end());
        text({bytes.data(), bytes.size()});
    }
    void binaries(const float* values, int count)
    {
        for (int i = 0; i < count; ++i) binary(values[i]);
    }

    /// One more vertex or face is written.
    void count() { ++m_numDone; }
    bool hasStopped() const { return m_hasFailed || m_isCancelled; }
    bool isCancelled() const { return m_isCancelled; }
    std::int64_t numBytes() const { return m_numBytes; }

    void flush();

private:
    static constexpr size_t pieceSize = 1 << 18;

    const MeshByteWriter& m_write;
    bool m_takesPolygons;
    std::int64_t m_numElements, m_numDone = 0, m_numBytes = 0;
    znUtil::Progress& m_progress;
    std::string m_buffer;
    bool m_hasFailed = false, m_isCancelled = false;
};

/// Calls `use` with the corners of each face, from 0, and their number: of the triangles, or of the polygons where the
/// sink takes them. Ends early when the sink has stopped.
template <typename Use>
void forEachFace(const CompactMesh& mesh, SaveSink& sink, const Use& use)
{
    if (!sink.takesPolygons()) {
        for (int i = 0; i < mesh.getNumTriangles() && !sink.hasStopped(); ++i, sink.count())
            use(mesh.getTriangles()[i].corners, 3);
        return;
    }
    const int* corners = mesh.getPolyPoints();
    for (int i = 0; i < mesh.getNumPolys() && !sink.hasStopped(); ++i, sink.count()) {
        use(corners, mesh.getPolyLengths()[i]);
        corners += mesh.getPolyLengths()[i];
    }
}

/// Calls `use` with each vertex number. Ends early when the sink has stopped.
template <typename Use>
void forEachVertex(const CompactMesh& mesh, SaveSink& sink, const Use& use)
{
    for (int i = 0; i < mesh.getNumVertices() && !sink.hasStopped(); ++i, sink.count()) use(i);
}

/// Where a corner of a face is among the corners of its fan of triangles.
/// \param firstTriangle  of the fan
inline int cornerInFan(int firstTriangle, int corner)
{
    return corner < 3 ? 3 * firstTriangle + corner : 3 * (firstTriangle + corner - 2) + 2;
}

inline int countFaces(const CompactMesh& mesh, const SaveSink& sink)
{
    return sink.takesPolygons() ? mesh.getNumPolys() : mesh.getNumTriangles();
}

void saveObj(const CompactMesh& mesh, const MeshSaveOptions& options, SaveSink& sink);
void savePly(const CompactMesh& mesh, const MeshSaveOptions& options, SaveSink& sink);
void saveStl(const CompactMesh& mesh, SaveSink& sink);
void saveOff(const CompactMesh& mesh, SaveSink& sink);
void savePlain(const CompactMesh& mesh, SaveSink& sink);
void savePoints(const CompactMesh& mesh, SaveSink& sink);

} // namespace znGeom::internal
