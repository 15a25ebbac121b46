#include "znGeom/files/internal/loaders.h"
#include "znGeom/files/internal/text_scanner.h"

namespace znGeom::internal {

bool loadPlain(LoadContext& context, CompactMesh& mesh)
{
    TextScanner scanner(context);
    MeshParts parts(context);
    int numVertices = 0, numFaces = 0;
    if (!scanner.read(numVertices) || !scanner.read(numFaces)) return false;
    if (numVertices < 0 || numFaces < 0) return scanner.fail("a count is negative");
    for (int i = 0; i < numVertices; ++i) {
        float position[3];
        if (!scanner.readThree(position) || !parts.addVertex(position)) return false;
    }
    zn::vector<int> corners;
    for (int i = 0; i < numFaces; ++i)
        if (!scanner.readCounted(corners) || !parts.addFace(corners.data(), corners.size())) return false;
    if (!scanner.atEnd()) return scanner.fail("the file goes on behind its last face");
    return !context.hasFailed() && parts.publish(mesh);
}

bool loadPoints(LoadContext& context, CompactMesh& mesh)
{
    TextScanner scanner(context);
    scanner.allowComments();
    scanner.allowCommas();
    MeshParts parts(context);
    while (!scanner.atEnd()) {
        float position[3];
        for (float& coordinate : position) {
            if (!scanner.hasWordOnLine()) return scanner.fail("a point has fewer than three coordinates");
            if (!scanner.read(coordinate)) return false;
        }
        if (scanner.hasWordOnLine()) return scanner.fail("a point has more than three coordinates");
        if (!parts.addVertex(position)) return false;
    }
    return !context.hasFailed() && parts.publish(mesh);
}

} // namespace znGeom::internal
