#include "apps/zngeom/frame/cancel_on_signal.h"

#include <unistd.h>

#include <atomic>
#include <string_view>

#include "apps/zngeom/frame/failure.h"
#include "znGeom/files/pending_file.h"

namespace tool {

namespace {

std::atomic<znUtil::Progress*> watched{nullptr};
std::atomic<int> lastSignal{0};
std::atomic<bool> endsAtOnce{false};
static_assert(std::atomic<znUtil::Progress*>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

constexpr std::array<int, 3> signals{SIGINT, SIGTERM, SIGHUP};

/// Only what a handler of signals may do.
[[noreturn]] void end(int number)
{
    constexpr std::string_view plain = "zngeom: cancelled\n", onTerminal = "\r\x1b[Kzngeom: cancelled\n";
    const std::string_view line = isatty(STDERR_FILENO) != 0 ? onTerminal : plain;
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
    _exit(128 + number);
}

/// Cancelling a root is one store into a lock-free flag. A second request ends the process as it would have ended
/// without a handler, but for files that are half written.
void cancelWatched(int number)
{
    const bool isSecond = lastSignal.exchange(number) != 0;
    if (isSecond || endsAtOnce) znGeom::PendingFile::removeAll();
    if (endsAtOnce) end(number);
    if (isSecond) {
        signal(number, SIG_DFL);
        raise(number); // takes effect when the handler returns
    } else if (znUtil::Progress* progress = watched.load())
        progress->cancel();
}

} // namespace

CancelOnSignal::CancelOnSignal(znUtil::Progress& progress)
{
    watched = &progress;
    struct sigaction action = {};
    action.sa_handler = cancelWatched;
    action.sa_flags = 0; // no SA_RESTART: waiting for a pipe ends
    for (std::size_t i = 0; i < signals.size(); ++i) {
        sigaction(signals[i], nullptr, &m_former[i]);
        // Whoever started us may have asked us to ignore it, as nohup does.
        if (m_former[i].sa_handler != SIG_IGN) sigaction(signals[i], &action, nullptr);
    }
}

CancelOnSignal::~CancelOnSignal()
{
    for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &m_former[i], nullptr);
    watched = nullptr;
}

EndOnSignal::EndOnSignal(const znUtil::Progress& progress)
{
    endsAtOnce = true;
    // A request that came before this must not be lost.
    if (!progress.cancelled()) return;
    endsAtOnce = false;
    throw Cancelled();
}

EndOnSignal::~EndOnSignal() { endsAtOnce = false; }

int CancelOnSignal::caught() { return lastSignal; }

} // namespace tool
