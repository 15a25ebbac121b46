/// What the commands that take parts of a mesh have in common.
#pragma once

#include <string>

#include "znGeom/analysis/edge_sides.h"
#include "znGeom/analysis/triangle_components.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace tool {

/// Adds `--by edges|vertices`.
CLI::Option* addAcrossOption(CLI::App& app, std::string& word);

/// The components over what the value of that option names. May be cancelled.
znGeom::MeshTriangleComponents findComponents(const znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides,
                                              const std::string& across, znUtil::Progress& progress);

/// Fails for a mesh without triangles, which has no parts.
void checkHasTriangles(const znGeom::CompactMesh& mesh, const std::string& path);

/// The note that advises welding first, where that helps; empty otherwise. May be cancelled.
std::string soupNote(const znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides, znUtil::Progress& progress);

} // namespace tool
