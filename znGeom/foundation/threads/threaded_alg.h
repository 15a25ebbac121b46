/// The two frames of a parallel loop.
///
/// A loop is a small class with its inputs and outputs as members, made on the caller's stack and handed to
/// `ThreadPool::run`. Its body writes only its own slice of the outputs or its own per-thread slot, takes no lock, and
/// uses raw pointers that were fetched before the run. Results of slots are combined in thread order after the run,
/// which makes them independent of scheduling.
#pragma once

#include <atomic>
#include <memory>

#include "znGeom/foundation/threads/progress.h"
#include "znGeom/foundation/threads/slice.h"

namespace znUtil {

/// What both frames share. Of its members only `updateProgress` and `cancelled` may be called from a body.
class ZNGEOM_API ThreadedAlgBase
{
public:
    ThreadedAlgBase() = default;
    ThreadedAlgBase(const ThreadedAlgBase&) = delete;
    ThreadedAlgBase& operator=(const ThreadedAlgBase&) = delete;
    virtual ~ThreadedAlgBase();

    /// Once on the calling thread before the bodies run: the place to make per-thread state. A subclass need not call
    /// the base version.
    virtual void initialize(int numThreads);

    /// The body; the frames below say what it is given.
    virtual void execute(int first, int second) = 0;

    /// Once on the calling thread after all bodies have ended; not called when a body threw.
    virtual void finalize();

    /// Where to report and whom to ask; null for a loop that does neither. Before the run.
    void setProgress(Progress* progress) { m_progress = progress; }

    /// How much of its own part a thread has done, 0 to 1. The mean over the threads reaches the `Progress` through
    /// worker 0, so that its observer is called on the calling thread. When the loop is done, and was not cancelled,
    /// the `Progress` of one that reported at all is set to 1.
    void updateProgress(int threadIndex, double fraction);
    /// Whether the caller asked to stop.
    bool cancelled(int threadIndex) const;

private:
    friend class ThreadPool;
    void prepare(int numThreads);
    void complete();

    Progress* m_progress = nullptr;
    int m_numThreads = 0;
    std::unique_ptr<std::atomic<double>[]> m_fractions;
};

/// The fixed division: the body runs once per thread and takes its `Slice`.
class ZNGEOM_API ThreadedAlg : public ThreadedAlgBase
{
public:
    void execute(int threadIndex, int numThreads) override = 0;
};

/// The balanced division: the body runs once per chunk, threads take chunks as they become free. `threadIndex` serves
/// to reach per-thread state only; the index range is `Slice(count, chunkIndex, numChunks)`.
class ZNGEOM_API ThreadedChunkAlg : public ThreadedAlgBase
{
public:
    void execute(int chunkIndex, int threadIndex) override = 0;

    /// Chosen by the pool before `initialize`; read it, do not set it.
    int numChunks = 0;
};

} // namespace znUtil
