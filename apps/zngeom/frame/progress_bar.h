/// `tool::ProgressBar`: how far a command is, on the user's terminal.
#pragma once

#include <chrono>
#include <mutex>
#include <string>

#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// Watches a progress and draws it as the last line of the terminal that standard error leads to. Draws nothing, ever,
/// where standard error is a pipe or a file. The line disappears with the bar.
class ProgressBar
{
public:
    /// \param progress  the root; must outlive the bar and have no other observer
    /// \param quiet     draws nothing
    ProgressBar(znUtil::Progress& progress, bool quiet);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ~ProgressBar();

    /// Makes room for another line.
    void erase();

private:
    void draw(double fraction, const char* caption);

    znUtil::Progress& m_progress;
    bool m_drawn = false;
    std::string m_caption;
    std::chrono::steady_clock::time_point m_lastDrawn{};
    std::mutex m_mutex;
};

} // namespace tool
