/// `znUtil::Progress`: how far a long call is, what it is doing, and whether it should stop.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>

#include "znGeom/foundation/machine/export.h"

namespace znUtil {

/// The caller's object. A long call divides its range into sub-phases and reports; the caller may watch through an
/// observer and may cancel from any thread. Cancelling forces nothing: the call sees it at its next check.
///
/// A child bound by `subPhase` reports into its parent, asks its root whether the call was cancelled, and gives its
/// captions to the root; the parent must outlive its use.
class ZNGEOM_API Progress
{
public:
    /// \param fraction  of the whole, 0 to 1
    /// \param caption   what is being done; empty until one was set
    using Observer = std::function<void(double fraction, const char* caption)>;

    Progress() = default;
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Binds `child` to the next share of this range: `child.set(1.0)` means that this progress has advanced by
    /// `fraction`. Shares follow one another whether or not earlier children came to their ends; after a `set` the next
    /// share begins where that put this progress. A child that is bound already first gives its parent the rest of its
    /// previous share.
    void subPhase(double fraction, Progress& child);

    /// How much of this range is done, clamped to [0, 1]. From any thread.
    void set(double fractionDone);
    double get() const { return m_fraction.load(std::memory_order_relaxed); }

    /// Tells the observer what is being done; null counts as empty.
    void setCaption(const char* caption);

    /// Asks the call to stop. From any thread; a child asks for its root.
    void cancel();
    bool cancelled() const;

    /// Takes the cancel back and starts again at 0 with no caption; not while a call uses the object.
    void reset();

    /// Watches this object, normally the root. Called on the thread that reports, by one thread at a time; it may
    /// cancel but not report.
    void setObserver(Observer observer) { m_observer = std::move(observer); }

private:
    Progress& root();
    const Progress& root() const { return const_cast<Progress*>(this)->root(); }
    void report(double fractionDone);
    void notify();

    Progress* m_parent = nullptr;
    double m_shareBegin = 0, m_shareSize = 0; ///< this object's range within its parent
    std::atomic<double> m_allotted{0};        ///< where the next child's share begins
    std::atomic<double> m_fraction{0};
    std::atomic<bool> m_cancelled{false};
    std::mutex m_observerMutex;
    std::string m_caption;
    Observer m_observer;
};

} // namespace znUtil
