#include "znGeom/shells/offset.h"

#include <algorithm>
#include <memory>

#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/normals.h"
#include "znGeom/editing/delete_selected.h"
#include "znGeom/editing/select.h"
#include "znGeom/scopes/modify_rep.h"
#include "znGeom/shells/internal/offset_nearness.h"
#include "znGeom/shells/internal/offset_pruning.h"
#include "znGeom/shells/internal/offset_shell.h"

namespace znGeom {

namespace {

BitVector all(int size)
{
    BitVector result(size);
    result.setAllBits();
    return result;
}

} // namespace

class MeshOffsetImpl final : public zn::ImplBase
{
public:
    MeshOffsetImpl(const CompactMesh& mesh, const Octree& octree, const MeshBoundaries& boundaries,
                   const MeshAdjTris& adjacency, double distance)
        : m_mesh(mesh), m_octree(octree), m_boundaries(boundaries), m_adjacency(adjacency), m_distance(distance)
    {}

    /// The shell, without normals. \param offsetIndices  may be null
    std::unique_ptr<CompactMesh> build(Array<int>& vertexRemap, Array<int>* offsetIndices)
    {
        auto result = std::make_unique<CompactMesh>(m_mesh);
        MeshModifyRep scope(*result, all(m_mesh.getNumTriangles()), all(m_mesh.getNumVertices()), m_adjacency);
        TopoMesh& topology = scope.extract();
        const internal::OffsetShell shell = internal::makeOffsetShell(topology, m_boundaries, m_distance);
        BitVector kept;
        prune(topology, shell, kept);
        ArrayMap<TopoMeshVertex, int> newIndices;
        scope.merge(vertexRemap, offsetIndices ? &newIndices : nullptr);
        if (!offsetIndices) return result;
        offsetIndices->resize(shell.size());
        for (int i = 0; i < shell.size(); ++i) offsetIndices->write()[i] = kept[i] ? newIndices[shell.copies[i]] : -1;
        return result;
    }

    /// Takes the source and the walls away from a shell.
    void keepCopyAlone(CompactMesh& shell, const Array<int>& vertexRemap) const
    {
        MeshAdjTris adjTris;
        meshAdjTris(shell, adjTris);
        MeshSelect select(shell, adjTris);
        BitVector& vertices = select.getSelectedVertices();
        vertices.clearBits();
        for (int i = 0; i < m_mesh.getNumVertices(); ++i) vertices.setBit(vertexRemap.read()[i]);
        select.selectAllTrianglesFromVertices();
        select.selectVerticesFromTriangles();
        MeshDeleteSelected deleteSelected(shell);
        deleteSelected();
    }

    MeshOffsetPruning pruning;
    double leastCosine = 0; ///< of the angle between a turned triangle and a normal of the mesh

private:
    void prune(TopoMesh& topology, const internal::OffsetShell& shell, BitVector& kept)
    {
        zn::vector<znLinear::Point> points(shell.size());
        std::transform(shell.copies.begin(), shell.copies.end(), points.begin(),
                       [](TopoMeshVertex copy) { return copy.point(); });
        const BitVector tooClose = internal::findTooClose(m_octree, points, m_distance);
        pruning = pruneOffset(topology, shell, tooClose, leastCosine, kept);
    }

    const CompactMesh& m_mesh;
    const Octree& m_octree;
    const MeshBoundaries& m_boundaries;
    const MeshAdjTris& m_adjacency;
    double m_distance;
};

MeshOffset::MeshOffset(const CompactMesh& mesh, const Octree& octree, const MeshBoundaries& boundaries,
                       const MeshAdjTris& adjacency, double distance)
    : m_impl(new MeshOffsetImpl(mesh, octree, boundaries, adjacency, distance))
{}
MeshOffset::MeshOffset(const MeshOffset& other) = default;
MeshOffset::MeshOffset(MeshOffset&& other) noexcept = default;
MeshOffset::~MeshOffset() = default;

CompactMesh* MeshOffset::calculate(bool shell)
{
    Array<int> vertexRemap;
    std::unique_ptr<CompactMesh> result = m_impl->build(vertexRemap, nullptr);
    if (!shell) m_impl->keepCopyAlone(*result, vertexRemap);
    meshComputeNormals(*result);
    return result.release();
}

CompactMesh* MeshOffset::calculate(Array<int>& vertexRemap, Array<int>& offsetIndices)
{
    std::unique_ptr<CompactMesh> result = m_impl->build(vertexRemap, &offsetIndices);
    meshComputeNormals(*result);
    return result.release();
}

void MeshOffset::setTurnedFrom(double cosine)
{
    m_impl->leastCosine = cosine >= 0 ? std::min(cosine, 1.0) : 0; // 0 for not-a-number, too
}

const MeshOffsetPruning& MeshOffset::pruning() const { return m_impl->pruning; }

} // namespace znGeom
