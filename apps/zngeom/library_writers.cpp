#include <algorithm>
#include <cstdio>
#include <memory>

#include "apps/zngeom/failure.h"
#include "apps/zngeom/mesh_writers.h"
#include "znGeom/files/mesh_files.h"

namespace tool {

namespace {

/// The library's writers don't tell of a full disk. Their files are known by the number of their lines.
void checkLines(const std::string& path, long long expected)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    long long found = 0;
    char chunk[1 << 16], last = '\n';
    std::size_t count = 0;
    while (file && (count = std::fread(chunk, 1, sizeof chunk, file.get())) > 0) {
        found += std::count(chunk, chunk + count, '\n');
        last = chunk[count - 1];
    }
    if (!file || found != expected || last != '\n')
        throw Failure("can't be written: the file didn't become complete, the disk may be full");
}

} // namespace

void writeObj(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress&)
{
    if (!znGeom::meshWriteObj(mesh, znOS::Filename(path.c_str()))) throw Failure("can't be written");
    const int arrays = 1 + (mesh.getNormals() ? 1 : 0) + (mesh.getUVs() ? 1 : 0);
    checkLines(path, static_cast<long long>(mesh.getNumVertices()) * arrays + mesh.getNumTriangles());
}

void writePlain(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress&)
{
    znGeom::meshWrite(mesh, znOS::Filename(path.c_str()));
    checkLines(path, 1LL + mesh.getNumVertices() + mesh.getNumTriangles());
}

} // namespace tool
