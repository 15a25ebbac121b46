#include "znGeom/foundation/output/stop_watch.h"

namespace znOS {

double StopWatch::elapsed() const
{
    return m_running ? m_gathered + std::chrono::duration<double>(Clock::now() - m_started).count() : m_gathered;
}

double StopWatch::start()
{
    if (!m_running) m_started = Clock::now();
    m_running = true;
    return elapsed();
}

double StopWatch::stop()
{
    m_gathered = elapsed();
    m_running = false;
    return m_gathered;
}

double StopWatch::clear()
{
    const double seconds = stop();
    m_gathered = 0;
    return seconds;
}

} // namespace znOS
