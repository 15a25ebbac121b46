/// Comparing meshes to the last bit.
#pragma once

#include <cstring>

#include "znGeom/foundation/mesh.h"

namespace znTest {

/// Whether triangles, all channels of vertices, positions among them, and selections are the same.
inline bool sameBits(const znGeom::CompactMesh& a, const znGeom::CompactMesh& b)
{
    const auto same = [](const void* left, const void* right, int numBytes) {
        return numBytes == 0 || std::memcmp(left, right, static_cast<size_t>(numBytes)) == 0;
    };
    if (a.getNumVertices() != b.getNumVertices() || a.getNumTriangles() != b.getNumTriangles() ||
        a.getNumAttributes() != b.getNumAttributes() || !(a.getSelectedVertices() == b.getSelectedVertices()) ||
        !(a.getSelectedTriangles() == b.getSelectedTriangles()))
        return false;
    for (int i = 0; i < a.getNumAttributes(); ++i)
        if (!same(a.getAttributes(i)->asFloat(), b.getAttributes(i)->asFloat(),
                  4 * a.getAttributes(i)->getNumComponents() * a.getNumVertices()))
            return false;
    return same(a.getTriangles(), b.getTriangles(), 12 * a.getNumTriangles());
}

} // namespace znTest
