#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <thread>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

/// What a call shows on a terminal.
std::string shownOnTerminal(const std::vector<std::string>& arguments)
{
    int ours = -1, theirs = -1;
    EXPECT_EQ(openpty(&ours, &theirs, nullptr, nullptr, nullptr), 0);
    ToolProcess tool(arguments, theirs);
    EXPECT_EQ(tool.wait().json()["vertices"], 9) << "the bar got into the report";
    close(theirs);
    std::string shown;
    char chunk[4096];
    for (ssize_t count = 0; (count = read(ours, chunk, sizeof chunk)) > 0;)
        shown.append(chunk, static_cast<std::size_t>(count));
    close(ours);
    return shown;
}

TEST(ToolTerminal, ShowsABarOnATerminalAndTakesItAway)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0) GTEST_SKIP() << "no terminal can be opened here";
    close(terminal);
    const Scratch scratch;
    const std::string box = scratch.write("box.obj", boxObj());
    const std::string shown = shownOnTerminal({"info", "--json", box});
    EXPECT_NE(shown.find("reading"), std::string::npos) << shown;
    EXPECT_NE(shown.find('%'), std::string::npos) << shown;
    EXPECT_TRUE(shown.ends_with("\r\x1b[K")) << shown;
    EXPECT_EQ(shownOnTerminal({"info", "--json", "--quiet", box}), "");
}

TEST(ToolTerminal, SpeaksOnStandardErrorOnlyWhenAsked)
{
    const Scratch scratch;
    const std::string soup = scratch.write("soup.stl", boxStl()), out = scratch.path("out.obj");
    EXPECT_EQ(runTool({"weld", soup, out}).err, "");

    const Outcome verbose = runTool({"weld", "--verbose", "--json", soup, out});
    EXPECT_EQ(verbose.json()["vertices"], 8);
    EXPECT_NE(verbose.err.find("meshCompact: 33 vertices, 11 triangles\n"), std::string::npos) << verbose;
    EXPECT_EQ(verbose.err.find_first_of("\r\x1b"), std::string::npos) << verbose;
}

/// Opens a pipe for writing when the tool has opened it for reading; -1 if that takes too long.
int openPipeOfTool(const std::string& path)
{
    for (int attempt = 0; attempt < 2000; ++attempt) {
        const int pipe = open(path.c_str(), O_WRONLY | O_NONBLOCK);
        if (pipe >= 0) return pipe;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return -1;
}

TEST(ToolCancel, InterruptedWhileReadingItLeavesTheOldFile)
{
    const Scratch scratch;
    const std::string in = scratch.path("in.obj"), out = scratch.write("out.obj", "old");
    ASSERT_EQ(mkfifo(in.c_str(), 0600), 0);
    for (const auto& [number, status] : {std::pair{SIGINT, 130}, {SIGTERM, 143}}) {
        ToolProcess tool({"weld", in, out});
        const int pipe = openPipeOfTool(in);
        ASSERT_GE(pipe, 0);
        const std::string content = boxObj();
        ASSERT_EQ(write(pipe, content.data(), content.size()), static_cast<ssize_t>(content.size()));
        tool.signal(number);
        close(pipe);
        const Outcome outcome = tool.wait();
        EXPECT_EQ(outcome.status, status) << outcome;
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "zngeom: cancelled\n");
        EXPECT_EQ(scratch.read("out.obj"), "old");
    }
    EXPECT_EQ(scratch.names(), (std::vector<std::string>{"in.obj", "out.obj"}));
}

TEST(ToolCancel, InterruptedAnywhereItLeavesTheOldFilesOrTheWholeNewOnes)
{
    using Words = std::vector<std::string>;
    for (const auto& [command, options] : {std::pair{"weld", Words{}},
                                           {"split", {"--parts", "20"}},
                                           {"repair", {"--self-intersections"}},
                                           {"reduce", {"--to", "0.5"}},
                                           {"reduce", {"--to", "0.5", "--method", "collapse"}},
                                           {"subdivide", {}},
                                           {"extrude", {"--all", "--distance", "2"}},
                                           {"collar", {"--loop", "1", "--count", "20000"}},
                                           {"fill", {"--quality", "0"}},
                                           {"curvature", {"--type", "max"}}}) {
        const Scratch scratch;
        const bool splits = !std::strcmp(command, "split"), needsSurface = !std::strcmp(command, "fill") ||
                                                                           !std::strcmp(command, "extrude") ||
                                                                           !std::strcmp(command, "collar");
        const std::string in = scratch.write("in.obj", gridObj(150) + (needsSurface ? "" : "f 1 2 3\nf 1 1 2\n"));
        Words arguments{command, in, scratch.path("out.ply")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        expectOldOrNewAtCtrlC(scratch, arguments, splits ? 20 : 1, !splits);
    }
}

} // namespace

} // namespace toolTest
