#include "apps/zngeom/mesh_files.h"

#include <algorithm>
#include <filesystem>

#include "apps/zngeom/mesh_readers.h"
#include "apps/zngeom/mesh_writers.h"
#include "apps/zngeom/pacer.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"

namespace tool {

namespace {

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

void printTime(const char* what, const std::string& path, const FileFormat& format, znOS::StopWatch& watch)
{
    znGeom::debugChannel().print("%s %s (%s): %f s\n", what, path.c_str(), format.name, watch.stop());
}

} // namespace

const std::vector<FileFormat>& fileFormats()
{
    static const std::vector<FileFormat> formats{
        {"OBJ", {".obj"}, readObj, writeObj, true, true, "written with six significant digits"},
        {"PLY", {".ply"}, readPly, writePly, true, true, "text and binary, written as binary"},
        {"OFF", {".off"}, readOff, writeOff, false, false, "text"},
        {"STL", {".stl"}, readStl, writeStl, false, false, "text and binary, written as binary"},
        {"glTF", {".glb"}, readGltf, writeGlb, true, true, "one binary file"},
        {"glTF as text", {".gltf"}, readGltf, nullptr, true, true, "read only, write .glb instead"},
        {"plain",
         {".txt", ".mesh", ".plain"},
         readPlain,
         writePlain,
         false,
         false,
         "counts, then x y z, then 3 i j k from 0; ten digits"},
    };
    return formats;
}

const FileFormat* findFormat(const std::string& path)
{
    const std::string extension = extensionOf(path);
    for (const FileFormat& format : fileFormats()) {
        const auto& known = format.extensions;
        if (std::find(known.begin(), known.end(), extension) != known.end()) return &format;
    }
    return nullptr;
}

const FileFormat& formatOf(const std::string& path)
{
    if (const FileFormat* format = findFormat(path)) return *format;
    const std::string extension = extensionOf(path);
    const std::string problem = extension.empty() ? "no extension" : "unknown extension " + extension;
    throw Failure(path + ": " + problem + "; known are " + allExtensions());
}

void loadMesh(const std::string& path, znUtil::Progress& progress, LoadedMesh& result)
{
    const FileFormat& format = formatOf(path);
    progress.setCaption("reading");
    znOS::StopWatch watch;
    try {
        format.read(path, progress, result);
    } catch (const Failure& failure) {
        throw Failure(path + ": " + failure.what());
    }
    progress.set(1);
    printTime("read", path, format, watch);
    checkCancelled(progress);
}

void checkOutputFormat(const std::string& path)
{
    const FileFormat& format = formatOf(path);
    if (!format.write) throw Failure(path + ": " + format.name + " is read and not written; write .glb instead");
}

std::unique_ptr<PendingFile> writeAside(const znGeom::CompactMesh& mesh, const std::string& path,
                                        znUtil::Progress& progress)
{
    checkOutputFormat(path);
    const FileFormat& format = formatOf(path);
    progress.setCaption("writing");
    znOS::StopWatch watch;
    try {
        auto file = std::make_unique<PendingFile>(path);
        format.write(mesh, file->path().string(), progress);
        checkCancelled(progress);
        progress.set(1);
        printTime("wrote", path, format, watch);
        return file;
    } catch (const Failure& failure) {
        throw Failure(path + ": " + failure.what());
    }
}

void putInPlace(PendingFile& file, const std::string& path)
try {
    file.commit();
} catch (const Failure& failure) {
    throw Failure(path + ": " + failure.what());
}

void noteUnwritten(LoadedMesh& loaded, const std::string& path)
{
    const FileFormat& format = formatOf(path);
    const std::string missing = std::string(": ") + format.name + " files have none, not written";
    if (loaded.mesh.getNormals() && !format.writesNormals) loaded.notes.push_back("normals" + missing);
    if (loaded.mesh.getUVs() && !format.writesUVs) loaded.notes.push_back("texture coordinates" + missing);
    if (loaded.numPolygons > 0)
        loaded.notes.push_back("polygons: " + std::to_string(loaded.numPolygons) + ", written as triangles");
}

void saveMesh(LoadedMesh& loaded, const std::string& path, znUtil::Progress& progress)
{
    putInPlace(*writeAside(loaded.mesh, path, progress), path);
    noteUnwritten(loaded, path);
}

} // namespace tool
