/// Stretches of polylines that run beside each other, in pairs.
#pragma once

#include "znGeom/shells/internal/line_matches.h"

namespace znGeom::internal {

/// The way along a strip from one sample forward to another; all round where both are the same and it is `whole`.
struct LineStretch
{
    int first, last;
    bool isWhole = false;
};

/// Two stretches that run beside each other.
struct LinePair
{
    LineStretch own, twin;
    bool isForward; ///< whether both run the same way
    double length;  ///< of `own`

    bool isCircular() const { return own.isWhole && twin.isWhole; }
};

/// Pairs stretches, so that none overlaps another: the longest first, nearness counting as length.
///
/// \param mutual  those of the matches that hold both ways
///
/// A run is a sequence of consecutive samples of one strip whose places on another, or on a further part of the same
/// one, follow each other within two tolerances. From each run what is taken already, on either strip, is left out. A
/// run ends where the two strips cease to coincide, or else where they are nearest to each other, at a corner if one is
/// within the tolerance; on one strip it extends to the tip at which both sides of a slit meet. It is kept when each
/// side has three samples and the length of the tolerance, which is not asked of what coincides, and the other side is
/// at least a quarter as long as this one and at most four tolerances longer. A run that comes back to its beginning on
/// one strip and not on the other becomes two pairs.
///
/// n log n in the runs, apart from that linear in the matches.
zn::vector<LinePair> pairLineRuns(const LineStrips& strips, const LineMatches& matches, const LineMatches& mutual,
                                  double tolerance);

} // namespace znGeom::internal
