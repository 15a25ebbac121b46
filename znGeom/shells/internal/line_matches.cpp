#include "znGeom/shells/internal/line_matches.h"

#include <array>
#include <bit>
#include <cstdint>
#include <limits>

#include "znGeom/foundation/linear/line.h"
#include "znGeom/foundation/threads/counting_sort.h"
#include "znGeom/foundation/threads/parallel_reduce.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

constexpr double leastCosine = 0.5;
constexpr double leastWayOnOwnStrip = 4; ///< in tolerances

/// Consecutive segments of a strip taken together until they are a tenth of the tolerance long, or a hundredth where
/// the strip turns sharply then: what is shorter points wherever rounding leaves its ends, and there may be any number
/// of it within the tolerance. Strips that are shorter than the tolerance, or not finite, have no chords.
class Chords
{
public:
    Chords(const LineStrips& strips, double tolerance) : m_strips(strips), m_ofSamples(strips.size(), -1)
    {
        for (int strip = 0; strip < strips.numStrips(); ++strip) {
            const double length = strips.length(strip);
            if (!std::isfinite(length) || length < tolerance) continue;
            for (int i = strips.first(strip); i < strips.first(strip) + strips.count(strip); ++i) {
                if (i == strips.first(strip) || isFull(i, tolerance)) m_begins.append(i);
                m_ofSamples[i] = m_begins.size() - 1;
            }
        }
    }

    int size() const { return m_begins.size(); }
    int begin(int chord) const { return m_begins[chord]; }
    /// The sample at which a chord ends: where the next one begins, or where the strip does.
    int end(int chord) const
    {
        const int strip = m_strips.strip(m_begins[chord]);
        const bool isLast = chord + 1 == size() || m_strips.strip(m_begins[chord + 1]) != strip;
        return isLast ? m_strips.first(strip) : m_begins[chord + 1];
    }
    ParamLine line(int chord) const { return {m_strips.points[begin(chord)], m_strips.points[end(chord)]}; }
    /// -1 without chords.
    int ofSample(int sample) const { return m_ofSamples[sample]; }

    /// Where a strip runs just after a sample, and just before.
    Normal after(int sample) const
    {
        const int end = this->end(ofSample(sample));
        const bool isNear = sample != begin(ofSample(sample)) && end != m_strips.first(m_strips.strip(sample));
        return Normal(m_strips.points[isNear ? this->end(ofSample(end)) : end] - m_strips.points[sample]);
    }
    Normal before(int sample) const
    {
        int begin = this->begin(ofSample(sample));
        if (begin == sample) begin = this->begin(ofSample(m_strips.prev(sample)));
        return Normal(m_strips.points[sample] - m_strips.points[begin]);
    }

private:
    /// Whether the last chord ends at a sample.
    bool isFull(int sample, double tolerance) const
    {
        const double length = m_strips.arc(sample) - m_strips.arc(m_begins.back());
        if (length < tolerance / 100) return false;
        if (length >= tolerance / 10) return true;
        const Normal into(m_strips.points[sample] - m_strips.points[m_begins.back()]);
        const Normal out(m_strips.points[m_strips.next(sample)] - m_strips.points[sample]);
        return into.isValid() && out.isValid() && dot(into, out) < leastCosine;
    }

    const LineStrips& m_strips;
    zn::vector<int> m_begins;
    zn::vector<int> m_ofSamples;
};

/// Chords by the cells of a grid, which are kept in buckets by hash. Long chords are entered in pieces, of which there
/// are five times as many as chords at the most.
class ChordGrid
{
public:
    ChordGrid(const Chords& chords, double tolerance)
    {
        double total = 0;
        for (int chord = 0; chord < chords.size(); ++chord) total += chords.line(chord).direction.length();
        m_piece = std::max(tolerance, total / (4.0 * std::max(chords.size(), 1)));
        m_cell = tolerance + m_piece / 2;
        m_mask = std::bit_ceil(static_cast<std::uint32_t>(chords.size()) + 1u) - 1;
        znUtil::CountingSort sort(znUtil::ThreadPool::getSingleThreadedPool(), static_cast<int>(m_mask) + 1);
        const auto visit = [&](int, const auto& take) { forEachPiece(chords, take); };
        m_firsts.setSize(static_cast<int>(m_mask) + 2);
        sort.count(visit, m_firsts.data());
        int numPieces = 0;
        visit(0, [&](int, int) { ++numPieces; });
        m_firsts.back() = numPieces;
        m_chords.setSize(numPieces);
        sort.place(visit, [this](int place, int chord) { m_chords[place] = chord; });
    }

    using Cell = std::array<std::int64_t, 3>;

    Cell cellOf(const Point& place) const
    {
        const double furthest = 1e18;
        const auto along = [this, furthest](double x) {
            return static_cast<std::int64_t>(std::clamp(std::floor(x / m_cell), -furthest, furthest));
        };
        return {along(place.x), along(place.y), along(place.z)};
    }

    /// Every chord that comes within the tolerance of a place in a cell, and others; each once.
    void gatherAround(const Cell& cell, zn::vector<int>& chords) const
    {
        chords.clear();
        for (int i = 0; i < 27; ++i) {
            const std::uint32_t bucket = bucketOf({cell[0] + i % 3 - 1, cell[1] + i / 3 % 3 - 1, cell[2] + i / 9 - 1});
            const int end = m_firsts[static_cast<int>(bucket) + 1];
            for (int at = m_firsts[static_cast<int>(bucket)]; at < end; ++at) chords.append(m_chords[at]);
        }
        std::sort(chords.begin(), chords.end());
        chords.erase(std::unique(chords.begin(), chords.end()), chords.end());
    }

private:
    template <typename Take>
    void forEachPiece(const Chords& chords, const Take& take) const
    {
        for (int chord = 0; chord < chords.size(); ++chord) {
            const ParamLine line = chords.line(chord);
            const int count = std::max(1, static_cast<int>(std::ceil(line.direction.length() / m_piece)));
            for (int i = 0; i < count; ++i)
                take(static_cast<int>(bucketOf(cellOf(line.eval((i + 0.5) / count)))), chord);
        }
    }

    std::uint32_t bucketOf(const Cell& cell) const
    {
        std::uint64_t hash = 0;
        for (const std::int64_t along : cell) hash = (hash ^ static_cast<std::uint64_t>(along)) * 0x9E3779B97F4A7C15u;
        return static_cast<std::uint32_t>(hash >> 32) & m_mask;
    }

    double m_piece, m_cell;
    std::uint32_t m_mask;
    zn::vector<int> m_firsts, m_chords;
};

/// Gathers the matches of one sample after another.
class Matcher
{
public:
    Matcher(const LineStrips& strips, const Chords& chords, const ChordGrid& grid, double tolerance)
        : m_strips(strips), m_chords(chords), m_grid(grid), m_tolerance(tolerance)
    {}

    const zn::vector<LineMatch>& matchesOf(int sample)
    {
        m_found.clear();
        if (m_chords.ofSample(sample) < 0) return m_found;
        m_sample = sample;
        m_before = m_chords.before(sample);
        m_after = m_chords.after(sample);
        const ChordGrid::Cell cell = m_grid.cellOf(m_strips.points[sample]);
        if (cell != m_cell || !m_isAtCell) m_grid.gatherAround(cell, m_near);
        m_cell = cell;
        m_isAtCell = true;
        for (const int chord : m_near) consider(chord);
        leaveCoincident();
        std::sort(m_found.begin(), m_found.end(), [](const LineMatch& a, const LineMatch& b) {
            return a.strip != b.strip ? a.strip < b.strip : a.isForward < b.isForward;
        });
        return m_found;
    }

private:
    void consider(int chord)
    {
        const Point& place = m_strips.points[m_sample];
        const int strip = m_strips.strip(m_chords.begin(chord));
        const ParamLine line = m_chords.line(chord);
        const double t = std::clamp(projectParam(place, line), 0.0, 1.0);
        const double distance2 = (line.eval(t) - place).length2();
        if (!(distance2 < m_tolerance * m_tolerance)) return;
        const Normal direction(line.direction);
        const double before = dot(direction, m_before), after = dot(direction, m_after);
        const bool isForward = std::max(before, after) >= leastCosine && canBeNearest(chord, true, distance2);
        const bool isBackward = std::min(before, after) <= -leastCosine && canBeNearest(chord, false, distance2);
        if (!isForward && !isBackward) return;
        LineMatch match = placeAt(chord, t, distance2);
        lookAtSegments(chord, match);
        if (strip == m_strips.strip(m_sample) &&
            m_strips.wayBetween(strip, m_strips.arc(m_sample), match.arc) < leastWayOnOwnStrip * m_tolerance)
            return;
        if (isForward) keepNearest(match);
        match.isForward = false;
        if (isBackward) keepNearest(match);
    }

    /// Whether a place of a chord may be nearer than what is found: its segments lie up to half their length off it.
    bool canBeNearest(int chord, bool isForward, double distance2) const
    {
        const int begin = m_chords.begin(chord), end = m_chords.end(chord);
        const int strip = m_strips.strip(begin);
        const bool isOne = m_strips.next(begin) == end;
        const double off = isOne ? 0 : m_strips.wayForward(strip, m_strips.arc(begin), m_strips.arc(end)) / 2;
        for (const LineMatch& other : m_found)
            if (other.strip == strip && other.isForward == isForward)
                return std::sqrt(distance2) - off <= std::sqrt(other.distance2);
        return true;
    }

    /// Moves a match to the nearest place on the segments of its chord, unless these are very many.
    void lookAtSegments(int chord, LineMatch& match) const
    {
        constexpr int mostSegments = 64;
        const Point& place = m_strips.points[m_sample];
        const int begin = m_chords.begin(chord), end = m_chords.end(chord);
        const int count = begin == end ? m_strips.count(match.strip) : m_strips.numBetween(begin, end) - 1;
        if (count == 1 || count > mostSegments) return;
        match.distance2 = std::numeric_limits<double>::max();
        for (int i = 0, segment = begin; i < count; ++i, segment = m_strips.next(segment)) {
            const ParamLine line(m_strips.points[segment], m_strips.points[m_strips.next(segment)]);
            const double t = std::clamp(projectParam(place, line), 0.0, 1.0);
            const double distance2 = (line.eval(t) - place).length2();
            if (!(distance2 < match.distance2)) continue;
            match.distance2 = distance2;
            match.arc = m_strips.arc(segment) + t * m_strips.segmentLength(segment);
            match.nearest = 2 * t < 1 ? segment : m_strips.next(segment);
        }
    }

    /// The place of a chord with its nearest sample.
    LineMatch placeAt(int chord, double t, double distance2) const
    {
        const int begin = m_chords.begin(chord), end = m_chords.end(chord), strip = m_strips.strip(begin);
        const double length = m_strips.wayForward(strip, m_strips.arc(begin), m_strips.arc(end));
        const double arc = m_strips.arc(begin) + t * (length > 0 ? length : m_strips.length(strip));
        int low = begin, high = begin + m_strips.numBetween(begin, end) - 1;
        while (high - low > 1) (m_strips.arc((low + high) / 2) <= arc ? low : high) = (low + high) / 2;
        const double ofLow = m_strips.arc(low),
                     ofHigh = m_strips.wayForward(strip, ofLow, m_strips.arc(m_strips.next(low)));
        return {strip, true, 2 * (arc - ofLow) < ofHigh ? low : m_strips.next(low), arc, distance2};
    }

    void keepNearest(const LineMatch& match)
    {
        for (LineMatch& other : m_found) {
            if (!other.isAlong(match)) continue;
            if (std::pair(match.distance2, match.arc) < std::pair(other.distance2, other.arc)) other = match;
            return;
        }
        m_found.append(match);
    }

    /// Where something coincides with the sample, what is merely near plays no part: a thin piece is in between.
    void leaveCoincident()
    {
        const auto coincides = [this](const LineMatch& match) { return match.coincides(m_tolerance); };
        if (std::none_of(m_found.begin(), m_found.end(), coincides)) return;
        constexpr double leastApart = 4;
        const auto isApart = [this](const LineMatch& match) { return !match.coincides(leastApart * m_tolerance); };
        m_found.erase(std::remove_if(m_found.begin(), m_found.end(), isApart), m_found.end());
    }

    const LineStrips& m_strips;
    const Chords& m_chords;
    const ChordGrid& m_grid;
    double m_tolerance;
    int m_sample = 0;
    Normal m_before, m_after;
    zn::vector<LineMatch> m_found;
    ChordGrid::Cell m_cell = {}; ///< of the last sample
    bool m_isAtCell = false;
    zn::vector<int> m_near; ///< the chords around it
};

bool holdsBothWays(const LineStrips& strips, const LineMatches& matches, double tolerance, int sample,
                   const LineMatch& match)
{
    const int strip = strips.strip(sample);
    for (const LineMatch& back : matches.of(match.nearest))
        if (back.strip == strip && back.isForward == match.isForward &&
            strips.wayBetween(strip, back.arc, strips.arc(sample)) <= tolerance)
            return true;
    return false;
}

} // namespace

LineMatches findLineMatches(const LineStrips& strips, double tolerance, znUtil::ThreadPool& pool)
{
    constexpr int parallelCount = 10000;
    znUtil::ThreadPool& used = strips.size() < parallelCount ? znUtil::ThreadPool::getSingleThreadedPool() : pool;
    const Chords chords(strips, tolerance);
    const ChordGrid grid(chords, tolerance);
    return znUtil::parallelReduce(
        used, strips.size(), LineMatches(),
        [&](znUtil::Slice slice) {
            LineMatches part;
            Matcher matcher(strips, chords, grid, tolerance);
            for (int sample = slice.begin; sample < slice.end; ++sample) {
                for (const LineMatch& match : matcher.matchesOf(sample)) part.append(match);
                part.endSample();
            }
            return part;
        },
        [](LineMatches& all, const LineMatches& part) { all.append(part); });
}

LineMatches mutualMatches(const LineStrips& strips, const LineMatches& matches, double tolerance)
{
    LineMatches mutual;
    for (int sample = 0; sample < strips.size(); ++sample) {
        for (const LineMatch& match : matches.of(sample))
            if (holdsBothWays(strips, matches, tolerance, sample, match)) mutual.append(match);
        mutual.endSample();
    }
    return mutual;
}

} // namespace znGeom::internal
