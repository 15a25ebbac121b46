/// `znOS::StopWatch`: the timer behind every timing line.
#pragma once

#include <chrono>

#include "znGeom/foundation/machine/export.h"

namespace znOS {

/// Adds up the time between `start` and `stop`. Each call returns the seconds gathered so far; the pattern of a timed
/// stage is `clear()`, print, `start()`. A new watch runs at once.
class ZNGEOM_API StopWatch
{
public:
    StopWatch() { start(); }

    /// Continues from here; no effect on a running watch.
    double start();
    /// Pauses until the next `start`.
    double stop();
    /// Returns the seconds, sets them back to 0 and pauses.
    double clear();

private:
    using Clock = std::chrono::steady_clock;

    double elapsed() const;

    Clock::time_point m_started{};
    double m_gathered = 0;
    bool m_running = false;
};

} // namespace znOS
