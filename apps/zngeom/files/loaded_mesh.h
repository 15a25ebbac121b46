/// What the readers of the tool give back.
#pragma once

#include <climits>
#include <cstddef>
#include <string>
#include <vector>

#include "znGeom/files/mesh_format.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace tool {

/// A mesh has no more vertices and face corners than this: loops over 3 * count use an `int` as counter.
constexpr std::size_t maxElements = INT_MAX / 3;

/// A mesh from a file. Where any face has more than three corners, all faces are in the polygon description as well,
/// and the triangles are their fans.
struct LoadedMesh
{
    znGeom::CompactMesh mesh;
    int numFaces = 0;          ///< as in the file
    int numPolygons = 0;       ///< those of more than three corners
    znGeom::MeshGroups groups; ///< of the triangles, where the file has groups
    /// Per triangle corner, where those at one vertex differ; otherwise empty.
    zn::vector<znGeom::MeshUV> cornerUVs;
    zn::vector<znGeom::MeshNormal> cornerNormals;
    bool keepsPolygons = false;     ///< whether they are written as such, where the format has them
    std::vector<std::string> notes; ///< what the file has and the mesh doesn't
};

} // namespace tool
