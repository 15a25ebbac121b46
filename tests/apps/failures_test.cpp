#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

TEST(ToolFailures, ABadFileGivesOneClearLine)
{
    const std::string junk("\x7F\x80\0\n\r\x1B[31m\xFF{}\n\n", 16), triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
    const std::string manyFaces = with(boxBinaryPly("little"), "face 6", "face 2000000000");
    const std::vector<std::tuple<std::string, std::string, std::string>> files{
        {"corner.obj", triangle + "f 1 2 3\nf 1 2 99\n", "face 2 names vertex 99, the file has 3"},
        {"zero.obj", triangle + "f 0 1 2\n", "line 4: a face names vertex 0"},
        {"relative.obj", triangle + "f -1 -2 -4\n", "line 4: a face names vertex -4"},
        {"words.obj", triangle + "v one two three\n", "line 4: \"one\" is not a number"},
        {"short.obj", "v 0 0 0\n\nv 1 2\n", "line 3: a vertex has fewer than three coordinates"},
        {"empty.obj", "", "is empty"},
        {"other.obj", "Dear Sir,\nplease find enclosed\n", "no vertices"},
        {"junk.obj", junk, ""},
        {"corner.off", with(boxOff(), "3 3 0 4", "3 3 0 9"), "face 6 names vertex 9, the file has 9, counted from 0"},
        {"negative.off", with(boxOff(), "3 3 0 4", "3 3 0 -4"), "face 6 names vertex -4"},
        {"counts.off", with(boxOff(), "9 6 0", "999999999 6 0"), "ends too soon"},
        {"more.off", with(boxOff(), "9 6 0", "9 5 0"), "goes on"},
        {"minus.off", with(boxOff(), "9 6 0", "-9 6 0"), "line 3: a count is negative"},
        {"binary.off", "OFF BINARY\n", "binary"},
        {"four.off", "4OFF\n1 0 0\n0 0 0 0\n", "three dimensions"},
        {"junk.off", junk, ""},
        {"corner.txt", with(boxPlain(), "3 3 0 4", "3 3 0 9"),
         "face 11 names vertex 9, the file has 9, counted from 0"},
        {"corners.txt", with(boxPlain(), "3 3 0 4", "0 3 0 4"), "line 21: a face has 0 corners"},
        {"large.obj", triangle + "f 1 2 4294967299\n", "line 4: a face names vertex 4294967299"},
        {"small.obj", triangle + "f 1 2 -4294967295\n", "line 4: a face names vertex -4294967295"},
        {"escape.obj", triangle + "v \x1B[31m 0 0\n", "line 4: \"?[31m\" is not a number"},
        {"counts.txt", with(boxPlain(), "9 11", "999999999 11"), "ends too soon"},
        {"comment.txt", "# " + boxPlain(), "\"#\""},
        {"junk.mesh", junk, ""},
        {"corner.ply", with(boxPly(), "3 3 0 4", "3 3 0 9"), "face 6 names vertex 9"},
        {"header.ply", boxPly().substr(0, boxPly().find("property uchar")), "ends too soon"},
        {"type.ply", with(boxPly(), "float x", "quad x"), "line 5: an unknown type"},
        {"nothing.ply", with(boxPly(), "float z", "float w"), "no x, y and z"},
        {"counts.ply", manyFaces, "ends too soon, in face 7 of 2000000000"},
        {"twice.ply", with(boxPly(), "element face", "element vertex"), "twice"},
        {"junk.ply", junk, ""},
        {"text.stl", boxStl().substr(0, 500), "ends too soon"},
        {"junk.stl", junk, ""},
        {"empty.stl", "", "is empty"},
        {"corner.gltf", with(triangleGltf(), "AAACAAEA", "AAACAAkA"), "names vertex 9"},
        {"cut.gltf", triangleGltf().substr(0, 300), ""},
        {"junk.glb", junk, ""},
        {"unknown.abc", "0 0 0\n", "unknown extension .abc"},
        {"none", "0 0 0\n", "no extension"},
    };
    const Scratch scratch;
    const std::string out = scratch.write("out.obj", "old");
    for (const auto& [name, content, words] : files) {
        const std::string path = scratch.write(name, content);
        expectOneLine(runTool({"info", "--json", path}), {path, words}, name);
        expectOneLine(runTool({"convert", path, out}), {path, words}, name);
        expectOneLine(runTool({"weld", path, scratch.path("new.obj")}), {path, words}, name);
        EXPECT_EQ(scratch.read("out.obj"), "old") << name;
    }
    EXPECT_EQ(scratch.names().size(), files.size() + 1) << "something was left behind";
}

TEST(ToolFailures, AFileThatIsCutOffIsNeverTakenForAWholeOne)
{
    const Scratch scratch;
    const std::string box = scratch.write("box.obj", boxObj());
    report({"convert", box, scratch.path("box.glb")});
    // How much of the end a text can lose and still be whole: line ends, digits, the name of a solid.
    const std::vector<std::tuple<std::string, std::string, std::size_t>> files{
        {"cut.off", boxOff(), 2},
        {"cut.txt", boxPlain(), 2},
        {"cut.ply", boxPly(), 2},
        {"text.stl", boxStl(), 7},
        {"bin.ply", boxBinaryPly("big"), 1},
        {"bin.stl", boxBinaryStl(), 1},
        {"cut.glb", scratch.read("box.glb"), 1},
    };
    for (const auto& [name, content, spare] : files) {
        const std::size_t longest = content.size() - spare, step = std::max<std::size_t>(longest / 16, 1);
        for (std::size_t length = longest % step; length <= longest; length += step)
            expectOneLine(runTool({"info", scratch.write(name, content.substr(0, length))}), {name},
                          name + " cut to " + std::to_string(length) + "\n");
    }
}

TEST(ToolFailures, WhatCannotBeReadOrWrittenIsReported)
{
    const Scratch scratch;
    const std::string box = scratch.write("box.obj", boxObj());
    std::filesystem::create_directory(scratch.path("folder.obj"));
    const std::string folder = scratch.path("folder.obj"), missing = scratch.path("missing.obj");
    const std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> cases{
        {{"info", missing}, {missing, "No such file"}},
        {{"info", folder}, {folder, "folder"}},
        {{"convert", box, folder}, {folder, "folder"}},
        {{"convert", box, scratch.path("no/where.obj")}, {"No such file"}},
        {{"convert", box, scratch.path("box.abc")}, {"unknown extension"}},
        // What is to be written is checked before what is to be read.
        {{"convert", missing, scratch.path("box.abc")}, {"unknown extension"}},
    };
    for (const auto& [arguments, words] : cases) expectOneLine(runTool(arguments), words, arguments.back());
    EXPECT_EQ(scratch.names(), (std::vector<std::string>{"box.obj", "folder.obj"}));
}

std::vector<std::string> wordsOf(const std::string& line)
{
    std::istringstream words(line);
    return {std::istream_iterator<std::string>(words), {}};
}

TEST(ToolUsage, WrongUseIsStatusTwoAndSaysWhatIsRight)
{
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "a command is required"},
        {"inof", "unknown command inof; did you mean info?"},
        {"covert a.obj b.obj", "did you mean convert?"},
        {"help splt", "unknown command splt; did you mean split?"},
        {"xyzzy", "unknown command xyzzy\n"},
        {"inf\x1B[31m", "inf?[31m"},
        {"info", "MESH is required"},
        {"weld a.obj", "OUT is required"},
        {"info --loud a.obj", "--loud"},
        {"split a.obj", "OUT is required"},
        {"split a.obj b.obj --parts 0", "--parts: must be at least 1\n"},
        {"split a.obj b.obj --parts=-99999999999999999999", "--parts: must be at least 1\n"},
        {"split a.obj b.obj --most 99999999999999999999", "--most: must be at most 2147483647\n"},
        {"extract a.obj b.obj --boundary 1 --rings 2x", "--rings: must be a whole number\n"},
        {"extract a.obj b.obj --component 1.5", "--component: must be a whole number\n"},
        {"split a.obj b.obj --by faces", "edges,vertices"},
        {"split a.obj b.obj --parts 2 --by edges", "--by excludes --parts"},
        {"extract a.obj b.obj", "--component or --boundary"},
        {"extract a.obj b.obj --component 1 --boundary 1", "--component excludes --boundary"},
        {"extract a.obj b.obj --component 1 --rings 2", "--rings requires --boundary"},
        {"closest a.obj", "POINTS is required"},
    };
    for (const auto& [line, words] : cases) {
        const Outcome outcome = runTool(wordsOf(line));
        EXPECT_EQ(outcome.status, 2) << outcome;
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err.find("--help"), std::string::npos) << outcome;
        EXPECT_NE(outcome.err.find(words), std::string::npos) << line << outcome;
    }
}

TEST(ToolUsage, HelpIsHelpByAnyName)
{
    const Outcome help = runTool({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* word : {"info", "weld", "convert", "split", "extract", "closest", ".obj", ".ply", ".off", ".stl",
                             ".glb", ".gltf", ".txt", "Ctrl-C"})
        EXPECT_NE(help.out.find(word), std::string::npos) << word;
    EXPECT_NE(runTool({"weld", "--help"}).out.find("--positions"), std::string::npos);
    for (const auto& [line, same] : {std::pair{"help", "-h"}, {"help weld", "weld --help"}, {"-V", "--version"}}) {
        const Outcome outcome = runTool(wordsOf(line));
        EXPECT_EQ(outcome.status, 0) << outcome;
        EXPECT_EQ(outcome.out, runTool(wordsOf(same)).out);
    }
    EXPECT_TRUE(runTool({"--version"}).out.starts_with("zngeom "));
}

} // namespace

} // namespace toolTest
