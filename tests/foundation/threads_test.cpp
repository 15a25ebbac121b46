#include "znGeom/foundation/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <limits>
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
                                      {2147483647, 0, 1073741824, 2147483647}}; // count, then begins and the end
    for (const auto& numbers : cases)
        for (size_t part = 0; part + 2 < numbers.size(); ++part) {
            const Slice slice(numbers[0], int(part), int(numbers.size()) - 2);
            EXPECT_TRUE(slice.begin == numbers[part + 1] && slice.end == numbers[part + 2]);
        }
}

/// A loop that checks the frame around it.
struct CheckedLoop : ThreadedAlg
{
    void initialize(int numThreads) override { bodies.assign(size_t(numThreads), 0), expectCaller(); }
    void execute(int threadIndex, int numThreads) override
    {
        EXPECT_EQ(size_t(numThreads), bodies.size());
        if (threadIndex == 0) expectCaller();
        ++bodies.at(size_t(threadIndex));
    }
    void finalize() override
    {
        expectCaller();
        EXPECT_EQ(bodies, std::vector<int>(bodies.size(), 1));
        ++numFinalized;
    }
    void expectCaller() const { EXPECT_EQ(std::this_thread::get_id(), caller); }

    const std::thread::id caller = std::this_thread::get_id();
    std::vector<int> bodies;
    int numFinalized = 0;
};

/// The same for chunks.
struct CheckedChunks : ThreadedChunkAlg
{
    void initialize(int numThreads) override
    {
        taken = std::vector<std::atomic<int>>(size_t(numChunks));
        inside = std::vector<std::atomic<int>>(size_t(numThreads));
    }
    void execute(int chunkIndex, int threadIndex) override
    {
        EXPECT_EQ(inside.at(size_t(threadIndex))++, 0); // per-thread state belongs to one body at a time
        ++taken.at(size_t(chunkIndex));
        --inside[size_t(threadIndex)];
    }
    void finalize() override
    {
        for (const auto& times : taken) EXPECT_EQ(times, 1);
        ++numFinalized;
    }
    std::vector<std::atomic<int>> taken, inside;
    int numFinalized = 0;
};

struct Pools : testing::TestWithParam<int>
{
    ThreadPool pool{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(OfSizes, Pools, testing::Values(1, 2, 7));

/// Runs a loop and a chunk loop, each so many times.
void runBoth(ThreadPool& pool, int rounds = 1)
{
    CheckedLoop loop;
    CheckedChunks chunks;
    for (int round = 1; round <= rounds; ++round) { // an object may run again
        pool.run(loop);
        pool.run(chunks);
        EXPECT_TRUE(loop.numFinalized == round && chunks.numFinalized == round);
    }
}

TEST_P(Pools, RunBodiesAndChunksOnceFromAnywhere)
{
    EXPECT_EQ(pool.getNumThreads(), GetParam());
    runBoth(pool, 1000); // tiny loops that follow one another closely
    std::vector<std::thread> hosts;
    for (int host = 0; host < 4; ++host) hosts.emplace_back([this] { runBoth(pool, 100); });
    for (std::thread& host : hosts) host.join();

    std::atomic<int> bodies{0};
    parallelFor(pool, 10, [&](const Slice& slice, int threadIndex) { // from inside a body
        EXPECT_EQ(slice.begin, Slice(10, threadIndex, GetParam()).begin);
        runBoth(pool);
        zn::vector<int> numbers(501);
        std::iota(numbers.begin(), numbers.end(), -250);
        std::reverse(numbers.begin(), numbers.end());
        parallelSort(numbers.begin(), numbers.end(), std::less<int>(), pool);
        EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
        ++bodies;
    });
    EXPECT_EQ(bodies, GetParam());
}

TEST_P(Pools, JoinResultsInTheOrderOfTheThreads)
{
    for (const int count : {0, 3, 1000}) {
        const auto numbers = parallelReduce(
            pool, count, std::vector<int>{-1},
            [](Slice slice) {
                std::vector<int> part(size_t(slice.size()));
                std::iota(part.begin(), part.end(), slice.begin);
                return part;
            },
            [](auto& all, auto& part) { all.insert(all.end(), part.begin(), part.end()); });
        ASSERT_EQ(numbers.size(), size_t(count) + 1);
        for (int i = -1; i < count; ++i) ASSERT_EQ(numbers[size_t(i + 1)], i);
    }
}

/// Runs out of memory in one body.
struct FailingLoop : ThreadedAlg
{
    explicit FailingLoop(int index) : failing(index) {}
    void execute(int threadIndex, int) override
    {
        ++started;
        if (threadIndex == failing) throw std::bad_alloc();
        if (threadIndex > failing) throw std::length_error("later");
    }
    void finalize() override { ADD_FAILURE(); }
    const int failing;
    std::atomic<int> started{0};
};

struct FailingChunks : ThreadedChunkAlg
{
    void execute(int chunkIndex, int) override
    {
        if (chunkIndex == numChunks / 2) throw std::length_error("chunk");
    }
    void finalize() override { ADD_FAILURE(); }
};

TEST_P(Pools, HandTheExceptionOfTheLowestBodyToTheCaller)
{
    const auto failEverywhere = [this] {
        for (int failing = 0; failing < GetParam(); ++failing) {
            FailingLoop loop(failing);
            EXPECT_THROW(pool.run(loop), std::bad_alloc);
            EXPECT_EQ(loop.started, GetParam()); // the others run all the same
        }
        FailingChunks chunks;
        EXPECT_THROW(pool.run(chunks), std::length_error);
    };
    failEverywhere();
    parallelFor(pool, 2, [&](const Slice&, int) { failEverywhere(); }); // while the threads are taken
    runBoth(pool);
}

TEST_P(Pools, SleepWhenNothingRuns)
{
    runBoth(pool);
    const std::clock_t before = std::clock();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_LT(double(std::clock() - before) / CLOCKS_PER_SEC, 0.15) << "of processor time";
}

TEST(ThreadPool, ThereIsOneForAllAndOneOfOneThread)
{
    EXPECT_EQ(&ThreadPool::get(), &ThreadPool::get());
    EXPECT_EQ(ThreadPool::get().getNumThreads(), int(std::max(1u, std::thread::hardware_concurrency())));
    EXPECT_TRUE(ThreadPool::getSingleThreadedPool().getNumThreads() == 1 && ThreadPool(-3).getNumThreads() == 1);
}

TEST(Progress, ChildrenFillTheirShares)
{
    Progress root, child, grandchild, other;
    root.subPhase(0.5, child);
    child.set(0.5);
    EXPECT_DOUBLE_EQ(root.get(), 0.25);
    root.subPhase(0.25, child); // bound again: what was left of the first share counts as done
    EXPECT_TRUE(root.get() == 0.5 && child.get() == 0);
    child.subPhase(0.5, grandchild);
    grandchild.set(1.0);
    EXPECT_DOUBLE_EQ(child.get(), 0.5);
    EXPECT_DOUBLE_EQ(root.get(), 0.625);
    root.subPhase(0.25, other); // begins behind the shares before it, however far they came
    other.set(0.5);
    EXPECT_DOUBLE_EQ(root.get(), 0.875);
    for (const auto& [given, kept] :
         {std::pair(-1.0, 0.0), {0.3, 0.3}, {std::numeric_limits<double>::quiet_NaN(), 0.0}, {7.0, 1.0}})
        EXPECT_EQ((other.set(given), other.get()), kept);
    EXPECT_DOUBLE_EQ(root.get(), 1.0);
}

TEST(Progress, SharesBeginWhereASetPutIt)
{
    Progress root, child, grandchild;
    root.set(0.25);
    root.subPhase(0.5, child);
    child.set(0.5);
    EXPECT_EQ(root.get(), 0.5);
    child.subPhase(0.5, grandchild); // at the middle of the child's own range
    grandchild.set(1);
    EXPECT_TRUE(child.get() == 1 && root.get() == 0.75);
    root.subPhase(0.125, child);
    child.set(0.5);
    EXPECT_EQ(root.get(), 0.8125);
    root.set(0); // back to the beginning, as for a second call
    Progress again;
    root.subPhase(0.5, again);
    again.set(0.5);
    EXPECT_EQ(root.get(), 0.25);
}

TEST(Progress, IsToldAndCancelledAtTheRoot)
{
    Progress root, child, grandchild;
    std::vector<std::pair<double, std::string>> seen;
    root.setObserver([&](double fraction, const char* caption) { seen.emplace_back(fraction, caption); });
    root.set(0.125);
    root.subPhase(0.5, child);
    child.setCaption("sorting");
    child.set(0.5);
    child.setCaption(nullptr);
    const decltype(seen) expected = {{0.125, ""}, {0.125, "sorting"}, {0.375, "sorting"}, {0.375, ""}};
    EXPECT_EQ(seen, expected);

    child.subPhase(1, grandchild);
    grandchild.cancel();
    EXPECT_TRUE(root.cancelled() && child.cancelled() && grandchild.cancelled());
    root.reset();
    EXPECT_TRUE(!root.cancelled() && !grandchild.cancelled() && root.get() == 0);
    root.subPhase(0.5, child);
    child.set(1);
    EXPECT_EQ(root.get(), 0.5); // the shares begin anew as well
}

/// Works through its slice and looks up at every item.
struct LongLoop : ThreadedAlg
{
    LongLoop(int number, Progress& progress) : count(number) { setProgress(&progress); }
    void initialize(int numThreads) override { done.assign(size_t(numThreads), 0); }
    void execute(int threadIndex, int numThreads) override
    {
        const int share = Slice(count, threadIndex, numThreads).size();
        for (int& i = done[size_t(threadIndex)]; i < share && !cancelled(threadIndex); ++i)
            updateProgress(threadIndex, double(i + 1) / share);
    }
    const int count;
    std::vector<int> done;
};

TEST_P(Pools, TellTheProgressOfTheirBodies)
{
    Progress progress;
    double last = 0;
    progress.setObserver([&, caller = std::this_thread::get_id()](double fraction, const char*) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        EXPECT_TRUE(fraction >= last && fraction <= 1);
        last = fraction;
    });
    LongLoop loop(1000, progress), few(3, progress); // slices of no items report nothing
    pool.run(loop);
    EXPECT_EQ(last, 1);
    progress.set(last = 0);
    pool.run(few);
    EXPECT_EQ(last, 1);
    progress.set(last = 0);
    LongLoop none(0, progress);
    pool.run(none);
    EXPECT_EQ(last, 0) << "a loop that only asks whether to stop leaves the rest to its caller";
}

TEST_P(Pools, StopACancelledBodyAtItsNextCheck)
{
    constexpr int endless = 2000000000;
    Progress progress, share;
    progress.subPhase(1, share);
    std::atomic<bool> begun{false};
    progress.setObserver([&](double, const char*) { begun = true; });
    std::thread host([&] {
        while (!begun) std::this_thread::yield();
        progress.cancel();
    });
    LongLoop loop(endless, share), next(1000, share);
    pool.run(loop);
    host.join();
    for (const int items : loop.done) EXPECT_LT(items, endless / GetParam());
    EXPECT_LT(progress.get(), 1);
    pool.run(next);
    EXPECT_EQ(next.done, std::vector<int>(size_t(GetParam()), 0)); // cancelled before it began

    Progress early;
    early.setObserver([&](double fraction, const char*) {
        if (fraction >= 0.25) early.cancel();
    });
    LongLoop quarter(1000, early);
    ThreadPool::getSingleThreadedPool().run(quarter);
    EXPECT_EQ(quarter.done[0], 250);
}

} // namespace
