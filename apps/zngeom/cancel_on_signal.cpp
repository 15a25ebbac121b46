#include "apps/zngeom/cancel_on_signal.h"

#include <atomic>

namespace tool {

namespace {

std::atomic<znUtil::Progress*> watched{nullptr};
std::atomic<int> lastSignal{0};
static_assert(std::atomic<znUtil::Progress*>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

/// Cancelling a root is one store into a lock-free flag.
void cancelWatched(int number)
{
    lastSignal = number;
    if (znUtil::Progress* progress = watched.load()) progress->cancel();
}

} // namespace

CancelOnSignal::CancelOnSignal(znUtil::Progress& progress)
{
    watched = &progress;
    struct sigaction action = {};
    action.sa_handler = cancelWatched;
    action.sa_flags = static_cast<int>(SA_RESETHAND); // and no SA_RESTART: waiting for a pipe ends
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

int CancelOnSignal::caught() { return lastSignal; }

} // namespace tool
