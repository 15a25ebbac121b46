/// `tool::CancelOnSignal` and `tool::EndOnSignal`: Ctrl-C.
#pragma once

#include <signal.h>

#include <array>

#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// While it lives, the first interrupt, hang-up or termination request cancels a progress. A second one ends the
/// process at once, as it would without this, with no half-written file left behind.
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
    std::array<struct sigaction, 3> m_former{};
};

/// For work that looks at no progress. While it lives, inside the life of a `CancelOnSignal`, the same requests end the
/// process at once, as a cancel would in the end: with one line and the status of the signal. To be used where no file
/// is half written.
class EndOnSignal
{
public:
    /// \param progress  the root or a part; throws `Cancelled` when it was cancelled already
    explicit EndOnSignal(const znUtil::Progress& progress);
    EndOnSignal(const EndOnSignal&) = delete;
    EndOnSignal& operator=(const EndOnSignal&) = delete;
    ~EndOnSignal();
};

} // namespace tool
