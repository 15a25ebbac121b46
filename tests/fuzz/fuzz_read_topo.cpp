// Any bytes as a half-edge mesh in the plain format.
#include <cstdint>

#include "tests/fuzz/parse_both_ways.h"
#include "tests/support/check_topology.h"
#include "znGeom/topology/twin.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    using znGeom::internal::TextReader;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    TextReader reader(text), narrowReader(text, 2);
    znGeom::TopoMesh mesh, narrow;
    znGeom::internal::parsePlain(reader, mesh);
    znGeom::internal::parsePlain(narrowReader, narrow);
    znFuzz::require(mesh.numVertices() == narrow.numVertices() && mesh.numEdges() == narrow.numEdges());
    znFuzz::require(static_cast<size_t>(mesh.numVertices() + mesh.numEdges()) <= size);

    znGeom::meshTwin(mesh);
    znFuzz::require(static_cast<bool>(znTest::checkTopology(mesh, false)));
    return 0;
}
