/// Extruding patches of a mesh, each by itself.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "znGeom/foundation/linear/affine_matrix.h"
#include "znGeom/topology/topo_mesh.h"

namespace tool {

/// How far and where to: one of three, then a scale.
struct ExtrudeMotion
{
    std::optional<double> distance; ///< along the mean normal of a patch
    std::optional<znLinear::Vector> vector;
    std::optional<znLinear::AffineMatrix> matrix;
    double scale = 1; ///< about the middle of a patch, before the rest
};

struct ExtrudeOutcome
{
    int numPatches = 0;
    int numSheets = 0;                          ///< patches that had no neighbours, and stay
    int numClosed = 0;                          ///< patches without a rim, of which there is a second one now
    std::vector<znGeom::TopoMeshFace> newFaces; ///< those that are no walls
};

/// Extrudes what is connected among some faces, patch by patch.
/// \param faces  of the mesh, each once
///
/// Throws a `Failure`, before anything is changed, for a distance where the normals of a patch cancel out.
ExtrudeOutcome extrudePatches(znGeom::TopoMesh& mesh, const std::vector<znGeom::TopoMeshFace>& faces,
                              const ExtrudeMotion& motion);

} // namespace tool
