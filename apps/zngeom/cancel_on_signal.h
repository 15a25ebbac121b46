/// `tool::CancelOnSignal`: Ctrl-C.
#pragma once

#include <signal.h>

#include <array>

#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// While it lives, the first interrupt, hang-up or termination request cancels a progress. A second one of the same
/// kind ends the process at once, as it would without this.
class CancelOnSignal
{
public:
    /// \param progress  the root; must outlive this. Only one of these may exist in a process at a time.
    explicit CancelOnSignal(znUtil::Progress& progress);
    CancelOnSignal(const CancelOnSignal&) = delete;
    CancelOnSignal& operator=(const CancelOnSignal&) = delete;
    ~CancelOnSignal();

    /// The number of the signal that came, 0 for none.
    static int caught();

private:
    static constexpr std::array<int, 3> signals{SIGINT, SIGTERM, SIGHUP};

    std::array<struct sigaction, 3> m_former{};
};

} // namespace tool
