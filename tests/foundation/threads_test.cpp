#include "znGeom/foundation/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <numeric>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace znUtil;

TEST(Slice, TheFirstOnesAreLonger)
{
    const std::vector<int> cases[] = {{10, 0, 3, 6, 8, 10},
                                      {3, 0, 1, 2, 3, 3, 3},
                                      {0, 0, 0, 0},
                                      {7, 0, 7},
                                      {2147483647, 0, 1073741824, 2147483647}}; // count, then begins and the end
    for (const auto& numbers : cases)
        for (int part = 0, parts = int(numbers.size()) - 2; part < parts; ++part) {
            EXPECT_EQ(Slice(numbers[0], part, parts).begin, numbers[size_t(part) + 1]);
            EXPECT_EQ(Slice(numbers[0], part, parts).end, numbers[size_t(part) + 2]);
        }
}

/// A loop that checks the frame around it.
class CheckedLoop : public ThreadedAlg
{
public:
    explicit CheckedLoop(int count) : m_visits(size_t(count)) {}

    void initialize(int numThreads) override { m_bodies.assign(size_t(numThreads), 0), expectCaller(); }
    void execute(int threadIndex, int numThreads) override
    {
        if (threadIndex == 0) expectCaller();
        ++m_bodies.at(size_t(threadIndex));
        const Slice slice(int(m_visits.size()), threadIndex, numThreads);
        for (int i = slice.begin; i < slice.end; ++i) ++m_visits[size_t(i)];
    }
    void finalize() override
    {
        expectCaller();
        ++numFinalized;
        EXPECT_EQ(m_bodies, std::vector<int>(m_bodies.size(), 1));
        EXPECT_EQ(m_visits, std::vector<int>(m_visits.size(), numFinalized));
    }
    int numFinalized = 0;

private:
    void expectCaller() const { EXPECT_EQ(std::this_thread::get_id(), m_caller); }

    std::thread::id m_caller = std::this_thread::get_id();
    std::vector<int> m_visits, m_bodies;
};

/// The same for chunks.
class CheckedChunks : public ThreadedChunkAlg
{
public:
    void initialize(int numThreads) override
    {
        m_taken = std::vector<std::atomic<int>>(size_t(numChunks));
        m_inside = std::vector<std::atomic<int>>(size_t(numThreads));
    }
    void execute(int chunkIndex, int threadIndex) override
    {
        EXPECT_EQ(m_inside.at(size_t(threadIndex))++, 0); // per-thread state belongs to one body at a time
        ++m_taken.at(size_t(chunkIndex));
        --m_inside[size_t(threadIndex)];
    }
    void finalize() override
    {
        EXPECT_GE(numChunks, 1);
        for (const auto& taken : m_taken) EXPECT_EQ(taken, 1);
        ++numFinalized;
    }
    int numFinalized = 0;

private:
    std::vector<std::atomic<int>> m_taken, m_inside;
};

class Pools : public testing::TestWithParam<int>
{
protected:
    ThreadPool pool{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(OfSizes, Pools, testing::Values(1, 2, 7));

/// Runs a loop and a chunk loop, each so many times.
void runBoth(ThreadPool& pool, int count, int rounds = 1)
{
    CheckedLoop loop(count);
    CheckedChunks chunks;
    for (int round = 1; round <= rounds; ++round) { // an object may run again
        pool.run(loop);
        pool.run(chunks);
        EXPECT_TRUE(loop.numFinalized == round && chunks.numFinalized == round);
    }
}

TEST_P(Pools, RunEveryIndexAndEveryChunkOnce)
{
    EXPECT_EQ(pool.getNumThreads(), GetParam());
    for (const int count : {0, 1, 5, 1000}) runBoth(pool, count, 3);
    runBoth(pool, 3, 1000); // tiny loops that follow one another closely
    std::vector<int> squares(100);
    parallelFor(pool, 100, [&squares](const Slice& slice, int threadIndex) {
        EXPECT_EQ(slice.begin, Slice(100, threadIndex, GetParam()).begin);
        for (int i = slice.begin; i < slice.end; ++i) squares[size_t(i)] = i * i;
    });
    for (int i = 0; i < 100; ++i) EXPECT_EQ(squares[size_t(i)], i * i);
}

TEST_P(Pools, RunFromInsideABody)
{
    std::atomic<int> bodies{0};
    parallelFor(pool, 10, [&](const Slice&, int) {
        runBoth(pool, 100);
        zn::vector<int> numbers(501);
        std::iota(numbers.begin(), numbers.end(), -250);
        std::reverse(numbers.begin(), numbers.end());
        parallelSort(numbers.begin(), numbers.end(), std::less<int>(), pool);
        EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
        ++bodies;
    });
    EXPECT_EQ(bodies, GetParam());
}

TEST_P(Pools, RunFromSeveralThreadsAtOnce)
{
    std::vector<std::thread> hosts;
    for (int host = 0; host < 4; ++host) hosts.emplace_back([this] { runBoth(pool, 30, 100); });
    for (std::thread& host : hosts) host.join();
}

/// Runs out of memory in one body.
class FailingLoop : public ThreadedAlg
{
public:
    explicit FailingLoop(int failing) : m_failing(failing) {}
    void execute(int threadIndex, int) override
    {
        ++started;
        if (threadIndex == m_failing) throw std::bad_alloc();
        if (threadIndex > m_failing) throw std::length_error("later");
    }
    void finalize() override { finalized = true; }
    std::atomic<int> started{0};
    bool finalized = false;

private:
    int m_failing;
};

class FailingChunks : public ThreadedChunkAlg
{
public:
    void execute(int chunkIndex, int) override
    {
        if (chunkIndex == numChunks / 2) throw std::length_error("chunk");
    }
    void finalize() override { finalized = true; }
    bool finalized = false;
};

TEST_P(Pools, HandTheExceptionOfTheLowestBodyToTheCaller)
{
    const auto failEverywhere = [this] {
        for (int failing = 0; failing < GetParam(); ++failing) {
            FailingLoop loop(failing);
            EXPECT_THROW(pool.run(loop), std::bad_alloc);
            EXPECT_EQ(loop.started, GetParam()); // the others run all the same
            EXPECT_FALSE(loop.finalized);
        }
        FailingChunks chunks;
        EXPECT_THROW(pool.run(chunks), std::length_error);
        EXPECT_FALSE(chunks.finalized);
    };
    failEverywhere();
    parallelFor(pool, 2, [&](const Slice&, int) { failEverywhere(); }); // while the threads are taken
    runBoth(pool, 100);
}

TEST(ThreadPool, ThereIsOneForAllAndOneOfOneThread)
{
    EXPECT_EQ(&ThreadPool::get(), &ThreadPool::get());
    EXPECT_EQ(ThreadPool::get().getNumThreads(), int(std::max(1u, std::thread::hardware_concurrency())));
    EXPECT_EQ(ThreadPool::getSingleThreadedPool().getNumThreads(), 1);
    EXPECT_EQ(ThreadPool(-3).getNumThreads(), 1);
    int bodies = 0; // no lock: everything happens on this thread
    parallelFor(ThreadPool::getSingleThreadedPool(), 10, [&](const Slice& slice, int threadIndex) {
        EXPECT_TRUE(slice.begin == 0 && slice.end == 10 && threadIndex == 0);
        ++bodies;
    });
    EXPECT_EQ(bodies, 1);
}

} // namespace
