#include <algorithm>
#include <cmath>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/listing.h"
#include "apps/zngeom/files/point_reader.h"
#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/spatial/queries/closest_point.h"
#include "znGeom/spatial/trees/octree_partition.h"

namespace tool {

namespace {

struct Closest
{
    double distance = 0;
    znGeom::MeshCoord place;
};

/// May be cancelled.
std::vector<Closest> findClosest(const znGeom::CompactMesh& mesh, const std::vector<znGeom::MeshVertex>& points,
                                 znUtil::Progress& progress)
{
    constexpr int leafCapacity = 16;
    const EndOnSignal endOnSignal(progress); // the search may make a tree of its own, which sees no cancel
    znUtil::Progress phase;
    progress.subPhase(0.2, phase);
    phase.setCaption("indexing");
    znGeom::BoundingBox box;
    znGeom::meshBoundingBox(mesh, box);
    const znGeom::Octree octree(mesh.getNumVertices(), mesh.getVerticesRaw(), box, true, leafCapacity);
    checkCancelled(progress);
    znGeom::OctreeTris octreeTris;
    znGeom::computeOctreeTris(mesh, octree, octreeTris);
    checkCancelled(progress);

    progress.subPhase(0.8, phase);
    phase.setCaption("closest");
    std::vector<znLinear::Point> queries;
    for (const znGeom::MeshVertex& point : points) queries.push_back(point.asPoint());
    std::vector<znGeom::MeshCoord> places(points.size());
    std::vector<double> distances(points.size());
    znGeom::MeshClosestPoint(mesh, octree, octreeTris)
        .compute(queries.data(), static_cast<int>(queries.size()), places.data(), distances.data(), &phase);
    checkCancelled(progress);
    std::vector<Closest> found;
    for (std::size_t i = 0; i < points.size(); ++i) found.push_back({distances[i], places[i]});
    return found;
}

void appendLine(const Closest& closest, std::string& text)
{
    appendNumber(text, closest.distance);
    text += ' ' + std::to_string(closest.place.triangle);
    for (const double weight : closest.place.weights) appendNumber(text += ' ', weight);
}

/// All members are finite numbers, which are the same in JSON.
void appendObject(const Closest& closest, std::string& text)
{
    appendNumber(text += "{\"distance\":", closest.distance);
    text += ",\"triangle\":" + std::to_string(closest.place.triangle) + ",\"weights\":";
    char separator = '[';
    for (const double weight : closest.place.weights) {
        appendNumber(text += separator, weight);
        separator = ',';
    }
    text += "]}";
}

class ClosestCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("closest", "Tell for each of some points where a mesh is nearest");
        sub->footer(
            "Writes one line for each point, in their order: the distance in the units of the file, the number of\n"
            "the nearest triangle, and the weights of its three corners, which add up to 1: the nearest place is the\n"
            "sum of the corners by their weights. Triangles are counted from 0 in the order of the mesh file, a\n"
            "polygon by the triangles of its fan. --json writes an array of objects with distance, triangle and\n"
            "weights. With -o the lines go to a file, and the numbers of the whole are printed.\n"
            "A text has the x y z of a point on each line, divided by blanks or commas; # starts a comment. All\n"
            "coordinates must be finite, and are taken in the precision of meshes, that of a float. A .txt file is\n"
            "a text with points unless its first line has two numbers, as that of a mesh does.");
        m_files.addTo(*sub, "POINTS", "A text file with points, or a mesh file for its vertices");
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        Phases phases(progress);
        LoadedMesh loaded;
        m_files.load(loaded, phases.next(0.3));
        const std::vector<znGeom::MeshVertex> points = m_files.loadPoints(phases.next(0.1));
        const std::vector<Closest> found = findClosest(loaded.mesh, points, phases.next(0.6));
        checkAllFound(found);
        Report report = m_files.answer(found.size(), [&](std::string& text, std::size_t i, bool json) {
            json ? appendObject(found[i], text) : appendLine(found[i], text);
        });
        if (!m_files.isToFile()) return report;
        describe(found, report);
        report.addNotes(loaded.notes);
        return report;
    }

private:
    void checkAllFound(const std::vector<Closest>& found) const
    {
        const auto lost = std::find_if(found.begin(), found.end(), [](const Closest& c) { return !c.place.valid(); });
        if (lost != found.end())
            throw Failure(m_files.questions + ": point " + std::to_string(lost - found.begin()) +
                          ", counted from 0, is too far from the mesh to measure");
    }

    void describe(const std::vector<Closest>& found, Report& report) const
    {
        double smallest = found.front().distance, largest = smallest, sum = 0, sumOfSquares = 0;
        for (const Closest& closest : found) {
            smallest = std::min(smallest, closest.distance);
            largest = std::max(largest, closest.distance);
            sum += closest.distance;
            sumOfSquares += closest.distance * closest.distance;
        }
        const double count = static_cast<double>(found.size());
        report.add("points", found.size());
        report.add("distance_min", rounded(smallest));
        report.add("distance_max", rounded(largest));
        report.add("distance_mean", rounded(sum / count));
        report.add("distance_rms", rounded(std::sqrt(sumOfSquares / count)));
    }

    Listing m_files;
};

} // namespace

std::unique_ptr<Command> makeClosestCommand() { return std::make_unique<ClosestCommand>(); }

} // namespace tool
