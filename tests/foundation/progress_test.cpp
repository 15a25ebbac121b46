#include <gtest/gtest.h>

#include <limits>
#include <thread>

#include "znGeom/foundation/threads.h"

namespace {

using namespace znUtil;

TEST(Progress, ChildrenFillTheirShares)
{
    Progress root, child, grandchild;
    root.subPhase(0.5, child);
    child.set(0.5);
    EXPECT_DOUBLE_EQ(root.get(), 0.25);
    root.subPhase(0.25, child); // bound again: what was left of the first share counts as done
    EXPECT_DOUBLE_EQ(root.get(), 0.5);
    EXPECT_EQ(child.get(), 0);
    child.subPhase(0.5, grandchild);
    grandchild.set(1.0);
    EXPECT_DOUBLE_EQ(child.get(), 0.5);
    EXPECT_DOUBLE_EQ(root.get(), 0.625);
    Progress other;
    root.subPhase(0.25, other); // begins behind the shares before it, however far they came
    other.set(0.5);
    EXPECT_DOUBLE_EQ(root.get(), 0.875);
    other.set(7);
    EXPECT_DOUBLE_EQ(root.get(), 1.0);
}

TEST(Progress, StaysBetweenZeroAndOne)
{
    Progress progress;
    const double given[] = {-1, 0.3, 2, std::numeric_limits<double>::quiet_NaN(), 1}, expected[] = {0, 0.3, 1, 0, 1};
    for (int i = 0; i < 5; ++i) EXPECT_EQ((progress.set(given[i]), progress.get()), expected[i]);
}

TEST(Progress, TellsTheObserverOfTheRoot)
{
    Progress root, child;
    std::vector<std::pair<double, std::string>> seen;
    root.setObserver([&](double fraction, const char* caption) { seen.emplace_back(fraction, caption); });
    root.set(0.125);
    root.subPhase(0.5, child);
    child.setCaption("sorting");
    child.set(0.5);
    child.setCaption(nullptr);
    const decltype(seen) expected = {{0.125, ""}, {0.125, "sorting"}, {0.25, "sorting"}, {0.25, ""}};
    EXPECT_EQ(seen, expected);
}

TEST(Progress, IsCancelledAtTheRoot)
{
    Progress root, child, grandchild;
    root.subPhase(1, child);
    child.subPhase(1, grandchild);
    std::thread([&grandchild] { grandchild.cancel(); }).join();
    EXPECT_TRUE(root.cancelled() && child.cancelled() && grandchild.cancelled());
    root.set(0.5);
    root.reset();
    EXPECT_TRUE(!root.cancelled() && !grandchild.cancelled() && root.get() == 0);
    root.subPhase(0.5, child);
    child.set(1);
    EXPECT_EQ(root.get(), 0.5); // the shares begin anew as well
}

/// Works through its slice and looks up at every item.
class LongLoop : public ThreadedAlg
{
public:
    LongLoop(int count, Progress& progress) : m_count(count) { setProgress(&progress); }
    void initialize(int numThreads) override { done.assign(size_t(numThreads), 0); }
    void execute(int threadIndex, int numThreads) override
    {
        const Slice slice(m_count, threadIndex, numThreads);
        int& items = done[size_t(threadIndex)];
        for (; items < slice.size() && !cancelled(threadIndex); ++items)
            updateProgress(threadIndex, double(items + 1) / slice.size());
    }
    std::vector<int> done;

private:
    int m_count;
};

TEST(Progress, RisesWithTheBodiesOfALoop)
{
    for (const int threads : {1, 2, 7}) {
        ThreadPool pool(threads);
        Progress progress;
        double last = 0;
        const auto caller = std::this_thread::get_id();
        progress.setObserver([&](double fraction, const char*) {
            EXPECT_EQ(std::this_thread::get_id(), caller);
            EXPECT_TRUE(fraction >= last && fraction <= 1);
            last = fraction;
        });
        LongLoop loop(1000, progress);
        pool.run(loop);
        EXPECT_GT(last, threads == 1 ? 0.9999 : 0.0);
    }
}

TEST(Progress, ACancelledBodyStopsAtItsNextCheck)
{
    constexpr int endless = 2000000000;
    for (const int threads : {1, 3}) {
        ThreadPool pool(threads);
        Progress progress, share;
        progress.subPhase(1, share);
        std::atomic<bool> begun{false};
        progress.setObserver([&](double, const char*) { begun = true; });
        std::thread host([&] {
            while (!begun) std::this_thread::yield();
            progress.cancel();
        });
        LongLoop loop(endless, share);
        pool.run(loop);
        host.join();
        for (const int items : loop.done) EXPECT_LT(items, endless / threads);
        LongLoop next(1000, share);
        pool.run(next);
        EXPECT_EQ(next.done, std::vector<int>(size_t(threads), 0)); // cancelled before it began
    }
    Progress early;
    early.setObserver([&](double fraction, const char*) {
        if (fraction >= 0.25) early.cancel();
    });
    LongLoop loop(1000, early);
    ThreadPool::getSingleThreadedPool().run(loop);
    EXPECT_EQ(loop.done[0], 250);
}

} // namespace
