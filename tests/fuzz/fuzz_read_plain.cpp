// Any bytes as a file of the plain format.
#include <cstdint>

#include "tests/fuzz/parse_both_ways.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    znGeom::CompactMesh mesh;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    znFuzz::parseBothWays(znGeom::internal::parsePlain, text, mesh);

    // The mesh is no larger than the file can justify, and its channels are as long as the mesh says.
    znFuzz::require(static_cast<size_t>(mesh.getNumVertices()) <= size / 6);
    znFuzz::require(static_cast<size_t>(mesh.getNumTriangles()) <= size / 8);
    znFuzz::require(mesh.getNumAttributes() == 1 && mesh.getAttributes(0)->getNumElements() == mesh.getNumVertices());
    return 0;
}
