#include <gtest/gtest.h>
#include <png.h>

#include <cmath>
#include <cstring>
#include <sstream>

#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

std::string pngOf(int side, const std::string& grey)
{
    png_image header{};
    header.version = PNG_IMAGE_VERSION;
    header.width = header.height = static_cast<png_uint_32>(side);
    header.format = PNG_FORMAT_GRAY;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(header);
    std::string bytes(size, '\0');
    EXPECT_NE(png_image_write_to_memory(&header, bytes.data(), &size, 0, grey.data(), 0, nullptr), 0);
    return bytes.substr(0, size);
}

/// Red, green and blue of every pixel.
std::string pixelsOf(const std::string& png)
{
    png_image header{};
    header.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&header, png.data(), png.size()), 0);
    header.format = PNG_FORMAT_RGB;
    std::string pixels(PNG_IMAGE_SIZE(header), '\0');
    EXPECT_NE(png_image_finish_read(&header, nullptr, pixels.data(), 0, nullptr), 0);
    return pixels;
}

TEST(ToolStroke, SpacesAndSmooths)
{
    const Scratch scratch;
    const std::string pen = scratch.write("pen.txt", "# x y\n0 0\n10,0\n\n10\t10\n"), out = scratch.path("out.txt");
    const Json plain = report({"stroke", pen, out, "--spacing", "3"});
    EXPECT_TRUE(plain["samples"] == 3 && plain["points"] == 7 && plain["length"] == 20);
    EXPECT_EQ(scratch.read("out.txt"), "0 0\n3 0\n6 0\n9 0\n10 2\n10 5\n10 8\n");
    // What it writes it reads; commas where the name says so; the table alone on standard output.
    const Outcome csv = runTool({"stroke", out, scratch.path("out.csv"), "--spacing=20"});
    EXPECT_EQ(csv.status, 0) << csv;
    EXPECT_EQ(scratch.read("out.csv"), "0,0\n");
    EXPECT_EQ(runTool({"stroke", pen, "-", "--spacing", "12.5"}).out, "0 0\n10 2.5\n");

    const Json smooth = report({"stroke", pen, out, "--spacing", "0.5", "--smooth", "--steps", "3", "--mass=1.5"});
    EXPECT_LT(smooth["smoothed_length"].get<double>(), 20);
    std::istringstream points(scratch.read("out.txt"));
    double x = 0, y = 0, lastX = 0, lastY = 0;
    for (int i = 0; points >> x >> y; lastX = x, lastY = y, ++i)
        if (i > 0) {
            ASSERT_NEAR(std::hypot(x - lastX, y - lastY), 0.5, 0.02) << i;
        }
    report({"stroke", pen, scratch.path("out.svg"), "--spacing", "3", "--smooth"});
    const std::string drawing = scratch.read("out.svg");
    EXPECT_TRUE(drawing.starts_with("<svg ") && drawing.find("points=\"0,0 10,0 10,10\"") != std::string::npos);
}

TEST(ToolStroke, PaintsDabsOnAPicture)
{
    const Scratch scratch;
    const std::string grey(40 * 40, '\x80'), picture = scratch.write("in.png", pngOf(40, grey));
    const std::string pen = scratch.write("pen.txt", "10 20\n30 20\n900 20\n"), out = scratch.path("out.png");
    const std::vector<std::string> paint = {"stroke",   pen, out,        "--spacing", "10",
                                            "--radius", "4", "--colour", "255,0,0",   "--image"};
    auto arguments = paint;
    arguments.push_back(picture);
    const Json painted = report(arguments);
    EXPECT_TRUE(painted["points"] == 90 && painted["points_on_image"] == 4) << painted;
    const std::string pixels = pixelsOf(scratch.read("out.png"));
    ASSERT_EQ(pixels.size(), 40u * 40 * 3);
    const std::string red{'\xFF', '\0', '\0'}, untouched(3, '\x80');
    const auto at = [&](std::size_t column, std::size_t row) { return pixels.substr(3 * (40 * row + column), 3); };
    for (const std::size_t x : {10, 20, 30, 39}) EXPECT_EQ(at(x, 20), red) << x;
    for (const std::size_t x : {5, 15, 25}) EXPECT_EQ(at(x, 20), untouched) << x;
    EXPECT_TRUE(at(20, 16) != untouched && at(20, 15) == untouched && at(20, 23) != untouched &&
                at(20, 24) == untouched);

    const std::string png = scratch.read("in.png");
    for (const std::string& bytes :
         {png.substr(0, png.size() / 2), png.substr(0, 20), std::string("PNG"), std::string()}) {
        arguments.back() = scratch.write("cut.png", bytes);
        expectOneLine(runTool(arguments), {"cut.png: "}, std::to_string(bytes.size()));
    }
    EXPECT_EQ(pixelsOf(scratch.read("out.png")), pixels) << "left as it was";
}

TEST(ToolCurve, GoesThroughTheSamples)
{
    const Scratch scratch;
    const std::string out = scratch.path("out.txt");
    // x^3 - 2 x^2 + 3 x - 4 at uneven places
    const std::string cubic = scratch.write("cubic.txt", "0 -4\n1 -2\n3 14\n4 40\n6 158\n");
    for (const std::string method : {"spline", "newton", "neville", "linear"}) {
        const Json made = report({"curve", cubic, out, "--method", method, "--samples", "13"});
        EXPECT_TRUE(made["points"] == 13 && made["method"] == method && made["curve_max"] == 158);
        std::istringstream points(scratch.read("out.txt"));
        for (double x, y, i = 0; points >> x >> y; ++i) {
            EXPECT_EQ(x, i / 2);
            const double expected = method == "linear" && i == 9 ? 69.5 : ((x - 2) * x + 3) * x - 4;
            if (method != "linear" || i == 9 || i == 6) {
                EXPECT_NEAR(y, expected, 1e-12) << method << ' ' << x;
            }
        }
    }
    report({"curve", cubic, scratch.path("out.svg")});
    EXPECT_NE(scratch.read("out.svg").find("<circle"), std::string::npos);
}

TEST(ToolStroke, SaysWhatItCannotDo)
{
    const Scratch scratch;
    const std::string good = scratch.write("good.txt", "0 0\n1 1\n"), out = scratch.path("out.txt");
    const std::pair<std::string, std::vector<std::string>> tables[] = {
        {"", {"bad.txt: is empty"}},
        {"# nothing\n\n", {"bad.txt: has no samples"}},
        {"1 2\n", {"bad.txt: has one sample, and two are needed"}},
        {"1 2\n\n3 x\n", {"bad.txt: line 3: ", "\"x\" is not a finite number"}},
        {"1 2\n3", {"bad.txt: line 2: a sample has fewer than two numbers"}},
        {"1 2 3\n4 5 6\n", {"bad.txt: line 1: a sample has more"}},
        {"1 2\n3 1e999\n", {"bad.txt: line 2: "}},
        {"1 2\n3 nan\n", {"bad.txt: line 2: "}},
        {"1 2\n3 1e30\n", {"bad.txt: ", "too large"}},
        {std::string("\x89PNG\0\x01\x02\n\0\xFF", 10), {"bad.txt: line 1: "}},
        {std::string(1 << 20, '7'), {"bad.txt: line 1: "}},
    };
    for (const auto& [text, words] : tables) {
        const std::string bad = scratch.write("bad.txt", text);
        expectOneLine(runTool({"stroke", bad, out, "--spacing", "1"}), words, text.substr(0, 40));
        expectOneLine(runTool({"curve", bad, out}), words, text.substr(0, 40));
    }
    const std::string down = scratch.write("down.txt", "0 0\n2 1\n2 3\n");
    expectOneLine(runTool({"curve", down, out}), {"down.txt: x must ascend, and that of sample 3, 2,"}, "equal x");
    const std::string jump = scratch.write("jump.txt", "0 0\n1e15 0\n");
    expectOneLine(runTool({"stroke", jump, out, "--spacing", "1e-9"}), {"ten million"}, "no end");
    std::string wild;
    for (int i = 0; i < 200; ++i) wild += std::to_string(i % 7) + " 0\n";
    const std::string wilder = scratch.write("wild.txt", wild);
    expectOneLine(runTool({"stroke", wilder, out, "--spacing=1", "--smooth", "--drag=0.1"}), {"--drag"}, "no rest");
    expectOneLine(runTool({"stroke", good, scratch.path("out.png"), "--spacing=1"}), {"--image"}, "png");
    expectOneLine(runTool({"stroke", good, good, "--spacing=1"}), {"not overwritten"}, "same");
    expectOneLine(runTool({"stroke", good, out, "--spacing=1", "--image", good, "--radius=1"}), {".png"}, "no picture");
    EXPECT_EQ(scratch.names(), (std::vector<std::string>{"bad.txt", "down.txt", "good.txt", "jump.txt", "wild.txt"}));

    const std::vector<std::string> wrongUsages[] = {
        {"stroke", good, out},
        {"stroke", good, out, "--spacing=0"},
        {"stroke", good, out, "--spacing=-1"},
        {"stroke", good, out, "--spacing=nan"},
        {"stroke", good, out, "--spacing=1", "--steps=3"},
        {"stroke", good, out, "--spacing=1", "--smooth", "--steps=0"},
        {"stroke", good, out, "--spacing=1", "--smooth", "--steps=1001"},
        {"stroke", good, out, "--spacing=1", "--smooth", "--mass=0"},
        {"stroke", good, out, "--spacing=1", "--smooth", "--drag=1"},
        {"stroke", good, out, "--spacing=1", "--image=in.png"},
        {"stroke", good, out, "--spacing=1", "--image=in.png", "--radius=0"},
        {"curve", good, out, "--method=cubic"},
        {"curve", good, out, "--samples=1"},
    };
    for (const auto& arguments : wrongUsages) EXPECT_EQ(runTool(arguments).status, 2) << arguments.back();
}

} // namespace

} // namespace toolTest
