/// Repairing a mesh and telling each step.
#pragma once

#include <string>
#include <vector>

#include "apps/zngeom/defects/mesh_defects.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

struct RepairStep
{
    const char* kind; ///< for programs
    std::string text; ///< for people: what was done
    int removedTriangles = 0, turnedTriangles = 0, addedVertices = 0;
};

/// Repairs what the options name, beside what is always repaired, step by step until nothing more can be.
/// \param options  without a fold angle no folds are repaired
/// \param progress throws `Cancelled` when the user has asked to stop; the mesh has then undergone some of the steps
std::vector<RepairStep> repairMesh(znGeom::CompactMesh& mesh, const DefectOptions& options, znUtil::Progress& progress);

} // namespace tool
