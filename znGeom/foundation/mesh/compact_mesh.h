/// `znGeom::CompactMesh`: the flat, indexed triangle mesh on which applications live.
#pragma once

#include "znGeom/foundation/mesh/point_mesh.h"

namespace znGeom {

/// Vertices with their channels, triangles as three vertex indices each, and optional further descriptions: triangle
/// normals, lines, line strips, triangle strips and fans, polygons. No connectivity: adjacency, boundaries and spatial
/// indexes are derived objects that live beside the mesh and go stale at any change.
///
/// Vertices that no triangle uses are legal. Counts of an empty mesh are 0 and its raw pointers may be null. Arrays
/// that a `resize...` call grows hold no particular value in the new elements.
class ZNGEOM_API CompactMesh : public PointMesh
{
public:
    CompactMesh() = default;
    /// Copies of the given arrays, `numVertices` records each. Each may be null; without positions all are zero.
    /// Normals given here count as supplied, not computed.
    CompactMesh(int numVertices, const MeshVertex* vertices, const MeshNormal* normals, const MeshUV* uvs,
                const MeshColour* colours);
    /// A copy of the data, without listeners and allocator.
    CompactMesh(const CompactMesh& other);
    /// Replaces the data; listeners and allocator stay.
    CompactMesh& operator=(const CompactMesh& other);
    ~CompactMesh() override;

    void sendMessage(EntityModification& modification) const override;
    void resendMessage(EntityModification& modification) const override;
    void setArrayAllocator(zn::Reference<ArrayAllocator> allocator) override;
    /// As in the base class; in addition, `TopologyChanged` drops triangle normals, strips and fans, and
    /// `GeometryChanged` drops triangle normals, unless the flags keep them.
    void modified(MeshModification& modification) override;
    size_t getSizeInBytes() const override;

    /// Exchanges all content, but not listeners and allocators. Notifies no listener.
    void swap(CompactMesh& other);

    // Triangles
    int getNumTriangles() const { return m_triangles.size(); }
    MeshTriangle* getTriangles() { return m_triangles.write(); }
    const MeshTriangle* getTriangles() const { return m_triangles.read(); }
    int* getTrianglesRaw() { return reinterpret_cast<int*>(getTriangles()); }
    const int* getTrianglesRaw() const { return reinterpret_cast<const int*>(getTriangles()); }
    /// Triangle normals, if there are any, are resized too; new ones are zero.
    void resizeTriangleArray(int numTriangles);
    /// \param corners  three vertex indices per triangle
    void copyTriangles(int numTriangles, const int* corners);
    /// Takes the elements of an array, which is empty then: nothing is copied unless the mesh has an allocator.
    void takeTriangles(Array<MeshTriangle>& triangles);

    // Triangle normals
    /// Makes the channel, filled with zeros, unless it exists already.
    void allocTriangleNormalArray();
    void deleteTriangleNormals() { m_triangleNormals.resize(0); }
    /// Null while absent.
    MeshNormal* getTriangleNormals() { return m_triangleNormals.write(); }
    const MeshNormal* getTriangleNormals() const { return m_triangleNormals.read(); }
    float* getTriangleNormalsRaw() { return reinterpret_cast<float*>(getTriangleNormals()); }
    const float* getTriangleNormalsRaw() const { return reinterpret_cast<const float*>(getTriangleNormals()); }

    // Selection
    /// Sized by its user: resize it to the number of triangles first.
    BitVector& getSelectedTriangles() { return m_selectedTriangles; }
    const BitVector& getSelectedTriangles() const { return m_selectedTriangles; }
    /// Clears the bits of both selections; their sizes stay.
    void clearSelection();

    // Lines
    int getNumLines() const { return m_lines.size(); }
    MeshLine* getLines() { return m_lines.write(); }
    const MeshLine* getLines() const { return m_lines.read(); }
    void resizeLineArray(int numLines) { m_lines.resize(numLines); }

    // Line strips: one flat array of vertex indices and the length of each strip
    int getNumLineStrips() const { return m_lineStripLengths.size(); }
    int getNumLineStripPoints() const { return m_lineStripPoints.size(); }
    int* getLineStripLengths() { return m_lineStripLengths.write(); }
    const int* getLineStripLengths() const { return m_lineStripLengths.read(); }
    int* getLineStripPoints() { return m_lineStripPoints.write(); }
    const int* getLineStripPoints() const { return m_lineStripPoints.read(); }
    /// For each strip a pointer to its first point, from the current lengths.
    zn::vector<const int*> getLineStripStarts() const;
    void resizeLineStripArrays(int numPoints, int numStrips);

    // Triangle strips and fans: a further description of the same surface, for drawing
    int getNumTriStrips() const { return m_triStripLengths.size(); }
    int getNumTriStripPoints() const { return m_triStripPoints.size(); }
    int* getTriStripLengths() { return m_triStripLengths.write(); }
    const int* getTriStripLengths() const { return m_triStripLengths.read(); }
    int* getTriStripPoints() { return m_triStripPoints.write(); }
    const int* getTriStripPoints() const { return m_triStripPoints.read(); }
    void resizeTriStripArrays(int numPoints, int numStrips);
    int getNumTriFans() const { return m_triFanLengths.size(); }
    int getNumTriFanPoints() const { return m_triFanPoints.size(); }
    int* getTriFanLengths() { return m_triFanLengths.write(); }
    const int* getTriFanLengths() const { return m_triFanLengths.read(); }
    int* getTriFanPoints() { return m_triFanPoints.write(); }
    const int* getTriFanPoints() const { return m_triFanPoints.read(); }
    void resizeTriFanArrays(int numPoints, int numFans);

    // Polygons: the faces as they were before triangulation. The number of corners of each, all corners in one flat
    // array, and two optional arrays with one entry per polygon.
    int getNumPolys() const { return m_polyLengths.size(); }
    int getNumPolyPoints() const { return m_polyPoints.size(); }
    int* getPolyLengths() { return m_polyLengths.write(); }
    const int* getPolyLengths() const { return m_polyLengths.read(); }
    int* getPolyPoints() { return m_polyPoints.write(); }
    const int* getPolyPoints() const { return m_polyPoints.read(); }
    /// Sets the sizes and releases the two optional arrays.
    void resizePolyArrays(int numPoints, int numPolys);
    /// The same with the contents of two arrays, which are empty then: nothing is copied unless the mesh has an
    /// allocator.
    void takePolys(Array<int>& points, Array<int>& lengths);
    /// Which material and which smoothing group a polygon has, as the application numbers them; null while absent.
    void allocPolyMaterialArray();
    int* getPolyMaterials() { return m_polyMaterials.write(); }
    const int* getPolyMaterials() const { return m_polyMaterials.read(); }
    void allocPolyGroupArray();
    int* getPolyGroups() { return m_polyGroups.write(); }
    const int* getPolyGroups() const { return m_polyGroups.read(); }

private:
    void resizeTriangleNormals();
    /// Calls `visit` with each array of this mesh and the same array of another.
    template <typename Mesh, typename Visit>
    static void forEachArray(CompactMesh& mesh, Mesh& other, const Visit& visit);

    Array<MeshTriangle> m_triangles;
    Array<MeshNormal> m_triangleNormals;
    BitVector m_selectedTriangles;
    Array<MeshLine> m_lines;
    Array<int> m_lineStripLengths, m_lineStripPoints;
    Array<int> m_triStripLengths, m_triStripPoints;
    Array<int> m_triFanLengths, m_triFanPoints;
    Array<int> m_polyLengths, m_polyPoints, m_polyMaterials, m_polyGroups;
};

/// A mesh whose vertices lie on a grid, row by row.
class ZNGEOM_API GridMesh : public CompactMesh
{
public:
    GridMesh() = default;
    GridMesh(int columns, int rows) { setGridDimensions(columns, rows); }

    /// Vertices per row and number of rows; sizes the vertex array to their product.
    void setGridDimensions(int columns, int rows);
    /// Exchanges all content and the dimensions.
    void swap(GridMesh& other);
    int getNumColumns() const { return m_columns; }
    int getNumRows() const { return m_rows; }

private:
    int m_columns = 0, m_rows = 0;
};

} // namespace znGeom
