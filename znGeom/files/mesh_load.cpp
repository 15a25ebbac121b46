#include "znGeom/files/mesh_load.h"

#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "znGeom/files/internal/loaders.h"

namespace znGeom {

namespace {

using namespace internal;
using Status = MeshLoadResult::Status;

bool loadFormat(MeshFormat format, LoadContext& context, CompactMesh& mesh)
{
    switch (format) {
    case MeshFormat::Obj:
        return loadObj(context, mesh);
    case MeshFormat::Ply:
        return loadPly(context, mesh);
    case MeshFormat::Stl:
        return loadStl(context, mesh);
    case MeshFormat::Off:
        return loadOff(context, mesh);
    case MeshFormat::Plain:
        return loadPlain(context, mesh);
    case MeshFormat::Points:
        return loadPoints(context, mesh);
    default:
        return context.fail(Status::UnknownFormat, "no format that can be read has this extension");
    }
}

void tellChange(CompactMesh& mesh)
{
    MeshModification modification(&mesh, MeshModification::TopologyChanged);
    modification.normalsModified();
    modification.uvsModified();
    modification.polysModified();
    mesh.modified(modification);
}

/// 0 for anything that is not a file.
std::int64_t sizeOf(const znOS::Filename& file)
{
    std::error_code error;
    const std::filesystem::path path(file.path().asMultibyte(znString::Encoding::Native).asChar());
    const auto size = std::filesystem::file_size(path, error);
    return error ? 0 : static_cast<std::int64_t>(size);
}

} // namespace

namespace internal {

void loadMesh(TextReader& text, std::int64_t size, MeshFormat format, CompactMesh& mesh, znUtil::Progress& progress,
              MeshLoadResult& result)
{
    LoadContext context(text, size, progress, result);
    if (!context.checkCancelled()) return;
    if (text.error() != 0 || !text.isOpen()) {
        context.fail(Status::Unreadable, "can't be read: " + std::generic_category().message(text.error()));
        return;
    }
    if (text.isEmpty()) {
        context.malformed("is empty");
        return;
    }
    if (!loadFormat(format, context, mesh)) {
        const MeshLoadResult failure = std::move(result);
        result = MeshLoadResult();
        result.status = failure.status;
        result.message = failure.message;
        return;
    }
    progress.set(1);
    tellChange(mesh);
}

} // namespace internal

MeshLoadResult meshLoad(CompactMesh& mesh, const znOS::Filename& file)
{
    znUtil::Progress unused;
    return meshLoad(mesh, file, unused);
}

MeshLoadResult meshLoad(CompactMesh& mesh, const znOS::Filename& file, znUtil::Progress& progress)
{
    return meshLoad(mesh, file, meshFormat(file), progress);
}

MeshLoadResult meshLoad(CompactMesh& mesh, const znOS::Filename& file, MeshFormat format, znUtil::Progress& progress)
{
    MeshLoadResult result;
    if (format == MeshFormat::Unknown) {
        result.status = Status::UnknownFormat;
        result.message = "no format that can be read has this extension";
        return result;
    }
    TextReader text(file);
    loadMesh(text, sizeOf(file), format, mesh, progress, result);
    return result;
}

MeshLoadResult meshLoad(CompactMesh& mesh, const void* bytes, size_t numBytes, MeshFormat format)
{
    znUtil::Progress unused;
    return meshLoad(mesh, bytes, numBytes, format, unused);
}

MeshLoadResult meshLoad(CompactMesh& mesh, const void* bytes, size_t numBytes, MeshFormat format,
                        znUtil::Progress& progress)
{
    MeshLoadResult result;
    TextReader text(std::string_view(static_cast<const char*>(bytes), numBytes));
    loadMesh(text, static_cast<std::int64_t>(numBytes), format, mesh, progress, result);
    return result;
}

} // namespace znGeom
