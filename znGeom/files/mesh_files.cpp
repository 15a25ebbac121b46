#include "znGeom/files/mesh_files.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "znGeom/files/internal/decimal.h"
#include "znGeom/files/internal/parsers.h"
#include "znGeom/files/internal/text_file.h"
#include "znGeom/topology/topo_walks.h"
#include "znGeom/topology/twin.h"

namespace znGeom {

namespace {

using namespace internal;
using znOS::Filename;
using znString::Encoding;
using znString::IString;

using Subsets = zn::list<zn::Reference<MeshSubset>>;
using Colours = zn::list<znUtil::Color>;

/// Reads a file into a mesh; false when it does not open. Everything that reading changes is announced in one message.
bool readFile(CompactMesh& mesh, const Filename& file, void (*parse)(TextReader&, CompactMesh&))
{
    TextReader text(file);
    if (!text.isOpen()) return false;
    parse(text, mesh);
    MeshModification modification(&mesh, MeshModification::TopologyChanged);
    mesh.modified(modification);
    return true;
}

/// A number with ten significant digits; a bare `float` has six.
template <typename T>
struct TenDigits
{
    T value;
};
template <typename T>
TenDigits(T) -> TenDigits<T>;

/// One line, or a part of one: numbers and pieces of text, one after the other.
class Line
{
public:
    explicit Line(TextWriter& writer, std::string_view ending = "\n")
        : m_writer(writer), m_at(writer.line()), m_ending(ending)
    {}
    ~Line()
    {
        *this << m_ending;
        m_writer.setEnd(m_at);
    }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    Line& operator<<(std::string_view text) { return m_at = std::copy(text.begin(), text.end(), m_at), *this; }
    Line& operator<<(int value) { return *this << std::int64_t(value); }
    Line& operator<<(std::int64_t value) { return m_at = writeInt(m_at, value), *this; }
    Line& operator<<(float value) { return m_at = writeFloat6(m_at, value), *this; }
    Line& operator<<(TenDigits<float> number) { return m_at = writeFloat10(m_at, number.value), *this; }
    Line& operator<<(TenDigits<double> number) { return m_at = writeDouble10(m_at, number.value), *this; }

private:
    TextWriter& m_writer;
    char* m_at;
    std::string_view m_ending;
};

/// Writes the elements of an OBJ file. Channels are per vertex, so that one index serves for all of them.
class ObjWriter
{
public:
    ObjWriter(TextWriter& writer, const CompactMesh& mesh)
        : m_writer(writer), m_mesh(mesh), m_hasNormals(mesh.getNormals()), m_hasUVs(mesh.getUVs())
    {}

    void writeVertices();
    void writeTriangle(const MeshTriangle& triangle);

private:
    void writeCorner(Line& line, int vertex) const;

    TextWriter& m_writer;
    const CompactMesh& m_mesh;
    const bool m_hasNormals, m_hasUVs;
};

void ObjWriter::writeVertices()
{
    const int numVertices = m_mesh.getNumVertices();
    const MeshVertex* vertices = m_mesh.getVertices();
    const MeshNormal* normals = m_mesh.getNormals();
    const MeshUV* uvs = m_mesh.getUVs();
    for (int i = 0; i < numVertices; ++i)
        Line(m_writer) << "v " << vertices[i].x << " " << vertices[i].y << " " << vertices[i].z;
    for (int i = 0; normals && i < numVertices; ++i)
        Line(m_writer) << "vn " << normals[i].x << " " << normals[i].y << " " << normals[i].z;
    for (int i = 0; uvs && i < numVertices; ++i) Line(m_writer) << "vt " << uvs[i].u << " " << uvs[i].v;
}

/// i, i/i, i//i or i/i/i.
void ObjWriter::writeCorner(Line& line, int vertex) const
{
    const std::int64_t index = std::int64_t(vertex) + 1;
    line << index;
    if (m_hasUVs)
        line << "/" << index;
    else if (m_hasNormals)
        line << "/";
    if (m_hasNormals) line << "/" << index;
}

/// Bare indices are two blanks apart and followed by one blank: the format has always been like this.
void ObjWriter::writeTriangle(const MeshTriangle& triangle)
{
    const bool isBare = !m_hasNormals && !m_hasUVs;
    const std::string_view gap = isBare ? "  " : " ";
    Line line(m_writer);
    line << "f ";
    writeCorner(line, triangle[0]);
    writeCorner(line << gap, triangle[1]);
    writeCorner(line << gap, triangle[2]);
    if (isBare) line << " ";
}

/// A face of any size, in pieces that fit in a line.
void writeFace(TextWriter& writer, TopoMeshFace face, const zn::vector<int>& indices)
{
    constexpr int cornersPerPiece = 16;
    int left = face.numVertices();
    Line(writer, "") << left;
    for (TopoMeshEdge e = face->edge; left > 0;) {
        Line piece(writer, left <= cornersPerPiece ? "\n" : "");
        for (int i = std::min(left, cornersPerPiece); i > 0; --i, e = e->next)
            piece << " " << indices[e->origin.number()];
        left -= cornersPerPiece;
    }
}

bool writeParts(const CompactMesh& mesh, const Subsets& subsets, const IString& library, const Filename& file)
{
    TextWriter writer(file);
    if (!writer.isOpen()) return false;
    writer.text("mtllib ");
    writer.text(library.asMultibyte(Encoding::Native).asChar());
    writer.text("\n");
    ObjWriter obj(writer, mesh);
    obj.writeVertices();
    const MeshTriangle* triangles = mesh.getTriangles();
    int number = 0;
    for (const zn::Reference<MeshSubset>& subset : subsets) {
        Line(writer) << "usemtl mat" << number++;
        for (int i = 0; i < subset->numTriangles; ++i) obj.writeTriangle(triangles[subset->triangles[i]]);
    }
    return true;
}

void writeMaterials(const Colours& colours, const Filename& file)
{
    TextWriter writer(file);
    if (!writer.isOpen()) return;
    int number = 0;
    for (const znUtil::Color& colour : colours) {
        Line(writer) << "newmtl mat" << number++;
        Line(writer) << "Ns 100.0\nd 1.0\nillum 2";
        Line(writer) << "Kd " << colour.red << " " << colour.green << " " << colour.blue;
        Line(writer) << "Ka 1.0 1.0 1.0\nKs 1.0 1.0 1.0\nKe 0.0 0.0 0.0\n";
    }
}

Filename materialFile(const Filename& file)
{
    return Filename(plus(plus(file.dirname(), file.baseTrunk()), IString(".mtl", Encoding::Native)));
}

} // namespace

void meshRead(CompactMesh& mesh, const Filename& file) { readFile(mesh, file, parsePlain); }

void meshRead(TopoMesh& mesh, const Filename& file)
{
    TextReader text(file);
    if (!text.isOpen()) return;
    parsePlain(text, mesh);
    meshTwin(mesh);
    TopoMeshModification modification(&mesh, TopoMeshModification::ConnectivityChanged);
    mesh.modified(modification);
}

bool meshReadObj(CompactMesh& mesh, const Filename& file) { return readFile(mesh, file, parseObj); }

void meshWrite(const CompactMesh& mesh, const Filename& file)
{
    TextWriter writer(file);
    if (!writer.isOpen()) return;
    const int numVertices = mesh.getNumVertices(), numTriangles = mesh.getNumTriangles();
    Line(writer) << numVertices << " " << numTriangles;
    const MeshVertex* vertices = mesh.getVertices();
    for (int i = 0; i < numVertices; ++i)
        Line(writer) << TenDigits{vertices[i].x} << " " << TenDigits{vertices[i].y} << " " << TenDigits{vertices[i].z};
    const MeshTriangle* triangles = mesh.getTriangles();
    for (int i = 0; i < numTriangles; ++i)
        Line(writer) << "3 " << triangles[i][0] << " " << triangles[i][1] << " " << triangles[i][2];
}

void meshWrite(TopoMesh& mesh, const Filename& file)
{
    TextWriter writer(file);
    if (!writer.isOpen()) return;
    Line(writer) << mesh.numVertices() << " " << mesh.numFaces();
    zn::vector<int> indices(mesh.vertexNumbers());
    int count = 0;
    for (const TopoMeshVertex vertex : verticesOf(mesh)) {
        indices[vertex.number()] = count++;
        const znLinear::Point& p = vertex->point;
        Line(writer) << TenDigits{p.x} << " " << TenDigits{p.y} << " " << TenDigits{p.z};
    }
    for (const TopoMeshFace face : facesOf(mesh)) writeFace(writer, face, indices);
}

bool meshWriteObj(const CompactMesh& mesh, const Filename& file)
{
    TextWriter writer(file);
    if (!writer.isOpen()) return false;
    ObjWriter obj(writer, mesh);
    obj.writeVertices();
    const MeshTriangle* triangles = mesh.getTriangles();
    for (int i = 0; i < mesh.getNumTriangles(); ++i) obj.writeTriangle(triangles[i]);
    return true;
}

/// The OBJ file is closed before the MTL file opens, which may be the same one.
bool meshWriteObj(const CompactMesh& mesh, const Subsets& subsets, const Colours& colours, const Filename& file)
{
    const Filename materials = materialFile(file);
    if (!writeParts(mesh, subsets, materials.basename(), file)) return false;
    writeMaterials(colours, materials);
    return true;
}

} // namespace znGeom
