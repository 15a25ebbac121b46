#include "znGeom/files/internal/save_sink.h"

namespace znGeom::internal {

void SaveSink::flush()
{
    m_isCancelled = m_isCancelled || m_progress.cancelled();
    if (!hasStopped() && !m_buffer.empty()) {
        m_hasFailed = !m_write(m_buffer.data(), m_buffer.size());
        m_numBytes += static_cast<std::int64_t>(m_buffer.size());
    }
    m_buffer.clear();
    if (m_numElements > 0) m_progress.set(static_cast<double>(m_numDone) / static_cast<double>(m_numElements));
}

} // namespace znGeom::internal
