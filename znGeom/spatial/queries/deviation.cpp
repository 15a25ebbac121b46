#include "znGeom/spatial/queries/deviation.h"

#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/spatial/queries/closest_point.h"

namespace znGeom {

using namespace znLinear;
using znUtil::Slice;
using znUtil::ThreadPool;

class MeshDeviationImpl final : public znUtil::ThreadedAlg, public zn::ImplBase
{
public:
    MeshDeviationImpl(const CompactMesh& target, const AffineMatrix& targetMatrix, const Octree& octree,
                      const OctreeTris& octreeTris, const TriangleTree* tree, znUtil::Progress& progress)
        : m_targetMatrix(targetMatrix), m_inverseTargetMatrix(targetMatrix.inverse()), m_target(target),
          m_octree(octree), m_octreeTris(octreeTris), m_tree(tree)
    {
        setProgress(&progress);
    }

    void calculate(const CompactMesh& source, const AffineMatrix& sourceMatrix, float* output, bool selectedOnly,
                   bool reverseSign, ThreadPool& pool)
    {
        znOS::StopWatch watch;
        m_source = &source;
        m_output = output;
        m_selection =
            selectedOnly && source.getSelectedVertices().getSize() > 0 ? &source.getSelectedVertices() : nullptr;
        m_reverseSign = reverseSign;
        m_sourceToTarget = sourceMatrix * m_inverseTargetMatrix;
        bool regular;
        m_normalMatrix = sourceMatrix.normalMatrix(regular);
        if (!m_tree && !cancelled(0) && isTreeWorthwhile()) {
            m_ownTree = new TriangleTree(m_target, pool);
            m_tree = m_ownTree.get();
        }
        pool.run(*this);
        debugChannel().print("   meshDeviation: %f s\n", watch.clear());
    }

    void execute(int threadIndex, int numThreads) override
    {
        constexpr int verticesPerLook = 200;
        znOS::StopWatch watch;
        const Slice slice(m_source->getNumVertices(), threadIndex, numThreads);
        MeshClosestPoint closest = m_tree ? MeshClosestPoint(m_target, m_octree, m_octreeTris, *m_tree)
                                          : MeshClosestPoint(m_target, m_octree, m_octreeTris);
        for (int vertex = slice.begin; vertex < slice.end; ++vertex) {
            const int done = vertex - slice.begin;
            if (done % verticesPerLook == 0) {
                if (cancelled(threadIndex)) break;
                updateProgress(threadIndex, static_cast<double>(done) / slice.size());
            }
            m_output[vertex] = isLeftOut(vertex) ? MeshDeviation::notMeasured : measure(vertex, closest);
        }
        debugChannel().print("   meshDeviation thread time: %d %f \n", threadIndex, watch.clear());
    }

private:
    /// Each query costs a walk some hundred times as much as each triangle costs a tree.
    bool isTreeWorthwhile() const
    {
        const int numMeasured = m_selection ? m_selection->getNumSetBits() : m_source->getNumVertices();
        return numMeasured > m_target.getNumTriangles() / 50;
    }

    bool isLeftOut(int vertex) const
    {
        return m_selection && (vertex >= m_selection->getSize() || !(*m_selection)[vertex]);
    }

    float measure(int vertex, MeshClosestPoint& closest) const
    {
        const Point point = m_source->getVertices()[vertex].asPoint() * m_sourceToTarget;
        MeshCoord coord;
        const double distance = closest.compute(point, &coord);
        if (!coord.valid()) return narrow(distance);
        const Vector way = (point - coord.evaluate(m_target.getVertices(), m_target.getTriangles())) * m_targetMatrix;
        double result = way.length();
        const MeshNormal* const normals = m_source->getNormals();
        if (normals && dot(way, normals[vertex].asVector() * m_normalMatrix) < 0) result = -result;
        return narrow(m_reverseSign ? -result : result);
    }

    const CompactMesh* m_source = nullptr;
    AffineMatrix m_sourceToTarget;
    AffineMatrix m_targetMatrix, m_inverseTargetMatrix;
    AffineMatrix m_normalMatrix;
    const CompactMesh& m_target;
    const Octree& m_octree;
    const OctreeTris& m_octreeTris;
    const TriangleTree* m_tree;
    zn::Reference<TriangleTree> m_ownTree;
    float* m_output = nullptr;
    const BitVector* m_selection = nullptr; ///< null measures all vertices
    bool m_reverseSign = false;
};

MeshDeviation::MeshDeviation(const CompactMesh& target, const AffineMatrix& targetMatrix, const Octree& octree,
                             const OctreeTris& octreeTris, znUtil::Progress& progress)
    : m_impl(new MeshDeviationImpl(target, targetMatrix, octree, octreeTris, nullptr, progress))
{}

MeshDeviation::MeshDeviation(const CompactMesh& target, const AffineMatrix& targetMatrix, const Octree& octree,
                             const OctreeTris& octreeTris, const TriangleTree& tree, znUtil::Progress& progress)
    : m_impl(new MeshDeviationImpl(target, targetMatrix, octree, octreeTris, &tree, progress))
{}

void MeshDeviation::calculate(const CompactMesh* source, const AffineMatrix& sourceMatrix, float* output,
                              bool selectedOnly, bool reverseSign, ThreadPool& pool)
{
    m_impl->calculate(*source, sourceMatrix, output, selectedOnly, reverseSign, pool);
}

} // namespace znGeom
