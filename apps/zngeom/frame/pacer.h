/// Progress of phases and loops.
#pragma once

#include <cstddef>

#include "apps/zngeom/frame/failure.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// Throws `Cancelled` when the user has asked to stop.
inline void checkCancelled(const znUtil::Progress& progress)
{
    if (progress.cancelled()) throw Cancelled();
}

/// The phases of a piece of work, one after the other.
class Phases
{
public:
    explicit Phases(znUtil::Progress& progress) : m_progress(progress) {}

    /// The progress of the next phase; throws `Cancelled` when the user has asked to stop.
    /// \param share  of the whole
    znUtil::Progress& next(double share)
    {
        checkCancelled(m_progress);
        m_progress.subPhase(share, m_phase);
        return m_phase;
    }

private:
    znUtil::Progress& m_progress;
    znUtil::Progress m_phase;
};

/// Reports how far a loop is, and ends it when the user has asked to stop. A call costs a count; only one in every so
/// many checks and reports.
class Pacer
{
public:
    /// \param total  the value of `at` at the end
    Pacer(znUtil::Progress& progress, std::size_t total) : m_progress(progress), m_total(total) {}

    void at(std::size_t done)
    {
        if (++m_calls % callsPerLook != 0) return;
        checkCancelled(m_progress);
        m_progress.set(static_cast<double>(done) / static_cast<double>(m_total));
    }

private:
    static constexpr unsigned callsPerLook = 1 << 14;

    znUtil::Progress& m_progress;
    std::size_t m_total;
    unsigned m_calls = 0;
};

} // namespace tool
