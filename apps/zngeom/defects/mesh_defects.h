/// What is wrong with a mesh, and where.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/zngeom/defects/flipped_triangles.h"
#include "apps/zngeom/files/line_files.h"
#include "znGeom/editing/duplicate_triangles.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// Two vertices, the lower one first.
using Edge = std::pair<int, int>;

/// Two triangles, and the segment that they have in common.
struct Crossing
{
    int triangles[2];
    Segment segment;
};

struct DefectOptions
{
    bool crossings = true;
    std::optional<double> foldAngle; ///< in degrees; folds to this angle or less are defects, 180 is flat
};

/// All lists of numbers are ascending.
struct MeshDefects
{
    std::vector<int> nonFiniteVertices;
    znGeom::MeshDuplicateTrisResult triangles;
    std::vector<Edge> edges;                  ///< along which more than two sides of triangles lie
    std::optional<std::vector<int>> vertices; ///< of several fans; not known while there are bad edges
    WindingDefects winding;
    std::optional<std::vector<Crossing>> crossings; ///< none where they were not looked for
    std::vector<int> crossingTriangles;
    std::optional<std::vector<Edge>> folds; ///< likewise
    std::vector<int> foldedTriangles;

    std::vector<Edge> boundary; ///< edges of one triangle, which are no defect
    std::string soupNote;       ///< advises welding where the triangles are not connected; otherwise empty

    bool isClean() const;
};

/// \param progress  advanced; throws `Cancelled` when the user has asked to stop
///
/// Crossings are not looked for among triangles that share no vertices: there all neighbours would cross.
MeshDefects findDefects(const znGeom::CompactMesh& mesh, const DefectOptions& options, znUtil::Progress& progress);

} // namespace tool
