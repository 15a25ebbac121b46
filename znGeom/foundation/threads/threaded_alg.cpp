#include "znGeom/foundation/threads/threaded_alg.h"

#include <algorithm>

namespace znUtil {

ThreadedAlgBase::~ThreadedAlgBase() = default;

void ThreadedAlgBase::initialize(int) {}

void ThreadedAlgBase::finalize() {}

void ThreadedAlgBase::prepare(int numThreads)
{
    m_numThreads = numThreads;
    if (m_progress) m_fractions = std::make_unique<std::atomic<double>[]>(static_cast<size_t>(numThreads));
}

void ThreadedAlgBase::updateProgress(int threadIndex, double fraction)
{
    if (!m_progress || !m_fractions) return;
    m_fractions[static_cast<size_t>(threadIndex)].store(fraction, std::memory_order_relaxed);
    if (threadIndex != 0) return;
    double sum = 0;
    for (int i = 0; i < m_numThreads; ++i) sum += m_fractions[static_cast<size_t>(i)].load(std::memory_order_relaxed);
    m_progress->set(sum / m_numThreads);
}

/// Worker 0 may be done long before the others, and a thread without elements has nothing to report.
void ThreadedAlgBase::complete()
{
    if (!m_progress || !m_fractions || m_progress->cancelled()) return;
    const std::atomic<double>* fractions = m_fractions.get();
    if (std::any_of(fractions, fractions + m_numThreads, [](const auto& fraction) { return fraction > 0; }))
        m_progress->set(1.0);
}

bool ThreadedAlgBase::cancelled(int) const { return m_progress && m_progress->cancelled(); }

} // namespace znUtil
