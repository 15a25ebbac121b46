#include "znGeom/foundation/threads/threaded_alg.h"

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

bool ThreadedAlgBase::cancelled(int) const { return m_progress && m_progress->cancelled(); }

} // namespace znUtil
