#include "znGeom/foundation/mesh/compact_mesh.h"

#include <cstdint>
#include <utility>

#include "znGeom/foundation/containers/checked_size.h"

namespace znGeom {

template <typename Mesh, typename Visit>
void CompactMesh::forEachArray(CompactMesh& mesh, Mesh& other, const Visit& visit)
{
    visit(mesh.m_triangles, other.m_triangles);
    visit(mesh.m_triangleNormals, other.m_triangleNormals);
    visit(mesh.m_lines, other.m_lines);
    visit(mesh.m_lineStripLengths, other.m_lineStripLengths);
    visit(mesh.m_lineStripPoints, other.m_lineStripPoints);
    visit(mesh.m_triStripLengths, other.m_triStripLengths);
    visit(mesh.m_triStripPoints, other.m_triStripPoints);
    visit(mesh.m_triFanLengths, other.m_triFanLengths);
    visit(mesh.m_triFanPoints, other.m_triFanPoints);
    visit(mesh.m_polyLengths, other.m_polyLengths);
    visit(mesh.m_polyPoints, other.m_polyPoints);
    visit(mesh.m_polyMaterials, other.m_polyMaterials);
    visit(mesh.m_polyGroups, other.m_polyGroups);
}

CompactMesh::CompactMesh(int numVertices, const MeshVertex* vertices, const MeshNormal* normals, const MeshUV* uvs,
                         const MeshColour* colours)
{
    resizeVertexArray(numVertices);
    if (vertices) std::copy_n(vertices, numVertices, getVertices());
    if (normals) {
        allocNormalArray();
        std::copy_n(normals, numVertices, getNormals());
    }
    if (uvs) {
        allocUVArray();
        std::copy_n(uvs, numVertices, getUVs());
    }
    if (colours) {
        float* values = allocAttributes(ColoursName, 4)->asFloat();
        std::copy_n(reinterpret_cast<const float*>(colours), 4 * static_cast<size_t>(numVertices), values);
    }
}

CompactMesh::CompactMesh(const CompactMesh& other) : PointMesh() { *this = other; }

CompactMesh& CompactMesh::operator=(const CompactMesh& other)
{
    if (this == &other) return *this;
    PointMesh::operator=(other);
    forEachArray(*this, other, [](auto& mine, const auto& theirs) { mine = theirs; });
    m_selectedTriangles = other.m_selectedTriangles;
    return *this;
}

CompactMesh::~CompactMesh() = default;

void CompactMesh::sendMessage(EntityModification& modification) const { PointMesh::sendMessage(modification); }

void CompactMesh::resendMessage(EntityModification& modification) const { PointMesh::resendMessage(modification); }

void CompactMesh::setArrayAllocator(zn::Reference<ArrayAllocator> allocator)
{
    forEachArray(*this, *this, [&allocator](auto& mine, auto&) { mine.setAllocator(allocator); });
    PointMesh::setArrayAllocator(std::move(allocator));
}

void CompactMesh::modified(MeshModification& modification)
{
    const bool topology = modification.getType() == MeshModification::TopologyChanged;
    const bool geometry = modification.getType() == MeshModification::GeometryChanged;
    if ((topology || geometry) && !modification.keeps(MeshModification::TriangleNormals)) deleteTriangleNormals();
    if (topology && !modification.keeps(MeshModification::StripsAndFans)) {
        resizeTriStripArrays(0, 0);
        resizeTriFanArrays(0, 0);
    }
    PointMesh::modified(modification);
}

size_t CompactMesh::getSizeInBytes() const
{
    size_t bytes = PointMesh::getSizeInBytes() + sizeof(*this) - sizeof(PointMesh);
    bytes += static_cast<size_t>(m_selectedTriangles.getNumWords()) * sizeof(std::uint32_t);
    forEachArray(const_cast<CompactMesh&>(*this), *this, [&bytes](auto&, const auto& array) {
        if (array.size() > 0) bytes += array.blockBytes(array.size());
    });
    return bytes;
}

void CompactMesh::swap(CompactMesh& other)
{
    if (this == &other) return;
    swapData(other);
    m_selectedTriangles.swap(other.m_selectedTriangles);
    forEachArray(*this, other, [](auto& mine, auto& theirs) { mine.swap(theirs); });
}

void CompactMesh::resizeTriangleArray(int numTriangles)
{
    m_triangles.resize(numTriangles);
    resizeTriangleNormals();
}

/// The channel, if it is there, follows the number of triangles.
void CompactMesh::resizeTriangleNormals()
{
    const int numNormals = m_triangleNormals.size(), numTriangles = getNumTriangles();
    if (numNormals == 0 || numNormals == numTriangles) return;
    m_triangleNormals.resize(numTriangles);
    MeshNormal* normals = m_triangleNormals.write();
    if (numTriangles > numNormals) std::fill(normals + numNormals, normals + numTriangles, MeshNormal{0, 0, 0});
}

void CompactMesh::copyTriangles(int numTriangles, const int* corners)
{
    resizeTriangleArray(numTriangles);
    std::copy_n(corners, 3 * static_cast<size_t>(numTriangles), getTrianglesRaw());
}

void CompactMesh::takeTriangles(Array<MeshTriangle>& triangles)
{
    m_triangles.swap(triangles);
    triangles.resize(0);
    resizeTriangleNormals();
}

void CompactMesh::allocTriangleNormalArray()
{
    if (m_triangleNormals.size() == getNumTriangles()) return;
    m_triangleNormals.resize(getNumTriangles());
    std::fill_n(getTriangleNormalsRaw(), 3 * static_cast<size_t>(getNumTriangles()), 0.0f);
}

void CompactMesh::clearSelection()
{
    getSelectedVertices().clearBits();
    m_selectedTriangles.clearBits();
}

zn::vector<const int*> CompactMesh::getLineStripStarts() const
{
    zn::vector<const int*> starts(getNumLineStrips());
    const int* next = getLineStripPoints();
    for (int i = 0; i < getNumLineStrips(); next += getLineStripLengths()[i++]) starts[i] = next;
    return starts;
}

void CompactMesh::resizeLineStripArrays(int numPoints, int numStrips)
{
    m_lineStripPoints.resize(numPoints);
    m_lineStripLengths.resize(numStrips);
}

void CompactMesh::resizeTriStripArrays(int numPoints, int numStrips)
{
    m_triStripPoints.resize(numPoints);
    m_triStripLengths.resize(numStrips);
}

void CompactMesh::resizeTriFanArrays(int numPoints, int numFans)
{
    m_triFanPoints.resize(numPoints);
    m_triFanLengths.resize(numFans);
}

void CompactMesh::resizePolyArrays(int numPoints, int numPolys)
{
    m_polyPoints.resize(numPoints);
    m_polyLengths.resize(numPolys);
    m_polyMaterials.resize(0);
    m_polyGroups.resize(0);
}

void CompactMesh::takePolys(Array<int>& points, Array<int>& lengths)
{
    resizePolyArrays(0, 0);
    m_polyPoints.swap(points);
    m_polyLengths.swap(lengths);
}

void CompactMesh::allocPolyMaterialArray()
{
    if (m_polyMaterials.size() == getNumPolys()) return;
    m_polyMaterials.resize(getNumPolys());
    m_polyMaterials.fill(0);
}

void CompactMesh::allocPolyGroupArray()
{
    if (m_polyGroups.size() == getNumPolys()) return;
    m_polyGroups.resize(getNumPolys());
    m_polyGroups.fill(0);
}

void GridMesh::swap(GridMesh& other)
{
    CompactMesh::swap(other);
    std::swap(m_columns, other.m_columns);
    std::swap(m_rows, other.m_rows);
}

void GridMesh::setGridDimensions(int columns, int rows)
{
    m_columns = std::max(columns, 0);
    m_rows = std::max(rows, 0);
    resizeVertexArray(zn::checkedSize(std::int64_t{m_columns} * m_rows));
}

} // namespace znGeom
