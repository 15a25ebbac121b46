/// What the fuzz targets of the readers have in common.
#pragma once

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "znGeom/files/internal/parsers.h"

namespace znFuzz {

/// Ends the run with a report of the input.
inline void require(bool holds)
{
    if (!holds) std::abort();
}

template <typename T>
bool sameBytes(const T* a, const T* b, int count)
{
    return count == 0 || std::memcmp(a, b, static_cast<size_t>(count) * sizeof(T)) == 0;
}

/// Reads a text into `mesh`, and once more through a buffer with room for almost nothing: where a block ends must not
/// matter.
inline void parseBothWays(void (*parse)(znGeom::internal::TextReader&, znGeom::CompactMesh&), std::string_view text,
                          znGeom::CompactMesh& mesh)
{
    znGeom::internal::TextReader reader(text), narrowReader(text, 2);
    znGeom::CompactMesh narrow;
    parse(reader, mesh);
    parse(narrowReader, narrow);
    require(mesh.getNumVertices() == narrow.getNumVertices());
    require(mesh.getNumTriangles() == narrow.getNumTriangles());
    require(mesh.getNumPolys() == narrow.getNumPolys());
    require(mesh.getNumPolyPoints() == narrow.getNumPolyPoints());
    require(sameBytes(mesh.getVertices(), narrow.getVertices(), mesh.getNumVertices()));
    require(sameBytes(mesh.getTriangles(), narrow.getTriangles(), mesh.getNumTriangles()));
    require(sameBytes(mesh.getPolyLengths(), narrow.getPolyLengths(), mesh.getNumPolys()));
    require(sameBytes(mesh.getPolyPoints(), narrow.getPolyPoints(), mesh.getNumPolyPoints()));
}

} // namespace znFuzz
