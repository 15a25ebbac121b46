/// A body that needs two threads at once, to time what it takes until a second one joins.
#pragma once

#include <atomic>
#include <chrono>

namespace bench {

class Rendezvous
{
public:
    /// Waits until both have arrived. Gives up after a millisecond, for a scheduler that runs one after the other.
    void meet()
    {
        arrived_.fetch_add(1, std::memory_order_acq_rel);
        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::milliseconds(1);
        while (arrived_.load(std::memory_order_acquire) < 2)
            if (std::chrono::steady_clock::now() > giveUp) return;
    }

private:
    std::atomic<int> arrived_{0};
};

} // namespace bench
