#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "tests/support/recorder.h"

namespace {

using znGeom::debugChannel;

TEST(DebugChannel, SpeaksOnlyToAListener)
{
    EXPECT_FALSE(debugChannel().hasSink());
    debugChannel().print("nobody hears %d\n", 1);
    {
        znTest::LogRecorder log;
        debugChannel().print("meshCompact: %d vertices, %d triangles\n", 8, 12);
        debugChannel().print("  sorted vertices: %f s\n", 0.25);
        debugChannel().print("%s|%300d", "100%", 5);
        debugChannel().print("%c", '-');
        const std::vector<std::string> expected = {"meshCompact: 8 vertices, 12 triangles\n",
                                                   "  sorted vertices: 0.250000 s\n",
                                                   "100%|" + std::string(299, ' ') + "5", "-"};
        EXPECT_EQ(log.lines(), expected);
    }
    EXPECT_FALSE(debugChannel().hasSink());
    debugChannel().print("nobody hears %d\n", 2);
}

TEST(DebugChannel, TakesWholeLinesFromManyThreads)
{
    znTest::LogRecorder log;
    std::vector<std::thread> speakers;
    for (int speaker = 0; speaker < 4; ++speaker)
        speakers.emplace_back([speaker] {
            for (int i = 0; i < 250; ++i) debugChannel().print("line %d of %d\n", i, speaker);
        });
    for (std::thread& speaker : speakers) speaker.join();
    EXPECT_EQ(std::set<std::string>(log.lines().begin(), log.lines().end()).size(), 1000u);
    EXPECT_EQ(log.count("line "), 1000);
}

TEST(AppOutput, HasSeparateSinksForMessagesAndErrors)
{
    std::string messages, errors;
    znOS::AppOutput& output = znOS::AppOutput::getInstance();
    output.setInfoSink([&](const std::string& text) { messages += text; });
    output.setErrorSink([&](const std::string& text) { errors += text; });
    output.info("%d charts\n", 3);
    output.error("no %s\n", "channel");
    output.setInfoSink({});
    output.info("too late %d", 0);
    output.setErrorSink({});
    EXPECT_EQ(messages + "|" + errors, "3 charts\n|no channel\n");
}

TEST(StopWatch, GathersOnlyWhileItRuns)
{
    znOS::StopWatch watch;
    while (!(watch.start() > 0)) {
    } // runs from the first moment
    const double stopped = watch.stop();
    EXPECT_GT(stopped, 0);
    EXPECT_EQ(watch.stop(), stopped);
    EXPECT_GE(watch.start(), stopped);
    EXPECT_GE(watch.clear(), stopped);
    EXPECT_EQ(watch.stop(), 0); // stands still, emptied
    while (!(watch.start() > 0)) {
    }
    EXPECT_GT(watch.clear(), 0);
}

} // namespace
