// Any bytes as an OBJ file.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

#include "tests/fuzz/parse_both_ways.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    znGeom::CompactMesh mesh;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    znFuzz::parseBothWays(znGeom::internal::parseObj, text, mesh);

    const int numVertices = mesh.getNumVertices(), numPoints = mesh.getNumPolyPoints();
    const auto isVertex = [=](int corner) { return corner >= 0 && corner < numVertices; };
    const float* positions = mesh.getVerticesRaw();
    const int* corners = mesh.getTrianglesRaw();
    const int* lengths = mesh.getPolyLengths();
    znFuzz::require(static_cast<size_t>(numVertices) <= (size + 1) / 3);
    znFuzz::require(static_cast<size_t>(3 * mesh.getNumTriangles() + numPoints) <= size / 2);
    znFuzz::require(std::all_of(positions, positions + 3 * numVertices, [](float x) { return std::isfinite(x); }));
    znFuzz::require(std::all_of(corners, corners + 3 * mesh.getNumTriangles(), isVertex));
    znFuzz::require(std::all_of(mesh.getPolyPoints(), mesh.getPolyPoints() + numPoints, isVertex));
    znFuzz::require(std::all_of(lengths, lengths + mesh.getNumPolys(), [](int length) { return length >= 3; }));
    znFuzz::require(std::accumulate(lengths, lengths + mesh.getNumPolys(), 0) == numPoints);
    znFuzz::require(mesh.getNumTriangles() == 0 || mesh.getNumPolys() == 0);
    return 0;
}
