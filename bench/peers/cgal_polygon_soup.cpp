// CGAL on polygon soups: merging duplicate points, orienting, and its text files.
#include "bench/checks.h"
#include "bench/suite.h"

#include <CGAL/IO/OBJ.h>
#include <CGAL/IO/OFF.h>
#include <CGAL/Polygon_mesh_processing/orient_polygon_soup.h>
#include <CGAL/Polygon_mesh_processing/repair_polygon_soup.h>
#include <CGAL/Simple_cartesian.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

using Point = CGAL::Simple_cartesian<double>::Point_3;
using bench::Input;

/// Faces as arrays, which CGAL handles faster than vectors of vectors.
struct PolygonSoup
{
    std::vector<Point> points;
    std::vector<std::array<std::size_t, 3>> faces;

    explicit PolygonSoup(const bench::Soup& soup)
    {
        points.reserve(soup.positions.size() / 3);
        faces.reserve(soup.triangles.size() / 3);
        for (std::size_t i = 0; i < soup.positions.size(); i += 3)
            points.emplace_back(soup.positions[i], soup.positions[i + 1], soup.positions[i + 2]);
        for (std::size_t i = 0; i < soup.triangles.size(); i += 3)
            faces.push_back({static_cast<std::size_t>(soup.triangles[i]),
                             static_cast<std::size_t>(soup.triangles[i + 1]),
                             static_cast<std::size_t>(soup.triangles[i + 2])});
    }
};

/// Its readers fill vectors of vectors: a face may have any number of corners.
struct ReadSoup
{
    std::vector<Point> points;
    std::vector<std::vector<std::size_t>> faces;
};

template <class AnySoup>
bool agrees(const bench::Soup& wanted, const AnySoup& soup, int numVertices, double tolerance)
{
    return static_cast<int>(soup.points.size()) == numVertices &&
           bench::sameCorners(
               wanted, static_cast<int>(soup.faces.size()), tolerance,
               [&](std::size_t corner, int axis) { return soup.points[soup.faces[corner / 3][corner % 3]][axis]; });
}

std::size_t merge(PolygonSoup& soup)
{
    return CGAL::Polygon_mesh_processing::merge_duplicate_points_in_polygon_soup(soup.points, soup.faces);
}

bool mergingAgrees(const Input& input)
{
    PolygonSoup soup(input.blownUp());
    merge(soup);
    return agrees(input.blownUp(), soup, bench::distinctPositions(input.blownUp()), 0);
}

void runMerging(benchmark::State& state, const Input& input)
{
    std::unique_ptr<PolygonSoup> soup;
    bench::timeWork(
        state,
        [&] {
            soup = std::make_unique<PolygonSoup>(input.blownUp());
            return soup.get();
        },
        [](PolygonSoup* subject) { return merge(*subject); });
}

bool orient(PolygonSoup& soup) { return CGAL::Polygon_mesh_processing::orient_polygon_soup(soup.points, soup.faces); }

bool orientingAgrees(const Input& input)
{
    PolygonSoup soup(bench::partlyTurnedOver(input.soup()));
    const bool done = orient(soup);
    std::vector<int> triangles;
    for (const auto& face : soup.faces)
        for (const std::size_t corner : face) triangles.push_back(static_cast<int>(corner));
    return done && bench::isConsistentlyWound(triangles);
}

void runOrienting(benchmark::State& state, const Input& input)
{
    const bench::Soup given = bench::partlyTurnedOver(input.soup());
    std::unique_ptr<PolygonSoup> soup;
    bench::timeWork(
        state,
        [&] {
            soup = std::make_unique<PolygonSoup>(given);
            return soup.get();
        },
        [](PolygonSoup* subject) { return orient(*subject); });
}

std::unique_ptr<ReadSoup> readObj(const std::string& file)
{
    auto soup = std::make_unique<ReadSoup>();
    CGAL::IO::read_OBJ(file, soup->points, soup->faces);
    return soup;
}

std::unique_ptr<ReadSoup> readOff(const std::string& file)
{
    auto soup = std::make_unique<ReadSoup>();
    CGAL::IO::read_OFF(file, soup->points, soup->faces);
    return soup;
}

bool writeObj(const PolygonSoup& soup, const std::string& file)
{
    return CGAL::IO::write_OBJ(file, soup.points, soup.faces, CGAL::parameters::stream_precision(6));
}

bool writeOff(const PolygonSoup& soup, const std::string& file)
{
    return CGAL::IO::write_OFF(file, soup.points, soup.faces, CGAL::parameters::stream_precision(10));
}

using Read = std::unique_ptr<ReadSoup> (*)(const std::string&);
using Write = bool (*)(const PolygonSoup&, const std::string&);
using FileOf = const std::string& (Input::*)() const;

bool measureReading(const char* work, const char* who, Read read, FileOf fileOf)
{
    return bench::measure({work, who,
                           [=](const Input& input) {
                               return agrees(input.soup(), *read((input.*fileOf)()), input.soup().numVertices(), 1e-5);
                           },
                           [=](benchmark::State& state, const Input& input) {
                               bench::timeWork(
                                   state, [&] { return &(input.*fileOf)(); },
                                   [=](const std::string* file) { return read(*file); });
                           }});
}

bool measureWriting(const char* work, const char* who, Write write,
                    bench::Soup (*readBack)(const std::filesystem::path&))
{
    return bench::measure(
        {work, who,
         [=](const Input& input) {
             const std::string file = bench::temporaryFile("cgal");
             return write(PolygonSoup(input.soup()), file) &&
                    bench::sameSurface(input.soup(), readBack(file), input.soup().numVertices(), 1e-5);
         },
         [=](benchmark::State& state, const Input& input) {
             const PolygonSoup soup(input.soup());
             const std::string file = bench::temporaryFile("cgal");
             bench::timeWork(
                 state, [&] { return std::filesystem::remove(file); }, [&](bool) { return write(soup, file); });
         }});
}

[[maybe_unused]] const bool listed[] = {
    bench::measure({"weld", "CGAL", mergingAgrees, runMerging}),
    bench::measure({"orient", "CGAL", orientingAgrees, runOrienting, 0, bench::generatedInputs()}),
    measureReading("read_obj", "CGAL", readObj, &Input::objFile),
    measureReading("read_plain", "CGAL_OFF", readOff, &Input::offFile),
    measureWriting("write_obj", "CGAL", writeObj, bench::readObjFile),
    measureWriting("write_plain", "CGAL_OFF", writeOff, bench::readPlainFile),
};

} // namespace
