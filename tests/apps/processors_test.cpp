#include <gtest/gtest.h>
#include <sched.h>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

/// While it lives, what this thread starts may use one processor.
class OnOneProcessor
{
public:
    OnOneProcessor()
    {
        sched_getaffinity(0, sizeof m_before, &m_before);
        cpu_set_t one;
        CPU_ZERO(&one);
        for (int i = 0; i < CPU_SETSIZE && CPU_COUNT(&one) == 0; ++i)
            if (CPU_ISSET(i, &m_before)) CPU_SET(i, &one);
        sched_setaffinity(0, sizeof one, &one);
    }
    OnOneProcessor(const OnOneProcessor&) = delete;
    OnOneProcessor& operator=(const OnOneProcessor&) = delete;
    ~OnOneProcessor() { sched_setaffinity(0, sizeof m_before, &m_before); }

private:
    cpu_set_t m_before;
};

TEST(ToolProcessors, DoNotShowInWhatIsWritten)
{
    const Scratch scratch;
    const std::string waves = scratch.write("in.obj", wavesObj(120)), parts = scratch.path("parts.ply");
    report({"cut", waves, parts, "--plane", "1,0.3,0,60", "--plane", "0.2,1,0.1,50"});
    const auto run = [&](std::vector<std::string> arguments, const std::string& out) {
        arguments.insert(arguments.begin() + 2, scratch.path(out));
        EXPECT_NE(runTool(arguments).status, 1) << arguments[0];
        return scratch.read(out);
    };
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"reduce", waves, "--to", "0.3"},
                                                      {"reduce", waves, "--tolerance", "0.2%"},
                                                      {"reduce", waves, "--to", "0.1"},
                                                      {"reduce", waves, "--to", "0.1", "--method", "collapse"},
                                                      {"shell", waves, "--thickness", "0.7"},
                                                      {"offset", waves, "--distance", "2"},
                                                      {"curvature", waves, "--type", "max"},
                                                      {"stitch", parts, "--tolerance", "0.1%"}}) {
        const std::string onAll = run(arguments, "all.ply");
        EXPECT_FALSE(onAll.empty());
        const OnOneProcessor one;
        EXPECT_TRUE(run(arguments, "one.ply") == onAll) << arguments[0] << " " << arguments[3];
    }
}

} // namespace

} // namespace toolTest
