#include "apps/zngeom/files/point_reader.h"

#include <algorithm>

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/frame/failure.h"

namespace tool {

namespace {

const FileFormat& points() { return formatOf("points.xyz"); }

/// Words are separated by blanks and commas; "#" starts a comment.
int wordsOnFirstLine(const std::string& text)
{
    int count = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool isLineEnd = text[at] == '\n' || text[at] == '\r';
        if (isLineEnd && count > 0) break;
        if (isLineEnd || text[at] == ' ' || text[at] == '\t' || text[at] == ',') continue;
        const std::size_t end = std::min(text.find_first_of(text[at] == '#' ? "\n\r" : " \t,\n\r", at), text.size());
        count += text[at] == '#' ? 0 : 1;
        at = end - 1;
    }
    return count;
}

/// A file with an extension of the plain format is a mesh or points: its first line decides.
void loadAny(const std::string& path, znUtil::Progress& progress, const std::string& word, LoadedMesh& loaded)
{
    const FileFormat* format = findFormat(path, word);
    if (path == standardStream && !format) format = &points();
    const bool isPlain = format && format->format == znGeom::MeshFormat::Plain;
    if (format && !isPlain && path != standardStream) {
        loadMesh(path, progress, loaded, word);
        return;
    }
    try {
        progress.setCaption("reading");
        const std::string text = readFile(path, progress);
        const bool isPoints = !format || (isPlain && wordsOnFirstLine(text) != 2);
        loadMesh(text, isPoints ? points() : *format, "", progress, loaded);
    } catch (const Failure& failure) {
        throw Failure(inputName(path) + ": " + failure.what());
    }
}

} // namespace

std::vector<znGeom::MeshVertex> loadPoints(const std::string& path, znUtil::Progress& progress, const std::string& word)
{
    LoadedMesh loaded;
    loadAny(path, progress, word, loaded);
    const int count = loaded.mesh.getNumVertices();
    if (count == 0) throw Failure(inputName(path) + ": has no points");
    const znGeom::MeshVertex* vertices = loaded.mesh.getVertices();
    checkFinite(vertices, count, inputName(path));
    return {vertices, vertices + count};
}

void checkFinite(const znGeom::MeshVertex* vertices, int count, const std::string& path)
{
    const auto found = std::find_if_not(vertices, vertices + count, znGeom::isFinite);
    if (found != vertices + count)
        throw Failure(path + ": vertex " + std::to_string(found - vertices) +
                      ", counted from 0, has a coordinate that is not finite");
}

} // namespace tool
