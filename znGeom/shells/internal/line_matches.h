/// Which samples of polylines run beside which polylines.
#pragma once

#include <span>

#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/shells/internal/line_strips.h"

namespace znGeom::internal {

/// The place of a strip beside a sample.
struct LineMatch
{
    int strip;
    bool isForward;   ///< whether the strip runs in the direction of the sample's own there
    int nearest;      ///< its sample that is nearest to the place
    double arc;       ///< where the place is, as a length along the strip
    double distance2; ///< squared, from the sample

    /// As far as rounding lets it.
    bool coincides(double tolerance) const { return distance2 <= 1e-6 * tolerance * tolerance; }
    bool isAlong(const LineMatch& other) const { return strip == other.strip && isForward == other.isForward; }
};

/// The matches of all samples, those of one sample by strip, the backward one first.
class LineMatches
{
public:
    std::span<const LineMatch> of(int sample) const
    {
        return {m_matches.data() + m_firsts[sample], m_matches.data() + m_firsts[sample + 1]};
    }
    int first(int sample) const { return m_firsts[sample]; }
    int size() const { return m_matches.size(); }
    const LineMatch& operator[](int match) const { return m_matches[match]; }

    void append(const LineMatch& match) { m_matches.append(match); }
    void endSample() { m_firsts.append(m_matches.size()); }
    void append(const LineMatches& samples)
    {
        for (int sample = 0; sample + 1 < samples.m_firsts.size(); ++sample) {
            for (const LineMatch& match : samples.of(sample)) append(match);
            endSample();
        }
    }

private:
    zn::vector<LineMatch> m_matches;
    zn::vector<int> m_firsts = {0};
};

/// Finds for each sample, strip and sense the nearest place on that strip which is less than a tolerance away, where
/// the two run alike or opposite within 60 degrees, just before the sample or just after. On the sample's own strip it
/// must also be four tolerances away along the strip. Where one of them coincides with the sample, the others of that
/// sample are left out, unless they do so too.
///
/// \param tolerance  finite and above 0
///
/// Segments much shorter than the tolerance are taken together for their direction. A grid of what this leaves serves
/// the queries: linear in samples, times the length of strips within the tolerance, in tolerances. Strips that are
/// shorter than the tolerance, or not finite, have no matches. The same on every pool.
LineMatches findLineMatches(const LineStrips& strips, double tolerance, znUtil::ThreadPool& pool);

/// Those matches that hold from the other side as well: the nearest sample to the place has a match on the strip of
/// the first sample, in the same sense, within a tolerance along it.
LineMatches mutualMatches(const LineStrips& strips, const LineMatches& matches, double tolerance);

} // namespace znGeom::internal
