#include "znGeom/spatial/trees/internal/halving_order.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/spatial/trees/internal/float4.h"

namespace znGeom::internal {

namespace {

constexpr int perLeaf = 8;

/// Up to this many records are put in place by their ranks.
constexpr int rankedCount = 128;

static_assert(sizeof(PointRecord) == sizeof(Float4));

int longestAxis(const PointRecord* records, int count)
{
    // The fourth number of each is not a coordinate; nothing reads it.
    Float4 low = loadFloat4(records[0].at), high = low;
    for (int i = 1; i < count; ++i) {
        const Float4 at = loadFloat4(records[i].at);
        low = lesser(at, low);
        high = greater(at, high);
    }
    const Float4 sides = high - low;
    return sides[0] >= sides[1] && sides[0] >= sides[2] ? 0 : sides[1] >= sides[2] ? 1 : 2;
}

/// Sorts a few records along an axis: the place of each is the number of those that come before it.
void sortByRanks(const PointRecord* from, PointRecord* to, int count, int axis)
{
    float keys[rankedCount];
    int ranks[rankedCount];
    for (int i = 0; i < count; ++i) keys[i] = from[i].at[axis];
    std::fill_n(ranks, count, 0);
    for (int j = 0; j < count; ++j) {
        const float key = keys[j];
        for (int i = 0; i < count; ++i) ranks[i] += (key < keys[i]) | ((key == keys[i]) & (j < i));
    }
    for (int i = 0; i < count; ++i) to[ranks[i]] = from[i];
}

/// Two keys between which the record of a rank very likely lies: those of an evenly spaced sample that are twice the
/// spread of such an estimate away on either side.
std::pair<float, float> bracket(const PointRecord* records, int count, int rank, int axis)
{
    constexpr int fewest = 31, most = 255;
    float sample[most];
    const int size = std::clamp(count / 32, fewest, most);
    const double step = static_cast<double>(count) / size;
    for (int i = 0; i < size; ++i) sample[i] = records[static_cast<int>(i * step)].at[axis];
    std::sort(sample, sample + size);
    const int place = static_cast<int>(static_cast<double>(rank) / count * size);
    const int spread = static_cast<int>(std::sqrt(size)) + 1;
    const float infinity = std::numeric_limits<float>::infinity();
    return {place - spread < 0 ? -infinity : sample[place - spread],
            place + spread >= size ? infinity : sample[place + spread]};
}

/// Brings the first `rank` records along an axis to the front of `to`. `from` is used up.
void splitAtRank(PointRecord* from, PointRecord* to, int count, int rank, int axis)
{
    while (count > rankedCount) {
        const auto [low, high] = bracket(from, count, rank, axis);
        // Each record is written to all three ends, and one of the ends advances. What lies between is collected where
        // records have already been consumed.
        PointRecord *below = to, *above = to + count, *between = from;
        for (int i = 0; i < count; ++i) {
            const PointRecord record = from[i];
            const float key = record.at[axis];
            const bool isBelow = key<low, isAbove = key> high;
            *below = record;
            above[-1] = record;
            *between = record;
            below += isBelow;
            above -= isAbove;
            between += !isBelow & !isAbove;
        }
        const int numBelow = static_cast<int>(below - to), numBetween = static_cast<int>(between - from);
        if (rank < numBelow || rank > numBelow + numBetween || numBetween > count / 2) {
            std::copy(from, between, below);
            std::nth_element(to, to + rank, to + count,
                             [axis](const PointRecord& a, const PointRecord& b) { return a.at[axis] < b.at[axis]; });
            return;
        }
        to = below;
        count = numBetween;
        rank -= numBelow;
    }
    sortByRanks(from, to, count, axis);
}

/// A run of records that stays together: where they are, and where there is room for as many.
struct Run
{
    PointRecord *records, *scratch;
    int begin, count; ///< in the order
    int unit;         ///< what the largest subtrees in it hold; it may be halved at multiples of this

    Run shrunk() const
    {
        Run run = *this;
        while (run.unit >= run.count && run.unit > perLeaf) run.unit /= 8;
        return run;
    }
    bool isLeaf() const { return count <= perLeaf; }
    /// Requires a run that is shrunk and not a leaf.
    std::pair<Run, Run> halve() const
    {
        const int numUnits = (count - 1) / unit + 1, rank = numUnits / 2 * unit;
        splitAtRank(records, scratch, count, rank, longestAxis(records, count));
        return {Run{scratch, records, begin, rank, unit},
                Run{scratch + rank, records + rank, begin + rank, count - rank, unit}};
    }
};

/// Halves down to the leaves. Recurses as deep as the run has halvings.
void finish(const Run& given, int* order)
{
    const Run run = given.shrunk();
    if (run.isLeaf()) {
        for (int i = 0; i < run.count; ++i) order[run.begin + i] = run.records[i].number;
        return;
    }
    const auto [low, high] = run.halve();
    finish(low, order);
    finish(high, order);
}

class FinishRuns : public znUtil::ThreadedChunkAlg
{
public:
    FinishRuns(const zn::vector<Run>& runs, int* order) : m_runs(runs), m_order(order) {}
    void execute(int chunkIndex, int) override
    {
        const znUtil::Slice slice(m_runs.size(), chunkIndex, numChunks);
        for (int i = slice.begin; i < slice.end; ++i) finish(m_runs[i], m_order);
    }

private:
    const zn::vector<Run>& m_runs;
    int* m_order;
};

} // namespace

void orderByHalving(PointRecord* records, PointRecord* scratch, int count, int* order, znUtil::ThreadPool& pool)
{
    if (count < 1) return;
    constexpr int runsPerThread = 8, fewestInARun = 1 << 10;
    int unit = perLeaf;
    while (unit < count / 8) unit *= 8;
    zn::vector<Run> runs(1, Run{records, scratch, 0, count, unit});
    const int enough = pool.getNumThreads() > 1 ? runsPerThread * pool.getNumThreads() : 1;
    while (runs.size() < enough && count / runs.size() >= 2 * fewestInARun) {
        zn::vector<Run> halves;
        for (const Run& run : runs) {
            if (run.isLeaf()) {
                halves.append(run);
                continue;
            }
            const auto [low, high] = run.shrunk().halve();
            halves.append(low);
            halves.append(high);
        }
        runs.swap(halves);
    }
    FinishRuns loop(runs, order);
    pool.run(loop);
}

} // namespace znGeom::internal
