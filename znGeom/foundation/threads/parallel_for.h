/// A parallel loop from a lambda.
#pragma once

#include "znGeom/foundation/threads/thread_pool.h"

namespace znUtil {

/// The loop class that `parallelFor` makes.
template <typename Body>
class SliceLoop : public ThreadedAlg
{
public:
    SliceLoop(int count, const Body& body) : m_count(count), m_body(body) {}
    void execute(int threadIndex, int numThreads) override
    {
        m_body(Slice(m_count, threadIndex, numThreads), threadIndex);
    }

private:
    int m_count;
    const Body& m_body;
};

/// Calls `body(Slice slice, int threadIndex)` once per thread with that thread's part of [0, count), empty parts
/// included. The rules for bodies are those of `ThreadedAlg`.
template <typename Body>
void parallelFor(ThreadPool& pool, int count, const Body& body)
{
    SliceLoop<Body> loop(count, body);
    pool.run(loop);
}

} // namespace znUtil
