#include "znGeom/foundation/threads/thread_pool.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace znUtil {

namespace {

/// How long a thread watches before it goes to sleep: loops that follow one another closely never pay for waking a
/// thread, and no processor is kept busy for longer than this when nothing runs.
constexpr std::chrono::microseconds watch{40};

/// Between two checks a thread leaves alone the memory that it waits on, as every check takes it away from the thread
/// that is about to write there. A worker checks often, so that a new loop gets it soon. The calling thread, at the end
/// of a loop, begins with short pauses for bodies that are nearly done, and takes longer ones as they go on.
constexpr int pausesOfWorkers = 4, mostPausesOfCaller = 32;

/// More than any machine that this runs on has.
constexpr int maxThreads = 1024;

/// Chunks per thread: enough to even out uneven costs, few enough that handing them out costs nothing.
constexpr int chunksPerThread = 16;

inline void relax()
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#else
    std::this_thread::yield();
#endif
}

/// Watches `value` for a while, for as long as it equals `old`; returns whether it still does. The pauses between
/// checks double up to the longest.
template <typename T>
bool watchWhileEqual(const std::atomic<T>& value, T old, int firstPauses, int mostPauses)
{
    using Clock = std::chrono::steady_clock;
    for (int pauses = firstPauses; pauses < mostPauses; pauses *= 2) {
        if (value.load(std::memory_order_acquire) != old) return false;
        for (int pause = 0; pause < pauses; ++pause) relax();
    }
    const Clock::time_point end = Clock::now() + watch;
    do {
        if (value.load(std::memory_order_acquire) != old) return false;
        for (int pause = 0; pause < mostPauses; ++pause) relax();
    } while (Clock::now() < end);
    return true;
}

/// Blocks while `value` equals `old`: awake for a while, then asleep.
template <typename T>
void waitWhileEqual(const std::atomic<T>& value, T old, int firstPauses, int mostPauses)
{
    if (watchWhileEqual(value, old, firstPauses, mostPauses)) value.wait(old, std::memory_order_acquire);
}

/// The exception of the lowest thread, kept until the caller can take it.
class FirstFailure
{
public:
    void keep(int threadIndex, std::exception_ptr exception)
    {
        const std::lock_guard lock(m_mutex);
        if (m_exception && m_threadIndex <= threadIndex) return;
        m_threadIndex = threadIndex;
        m_exception = std::move(exception);
    }
    void rethrow() const
    {
        if (m_exception) std::rethrow_exception(m_exception);
    }

private:
    std::mutex m_mutex;
    int m_threadIndex = 0;
    std::exception_ptr m_exception;
};

} // namespace

/// The threads of a pool, and the bodies of the loop that is running. Body 0 is the calling thread's; the others are
/// claimed one by one by whichever thread is free, the calling one included: a loop with little work is done before a
/// sleeping thread could wake, and never waits for one.
class ThreadPool::Workers
{
public:
    using Job = void (*)(void* context, int bodyIndex);

    explicit Workers(int count)
    {
        m_threads.reserve(static_cast<size_t>(count));
        try {
            for (int i = 0; i < count; ++i) m_threads.emplace_back([this] { work(); });
        } catch (const std::system_error&) {
            // The system gives no more threads; the pool is as large as it got.
        }
    }

    ~Workers()
    {
        m_stop.store(true, std::memory_order_relaxed);
        beginRound(noneLeft);
        for (std::thread& thread : m_threads) thread.join();
    }

    int count() const { return static_cast<int>(m_threads.size()); }

    /// False while another run, which may be the one that we are in, has the threads.
    bool tryAcquire() { return !m_taken.exchange(true, std::memory_order_acquire); }
    void release() { m_taken.store(false, std::memory_order_release); }

    /// Calls `job` once for each body, as many as there are threads including the calling one, and returns when all are
    /// done.
    void run(Job job, void* context)
    {
        m_job = job;
        m_context = context;
        m_pending.store(count(), std::memory_order_relaxed);
        beginRound(static_cast<unsigned>(count()));
        job(context, 0);
        while (runNextBody()) {
        }
        for (int pending = m_pending.load(std::memory_order_acquire); pending != 0;
             pending = m_pending.load(std::memory_order_acquire))
            waitWhileEqual(m_pending, pending, 1, mostPausesOfCaller);
    }

private:
    /// The state is the number of the round and, below it, how many bodies are left to claim.
    static constexpr unsigned roundStep = 1u << 12, leftMask = roundStep - 1, noneLeft = 0;

    void beginRound(unsigned numLeft)
    {
        const unsigned round = (m_state.load(std::memory_order_relaxed) & ~leftMask) + roundStep;
        m_state.store(round | numLeft);
        if (!m_mayBeAsleep.exchange(false)) return;
        m_wakes.fetch_add(1);
        m_wakes.notify_all();
    }

    /// Claims a body and runs it. While a claim is held, the round, and with it the job, cannot end.
    bool runNextBody()
    {
        unsigned state = m_state.load(std::memory_order_acquire);
        do {
            if ((state & leftMask) == noneLeft) return false;
        } while (
            !m_state.compare_exchange_weak(state, state - 1, std::memory_order_acq_rel, std::memory_order_acquire));
        m_job(m_context, count() + 1 - static_cast<int>(state & leftMask));
        if (m_pending.fetch_sub(1, std::memory_order_acq_rel) == 1) m_pending.notify_one();
        return true;
    }

    /// Waking a thread costs a call of the system, so a round wakes only who went to sleep since the last one that did.
    /// Whoever goes to sleep says so first and then looks again: either sees the other. The sleep is over with the next
    /// wake whatever the state is then: a round may be done, and a worker asleep after it, before its caller comes to
    /// waking, and whoever sleeps on after a wake would have to say so anew.
    void sleepWhileEqual(unsigned state)
    {
        const unsigned wakes = m_wakes.load();
        m_mayBeAsleep.store(true);
        if (m_state.load() == state) m_wakes.wait(wakes);
    }

    void work()
    {
        for (;;) {
            const unsigned state = m_state.load(std::memory_order_acquire);
            if (m_stop.load(std::memory_order_relaxed)) return;
            if ((state & leftMask) == noneLeft) {
                if (!watchWhileEqual(m_state, state, pausesOfWorkers, pausesOfWorkers)) continue;
                sleepWhileEqual(state);
                continue;
            }
            // A tiny loop is over after a pause: the calling thread finishes it sooner on its own.
            relax();
            if (((m_state.load(std::memory_order_acquire) ^ state) & ~leftMask) == 0) runNextBody();
        }
    }

    static constexpr size_t cacheLine = 64;
    alignas(cacheLine) std::atomic<unsigned> m_state{0}; ///< alone in the cache line that waiting threads read
    alignas(cacheLine) std::atomic<int> m_pending{0};
    std::atomic<bool> m_taken{false};
    std::atomic<bool> m_mayBeAsleep{false}; ///< whether a worker may sleep that no round has woken
    std::atomic<unsigned> m_wakes{0};
    std::atomic<bool> m_stop{false};
    Job m_job = nullptr;
    void* m_context = nullptr;
    std::vector<std::thread> m_threads;
};

ThreadPool::ThreadPool(int numThreads)
    : m_workers(numThreads > 1 ? std::make_unique<Workers>(std::min(numThreads, maxThreads) - 1) : nullptr)
{}

ThreadPool::~ThreadPool() = default;

int ThreadPool::getNumThreads() const { return m_workers ? m_workers->count() + 1 : 1; }

/// Calls `body(threadIndex)` once for each thread of the pool: on all of them where they are free, otherwise one after
/// the other on this one.
template <typename Body>
void ThreadPool::runBodies(ThreadedAlgBase& alg, const Body& body)
{
    struct Context
    {
        const Body& body;
        FirstFailure failure;
    } context{body, {}};
    const Workers::Job job = [](void* pointer, int threadIndex) {
        Context& shared = *static_cast<Context*>(pointer);
        try {
            shared.body(threadIndex);
        } catch (...) {
            shared.failure.keep(threadIndex, std::current_exception());
        }
    };
    if (m_workers && m_workers->tryAcquire()) {
        m_workers->run(job, &context);
        m_workers->release();
    } else {
        for (int i = 0; i < getNumThreads(); ++i) job(&context, i);
    }
    context.failure.rethrow();
    alg.finalize();
    alg.complete();
}

void ThreadPool::run(ThreadedChunkAlg& alg)
{
    const int numThreads = getNumThreads();
    alg.prepare(numThreads);
    alg.numChunks = numThreads > 1 ? numThreads * chunksPerThread : 1;
    alg.initialize(numThreads);
    std::atomic<int> next{0};
    runBodies(alg, [&alg, &next](int threadIndex) {
        for (int chunk = next++; chunk < alg.numChunks; chunk = next++) alg.execute(chunk, threadIndex);
    });
}

void ThreadPool::run(ThreadedAlg& alg)
{
    const int numThreads = getNumThreads();
    alg.prepare(numThreads);
    alg.initialize(numThreads);
    runBodies(alg, [&alg, numThreads](int threadIndex) { alg.execute(threadIndex, numThreads); });
}

ThreadPool& ThreadPool::get()
{
    // Never destroyed: the host's own statics may still run loops while the process ends.
    static ThreadPool& pool = *new ThreadPool(static_cast<int>(std::max(1u, std::thread::hardware_concurrency())));
    return pool;
}

ThreadPool& ThreadPool::getSingleThreadedPool()
{
    static ThreadPool& pool = *new ThreadPool(1);
    return pool;
}

} // namespace znUtil
