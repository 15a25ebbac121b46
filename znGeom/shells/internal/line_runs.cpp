#include "znGeom/shells/internal/line_runs.h"

#include <utility>

#include "znGeom/foundation/containers/disjoint_sets.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

constexpr double mostMoved = 2;     ///< in tolerances, from one sample to the next
constexpr double mostMovedBack = 1; ///< the other way
constexpr double longestTip = 6;    ///< in tolerances, round the end of a slit, both sides together
constexpr double mostCosineOfCorner = 0.8;
constexpr double longestDrift = 2;       ///< in tolerances, beyond the end of what coincides
constexpr double longestGap = 2;         ///< in tolerances
constexpr double mostCosineOfGap = 0.97; ///< where two pairs are brought together on a strip
constexpr double leastOpen = 0.25;       ///< in tolerances, of a side that is left out between two that coincide
constexpr int leastSamples = 3;
constexpr double leastShare = 0.25, mostExcess = 4;

/// A sample with the sample beside it.
struct Rung
{
    int own, twin;
    bool isCoincident = false;
};

/// Consecutive samples with those beside them.
struct Run
{
    zn::vector<Rung> rungs;
    bool isForward;
    bool isWhole; ///< the last one is followed by the first one
    double length;
    double nearLength; ///< the length, less for what is further apart: up to half
};

/// Links each match with the one that continues it at the next sample.
class RunFinder
{
public:
    RunFinder(const LineStrips& strips, const LineMatches& matches, double tolerance)
        : m_strips(strips), m_matches(matches), m_tolerance(tolerance), m_next(matches.size(), -1),
          m_sampleOf(matches.size()), m_hasPrev(matches.size(), false)
    {}

    zn::vector<Run> find()
    {
        linkAll();
        zn::vector<Run> runs;
        zn::vector<bool> isDone(m_matches.size(), false);
        for (const bool wholes : {false, true})
            for (int first = 0; first < m_matches.size(); ++first)
                if (!isDone[first] && (wholes || !m_hasPrev[first])) runs.append(follow(first, wholes, isDone));
        std::stable_sort(runs.begin(), runs.end(),
                         [](const Run& a, const Run& b) { return a.nearLength > b.nearLength; });
        return runs;
    }

private:
    void linkAll()
    {
        for (int sample = 0; sample < m_strips.size(); ++sample) {
            const int next = m_strips.next(sample);
            const auto after = m_matches.of(next);
            for (int match = m_matches.first(sample); match < m_matches.first(sample + 1); ++match) {
                m_sampleOf[match] = sample;
                for (std::size_t i = 0; i < after.size(); ++i) {
                    if (!continues(m_matches[match], after[i])) continue;
                    m_next[match] = m_matches.first(next) + static_cast<int>(i);
                    m_hasPrev[m_next[match]] = true;
                }
            }
        }
    }

    bool continues(const LineMatch& match, const LineMatch& after) const
    {
        if (!after.isAlong(match)) return false;
        const double length = m_strips.length(match.strip);
        double moved = match.isForward ? after.arc - match.arc : match.arc - after.arc;
        if (moved > length / 2) moved -= length;
        if (moved < -length / 2) moved += length;
        return moved >= -mostMovedBack * m_tolerance && moved <= mostMoved * m_tolerance;
    }

    Run follow(int first, bool isWhole, zn::vector<bool>& isDone) const
    {
        Run run{{}, m_matches[first].isForward, isWhole, 0, 0};
        double apart = 0;
        for (int match = first; match >= 0 && !isDone[match]; match = m_next[match]) {
            isDone[match] = true;
            const int sample = m_sampleOf[match];
            if (isWhole || m_next[match] >= 0) run.length += m_strips.segmentLength(sample);
            run.rungs.append({sample, m_matches[match].nearest, m_matches[match].coincides(m_tolerance)});
            apart += std::sqrt(m_matches[match].distance2);
        }
        run.nearLength = run.length * (1 - apart / run.rungs.size() / m_tolerance / 2);
        return run;
    }

    const LineStrips& m_strips;
    const LineMatches& m_matches;
    double m_tolerance;
    zn::vector<int> m_next; ///< per match; -1 at the end of a run
    zn::vector<int> m_sampleOf;
    zn::vector<bool> m_hasPrev;
};

/// Gives the segments of strips to runs.
class RunPairing
{
public:
    RunPairing(const LineStrips& strips, const LineMatches& matches, double tolerance)
        : m_strips(strips), m_matches(matches), m_tolerance(tolerance), m_isTaken(strips.size(), false),
          m_isEnd(strips.size(), false)
    {}

    void add(const Run& run)
    {
        if (run.isWhole && addWhole(run)) return;
        // What is left of the run, piece by piece.
        for (int begin = 0; begin + 1 < run.rungs.size();) {
            int end = begin;
            while (end + 1 < run.rungs.size() && isFree(run, end)) ++end;
            if (end > begin) addPiece(run, begin, end);
            begin = std::max(end, begin + 1);
        }
    }

    /// Brings together what ends and begins near each other on a strip, at the sharpest sample in between: there are
    /// corners of several surfaces. Where just two others end along a straight stretch, the gap stays.
    void closeGaps()
    {
        for (const Gap& gap : gaps())
            if (isSharp(gap)) close(gap);
        const zn::vector<Gap> left = gaps();
        zn::DisjointSets places(m_strips.size());
        for (const LinePair& pair : m_pairs) {
            places.unite(pair.own.first, pair.isForward ? pair.twin.first : pair.twin.last);
            places.unite(pair.own.last, pair.isForward ? pair.twin.last : pair.twin.first);
        }
        for (const Gap& gap : left) places.unite(gap.before->last, gap.after->first);
        zn::vector<int> numEnds(m_strips.size(), 0);
        for (int sample = 0; sample < m_strips.size(); ++sample) numEnds[places.find(sample)] += m_isEnd[sample];
        constexpr int ofTwoAlongOne = 4;
        for (const Gap& gap : left)
            if (numEnds[places.find(gap.before->last)] > ofTwoAlongOne) close(gap);
    }

    const zn::vector<LinePair>& pairs() const { return m_pairs; }

private:
    /// The samples of the other side, walked forward, from one rung to the next.
    std::pair<int, int> acrossFrom(const Run& run, int rung) const
    {
        const int from = run.rungs[rung].twin, to = run.rungs[rung + 1].twin;
        const int strip = m_strips.strip(from);
        // A step back, against the sense of the run, covers nothing.
        const double forward = m_strips.wayForward(strip, m_strips.arc(from), m_strips.arc(to));
        const bool isAhead = (2 * forward <= m_strips.length(strip)) == run.isForward;
        if (!isAhead) return {from, from};
        return run.isForward ? std::pair(from, to) : std::pair(to, from);
    }

    bool isFree(const Run& run, int rung) const
    {
        const auto [from, to] = acrossFrom(run, rung);
        return !m_isTaken[run.rungs[rung].own] && isFree(from, to);
    }

    bool isFree(int from, int to) const
    {
        for (int i = from; i != to; i = m_strips.next(i))
            if (m_isTaken[i]) return false;
        return true;
    }

    void take(int from, int to)
    {
        for (int i = from; i != to; i = m_strips.next(i)) m_isTaken[i] = true;
    }

    void takeStrip(int strip) { std::fill_n(m_isTaken.begin() + m_strips.first(strip), m_strips.count(strip), true); }

    bool isStripFree(int strip) const
    {
        const bool* const first = m_isTaken.begin() + m_strips.first(strip);
        return std::none_of(first, first + m_strips.count(strip), [](bool isTaken) { return isTaken; });
    }

    /// Pairs two strips as wholes, if the run goes round the other one once.
    bool addWhole(const Run& run)
    {
        const Rung& first = run.rungs[0];
        const int own = m_strips.strip(first.own), twin = m_strips.strip(first.twin);
        if (own == twin || !isStripFree(own) || !isStripFree(twin)) return false;
        double moved = 0;
        for (int i = 0; i < run.rungs.size(); ++i) {
            const double from = m_strips.arc(run.rungs[i].twin);
            const double to = m_strips.arc(run.rungs[(i + 1) % run.rungs.size()].twin);
            const double way = m_strips.wayForward(twin, from, to);
            const double signedWay = 2 * way > m_strips.length(twin) ? way - m_strips.length(twin) : way;
            moved += run.isForward ? signedWay : -signedWay;
        }
        const bool goesRoundOnce = std::fabs(moved - m_strips.length(twin)) < m_strips.length(twin) / 2;
        if (!goesRoundOnce || !isBalanced(m_strips.length(own), m_strips.length(twin), m_tolerance) ||
            std::min(m_strips.count(own), m_strips.count(twin)) < leastSamples)
            return false;
        takeStrip(own);
        takeStrip(twin);
        m_pairs.append({{first.own, first.own, true}, {first.twin, first.twin, true}, run.isForward, run.length});
        return true;
    }

    bool isBalanced(double own, double twin, double least) const
    {
        return own >= least && twin >= least && twin >= leastShare * own && twin <= own + mostExcess * m_tolerance;
    }

    void addPiece(const Run& run, int begin, int end)
    {
        begin = innerEnd(run, begin, end, 1);
        end = innerEnd(run, end, begin, -1);
        if (comesRound(run, begin, end)) {
            // Both ends would be one point, between which and itself there is no path.
            addInner(run, begin, (begin + end) / 2);
            begin = (begin + end) / 2;
        }
        addInner(run, begin, end);
    }

    /// Whether the way on from the end of a piece to its beginning is no more than a gap, on one side or the other.
    bool comesRound(const Run& run, int begin, int end) const
    {
        const Rung &first = run.rungs[begin], &last = run.rungs[end];
        const LineStretch own{last.own, first.own};
        const LineStretch twin =
            run.isForward ? LineStretch{last.twin, first.twin} : LineStretch{first.twin, last.twin};
        return std::min(lengthOf(own), lengthOf(twin)) <= longestGap * m_tolerance;
    }

    void addInner(const Run& run, int begin, int end)
    {
        if (begin >= end) return;
        const Rung first = run.rungs[begin], last = run.rungs[end];
        const Rung movedFirst = movedEnd(run, first, first.twin, first.own);
        const Rung movedLast = movedEnd(run, last, last.own, last.twin);
        // What an end would move on to may be taken.
        addPair(run, movedFirst, movedLast) || addPair(run, movedFirst, last) || addPair(run, first, movedLast) ||
            addPair(run, first, last);
    }

    /// \param from, to  the way round from one side of the run to the other, if both are on one strip
    Rung movedEnd(const Run& run, const Rung& end, int from, int to) const
    {
        if (m_strips.strip(end.own) == m_strips.strip(end.twin) && !run.isForward)
            if (const int tip = tipBetween(from, to); tip >= 0) return {tip, tip};
        return end.isCoincident ? end : atCorners(end);
    }

    /// From an end of a run inward: where the two sides begin to coincide, or else the nearest of the same.
    int innerEnd(const Run& run, int from, int to, int step) const
    {
        constexpr int leastCoincident = 3;
        int numCoincident = 0;
        const double arc = m_strips.arc(run.rungs[from].own);
        for (int i = from; i != to + step; i += step) {
            const Rung& rung = run.rungs[i];
            const double way = m_strips.wayBetween(m_strips.strip(rung.own), arc, m_strips.arc(rung.own));
            if (numCoincident == 0 && way > longestDrift * m_tolerance) break;
            numCoincident = rung.isCoincident ? numCoincident + 1 : 0;
            if (numCoincident == leastCoincident) return i - (leastCoincident - 1) * step;
        }
        return nearestOfSame(run, from, to, step);
    }

    /// From an end of a run inward: of the rungs that share a sample of the other side the shortest.
    int nearestOfSame(const Run& run, int from, int to, int step) const
    {
        int nearest = from;
        for (int i = from; i != to + step && run.rungs[i].twin == run.rungs[from].twin; i += step)
            if (lengthOf(run.rungs[i]) < lengthOf(run.rungs[nearest])) nearest = i;
        return nearest;
    }

    /// A short way on a strip from the end of one stretch to the beginning of the next.
    struct Gap
    {
        LineStretch* before;
        LineStretch* after;
    };

    zn::vector<Gap> gaps()
    {
        zn::vector<LineStretch*> stretches;
        for (LinePair& pair : m_pairs)
            for (LineStretch* const stretch : {&pair.own, &pair.twin})
                if (!stretch->isWhole) stretches.append(stretch);
        std::sort(stretches.begin(), stretches.end(),
                  [](const LineStretch* a, const LineStretch* b) { return a->first < b->first; });
        std::fill(m_isEnd.begin(), m_isEnd.end(), false);
        for (const LineStretch* const stretch : stretches) m_isEnd[stretch->first] = m_isEnd[stretch->last] = true;
        zn::vector<Gap> found;
        for (int begin = 0, end = 0; begin < stretches.size(); begin = end) {
            while (end < stretches.size() &&
                   m_strips.strip(stretches[end]->first) == m_strips.strip(stretches[begin]->first))
                ++end;
            for (int i = begin; i < end; ++i) {
                const Gap gap{stretches[i], stretches[i + 1 < end ? i + 1 : begin]};
                if (gap.before->last != gap.after->first && !isOpenSide(gap) &&
                    lengthOf(wayOver(gap)) <= longestGap * m_tolerance)
                    found.append(gap);
            }
        }
        return found;
    }

    /// Whether between two places up to which a strip coincides with others it coincides with nothing.
    bool isOpenSide(const Gap& gap) const
    {
        int sample = gap.before->last;
        if (!coincides(sample) || !coincides(gap.after->first)) return false;
        while ((sample = m_strips.next(sample)) != gap.after->first)
            if (coincides(sample)) return false;
        return lengthOf(wayOver(gap)) >= leastOpen * m_tolerance;
    }

    bool coincides(int sample) const
    {
        const auto matches = m_matches.of(sample);
        return std::any_of(matches.begin(), matches.end(),
                           [this](const LineMatch& match) { return match.coincides(m_tolerance); });
    }

    static LineStretch wayOver(const Gap& gap) { return {gap.before->last, gap.after->first}; }

    int sharpest(const Gap& gap) const
    {
        const LineStretch way = wayOver(gap);
        int sharpest = way.first;
        for (int i = way.first; i != way.last; i = m_strips.next(i))
            if (cosineAt(m_strips.next(i)) < cosineAt(sharpest)) sharpest = m_strips.next(i);
        return sharpest;
    }

    bool isSharp(const Gap& gap) const
    {
        const LineStretch way = wayOver(gap);
        return m_strips.next(way.first) == way.last ||
               (lengthOf(way) <= m_tolerance && cosineAt(sharpest(gap)) < mostCosineOfGap);
    }

    void close(const Gap& gap) { gap.before->last = gap.after->first = sharpest(gap); }

    double lengthOf(const Rung& rung) const { return distance(m_strips.points[rung.own], m_strips.points[rung.twin]); }

    double lengthOf(const LineStretch& stretch) const
    {
        return m_strips.wayForward(m_strips.strip(stretch.first), m_strips.arc(stretch.first),
                                   m_strips.arc(stretch.last));
    }

    /// Moves the end of a run to the corners that are there, of both strips or of one.
    Rung atCorners(const Rung& end) const
    {
        const int own = cornerNear(end.own), twin = cornerNear(end.twin);
        for (const Rung& moved :
             {Rung{own, twin}, Rung{own, nearestTo(own, end.twin)}, Rung{nearestTo(twin, end.own), twin}})
            if (moved.own >= 0 && moved.twin >= 0 && lengthOf(moved) < m_tolerance) return moved;
        return end;
    }

    /// The sample with the sharpest turn within a tolerance along the strip, one where another pair ends before others;
    /// -1 where none is sharp.
    int cornerNear(int sample) const
    {
        int corner = -1;
        double least = mostCosineOfCorner;
        forEachNear(sample, [&](int near) {
            const double cosine = cosineAt(near);
            if (!(cosine < mostCosineOfCorner)) return;
            const double rank = m_isEnd[near] ? cosine - 2 : cosine;
            if (!(rank < least)) return;
            least = rank;
            corner = near;
        });
        return corner;
    }

    /// The sample near another one that is nearest to a sample of the other side; -1 without that.
    int nearestTo(int other, int sample) const
    {
        if (other < 0) return -1;
        int nearest = sample;
        forEachNear(sample, [&](int near) {
            if (lengthOf(Rung{near, other}) < lengthOf(Rung{nearest, other})) nearest = near;
        });
        return nearest;
    }

    /// Visits a sample and those within a tolerance along the strip, the near ones first.
    template <typename Visit>
    void forEachNear(int sample, const Visit& visit) const
    {
        visit(sample);
        for (const bool forward : {true, false}) {
            double way = 0;
            for (int i = sample;;) {
                way += m_strips.segmentLength(forward ? i : m_strips.prev(i));
                i = m_strips.step(i, forward);
                if (!(way < m_tolerance) || i == sample) break;
                visit(i);
            }
        }
    }

    /// The cosine of the turn at a sample, between what lies half a tolerance before it and after it. Where that makes
    /// no difference, as along a slit, the segments at the sample itself decide.
    double cosineAt(int sample) const
    {
        constexpr double shareOfSegments = 0.05;
        return (1 - shareOfSegments) * cosineBetween(walk(sample, false), sample, walk(sample, true)) +
               shareOfSegments * cosineBetween(m_strips.prev(sample), sample, m_strips.next(sample));
    }

    double cosineBetween(int before, int sample, int after) const
    {
        const Normal into(m_strips.points[sample] - m_strips.points[before]);
        const Normal out(m_strips.points[after] - m_strips.points[sample]);
        return into.isValid() && out.isValid() ? dot(into, out) : 1;
    }

    int walk(int sample, bool forward) const
    {
        double way = 0;
        int i = sample;
        while (way < m_tolerance / 2) {
            way += m_strips.segmentLength(forward ? i : m_strips.prev(i));
            i = m_strips.step(i, forward);
            if (i == sample) break;
        }
        return i;
    }

    /// Where both sides of a run on one strip meet, if the way round from one to the other is short; -1 otherwise.
    int tipBetween(int from, int to) const
    {
        const int strip = m_strips.strip(from);
        const double way = m_strips.wayForward(strip, m_strips.arc(from), m_strips.arc(to));
        if (way > longestTip * m_tolerance || !isFree(from, to)) return -1;
        int middle = from;
        double along = 0;
        while (middle != to && along + m_strips.segmentLength(middle) / 2 < way / 2) {
            along += m_strips.segmentLength(middle);
            middle = m_strips.next(middle);
        }
        const int corner = cornerNear(middle);
        return corner >= 0 && isBetween(corner, from, to) ? corner : middle;
    }

    bool isBetween(int sample, int from, int to) const
    {
        return m_strips.numBetween(from, sample) <= m_strips.numBetween(from, to);
    }

    /// \return false where something of it is taken already, or it is too short
    bool addPair(const Run& run, const Rung& first, const Rung& last)
    {
        const LineStretch own{first.own, last.own};
        const LineStretch twin =
            run.isForward ? LineStretch{first.twin, last.twin} : LineStretch{last.twin, first.twin};
        const double length = lengthOf(own);
        const bool isLong = m_strips.numBetween(own.first, own.last) >= leastSamples &&
                            m_strips.numBetween(twin.first, twin.last) >= leastSamples;
        const double least = first.isCoincident && last.isCoincident ? 0 : m_tolerance;
        if (!isLong || !isBalanced(length, lengthOf(twin), least) || !isFree(own.first, own.last)) return false;
        take(own.first, own.last);
        if (!isFree(twin.first, twin.last)) {
            release(own.first, own.last);
            return false;
        }
        take(twin.first, twin.last);
        for (const Rung& end : {first, last}) {
            m_isEnd[end.own] = m_isEnd[end.twin] = true;
        }
        m_pairs.append({own, twin, run.isForward, length});
        return true;
    }

    void release(int from, int to)
    {
        for (int i = from; i != to; i = m_strips.next(i)) m_isTaken[i] = false;
    }

    const LineStrips& m_strips;
    const LineMatches& m_matches;
    double m_tolerance;
    zn::vector<bool> m_isTaken; ///< per segment
    zn::vector<bool> m_isEnd;   ///< per sample, whether a pair begins or ends there
    zn::vector<LinePair> m_pairs;
};

} // namespace

zn::vector<LinePair> pairLineRuns(const LineStrips& strips, const LineMatches& matches, const LineMatches& mutual,
                                  double tolerance)
{
    RunPairing pairing(strips, matches, tolerance);
    for (const Run& run : RunFinder(strips, mutual, tolerance).find()) pairing.add(run);
    pairing.closeGaps();
    return pairing.pairs();
}

} // namespace znGeom::internal
