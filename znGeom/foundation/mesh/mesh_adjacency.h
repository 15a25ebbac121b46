/// The adjacency objects: connectivity as it was when they were built. They hold no reference to the mesh, and nothing
/// checks that they belong to the mesh passed beside them.
#pragma once

#include "znGeom/foundation/mesh/array_of_sets.h"

namespace znGeom {

/// For each vertex, the triangles that use it. Indices are trusted.
class ZNGEOM_API MeshAdjTris : public zn::ReferenceCount
{
public:
    MeshAdjTris() = default;
    /// Takes over the table, which is then empty.
    explicit MeshAdjTris(ArrayOfSets& table) { m_table.swap(table); }

    int getNumVertices() const { return m_table.getNumSets(); }
    int numTris(int vertex) const { return m_table.getSetSize(vertex); }
    const int* triIndices(int vertex) const { return m_table.getSet(vertex); }
    /// The triangles around a vertex, for `for (int triangle : adjTris.around(vertex))`.
    std::span<const int> around(int vertex) const { return m_table.members(vertex); }

    /// Copies the three corner indices of each triangle around `vertex`.
    /// \param out        room for three ints per triangle
    /// \param triangles  the mesh's raw triangle array
    void copyTriangles(int vertex, int* out, const int* triangles) const;

    /// The table itself, for loops that read it flat.
    const ArrayOfSets& table() const { return m_table; }

    void swap(MeshAdjTris& other) { m_table.swap(other.m_table); }

private:
    ArrayOfSets m_table;
};

/// For each triangle, the triangles across its edges. Indices are trusted.
class ZNGEOM_API MeshTriAdjTris : public zn::ReferenceCount
{
public:
    MeshTriAdjTris() = default;
    /// Takes over the table, which is then empty.
    explicit MeshTriAdjTris(ArrayOfSets& table) { m_table.swap(table); }

    int getNumTriangles() const { return m_table.getNumSets(); }
    int numTris(int triangle) const { return m_table.getSetSize(triangle); }
    const int* triIndices(int triangle) const { return m_table.getSet(triangle); }
    /// The triangles across the edges of a triangle.
    std::span<const int> around(int triangle) const { return m_table.members(triangle); }
    const ArrayOfSets& table() const { return m_table; }

    void swap(MeshTriAdjTris& other) { m_table.swap(other.m_table); }

private:
    ArrayOfSets m_table;
};

/// For each vertex, its neighbours. data[offsets[v]] is the number n of neighbours of v, followed by the n vertex
/// indices. The fields are read directly.
class ZNGEOM_API MeshAdjVertices : public zn::ReferenceCount
{
public:
    int numVertices = 0;
    int maxNeighbours = 0;  ///< the largest n
    int* offsets = nullptr; ///< one per vertex
    int* data = nullptr;

    MeshAdjVertices() = default;
    /// Takes over both blocks, which must come from `std::malloc`.
    MeshAdjVertices(int vertexCount, int maxNeighbourCount, int* offsetBlock, int* dataBlock)
        : numVertices(vertexCount), maxNeighbours(maxNeighbourCount), offsets(offsetBlock), data(dataBlock)
    {}
    MeshAdjVertices(const MeshAdjVertices&) = delete;
    MeshAdjVertices& operator=(const MeshAdjVertices&) = delete;
    ~MeshAdjVertices() override;

    int numNeighbours(int vertex) const { return data[offsets[vertex]]; }
    const int* neighbours(int vertex) const { return data + offsets[vertex] + 1; }
    /// The neighbours of a vertex, for `for (int neighbour : adjVertices.around(vertex))`.
    std::span<const int> around(int vertex) const
    {
        return {neighbours(vertex), static_cast<size_t>(numNeighbours(vertex))};
    }

    void swap(MeshAdjVertices& other);
};

/// A chosen part of a mesh. The arrays are read directly.
class ZNGEOM_API MeshSubset : public zn::ReferenceCount
{
public:
    int numVertices = 0;
    int numTriangles = 0;
    int* vertices = nullptr;
    int* triangles = nullptr;

    /// Copies the arrays; the caller keeps its own.
    MeshSubset(int vertexCount, const int* vertexIndices, int triangleCount, const int* triangleIndices);
    MeshSubset(const MeshSubset&) = delete;
    MeshSubset& operator=(const MeshSubset&) = delete;
    ~MeshSubset() override;
};

} // namespace znGeom
