#include <gtest/gtest.h>

#include <sstream>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

TEST(ToolStreams, ReadAndWriteEveryFormatThroughPipes)
{
    const Scratch scratch;
    const std::string box = scratch.write("box.obj", boxObj());
    for (const char* format : {"obj", "ply", "stl", "off", "glb", "plain"}) {
        const std::string file = scratch.path(std::string("box.") + format);
        if (file != box) report({"convert", box, file});
        const Outcome out = runTool({"convert", "--json", "-", "-", "--format", "obj", "--output-format", format}, box);
        EXPECT_EQ(out.status, 0) << format << out.err;
        EXPECT_EQ(Json::parse(out.err)["bytes"], out.out.size()) << format;
        EXPECT_TRUE(file == box || out.out == scratch.read(std::string("box.") + format)) << format;
        const Outcome read = runTool({"info", "--json", "-", "--format", format}, file);
        EXPECT_EQ(read.json()["triangles"], 11) << format << read;
    }
    const std::string points = scratch.write("points.txt", "0 0 9\n");
    EXPECT_EQ(runTool({"closest", box, "-"}, points).out, runTool({"closest", box, points}).out);
    const Outcome part = runTool({"extract", "-", "-", "--component", "1", "--format", "obj"}, box);
    EXPECT_EQ(report({"info", scratch.write("part.obj", part.out)})["triangles"], 11);
    EXPECT_EQ(report({"info", "--format", "obj", scratch.write("no extension", boxObj())})["polygons"], 5);
}

TEST(ToolStreams, SayWhatIsWrongWithThem)
{
    const Scratch scratch;
    const std::string box = scratch.write("box.obj", boxObj()), empty = scratch.write("empty.obj", "");
    expectOneLine(runTool({"info", "-"}, box), {"-: needs --format"}, "no format");
    expectOneLine(runTool({"info", "-", "--format", "ply"}, box), {"standard input: line 1: this is not a PLY"}, "ply");
    expectOneLine(runTool({"info", "-", "--format", "obj"}, empty), {"standard input: is empty"}, "empty");
    expectOneLine(runTool({"convert", "-", "-", "--format", "gltf"}, box), {"read and not written"}, "gltf");
    EXPECT_EQ(runTool({"info", "-", "--format", "docx"}, box).status, 2);
}

} // namespace

} // namespace toolTest
