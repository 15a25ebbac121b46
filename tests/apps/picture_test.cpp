#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <cstring>
#include <functional>

#include "tests/apps/sample_files.h"
#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

struct Pixel
{
    unsigned char red, green, blue;
};

struct Picture
{
    int width = 0, height = 0;
    std::vector<Pixel> pixels;

    explicit Picture(const std::string& path)
    {
        png_image header;
        std::memset(&header, 0, sizeof header);
        header.version = PNG_IMAGE_VERSION;
        const bool isPng = png_image_begin_read_from_file(&header, path.c_str()) != 0;
        EXPECT_TRUE(isPng) << path << ": " << header.message;
        if (!isPng) return;
        header.format = PNG_FORMAT_RGB;
        width = static_cast<int>(header.width), height = static_cast<int>(header.height);
        pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        EXPECT_NE(png_image_finish_read(&header, nullptr, pixels.data(), 0, nullptr), 0) << path;
    }

    /// The pixels of a colour, without the legend at the foot.
    int count(const std::function<bool(const Pixel&)>& isMeant) const
    {
        const auto end = pixels.begin() + static_cast<std::ptrdiff_t>(width) * (height - 80);
        return static_cast<int>(std::count_if(pixels.begin(), end, isMeant));
    }
};

bool isOrange(const Pixel& p) { return p.red > 180 && p.green > 90 && p.green < 180 && p.blue < 60; }
bool isViolet(const Pixel& p) { return p.red > 90 && p.blue > 120 && p.green < 100 && p.red < 200; }
bool isRed(const Pixel& p) { return p.red > 190 && p.green < 80 && p.blue < 90; }
bool isMagenta(const Pixel& p) { return p.red > 190 && p.green < 80 && p.blue > 140; }
bool isGrey(const Pixel& p) { return p.red < 220 && p.red > 80 && p.blue >= p.red && p.blue - p.red < 20; }

TEST(ToolPicture, ShowsTheMeshAndWhatIsWrongWithIt)
{
    const Scratch scratch;
    const std::string path = scratch.path("picture.png");
    const auto picture = [&](const std::string& content) {
        runTool({"check", scratch.write("file.obj", content), "--picture", path, "--picture-size", "480x330"});
        return Picture(path);
    };
    const Picture clean = picture(cubeObj());
    EXPECT_GT(clean.count(isGrey), 20000);
    for (const auto& isMarked : {isOrange, isViolet, isRed, isMagenta}) EXPECT_EQ(clean.count(isMarked), 0);
    // Whichever side it is, the mesh is looked at from there.
    for (const auto& [side, turned] : {std::pair{"f 1 3 4 2", "f 1 2 4 3"},
                                       {"f 5 6 8 7", "f 5 7 8 6"},
                                       {"f 1 5 7 3", "f 1 3 7 5"},
                                       {"f 2 4 8 6", "f 2 6 8 4"}})
        EXPECT_GT(picture(with(cubeObj(), side, turned)).count(isOrange), 3000) << side;
    EXPECT_GT(picture(cubeObj() + "v 0 0 3\nf 1 2 9\n").count(isRed), 200);
    EXPECT_GT(picture(tetrahedraObj()).count(isMagenta), 40);
    EXPECT_GT(picture(cubeObj() + "v 0 0 0\nv 0.1 3 0\nv -0.1 3 0\nf 9 10 11\n").count(isViolet), 500);
}

TEST(ToolPicture, ColoursValues)
{
    const Scratch scratch;
    const std::string path = scratch.path("picture.png"), cube = scratch.write("cube.obj", cubeObj());
    const auto isBlue = [](const Pixel& p) { return p.blue > p.red + 60; };
    const auto isWarm = [](const Pixel& p) { return p.red > p.blue + 60; };
    const auto picture = [&](const std::vector<std::string>& words) {
        std::vector<std::string> arguments = words;
        for (const char* word : {"--picture", path.c_str(), "--picture-size", "480x330"}) arguments.push_back(word);
        report(arguments);
        return Picture(path);
    };
    // From corners without distance to those with the largest.
    const std::string moved = scratch.write("moved.obj", cubeObj("-1", "3"));
    const Picture heat = picture({"distance", moved, cube});
    EXPECT_GT(heat.count(isBlue), 5000);
    EXPECT_GT(heat.count(isWarm), 5000);
    const Picture low = picture({"curvature", cube, scratch.path("out.txt"), "--range", "10,20"});
    EXPECT_GT(low.count(isBlue), 20000);
    EXPECT_EQ(low.count(isWarm), 0);
}

TEST(ToolPicture, PointsOutWhatIsTiny)
{
    const Scratch scratch;
    const std::string path = scratch.path("picture.png");
    const std::string in = scratch.write("in.obj", gridObj(120) + "v 60 60 -1\nv 60.3 60.1 1\nv 60.1 60.4 1\n"
                                                                  "f 14642 14643 14644\n");
    EXPECT_EQ(runTool({"check", in, "--picture", path, "--picture-size", "700x400"}).status, 2);
    const Picture picture(path);
    EXPECT_EQ(picture.width, 700);
    EXPECT_EQ(picture.height, 400);
    EXPECT_GT(picture.count(isViolet), 500) << "no close-up";
}

TEST(ToolPicture, ShowsBeforeAndAfterARepair)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", with(cubeObj(), "f 5 6 8 7", "f 5 7 8 6"));
    const std::string path = scratch.write("picture.png", "old");
    report({"repair", in, scratch.path("out.obj"), "--picture", path});
    const Picture picture(path);
    EXPECT_EQ(picture.width, 1280);
    EXPECT_EQ(picture.height, 800);
    int left = 0, right = 0, greyOfRight = 0;
    for (int y = 0; y < picture.height - 80; ++y)
        for (int x = 0; x < picture.width; ++x) {
            const Pixel& pixel = picture.pixels[static_cast<std::size_t>(y * picture.width + x)];
            (x < picture.width / 2 ? left : right) += isOrange(pixel) ? 1 : 0;
            if (x > picture.width / 2 && isGrey(pixel)) ++greyOfRight;
        }
    EXPECT_GT(left, 10000);
    EXPECT_EQ(right, 0);
    EXPECT_GT(greyOfRight, 50000);
}

TEST(ToolPicture, ShowsBeforeAndAfterAReduction)
{
    const Scratch scratch;
    const std::string in = scratch.write("in.obj", gridObj(40)), path = scratch.path("picture.png");
    report({"reduce", in, scratch.path("out.obj"), "--to", "0.2", "--picture", path, "--picture-size", "640x400"});
    const Picture picture(path);
    EXPECT_EQ(picture.width, 640);
    EXPECT_GT(picture.count(isGrey), 20000);
    expectOneLine(runTool({"reduce", in, scratch.path("other.obj"), "--to", "0.2", "--picture", "picture.bmp"}),
                  {"picture.bmp"}, "bmp");
    EXPECT_EQ(scratch.names(), (std::vector<std::string>{"in.obj", "out.obj", "picture.png"}));
}

TEST(ToolPicture, IsDrawnOfMeshesThatHaveNoExtentOrTooMuch)
{
    const Scratch scratch;
    // Its legend takes more lines than the picture has.
    const char* manyKinds = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nv 0 0 1\nv nan 0 0\nv 0.2 0.2 -1\nv 0.2 0.2 1\n"
                            "v 0.3 0.2 1\nf 1 2 3\nf 2 1 4\nf 1 2 5\nf 1 2 3\nf 4 4 1\nf 1 4 5\nf 3 2 6\nf 7 8 9\n"
                            "f 2 3 9\n";
    for (const char* content : {"v 1 1 1\nv 1 1 1\nv 1 1 1\nf 1 2 3\n", "v nan 0 0\nv 1 nan 0\nv 0 1 inf\nf 1 2 3\n",
                                "v 0 0 0\nv 3e38 0 0\nv 0 3e38 0\nv -3e38 -3e38 3e38\nf 1 2 3\nf 1 2 4\n",
                                "v 0 0 0\nv 1e-45 0 0\nv 0 1e-45 0\nf 1 2 3\n", "v 1 2 3\nf 1 1 1\n", manyKinds}) {
        const std::string path = scratch.path("picture.png");
        const Outcome outcome =
            runTool({"check", scratch.write("file.obj", content), "--picture", path, "--picture-size", "300x300"});
        EXPECT_TRUE(outcome.status == 0 || outcome.status == 2) << content << outcome;
        EXPECT_EQ(Picture(path).width, 300) << content;
    }
}

TEST(ToolPicture, ShowsAChartAndItsBoardOnTheMesh)
{
    const Scratch scratch;
    const std::string path = scratch.path("chart.png"), out = scratch.path("out.obj");
    const Json told =
        report({"flatten", scratch.write("grid.obj", gridObj(6)), out, "--picture", path, "--picture-size", "900x500"});
    EXPECT_EQ(told["picture"], path);
    const Picture picture(path);
    // A square, twice, which the board divides evenly.
    const int dark = picture.count([](const Pixel& p) { return p.blue > p.red + 40; });
    const int light = picture.count([](const Pixel& p) { return p.red > 170 && p.red < 245 && p.blue >= p.red; });
    EXPECT_GT(dark, 20000);
    EXPECT_NEAR(dark, light, 0.2 * dark);
    EXPECT_GT(picture.count([](const Pixel& p) { return p.red > 200 && p.blue < 60; }), 1000) << "borders";
    EXPECT_EQ(picture.count(isRed), 0) << "nothing is turned over";
}

} // namespace

} // namespace toolTest
