#include "znGeom/foundation/threads/progress.h"

namespace znUtil {

namespace {

/// What is no number counts as nothing.
double clamped(double fraction) { return fraction > 0 ? (fraction < 1 ? fraction : 1.0) : 0.0; }

} // namespace

void Progress::subPhase(double fraction, Progress& child)
{
    if (child.m_parent) child.set(1.0);
    child.m_parent = this;
    child.m_shareBegin = m_allotted.load(std::memory_order_relaxed);
    child.m_shareSize = fraction;
    child.m_allotted.store(0, std::memory_order_relaxed);
    child.m_fraction.store(0, std::memory_order_relaxed);
    m_allotted.store(child.m_shareBegin + fraction, std::memory_order_relaxed);
}

void Progress::set(double fractionDone)
{
    m_allotted.store(clamped(fractionDone), std::memory_order_relaxed);
    report(fractionDone);
}

/// Moves this progress, and with it those above it.
void Progress::report(double fractionDone)
{
    const double fraction = clamped(fractionDone);
    m_fraction.store(fraction, std::memory_order_relaxed);
    notify();
    if (m_parent) m_parent->report(m_shareBegin + m_shareSize * fraction);
}

void Progress::setCaption(const char* caption)
{
    Progress& top = root();
    {
        const std::lock_guard lock(top.m_observerMutex);
        top.m_caption = caption ? caption : "";
    }
    top.notify();
}

void Progress::notify()
{
    if (!m_observer) return;
    const std::lock_guard lock(m_observerMutex);
    m_observer(get(), m_caption.c_str());
}

void Progress::cancel() { root().m_cancelled.store(true, std::memory_order_relaxed); }

bool Progress::cancelled() const { return root().m_cancelled.load(std::memory_order_relaxed); }

void Progress::reset()
{
    m_parent = nullptr;
    m_allotted.store(0, std::memory_order_relaxed);
    m_fraction.store(0, std::memory_order_relaxed);
    m_cancelled.store(false, std::memory_order_relaxed);
    m_caption.clear();
}

Progress& Progress::root()
{
    Progress* top = this;
    while (top->m_parent) top = top->m_parent;
    return *top;
}

} // namespace znUtil
