/// The reduction that stays within a distance of all that it has removed.
#pragma once

#include "znGeom/foundation/mesh/array_of_sets.h"
#include "znGeom/simplify/internal/reduce_base.h"

namespace znGeom::internal {

/// Keeps for each triangle the removed points that it stands for: where it goes, its successors must be near them.
class MeshReduceTolerance final : public MeshReduceBase
{
public:
    MeshReduceTolerance(CompactMesh& reduced, double tolerance) : MeshReduceBase(reduced), m_tolerance(tolerance) {}

    double greatestDeviation() const { return m_greatestDeviation; }

private:
    void beginIteration(int iteration, int candidateCount, znUtil::Progress& progress) override;
    void endIteration() override;
    void beginBatch(int batchSize, int candidateCount) override;
    void endBatch() override;
    bool wantsMore(int) override { return true; }
    bool acceptRemoval(int vertexIndex, const std::vector<TrianglePoints>& triangles) override;
    bool isCandidate(int vertexIndex) override;
    void beforeMerge() override;
    void afterMerge(const Array<int>& remap) override;

    bool isNear(const znLinear::Point& point, const std::vector<TrianglePoints>& triangles) const;
    void keepAssignments(const Array<int>& remap, zn::vector<int>& triangleOf);
    void assignToNearest(zn::vector<int>& triangleOf);

    double m_tolerance;
    double m_greatestDeviation = 0;
    ArrayOfSets m_pointsOf; ///< by triangle the removed points that depend on it, by their numbers; empty at first
    zn::vector<MeshTriangle> m_oldTriangles; ///< while a batch is merged
    int m_previousCount = 0;                 ///< the candidates of the iteration before
    double m_expectedIterations = 0;
    double m_usedProgress = 0;
    znUtil::Progress m_iterationProgress, m_batchProgress;
};

} // namespace znGeom::internal
