#include "znGeom/simplify/reduce.h"

#include <algorithm>
#include <cmath>

#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/simplify/internal/reduce_base.h"
#include "znGeom/simplify/internal/reduce_tolerance.h"

namespace znGeom {

using internal::MeshReduceBase;
using internal::MeshReduceTolerance;
using znLinear::Point;
using znUtil::Progress;

namespace {

/// Stops at a number of vertices.
class MeshReduceFraction final : public MeshReduceBase
{
public:
    MeshReduceFraction(CompactMesh& reduced, int target) : MeshReduceBase(reduced), m_target(target) {}

private:
    static constexpr size_t removalsPerLook = 100;

    bool afterRemoval() override
    {
        if (removed().size() % removalsPerLook != 0) return true;
        if (m_progress->cancelled()) return false;
        const double done = static_cast<double>(removed().size()) / (initialCount() - m_target);
        if (done <= 1.0) m_progress->set(done);
        return true;
    }
    void beginIteration(int, int, Progress& progress) override { m_progress = &progress; }
    void endIteration() override { m_progress = nullptr; }
    bool wantsMore(int vertexCount) override { return vertexCount > m_target; }

    int m_target;
    Progress* m_progress = nullptr; ///< during an iteration
};

void runTo(MeshReduceBase& reduction, Progress& progress, zn::vector<Point>& removed)
{
    reduction.run(progress);
    for (const Point& point : reduction.removed()) removed.append(point);
    if (!progress.cancelled()) progress.set(1.0);
}

} // namespace

void meshReduceToFraction(CompactMesh& mesh, double fraction, Progress& progress, zn::vector<Point>& removed)
{
    const double part = fraction < 1 ? std::max(fraction, 0.0) : 1.0;
    MeshReduceFraction reduction(mesh, static_cast<int>(mesh.getNumVertices() * part));
    runTo(reduction, progress, removed);
}

double meshReduceWithTolerance(CompactMesh& mesh, double tolerance, Progress& progress, zn::vector<Point>& removed)
{
    znOS::StopWatch watch;
    MeshReduceTolerance reduction(mesh, tolerance);
    runTo(reduction, progress, removed);
    debugChannel().print("meshReduce: iterations(%d): %f s\n", reduction.iterations(), watch.stop());
    return reduction.greatestDeviation();
}

} // namespace znGeom
