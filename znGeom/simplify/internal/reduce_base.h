/// The driver of the reductions that remove vertices.
#pragma once

#include <array>
#include <deque>
#include <vector>

#include "znGeom/cache/mesh_cache.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/threads/progress.h"
#include "znGeom/scopes/modify_rep.h"

namespace znGeom::internal {

using TrianglePoints = std::array<znLinear::Point, 3>;

/// Iterations, each over candidates that are no neighbours of one another, in batches that share a scope. What is
/// removed, and when it is enough, is up to the subclass.
class MeshReduceBase
{
public:
    explicit MeshReduceBase(CompactMesh& mesh);
    MeshReduceBase(const MeshReduceBase&) = delete;
    MeshReduceBase& operator=(const MeshReduceBase&) = delete;
    virtual ~MeshReduceBase();

    void run(znUtil::Progress& progress);

    /// In the order of removal; of attempts that were given up as well.
    const std::deque<znLinear::Point>& removed() const { return m_removed; }
    int iterations() const { return m_numIterations; }

protected:
    /// After each removal. \return false to end the batch
    virtual bool afterRemoval();
    virtual void beginIteration(int iteration, int candidateCount, znUtil::Progress& progress);
    virtual void endIteration();
    virtual void beginBatch(int batchSize, int candidateCount);
    virtual void endBatch();
    /// Whether a mesh of this many vertices is still too large.
    virtual bool wantsMore(int vertexCount) = 0;
    /// Whether the triangles may take the place of a vertex.
    virtual bool acceptRemoval(int vertexIndex, const std::vector<TrianglePoints>& triangles);
    virtual bool isCandidate(int vertexIndex);
    /// Before and after a batch is merged into the mesh.
    virtual void beforeMerge();
    virtual void afterMerge(const Array<int>& remap);

    CompactMesh& mesh() { return m_mesh; }
    SimpleMeshCache& cache() { return m_cache; }
    double flatness(int vertex) const { return m_flatness[vertex]; }
    int initialCount() const { return m_initialCount; }

private:
    void computeFlatness();
    zn::vector<int> orderByFlatness() const;
    std::deque<int> chooseCandidates(int count);
    int runIteration(std::deque<int>& queue, znUtil::Progress& progress);
    int runBatch(BitVector& batch, Array<int>& remap);
    void selectAround(const BitVector& batch, const MeshAdjTris& adjTris);
    int removeAll(MeshModifyRep& scope, BitVector& batch);

    CompactMesh& m_mesh;
    SimpleMeshCache m_cache;
    TopoMemory m_memory;      ///< for scope after scope
    Array<double> m_flatness; ///< by vertex
    std::deque<znLinear::Point> m_removed;
    int m_initialCount;
    int m_numIterations = 0;
};

} // namespace znGeom::internal
