// The text formats that consist of counts, positions and faces.
#include "znGeom/files/internal/save_sink.h"

namespace znGeom::internal {

namespace {

void savePositions(const CompactMesh& mesh, SaveSink& sink)
{
    forEachVertex(mesh, sink, [&](int vertex) {
        const float* position = mesh.getVerticesRaw() + 3 * std::ptrdiff_t(vertex);
        sink.decimal(position[0]);
        sink.decimals(position + 1, 2);
        sink.text("\n");
    });
}

void saveFaces(const CompactMesh& mesh, SaveSink& sink)
{
    forEachFace(mesh, sink, [&](const int* corners, int numCorners) {
        sink.decimal(numCorners);
        for (int i = 0; i < numCorners; ++i) {
            sink.text(" ");
            sink.decimal(corners[i]);
        }
        sink.text("\n");
    });
}

void saveCounts(const CompactMesh& mesh, SaveSink& sink)
{
    sink.decimal(mesh.getNumVertices());
    sink.text(" ");
    sink.decimal(countFaces(mesh, sink));
}

} // namespace

void saveOff(const CompactMesh& mesh, SaveSink& sink)
{
    sink.text("OFF\n");
    saveCounts(mesh, sink);
    sink.text(" 0\n");
    savePositions(mesh, sink);
    saveFaces(mesh, sink);
}

void savePlain(const CompactMesh& mesh, SaveSink& sink)
{
    saveCounts(mesh, sink);
    sink.text("\n");
    savePositions(mesh, sink);
    saveFaces(mesh, sink);
}

void savePoints(const CompactMesh& mesh, SaveSink& sink) { savePositions(mesh, sink); }

} // namespace znGeom::internal
