#include "apps/zngeom/files/mesh_files.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "apps/zngeom/files/corner_split.h"
#include "apps/zngeom/files/gltf_reader.h"
#include "apps/zngeom/files/gltf_writer.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/frame/pacer.h"
#include "znGeom/files/mesh_load.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"

namespace tool {

namespace {

using znGeom::MeshFormat;

std::string extensionOf(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& letter : extension)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return extension;
}

std::string allExtensions()
{
    std::string list;
    for (const FileFormat& format : fileFormats())
        for (const std::string& extension : format.extensions) list += (list.empty() ? "" : " ") + extension;
    return list;
}

const FileFormat* findExtension(const std::string& extension)
{
    for (const FileFormat& format : fileFormats())
        if (std::find(format.extensions.begin(), format.extensions.end(), extension) != format.extensions.end())
            return &format;
    return nullptr;
}

void printTime(const char* what, const std::string& path, const FileFormat& format, znOS::StopWatch& watch)
{
    znGeom::debugChannel().print("%s %s (%s): %f s\n", what, path.c_str(), format.name, watch.stop());
}

/// What the library says about a mesh becomes what the tool says, or is thrown.
void takeResult(znGeom::MeshLoadResult& result, LoadedMesh& loaded)
{
    if (result.status == znGeom::MeshLoadResult::Status::Cancelled) throw Cancelled();
    if (!result) throw Failure(result.message);
    loaded.numFaces = result.numFaces;
    loaded.numPolygons = result.numPolygons;
    loaded.groups = std::move(result.groups);
    loaded.cornerUVs = std::move(result.cornerUVs);
    loaded.cornerNormals = std::move(result.cornerNormals);
    loaded.notes.assign(result.notes.begin(), result.notes.end());
}

/// glTF is read as a whole, the formats of the library piece by piece.
void loadFile(const std::string& path, const FileFormat& format, znUtil::Progress& progress, LoadedMesh& loaded)
{
    if (path == standardStream) {
        loadMesh(readFile(path, progress), format, "", progress, loaded);
    } else if (format.format == MeshFormat::Unknown) {
        const std::filesystem::path folder = std::filesystem::path(path).parent_path();
        loadMesh(readFile(path, progress), format, folder.empty() ? "." : folder.string(), progress, loaded);
    } else {
        auto result = znGeom::meshLoad(loaded.mesh, znOS::Filename(path.c_str()), format.format, progress);
        takeResult(result, loaded);
    }
}

/// Returns the number of bytes that were passed on.
std::int64_t writeMesh(const znGeom::CompactMesh& mesh, const FileFormat& format, const znGeom::MeshByteWriter& write,
                       const znGeom::MeshSaveOptions& options, znUtil::Progress& progress)
{
    progress.setCaption("writing");
    if (format.format == MeshFormat::Unknown) {
        if (options.cornerUVs || options.cornerNormals) {
            const znGeom::CompactMesh split = splitCorners(mesh, options.cornerUVs, options.cornerNormals);
            return static_cast<std::int64_t>(writeGlb(split, write, progress));
        }
        return static_cast<std::int64_t>(writeGlb(mesh, write, progress));
    }
    const znGeom::MeshSaveResult result = znGeom::meshSave(mesh, format.format, write, options, progress);
    if (result.status == znGeom::MeshSaveResult::Status::Cancelled) throw Cancelled();
    return result.numBytes;
}

std::int64_t writeToStandardOutput(const znGeom::CompactMesh& mesh, const FileFormat& format,
                                   const znGeom::MeshSaveOptions& options, znUtil::Progress& progress)
{
    bool isTaken = true;
    const auto write = [&isTaken](const void* bytes, std::size_t count) {
        return isTaken = isTaken && std::fwrite(bytes, 1, count, stdout) == count;
    };
    const std::int64_t numBytes = writeMesh(mesh, format, write, options, progress);
    if (!isTaken || std::fflush(stdout) != 0)
        throw Failure(std::string("standard output: can't be written: ") + std::strerror(errno));
    return numBytes;
}

} // namespace

const std::vector<FileFormat>& fileFormats()
{
    static const std::vector<FileFormat> formats{
        {"OBJ", {".obj"}, MeshFormat::Obj, true, true, true, "with groups; numbers that read back to the same bits"},
        {"PLY", {".ply"}, MeshFormat::Ply, true, true, true, "text and binary, written as binary"},
        {"OFF", {".off"}, MeshFormat::Off, true, false, false, "text"},
        {"STL", {".stl"}, MeshFormat::Stl, true, false, false, "text and binary, written as binary"},
        {"glTF", {".glb"}, MeshFormat::Unknown, true, true, true, "one binary file"},
        {"glTF as text", {".gltf"}, MeshFormat::Unknown, false, true, true, "read only, write .glb instead"},
        {"plain",
         {".txt", ".mesh", ".plain"},
         MeshFormat::Plain,
         true,
         false,
         false,
         "counts, then x y z, then the number of corners and their vertices from 0"},
        {"points", {".xyz"}, MeshFormat::Points, true, false, false, "x y z on each line, vertices alone"},
    };
    return formats;
}

const FileFormat* findFormat(const std::string& path, const std::string& word)
{
    const FileFormat* format = path == standardStream ? nullptr : findExtension(extensionOf(path));
    return format || word.empty() ? format : findExtension("." + word);
}

const FileFormat& formatOf(const std::string& path, const std::string& word)
{
    if (const FileFormat* format = findFormat(path, word)) return *format;
    if (path == standardStream) throw Failure("-: needs --format; known are " + allExtensions());
    const std::string extension = extensionOf(path);
    const std::string problem = extension.empty() ? "no extension" : "unknown extension " + extension;
    throw Failure(path + ": " + problem + "; known are " + allExtensions());
}

std::string inputName(const std::string& path) { return path == standardStream ? "standard input" : path; }

void loadMesh(const std::string& path, znUtil::Progress& progress, LoadedMesh& result, const std::string& word)
{
    const FileFormat& format = formatOf(path, word);
    progress.setCaption("reading");
    znOS::StopWatch watch;
    try {
        loadFile(path, format, progress, result);
    } catch (const Failure& failure) {
        throw Failure(inputName(path) + ": " + failure.what());
    }
    progress.set(1);
    printTime("read", path, format, watch);
    checkCancelled(progress);
}

void loadMesh(std::string_view bytes, const FileFormat& format, const std::string& folder, znUtil::Progress& progress,
              LoadedMesh& result)
{
    if (format.format == MeshFormat::Unknown) {
        readGltf(bytes, folder, progress, result);
    } else {
        auto loaded = znGeom::meshLoad(result.mesh, bytes.data(), bytes.size(), format.format, progress);
        takeResult(loaded, result);
    }
}

void checkOutputFormat(const std::string& path, const std::string& word)
{
    const FileFormat& format = formatOf(path, word);
    if (!format.isWritten) throw Failure(path + ": " + format.name + " is read and not written; write .glb instead");
}

void checkWritesUVs(const std::string& path, const std::string& word)
{
    checkOutputFormat(path, word);
    const FileFormat& format = formatOf(path, word);
    if (!format.writesUVs)
        throw Failure(path + ": " + format.name + " files have no texture coordinates; write .obj, .ply or .glb");
}

std::unique_ptr<PendingFile> writeAside(const znGeom::CompactMesh& mesh, const std::string& path,
                                        znUtil::Progress& progress, const std::string& word,
                                        const znGeom::MeshSaveOptions& options)
{
    checkOutputFormat(path, word);
    const FileFormat& format = formatOf(path, word);
    znOS::StopWatch watch;
    auto file = std::make_unique<PendingFile>(znOS::Filename(path.c_str()));
    try {
        const auto write = [&file](const void* bytes, std::size_t count) { return file->write(bytes, count); };
        if (!file->hasFailed()) writeMesh(mesh, format, write, options, progress);
        if (!file->finish()) throw Failure(file->message());
    } catch (const Failure& failure) {
        throw Failure(path + ": " + failure.what());
    }
    checkCancelled(progress);
    progress.set(1);
    printTime("wrote", path, format, watch);
    return file;
}

void putInPlace(PendingFile& file, const std::string& path)
{
    if (!file.commit()) throw Failure(path + ": " + file.message());
}

void noteUnwritten(LoadedMesh& loaded, const std::string& path, const std::string& word)
{
    const FileFormat& format = formatOf(path, word);
    const std::string missing = std::string(": ") + format.name + " files have none, not written";
    if (loaded.mesh.getNormals() && !format.writesNormals) loaded.notes.push_back("normals" + missing);
    if (loaded.mesh.getUVs() && !format.writesUVs) loaded.notes.push_back("texture coordinates" + missing);
    const bool isObj = format.format == MeshFormat::Obj, isGltf = format.format == MeshFormat::Unknown;
    const auto noteCorners = [&](const std::string& what, bool isWritten) {
        if (!isWritten) loaded.notes.push_back(what + " per face corner" + missing);
        if (isGltf) loaded.notes.push_back(what + ": vertices with several are written several times");
    };
    if (!loaded.cornerNormals.empty()) noteCorners("normals", isObj || isGltf);
    if (!loaded.cornerUVs.empty()) noteCorners("texture coordinates", format.writesUVs);
    if (format.format == MeshFormat::Points) {
        if (loaded.numFaces > 0) loaded.notes.push_back("faces" + missing);
    } else if (loaded.numPolygons > 0 && !(loaded.keepsPolygons && znGeom::hasPolygons(format.format))) {
        loaded.notes.push_back("polygons: " + std::to_string(loaded.numPolygons) + ", written as triangles");
    }
}

std::int64_t saveMesh(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress,
                      const std::string& word, const znGeom::MeshSaveOptions& options)
{
    if (path == standardStream) {
        checkOutputFormat(path, word);
        return writeToStandardOutput(mesh, formatOf(path, word), options, progress);
    }
    const std::unique_ptr<PendingFile> file = writeAside(mesh, path, progress, word, options);
    putInPlace(*file, path);
    return file->size();
}

std::int64_t saveMesh(LoadedMesh& loaded, const std::string& path, znUtil::Progress& progress, const std::string& word)
{
    znGeom::MeshSaveOptions options;
    options.groups = &loaded.groups;
    options.polygons = loaded.keepsPolygons;
    if (!loaded.cornerUVs.empty()) options.cornerUVs = loaded.cornerUVs.data();
    if (!loaded.cornerNormals.empty()) options.cornerNormals = loaded.cornerNormals.data();
    const std::int64_t numBytes = saveMesh(loaded.mesh, path, progress, word, options);
    noteUnwritten(loaded, path, word);
    return numBytes;
}

} // namespace tool
