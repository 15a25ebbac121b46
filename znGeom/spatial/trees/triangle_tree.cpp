#include "znGeom/spatial/trees/triangle_tree.h"

#include "znGeom/spatial/trees/internal/packed_triangles.h"

namespace znGeom {

using internal::PackedTriangles;

TriangleTree::TriangleTree(const CompactMesh& mesh, znUtil::ThreadPool& pool)
    : m_triangles(std::make_unique<PackedTriangles>(mesh, pool))
{}

TriangleTree::~TriangleTree() = default;

std::size_t TriangleTree::numBytes() const
{
    return sizeof *this + sizeof(PackedTriangles) +
           sizeof(internal::BoxGroup) * static_cast<std::size_t>(m_triangles->numNodes) +
           sizeof(PackedTriangles::Leaf) * static_cast<std::size_t>(m_triangles->numLeaves);
}

} // namespace znGeom
