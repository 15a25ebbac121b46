#include "apps/zngeom/point_reader.h"

#include <algorithm>

#include "apps/zngeom/mesh_files.h"
#include "apps/zngeom/mesh_readers.h"
#include "apps/zngeom/pacer.h"
#include "apps/zngeom/read_file.h"
#include "apps/zngeom/text_scanner.h"

namespace tool {

namespace {

int wordsOnFirstLine(const std::string& text)
{
    TextScanner scanner(text);
    scanner.allowComments();
    int count = 0;
    if (scanner.atEnd()) return count;
    for (; scanner.hasWordOnLine(); ++count) scanner.word();
    return count;
}

std::vector<znGeom::MeshVertex> readPoints(const std::string& text, znUtil::Progress& progress)
{
    TextScanner scanner(text);
    scanner.allowComments();
    Pacer pacer(progress, text.size());
    std::vector<znGeom::MeshVertex> points;
    while (!scanner.atEnd()) {
        float coordinates[3];
        for (float& coordinate : coordinates) {
            if (!scanner.hasWordOnLine()) scanner.fail("a point has fewer than three coordinates");
            coordinate = scanner.number<float>();
        }
        points.emplace_back().set(coordinates);
        if (!isFinite(points.back())) scanner.fail("a coordinate is not finite, or beyond the range of a float");
        if (scanner.hasWordOnLine()) scanner.fail("a point has more than three coordinates");
        if (points.size() > maxElements) scanner.fail("there are more than " + std::to_string(maxElements) + " points");
        pacer.at(scanner.position());
    }
    return points;
}

std::vector<znGeom::MeshVertex> loadText(const std::string& path, znUtil::Progress& progress, bool& isPlainMesh)
try {
    progress.setCaption("reading");
    std::string text = readFile(path, progress);
    std::replace(text.begin(), text.end(), ',', ' ');
    isPlainMesh = isPlainMesh && wordsOnFirstLine(text) == 2;
    if (isPlainMesh) return {};
    return readPoints(text, progress);
} catch (const Failure& failure) {
    throw Failure(path + ": " + failure.what());
}

std::vector<znGeom::MeshVertex> loadVertices(const std::string& path, znUtil::Progress& progress)
{
    LoadedMesh loaded;
    loadMesh(path, progress, loaded);
    const znGeom::MeshVertex* vertices = loaded.mesh.getVertices();
    checkFinite(vertices, loaded.mesh.getNumVertices(), path);
    return {vertices, vertices + loaded.mesh.getNumVertices()};
}

} // namespace

std::vector<znGeom::MeshVertex> loadPoints(const std::string& path, znUtil::Progress& progress)
{
    const FileFormat* format = findFormat(path);
    bool isMesh = format != nullptr;
    std::vector<znGeom::MeshVertex> points;
    if (!format || format->read == readPlain) points = loadText(path, progress, isMesh);
    if (isMesh) points = loadVertices(path, progress);
    if (points.empty()) throw Failure(path + ": has no points");
    return points;
}

void checkFinite(const znGeom::MeshVertex* vertices, int count, const std::string& path)
{
    const auto found = std::find_if_not(vertices, vertices + count, znGeom::isFinite);
    if (found != vertices + count)
        throw Failure(path + ": vertex " + std::to_string(found - vertices) +
                      ", counted from 0, has a coordinate that is not finite");
}

} // namespace tool
