// Any bytes as a mesh file of the tool, of the format that the target is built for.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/frame/failure.h"
#include "tests/fuzz/parse_both_ways.h"
#include "znGeom/files/internal/loaders.h"
#include "znGeom/files/mesh_load.h"

namespace {

bool isPrintable(const std::string& text)
{
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 127; });
}

void requireSound(const tool::LoadedMesh& loaded)
{
    const znGeom::CompactMesh& mesh = loaded.mesh;
    const auto isVertex = [&mesh](int corner) { return corner >= 0 && corner < mesh.getNumVertices(); };
    znFuzz::require(std::all_of(mesh.getTrianglesRaw(), mesh.getTrianglesRaw() + 3 * mesh.getNumTriangles(), isVertex));
    znFuzz::require(std::all_of(mesh.getPolyPoints(), mesh.getPolyPoints() + mesh.getNumPolyPoints(), isVertex));
    znFuzz::require(loaded.groups.ofTriangle.empty() || loaded.groups.ofTriangle.size() == mesh.getNumTriangles());
    znFuzz::require(loaded.cornerUVs.empty() || loaded.cornerUVs.size() == 3 * mesh.getNumTriangles());
    znFuzz::require(std::all_of(loaded.notes.begin(), loaded.notes.end(), isPrintable));
}

bool sameNumbers(const float* a, const float* b, int count)
{
    const auto isSame = [](float x, float y) { return x == y || (std::isnan(x) && std::isnan(y)); };
    return (a != nullptr) == (b != nullptr) && std::equal(a, a + (a ? count : 0), b, isSame);
}

/// What was written reads back as it was.
void requireRoundTrip(const znGeom::CompactMesh& mesh, znGeom::MeshFormat format)
{
    std::string bytes;
    const auto write = [&bytes](const void* more, size_t count) {
        bytes.append(static_cast<const char*>(more), count);
        return true;
    };
    znUtil::Progress progress;
    znFuzz::require(bool(znGeom::meshSave(mesh, format, write, {}, progress)));
    znGeom::CompactMesh back;
    znFuzz::require(bool(znGeom::meshLoad(back, bytes.data(), bytes.size(), format)));
    znFuzz::require(back.getNumVertices() == mesh.getNumVertices());
    znFuzz::require(sameNumbers(back.getVerticesRaw(), mesh.getVerticesRaw(), 3 * mesh.getNumVertices()));
    znFuzz::require(back.getNumTriangles() == mesh.getNumTriangles());
    znFuzz::require(znFuzz::sameBytes(back.getTriangles(), mesh.getTriangles(), mesh.getNumTriangles()));
    if (format == znGeom::MeshFormat::Ply)
        znFuzz::require(sameNumbers(back.getNormalsRaw(), mesh.getNormalsRaw(), 3 * mesh.getNumVertices()));
}

/// Where blocks of the file end must not matter: a buffer with room for almost nothing gives the same.
void requireSameThroughSmallBlocks(std::string_view file, znGeom::MeshFormat format)
{
    znGeom::CompactMesh mesh, narrow;
    znGeom::MeshLoadResult result, narrowResult;
    znUtil::Progress progress;
    znGeom::internal::TextReader reader(file), narrowReader(file, 2);
    const auto size = static_cast<std::int64_t>(file.size());
    znGeom::internal::loadMesh(reader, size, format, mesh, progress, result);
    znGeom::internal::loadMesh(narrowReader, size, format, narrow, progress, narrowResult);
    znFuzz::require(result.status == narrowResult.status && result.message == narrowResult.message);
    znFuzz::require(isPrintable(result.message) && result.notes.size() == narrowResult.notes.size());
    znFuzz::require(mesh.getNumVertices() == narrow.getNumVertices() && result.numFaces == narrowResult.numFaces);
    znFuzz::require(znFuzz::sameBytes(mesh.getVertices(), narrow.getVertices(), mesh.getNumVertices()));
    znFuzz::require(znFuzz::sameBytes(mesh.getTriangles(), narrow.getTriangles(), mesh.getNumTriangles()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    static const tool::FileFormat& format = tool::formatOf("mesh." ZNGEOM_FUZZ_EXTENSION);
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    if (format.format != znGeom::MeshFormat::Unknown) requireSameThroughSmallBlocks(file, format.format);
    tool::LoadedMesh loaded;
    znUtil::Progress progress;
    try {
        tool::loadMesh(file, format, "", progress, loaded);
    } catch (const tool::Failure&) {
        return 0;
    }
    requireSound(loaded);
    if (loaded.mesh.getNumVertices() == 0 || loaded.mesh.getNumVertices() > 10000) return 0;
    requireRoundTrip(loaded.mesh, znGeom::MeshFormat::Ply);
    requireRoundTrip(loaded.mesh, znGeom::MeshFormat::Obj);
    return 0;
}
