#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <limits>

#include "tests/apps/tool_process.h"

namespace toolTest {

namespace {

template <typename Number>
std::string bytesOf(std::initializer_list<Number> numbers)
{
    std::string bytes;
    for (const Number number : numbers) {
        const auto raw = std::bit_cast<std::array<char, sizeof(Number)>>(number);
        bytes.append(raw.data(), raw.size());
    }
    return bytes;
}

/// Four corners of a square, as floats; then 0 1 2 3 as bytes.
std::string square()
{
    return bytesOf<float>({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0}).append(bytesOf<std::uint8_t>({0, 1, 2, 3}));
}

/// A scene of one mesh whose buffer is the square in a file "square.bin"; a patch changes it (RFC 7396).
Json squareScene(const std::string& patch = "{}")
{
    Json scene = Json::parse(R"({"asset": {"version": "2.0"}, "nodes": [{"mesh": 0}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "indices": 1, "mode": 5}]}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 4, "type": "VEC3"},
                      {"bufferView": 1, "componentType": 5121, "count": 4, "type": "SCALAR"}],
        "bufferViews": [{"buffer": 0, "byteLength": 48}, {"buffer": 0, "byteOffset": 48, "byteLength": 4}],
        "buffers": [{"uri": "square.bin", "byteLength": 52}]})");
    scene.merge_patch(Json::parse(patch));
    return scene;
}

std::string asPlain(const Scratch& scratch, const Json& scene)
{
    report({"convert", scratch.write("scene.gltf", scene.dump()), scratch.path("scene.txt")});
    return scratch.read("scene.txt");
}

std::string glb(const std::string& json, std::uint32_t statedLength, const std::string& behind = "")
{
    const auto total = static_cast<std::uint32_t>(20 + json.size() + behind.size());
    std::string file("glTF");
    file.append(bytesOf<std::uint32_t>({2, total, statedLength})).append("JSON").append(json).append(behind);
    return file;
}

TEST(ToolGltf, ReadsStripsFansSparseAndSmallNumbersOfAFileBesideIt)
{
    const Scratch scratch;
    scratch.write("square.bin", square());
    const std::string corners = "4 2\n0 0 0\n1 0 0\n0 1 0\n1 1 0\n";
    EXPECT_EQ(asPlain(scratch, squareScene()), corners + "3 0 1 2\n3 1 3 2\n");

    // What stays in its place keeps its bits, and so do numbers beside an infinite one.
    const float infinity = std::numeric_limits<float>::infinity();
    scratch.write("odd.bin", bytesOf<float>({0, -0.0F, 0, infinity, 2, 0, 0, 1, 0, 1, 1, 0}).append("\0\1\2\3", 4));
    Json odd = squareScene();
    odd["buffers"][0]["uri"] = "odd.bin";
    EXPECT_TRUE(asPlain(scratch, odd).starts_with("4 2\n0 -0 0\ninf 2 0\n0 1 0\n")) << scratch.read("scene.txt");

    Json fan = squareScene();
    fan["meshes"][0]["primitives"][0]["mode"] = 6;
    EXPECT_EQ(asPlain(scratch, fan), corners + "3 0 1 2\n3 0 2 3\n");

    // Two parts that refer to the same vertices share them; without indices the vertices are the corners.
    Json twice = squareScene();
    twice["meshes"][0]["primitives"].push_back({{"attributes", {{"POSITION", 0}}}, {"mode", 6}});
    std::string fourFaces = corners;
    fourFaces[2] = '4';
    EXPECT_EQ(asPlain(scratch, twice), fourFaces + "3 0 1 2\n3 1 3 2\n3 0 1 2\n3 0 2 3\n");

    // The fourth vertex is moved to the position of the second.
    Json sparse = squareScene();
    sparse["accessors"][0]["sparse"] = Json::parse(
        R"({"count": 1, "indices": {"bufferView": 1, "byteOffset": 3, "componentType": 5121},
            "values": {"bufferView": 0, "byteOffset": 12}})");
    EXPECT_EQ(asPlain(scratch, sparse), "4 2\n0 0 0\n1 0 0\n0 1 0\n1 0 0\n3 0 1 2\n3 1 3 2\n");

    // Bytes as positions, 255 standing for 1, turned about z and moved.
    scratch.write("a small one.bin", bytesOf<std::uint8_t>({0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0, 0}));
    const Json small = squareScene(R"({"extensionsRequired": ["KHR_mesh_quantization"],
        "buffers": [{"uri": "a%20small%20one.bin", "byteLength": 12}],
        "bufferViews": [{"buffer": 0, "byteLength": 12, "byteStride": 4}],
        "accessors": [{"bufferView": 0, "componentType": 5121, "normalized": true, "count": 3, "type": "VEC3"}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}}]}],
        "nodes": [{"children": [1], "translation": [10, 0, 0]}, {"mesh": 0, "rotation": [0, 0, 1, 0]}]})");
    EXPECT_EQ(asPlain(scratch, small), "3 1\n10 0 0\n9 0 0\n10 -1 0\n3 0 1 2\n");
}

TEST(ToolGltf, OpensNothingButRegularFilesInTheFolderOfTheMesh)
{
    const Scratch outside, scratch;
    outside.write("square.bin", square());
    std::filesystem::create_directory(scratch.path("folder"));
    std::filesystem::create_symlink(outside.path("square.bin"), scratch.path("link.bin"));
    ASSERT_EQ(mkfifo(scratch.path("pipe.bin").c_str(), 0600), 0);
    const std::string other = "is not the name of a file in the folder";
    const std::vector<std::pair<std::string, std::string>> buffers{
        {"../secret.txt", other},
        {"%2E%2e%2Fsecret.txt", other},
        {outside.path("square.bin"), other},
        {"https://example.org/square.bin", other},
        {"..", other},
        {"", other},
        {"folder", "no regular file"},
        {"pipe.bin", "no regular file"},
        {"link.bin", "leads out of the folder"},
        {"missing.bin", "No such file"},
        {"a.gltf", "ends too soon"},
        {"data:application/octet-stream;base64,AAAA", "ends too soon"},
        {"data:application/octet-stream;base64,AA*A", "base64"},
    };
    for (const auto& [name, words] : buffers) {
        Json scene = squareScene();
        scene["buffers"][0]["uri"] = name;
        if (name == "a.gltf") scene["buffers"][0]["byteLength"] = 1e15;
        expectOneLine(runTool({"info", scratch.write("a.gltf", scene.dump())}), {"a.gltf: ", words}, name);
    }
}

TEST(ToolGltf, TakesNoMoreMemoryThanTheFileJustifiesAndReachesBeyondNothing)
{
    const Scratch scratch;
    scratch.write("square.bin", square());
    Json doubling = squareScene();
    for (int i = 0; i < 40; ++i) doubling["nodes"][i] = {{"children", {i + 1, i + 1}}};
    doubling["nodes"][40] = {{"mesh", 0}};
    Json crowd = squareScene();
    crowd["nodes"] = Json::array();
    for (int i = 0; i < 200; ++i) crowd["nodes"].push_back({{"mesh", 0}});
    crowd["accessors"][0] = {{"componentType", 5126}, {"count", 100000}, {"type", "VEC3"}};
    const std::string deep(10000, '['), sparse = R"({"accessors": [{"bufferView": 0, "componentType": 5126, "count": 4,
        "type": "VEC3", "sparse": {"count": )",
                                        sparseIndices = R"(, "indices": {"bufferView": 1, "componentType": )";
    const std::vector<std::pair<std::string, std::string>> files{
        {doubling.dump(), "node 40 stands in two places"},
        {squareScene(R"({"nodes": [{"children": [0]}], "scenes": [{"nodes": [0]}]})").dump(), "stands in two places"},
        {crowd.dump(), "would become more than 64 megabytes"},
        {squareScene(R"({"accessors": [{"componentType": 5126, "count": 400000000, "type": "VEC3"}]})").dump(),
         "would become more than 64 megabytes"},
        {squareScene(sparse + "2" + sparseIndices + R"(5125}, "values": {"bufferView": 0}}}]})").dump(),
         "beyond view 1"},
        {squareScene(sparse + "3" + sparseIndices + R"(5121}, "values": {"bufferView": 0, "byteOffset": 36}}}]})")
             .dump(),
         "beyond view 0"},
        {squareScene(sparse + "2" + sparseIndices + R"(5123}, "values": {"bufferView": 0}}}]})").dump(), "isn't there"},
        {squareScene(R"({"accessors": [{"bufferView": 0, "componentType": 5126, "count": 5, "type": "VEC3"}]})").dump(),
         "beyond view 0"},
        {squareScene(R"({"bufferViews": [{"buffer": 0, "byteOffset": 9007199254740992, "byteLength": 48}]})").dump(),
         "beyond its buffer"},
        {squareScene(R"({"accessors": [{"bufferView": 0, "componentType": 5126, "count": -1, "type": "VEC3"}]})")
             .dump(),
         "no whole number"},
        {squareScene(R"({"extensionsRequired": ["KHR_draco_mesh_compression"]})").dump(), "KHR_draco"},
        {R"({"asset": )" + deep, "nested deeper"},
        {R"({"extras": )" + deep + std::string(10000, ']') + "}", "nested deeper"},
        {"<?xml version=\"1.0\"?><COLLADA/>", "can't be understood"},
        {"mtllib other.mtl\nv 0 0 0\n", "can't be understood"},
        {"[1, 2]", "not a glTF file"},
        {glb(R"({"asset": {}} )", 0xFFFFFFF0), "chunk is larger than the file"},
        {glb(R"({"asset": {}} )", 14, bytesOf<std::uint32_t>({0xFFFFFFFF}) + std::string("BIN\0", 4)),
         "chunk is larger"},
    };
    for (const auto& [content, words] : files)
        expectOneLine(runTool({"info", scratch.write("a.gltf", content)}), {"a.gltf: ", words}, content.substr(0, 300));
}

} // namespace

} // namespace toolTest
