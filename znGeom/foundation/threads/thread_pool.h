/// `znUtil::ThreadPool`: the threads on which parallel loops run.
#pragma once

#include <memory>

#include "znGeom/foundation/threads/threaded_alg.h"

namespace znUtil {

/// Workers that wait for loops. `run` blocks until everything is done: `initialize`, the bodies, `finalize`. The
/// calling thread is worker 0 and takes part; a pool of n threads keeps n - 1 of its own. A body that no worker has
/// begun when the calling thread is free is run by the calling thread, under its own thread index.
///
/// A `run` from inside a body, or while another thread uses the pool, runs all its bodies one after the other on its
/// own calling thread, with the same thread indices: the same result, only later. An exception of a standard container
/// in a body reaches the caller of `run`; of several, the one of the lowest thread; the other bodies run to their ends,
/// and `finalize` is not called.
class ZNGEOM_API ThreadPool
{
public:
    /// \param numThreads  the calling thread included; below 1 counts as 1, at most 1024
    explicit ThreadPool(int numThreads);
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;
    virtual ~ThreadPool();

    /// Hands out chunks in ascending order to whichever thread is free.
    virtual void run(ThreadedChunkAlg& alg);
    /// Runs the body once per thread, also for empty slices.
    virtual void run(ThreadedAlg& alg);

    int getNumThreads() const;

    /// The process-wide pool: one thread per processor that the process may use.
    static ThreadPool& get();
    /// A pool that runs everything on the calling thread.
    static ThreadPool& getSingleThreadedPool();

private:
    class Workers;

    template <typename Body>
    void runBodies(ThreadedAlgBase& alg, const Body& body);

    std::unique_ptr<Workers> m_workers;
};

} // namespace znUtil
