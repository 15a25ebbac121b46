#include "tests/apps/sample_files.h"

#include <cmath>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <vector>

namespace toolTest {

namespace {

const std::vector<std::array<float, 3>> vertices{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},   {0, 0, 1},
                                                 {1, 0, 1}, {1, 1, 1}, {0, 1, 1}, {5, 5, 5.5F}};
const std::vector<std::vector<int>> faces{{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4},
                                          {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4}};

std::vector<std::array<int, 3>> fanTriangles()
{
    std::vector<std::array<int, 3>> triangles;
    for (const std::vector<int>& face : faces)
        for (std::size_t i = 2; i < face.size(); ++i) triangles.push_back({face[0], face[i - 1], face[i]});
    return triangles;
}

std::string vertexLines(const std::string& front, const std::string& end)
{
    std::string text;
    for (const auto& [x, y, z] : vertices) {
        text += front + std::to_string(x) + " " + std::to_string(y) + " " + std::to_string(z);
        text += end;
    }
    return text;
}

template <typename Faces>
std::string countedFaces(const Faces& list)
{
    std::string text;
    for (const auto& face : list) {
        text += std::to_string(face.size());
        for (const int corner : face) text.append(" ").append(std::to_string(corner));
        text += "\n";
    }
    return text;
}

template <typename Number>
std::string bytes(Number value, bool bigEndian = false)
{
    auto raw = std::bit_cast<std::array<char, sizeof(Number)>>(value);
    if (bigEndian != (std::endian::native == std::endian::big)) std::reverse(raw.begin(), raw.end());
    return {raw.begin(), raw.end()};
}

std::string plyHeader(const std::string& format)
{
    return "ply\nformat " + format +
           " 1.0\ncomment a box\nelement vertex 9\nproperty float x\nproperty float y\nproperty float z\n"
           "property uchar quality\nelement face 6\nproperty list uchar int vertex_indices\nend_header\n";
}

} // namespace

std::string with(std::string text, const std::string& words, const std::string& others)
{
    const std::size_t found = text.find(words);
    EXPECT_NE(found, std::string::npos) << words;
    return found == std::string::npos ? text : text.replace(found, words.size(), others);
}

std::string boxObj()
{
    std::string text = vertexLines("v ", "\n");
    for (const std::vector<int>& face : faces) {
        text += "f";
        for (const int corner : face) text.append(" ").append(std::to_string(corner + 1));
        text += "\n";
    }
    return text;
}

std::string boxOff() { return "OFF\n# a box\n9 6 0\n\n" + vertexLines("", "\n") + countedFaces(faces); }

std::string boxPly() { return plyHeader("ascii") + vertexLines("", " 7\n") + countedFaces(faces); }

std::string boxBinaryPly(const std::string& order)
{
    const bool big = order == "big";
    std::string content = plyHeader("binary_" + order + "_endian");
    for (const auto& vertex : vertices) {
        for (const float coordinate : vertex) content += bytes(coordinate, big);
        content += '\7';
    }
    for (const std::vector<int>& face : faces) {
        content += static_cast<char>(face.size());
        for (const int corner : face) content += bytes(corner, big);
    }
    return content;
}

std::string boxPlain() { return "9 11\n" + vertexLines("", "\n") + countedFaces(fanTriangles()); }

std::string boxStl()
{
    std::string text = "solid box\n";
    for (const auto& triangle : fanTriangles()) {
        text += "facet normal 0 0 0\nouter loop\n";
        for (const int corner : triangle) {
            const auto& [x, y, z] = vertices[static_cast<std::size_t>(corner)];
            text += "vertex " + std::to_string(x) + " " + std::to_string(y) + " " + std::to_string(z) + "\n";
        }
        text += "endloop\nendfacet\n";
    }
    return text + "endsolid box\n";
}

std::string boxBinaryStl()
{
    std::string content(80, ' ');
    content += bytes(std::uint32_t(11));
    for (const auto& triangle : fanTriangles()) {
        content.append(12, '\0');
        for (const int corner : triangle)
            for (const float coordinate : vertices[static_cast<std::size_t>(corner)]) content += bytes(coordinate);
        content.append(2, '\0');
    }
    return content;
}

std::string triangleGltf()
{
    // Positions (0 0 0) (1 0 0) (0 1 0), three normals (0 0 1), indices 0 1 2 0 2 1 of 16 bits.
    return R"({"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}],
"nodes": [{"mesh": 0, "children": [1, 2]}, {"mesh": 0, "translation": [10, 0, 0]}, {"mesh": 0, "scale": [-1, 1, 1]}],
"meshes": [{"primitives": [{"attributes": {"POSITION": 0, "NORMAL": 1}, "indices": 2}]}],
"accessors": [
  {"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3", "min": [0, 0, 0], "max": [1, 1, 0]},
  {"bufferView": 1, "componentType": 5126, "count": 3, "type": "VEC3"},
  {"bufferView": 2, "componentType": 5123, "count": 6, "type": "SCALAR"}],
"bufferViews": [{"buffer": 0, "byteLength": 36}, {"buffer": 0, "byteOffset": 36, "byteLength": 36},
  {"buffer": 0, "byteOffset": 72, "byteLength": 12}],
"buffers": [{"byteLength": 84, "uri": "data:application/octet-stream;base64,)"
           R"(AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAAAAAAAAAAAAAAAIA/AAAAAAAAAAAAAIA/AAAAAAAAAAAAAIA/)"
           R"(AAABAAIAAAACAAEA"}]})";
}

std::string cubeObj(const std::string& first, const std::string& second)
{
    std::string text;
    for (const char* yz : {" -1 -1\n", " 1 -1\n", " -1 1\n", " 1 1\n"})
        for (const std::string& x : {first, second}) text += "v " + x + yz;
    return text + "f 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n";
}

std::string tetrahedraObj()
{
    return "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nv -1 0 0\nv 0 -1 0\nv 0 0 -1\nv -0.5 -0.25 -0.25\n"
           "f 1 3 2\nf 1 2 4\nf 1 4 3\nf 2 3 4\nf 1 5 6\nf 1 7 5\nf 1 6 7\nf 7 6 8\nf 6 5 8\nf 5 7 8\n";
}

std::string gridObj(int side)
{
    std::string text;
    for (int y = 0; y <= side; ++y)
        for (int x = 0; x <= side; ++x) text += "v " + std::to_string(x) + " " + std::to_string(y) + " 0\n";
    for (int y = 0; y < side; ++y)
        for (int x = 1; x <= side; ++x) {
            const int low = y * (side + 1) + x, high = low + side + 1;
            for (const int corner : {low, low + 1, high + 1, high})
                text += (corner == low ? "f " : " ") + std::to_string(corner);
            text += "\n";
        }
    return text;
}

std::string wavesObj(int side)
{
    const std::string flat = gridObj(side);
    std::string text;
    for (int y = 0; y <= side; ++y)
        for (int x = 0; x <= side; ++x)
            text += "v " + std::to_string(x) + " " + std::to_string(y) + " " +
                    std::to_string(std::sin(x / 4.0) * std::cos(y / 5.0)) + "\n";
    return text + flat.substr(flat.find("f "));
}

} // namespace toolTest
