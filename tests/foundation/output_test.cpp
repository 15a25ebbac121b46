#include <gtest/gtest.h>

#include <thread>

#include "tests/support/recorder.h"

namespace {

using znGeom::debugChannel;

TEST(DebugChannel, SpeaksOnlyToAListener)
{
    debugChannel().print("nobody hears %d\n", 1);
    EXPECT_FALSE(debugChannel().hasSink());
    {
        znTest::LogRecorder log;
        EXPECT_TRUE(debugChannel().hasSink());
        debugChannel().print("meshCompact: %d vertices, %d triangles\n", 8, 12);
        debugChannel().print("  sorted vertices: %f s\n", 0.25);
        debugChannel().print("%s|%300d", "100%", 5);
        debugChannel().print("%c", '-');
        const std::vector<std::string> expected = {"meshCompact: 8 vertices, 12 triangles\n",
                                                   "  sorted vertices: 0.250000 s\n",
                                                   "100%|" + std::string(299, ' ') + "5", "-"};
        EXPECT_EQ(log.lines(), expected);
        EXPECT_EQ(log.count("mesh"), 1);
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
    const std::set<std::string> distinct(log.lines().begin(), log.lines().end());
    EXPECT_EQ(distinct.size(), 1000u);
    EXPECT_EQ(log.count("line "), 1000);
}

TEST(AppOutput, HasSeparateSinksForMessagesAndErrors)
{
    std::string messages, errors;
    znOS::AppOutput& output = znOS::AppOutput::getInstance();
    output.info("too early %d", 0);
    output.setInfoSink([&](const std::string& text) { messages += text; });
    output.setErrorSink([&](const std::string& text) { errors += text; });
    output.info("%d charts\n", 3);
    output.error("no %s\n", "channel");
    output.setInfoSink({});
    output.info("too late %d", 0);
    output.setErrorSink({});
    EXPECT_EQ(messages, "3 charts\n");
    EXPECT_EQ(errors, "no channel\n");
}

TEST(StopWatch, GathersOnlyWhileItRuns)
{
    znOS::StopWatch watch;
    while (!(watch.start() > 0)) {
    } // runs from the first moment
    const double stopped = watch.stop();
    EXPECT_GT(stopped, 0);
    EXPECT_EQ(watch.stop(), stopped);
    EXPECT_EQ(watch.start() >= stopped, true);
    EXPECT_GE(watch.clear(), stopped);
    EXPECT_EQ(watch.stop(), 0); // stands still, emptied
    watch.start();
    while (!(watch.start() > 0)) {
    }
    EXPECT_GT(watch.clear(), 0);
}

} // namespace
