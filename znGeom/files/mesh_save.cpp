#include "znGeom/files/mesh_save.h"

#include <algorithm>

#include "znGeom/files/internal/save_sink.h"
#include "znGeom/files/pending_file.h"

namespace znGeom {

namespace {

using namespace internal;
using Status = MeshSaveResult::Status;

void saveFormat(const CompactMesh& mesh, MeshFormat format, const MeshSaveOptions& options, SaveSink& sink)
{
    switch (format) {
    case MeshFormat::Obj:
        return saveObj(mesh, options, sink);
    case MeshFormat::Ply:
        return savePly(mesh, options, sink);
    case MeshFormat::Stl:
        return saveStl(mesh, sink);
    case MeshFormat::Off:
        return saveOff(mesh, sink);
    case MeshFormat::Plain:
        return savePlain(mesh, sink);
    default:
        return savePoints(mesh, sink);
    }
}

int countPolygons(const CompactMesh& mesh)
{
    const int* lengths = mesh.getPolyLengths();
    return static_cast<int>(
        std::count_if(lengths, lengths + mesh.getNumPolys(), [](int length) { return length > 3; }));
}

/// What the mesh has and a file of this format doesn't.
void noteMissing(const CompactMesh& mesh, MeshFormat format, const MeshSaveOptions& options, const SaveSink& sink,
                 MeshSaveResult& result)
{
    const std::string missing = std::string(": ") + meshFormatName(format) + " files have none, not written";
    const bool hasChannels = format == MeshFormat::Obj || format == MeshFormat::Ply;
    if (!hasChannels && mesh.getNormals()) result.notes.append("normals" + missing);
    if (!hasChannels && mesh.getUVs()) result.notes.append("texture coordinates" + missing);
    if (format != MeshFormat::Obj && options.cornerNormals) result.notes.append("normals per face corner" + missing);
    if (!hasChannels && options.cornerUVs) result.notes.append("texture coordinates per face corner" + missing);
    const int numPolygons = countPolygons(mesh);
    if (format == MeshFormat::Points) {
        if (countFaces(mesh, sink) > 0) result.notes.append("faces" + missing);
        return;
    }
    const bool asTriangles = !sink.takesPolygons() || format == MeshFormat::Stl;
    result.numFaces = countFaces(mesh, sink);
    result.numPolygons = asTriangles ? 0 : numPolygons;
    if (asTriangles && numPolygons > 0)
        result.notes.append("polygons: " + std::to_string(numPolygons) + ", written as triangles");
}

} // namespace

MeshSaveResult meshSave(const CompactMesh& mesh, MeshFormat format, const MeshByteWriter& write,
                        const MeshSaveOptions& options, znUtil::Progress& progress)
{
    MeshSaveResult result;
    if (format == MeshFormat::Unknown) {
        result.status = Status::UnknownFormat;
        result.message = "no format that can be written has this extension";
        return result;
    }
    const bool takesPolygons =
        mesh.getNumTriangles() == 0 || (options.polygons && hasPolygons(format) && mesh.getNumPolys() > 0);
    const int numFaces = takesPolygons ? mesh.getNumPolys() : mesh.getNumTriangles();
    SaveSink sink(write, takesPolygons, std::int64_t(mesh.getNumVertices()) + numFaces, progress);
    saveFormat(mesh, format, options, sink);
    sink.flush();
    if (sink.hasStopped()) {
        result.status = sink.isCancelled() ? Status::Cancelled : Status::Unwritable;
        result.message = sink.isCancelled() ? "cancelled" : "can't be written";
        return result;
    }
    result.numBytes = sink.numBytes();
    result.numVertices = mesh.getNumVertices();
    noteMissing(mesh, format, options, sink, result);
    progress.set(1);
    return result;
}

MeshSaveResult meshSave(const CompactMesh& mesh, const znOS::Filename& file)
{
    znUtil::Progress unused;
    return meshSave(mesh, file, {}, unused);
}

MeshSaveResult meshSave(const CompactMesh& mesh, const znOS::Filename& file, znUtil::Progress& progress)
{
    return meshSave(mesh, file, {}, progress);
}

MeshSaveResult meshSave(const CompactMesh& mesh, const znOS::Filename& file, const MeshSaveOptions& options,
                        znUtil::Progress& progress)
{
    const MeshFormat format = meshFormat(file);
    if (format == MeshFormat::Unknown) return meshSave(mesh, format, {}, options, progress);
    PendingFile pending(file);
    const auto write = [&pending](const void* bytes, size_t count) { return pending.write(bytes, count); };
    MeshSaveResult result = meshSave(mesh, format, write, options, progress);
    if (result && !pending.commit()) {
        result = MeshSaveResult();
        result.status = Status::Unwritable;
    }
    if (result.status == Status::Unwritable) result.message = pending.message();
    return result;
}

} // namespace znGeom
