#include "apps/zngeom/frame/progress_bar.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tool {

namespace {

/// A dumb terminal can't go back in its line.
bool canDraw()
{
    const char* kind = std::getenv("TERM");
    return isatty(STDERR_FILENO) != 0 && !(kind && std::strcmp(kind, "dumb") == 0);
}

} // namespace

ProgressBar::ProgressBar(znUtil::Progress& progress, bool quiet) : m_progress(progress)
{
    if (!quiet && canDraw())
        m_progress.setObserver([this](double fraction, const char* caption) { draw(fraction, caption); });
}

ProgressBar::~ProgressBar()
{
    m_progress.setObserver({});
    erase();
}

void ProgressBar::erase()
{
    const std::lock_guard lock(m_mutex);
    if (m_drawn) std::fputs("\r\x1b[K", stderr);
    m_drawn = false;
}

void ProgressBar::draw(double fraction, const char* caption)
{
    constexpr int width = 30;
    constexpr auto pause = std::chrono::milliseconds(50);
    const std::lock_guard lock(m_mutex);
    const auto now = std::chrono::steady_clock::now();
    if (m_caption == caption && now - m_lastDrawn < pause) return;
    m_lastDrawn = now;
    m_caption = caption;

    const int filled = static_cast<int>(fraction * width);
    const std::string bar =
        std::string(static_cast<std::size_t>(filled), '#') + std::string(static_cast<std::size_t>(width - filled), '.');
    std::fprintf(stderr, "\r\x1b[K%-8s [%s] %3d %%", caption, bar.c_str(), static_cast<int>(fraction * 100));
    std::fflush(stderr);
    m_drawn = true;
}

} // namespace tool
