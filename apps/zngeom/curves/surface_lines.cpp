#include "apps/zngeom/curves/surface_lines.h"

#include <CLI/App.hpp>

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/curves/lay_polyline.h"
#include "znGeom/curves/plane_section.h"

namespace tool {

namespace {

using znLinear::Point;

std::string shown(double value) { return shownNumber(value); }

} // namespace

CLI::Option* addPlaneOption(CLI::App& app, std::vector<std::string>& texts, bool many)
{
    CLI::Option* option = app.add_option("--plane", texts, "The plane of the points where NX*x + NY*y + NZ*z = D")
                              ->option_text("NX,NY,NZ,D" + std::string(many ? " ..." : ""));
    return option->expected(1)->multi_option_policy(many ? CLI::MultiOptionPolicy::TakeAll
                                                         : CLI::MultiOptionPolicy::Throw);
}

znLinear::Plane planeFrom(const std::string& text)
{
    const std::vector<double> numbers = finiteNumbers(text, 4);
    if (numbers.empty()) throw Failure("--plane " + text + ": expected four numbers with commas between them");
    const znLinear::Vector normal(numbers[0], numbers[1], numbers[2]);
    const double length = normal.length();
    const znLinear::Normal unit(normal);
    if (!unit.isValid() || !(length > 0)) throw Failure("--plane " + text + ": the normal has no length");
    return {(unit.asVector() * (numbers[3] / length)).asPoint(), unit};
}

SurfaceCurves cutByPlane(const znGeom::CompactMesh& mesh, const std::string& plane, const std::string& meshPath)
{
    SurfaceCurves curves;
    for (const auto& curve : znGeom::meshPlaneSection(mesh, planeFrom(plane))) curves.push_back(curve);
    if (curves.empty()) throw Failure(inputName(meshPath) + ": the plane " + plane + " misses the surface");
    return curves;
}

SurfaceCurves layOn(const znGeom::CompactMesh& mesh, const std::vector<Polyline>& polylines, const std::string& path,
                    znUtil::Progress& progress, double& farthest)
{
    progress.setCaption("tracing");
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    const znGeom::MeshLayPolyline lay(mesh, adjTris);
    const double size = diagonalOf(mesh);
    SurfaceCurves curves;
    farthest = 0;
    Phases phases(progress);
    for (const Polyline& polyline : polylines) {
        const znGeom::MeshLaidPolyline laid =
            lay(polyline.points, polyline.closed, phases.next(1.0 / static_cast<double>(polylines.size())));
        checkCancelled(progress);
        const std::string name = inputName(path) + ": polyline " + std::to_string(curves.size() + 1) + ", ";
        if (laid.lostPoint >= 0 || laid.farthestDistance > size)
            throw Failure(name + "point " + std::to_string(std::max(laid.lostPoint, laid.farthestPoint) + 1) +
                          ": is farther from the mesh than that is large");
        if (!laid.curve)
            throw Failure(name + "piece " + std::to_string(laid.lostPiece + 1) +
                          ": the way over the surface does not lead to its end; more points in between help");
        farthest = std::max(farthest, laid.farthestDistance);
        curves.push_back(laid.curve);
    }
    return curves;
}

std::vector<Polyline> asPolylines(const znGeom::CompactMesh& mesh, const SurfaceCurves& curves)
{
    std::vector<Polyline> polylines;
    for (const auto& curve : curves) {
        polylines.emplace_back();
        polylines.back().closed = curve->closed;
        for (const znGeom::MeshCoord& coord : curve->coords)
            polylines.back().points.append(coord.evaluate(mesh.getVertices(), mesh.getTriangles()));
    }
    return polylines;
}

void addCurves(const znGeom::CompactMesh& mesh, const SurfaceCurves& curves, Report& report)
{
    int numClosed = 0;
    double length = 0;
    Report::Value list = Report::Value::array();
    for (const auto& curve : curves) {
        const double own = curve->length(mesh);
        numClosed += curve->closed;
        length += own;
        list.push_back({{"points", curve->coords.size()}, {"closed", curve->closed}, {"length", rounded(own)}});
    }
    report.add("curves", curves.size());
    report.add("closed", numClosed);
    report.add("length", rounded(length), shown(length));
    report.addForPrograms("each_curve", std::move(list));
}

double diagonalOf(const znGeom::CompactMesh& mesh)
{
    double min[3], max[3];
    znGeom::meshBoundingBox(mesh, min, max);
    return distance(Point(min), Point(max));
}

} // namespace tool
