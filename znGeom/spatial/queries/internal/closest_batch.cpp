#include "znGeom/spatial/queries/internal/closest_batch.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/foundation/threads/radix_sort.h"

namespace znGeom::internal {

using znLinear::Point;
using znUtil::KeyedIndex;
using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// The lowest ten bits, with two zeros before each.
std::uint32_t spreadBits(std::uint32_t bits)
{
    bits = (bits | bits << 16) & 0x030000FFu;
    bits = (bits | bits << 8) & 0x0300F00Fu;
    bits = (bits | bits << 4) & 0x030C30C3u;
    return (bits | bits << 2) & 0x09249249u;
}

struct PointRange
{
    double low[3] = {HUGE_VAL, HUGE_VAL, HUGE_VAL}, high[3] = {-HUGE_VAL, -HUGE_VAL, -HUGE_VAL};

    void extend(const Point& point)
    {
        for (int axis = 0; axis < 3; ++axis) {
            if (!std::isfinite(point[axis])) continue;
            low[axis] = std::min(low[axis], point[axis]);
            high[axis] = std::max(high[axis], point[axis]);
        }
    }
    /// After Morton (1966): neighbours in the order of these codes tend to be neighbours in space.
    std::uint32_t codeOf(const Point& point) const
    {
        std::uint32_t code = 0;
        for (int axis = 0; axis < 3; ++axis) {
            const double part = (point[axis] - low[axis]) / (high[axis] - low[axis]);
            // A range without length gives not-a-number.
            code |= spreadBits(static_cast<std::uint32_t>(part > 0 ? std::min(part * 1024, 1023.0) : 0.0)) << axis;
        }
        return code;
    }
};

zn::vector<KeyedIndex> nearbyOrder(const Point* points, int count, ThreadPool& pool)
{
    PointRange range;
    for (int i = 0; i < count; ++i) range.extend(points[i]);
    zn::vector<KeyedIndex> order(count), scratch(count);
    KeyedIndex* records = order.data();
    znUtil::parallelFor(pool, count, [&, records](Slice slice, int) {
        for (int i = slice.begin; i < slice.end; ++i) records[i] = {range.codeOf(points[i]), i};
    });
    znUtil::radixSort(records, scratch.data(), count, pool);
    return order;
}

class ComputeLoop : public znUtil::ThreadedAlg
{
public:
    ComputeLoop(const ClosestIndex& index, const ClosestQuestions& questions, const zn::vector<KeyedIndex>& order)
        : m_index(index), m_questions(questions), m_order(order)
    {}

    void execute(int threadIndex, int numThreads) override
    {
        constexpr int queriesPerLook = 256;
        const Slice slice(m_questions.count, threadIndex, numThreads);
        ClosestEngine engine(m_index);
        for (int i = slice.begin; i < slice.end; ++i) {
            if ((i - slice.begin) % queriesPerLook == 0) {
                if (cancelled(threadIndex)) return;
                updateProgress(threadIndex, static_cast<double>(i - slice.begin) / slice.size());
            }
            const int question = m_order[i].index;
            MeshCoord* const place = m_questions.places ? m_questions.places + question : nullptr;
            const double distance = engine.compute(m_questions.points[question], place);
            if (m_questions.distances) m_questions.distances[question] = distance;
        }
    }

private:
    const ClosestIndex& m_index;
    const ClosestQuestions& m_questions;
    const zn::vector<KeyedIndex>& m_order;
};

} // namespace

bool computeAll(const ClosestIndex& index, const ClosestQuestions& questions, znUtil::Progress* progress,
                ThreadPool& pool)
{
    const zn::vector<KeyedIndex> order = nearbyOrder(questions.points, questions.count, pool);
    ComputeLoop loop(index, questions, order);
    loop.setProgress(progress);
    pool.run(loop);
    if (progress && progress->cancelled()) return false;
    if (progress) progress->set(1.0);
    return true;
}

} // namespace znGeom::internal
