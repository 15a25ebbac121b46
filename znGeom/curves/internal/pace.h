/// Long loops that report and can be cancelled.
#pragma once

#include <cstdint>

#include "znGeom/foundation/threads/progress.h"

namespace znGeom::internal {

/// Reports how far a loop is, and ends it after a cancel. A step costs a count; one in so many reports and looks.
class Pace
{
public:
    static constexpr int stepsPerLook = 256;

    explicit Pace(znUtil::Progress& progress, int stepsBetween = stepsPerLook)
        : m_progress(progress), m_stepsBetween(stepsBetween)
    {}

    /// \param done, total  how far the loop is
    /// \return false after a cancel
    bool goesOn(std::int64_t done, std::int64_t total)
    {
        if (++m_steps < m_stepsBetween) return true;
        m_steps = 0;
        m_progress.set(static_cast<double>(done) / static_cast<double>(total));
        return !m_progress.cancelled();
    }

private:
    znUtil::Progress& m_progress;
    int m_stepsBetween, m_steps = 0;
};

} // namespace znGeom::internal
