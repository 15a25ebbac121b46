/// What the commands about curves on a mesh have in common.
#pragma once

#include <string>
#include <vector>

#include "apps/zngeom/files/polyline_files.h"
#include "apps/zngeom/frame/report.h"
#include "znGeom/curves/surface_curves.h"
#include "znGeom/foundation/linear/plane.h"

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace tool {

using SurfaceCurves = std::vector<zn::Reference<znGeom::MeshCurve>>;

/// Adds `--plane NX,NY,NZ,D`, which may be given several times if `many`.
CLI::Option* addPlaneOption(CLI::App& app, std::vector<std::string>& texts, bool many);
/// Fails for what is not four numbers, and for a plane without a normal.
znLinear::Plane planeFrom(const std::string& text);

/// The curves of a plane. Fails where it misses. May be cancelled before the work.
SurfaceCurves cutByPlane(const znGeom::CompactMesh& mesh, const std::string& plane, const std::string& meshPath);

/// Polylines laid on a mesh. Fails for a point that is farther from the mesh than that is large, and for a piece that
/// does not arrive. May be cancelled.
/// \param farthest  receives the largest distance of a point
SurfaceCurves layOn(const znGeom::CompactMesh& mesh, const std::vector<Polyline>& polylines, const std::string& path,
                    znUtil::Progress& progress, double& farthest);

/// In space.
std::vector<Polyline> asPolylines(const znGeom::CompactMesh& mesh, const SurfaceCurves& curves);
/// Adds how many they are, how many of them are closed, their length, and for programs each by itself.
void addCurves(const znGeom::CompactMesh& mesh, const SurfaceCurves& curves, Report& report);

double diagonalOf(const znGeom::CompactMesh& mesh);

} // namespace tool
