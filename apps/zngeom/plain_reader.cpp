#include "apps/zngeom/mesh_readers.h"
#include "apps/zngeom/pacer.h"
#include "apps/zngeom/read_file.h"
#include "apps/zngeom/text_scanner.h"
#include "znGeom/files/mesh_files.h"

namespace tool {

namespace {

/// Fails unless the text is what its header says: that many vertices, then that many triangles whose corners exist.
void checkPlain(const std::string& text, znUtil::Progress& progress)
{
    TextScanner scanner(text);
    Pacer pacer(progress, text.size());
    const int numVertices = scanner.integer(), numFaces = scanner.integer();
    if (numVertices < 0 || numFaces < 0) scanner.fail("a count is negative");
    for (int vertex = 0; vertex < numVertices; ++vertex) {
        for (int axis = 0; axis < 3; ++axis) scanner.number<float>();
        pacer.at(scanner.position());
    }
    for (int face = 0; face < numFaces; ++face) {
        const int numCorners = scanner.integer();
        if (numCorners != 3)
            scanner.fail("a face has " + std::to_string(numCorners) + " corners, and plain files are read with three");
        for (int side = 0; side < 3; ++side) {
            const int corner = scanner.integer();
            if (corner < 0 || corner >= numVertices)
                scanner.fail("face " + std::to_string(face + 1) + " names vertex " + std::to_string(corner) +
                             ", the file has " + std::to_string(numVertices) + ", counted from 0");
        }
        pacer.at(scanner.position());
    }
    if (!scanner.atEnd()) scanner.fail("the file goes on behind its last face");
}

} // namespace

void readPlain(const std::string& path, znUtil::Progress& progress, LoadedMesh& result)
{
    checkReadable(path);
    checkPlain(readFile(path, progress), progress);
    znGeom::meshRead(result.mesh, znOS::Filename(path.c_str()));
    result.numFaces = result.mesh.getNumTriangles();
}

} // namespace tool
