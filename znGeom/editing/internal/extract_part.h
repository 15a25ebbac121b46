/// The copying that all extractions share.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom::internal {

/// Part of a mesh by index lists that live elsewhere.
struct Part
{
    int numVertices;
    const int* vertices;
    int numTriangles;
    const int* triangles;
};

/// Copies a part as `meshExtract` does.
/// \param newVertices  one entry per vertex of the source: those of the part are set to their new numbers, and corners
///                     become what stands here
void extractPart(CompactMesh& target, const CompactMesh& source, const Part& part, int* newVertices);

} // namespace znGeom::internal
