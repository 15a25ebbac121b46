#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "tests/support/recorder.h"

namespace {

using znGeom::debugChannel;

TEST(DebugChannel, SpeaksOnlyToAListener)
{
    debugChannel().print("nobody hears %d\n", 1);
    {
        znTest::LogRecorder log;
        debugChannel().print("%s|%300d", "100%", 5);
        EXPECT_EQ(log.lines(), std::vector<std::string>{"100%|" + std::string(299, ' ') + "5"});
    }
    EXPECT_FALSE(debugChannel().hasSink());
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
    std::string heard;
    znOS::AppOutput& output = znOS::AppOutput::getInstance();
    output.setInfoSink([&](const std::string& text) { heard += "message " + text; });
    output.setErrorSink([&](const std::string& text) { heard += "error " + text; });
    output.info("%d charts|", 3);
    output.error("no %s|", "channel");
    output.setInfoSink({}), output.setErrorSink({});
    output.info("too late %d", 0);
    EXPECT_EQ(heard, "message 3 charts|error no channel|");
}

TEST(StopWatch, GathersOnlyWhileItRuns)
{
    znOS::StopWatch watch;
    while (!(watch.start() > 0)) {
    } // runs from the first moment
    const double stopped = watch.stop();
    EXPECT_EQ(watch.stop(), stopped);
    EXPECT_GE(watch.start(), stopped);
    EXPECT_GE(watch.clear(), stopped);
    EXPECT_EQ(watch.stop(), 0); // paused, and back at 0
}

} // namespace
