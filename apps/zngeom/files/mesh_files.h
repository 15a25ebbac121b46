/// The file formats of the tool, and reading and writing a mesh by its file's extension.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "apps/zngeom/files/loaded_mesh.h"
#include "znGeom/files/mesh_save.h"
#include "znGeom/files/pending_file.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

using PendingFile = znGeom::PendingFile;

struct FileFormat
{
    const char* name;
    std::vector<std::string> extensions; ///< in lower case; the case of a file's name doesn't matter
    znGeom::MeshFormat format;           ///< of the library; unknown for glTF, which the tool reads and writes itself
    bool isWritten;
    bool writesNormals, writesUVs;
    const char* remark; ///< for the help
};

const std::vector<FileFormat>& fileFormats();

// A path is that of a file, or "-" for standard input and output. The format is that of the extension; `word` names one
// for paths whose extension gives none: an extension without its dot, or nothing.

/// Null for a path and a word that belong to no format.
const FileFormat* findFormat(const std::string& path, const std::string& word = "");

/// The same. Fails where there is none.
const FileFormat& formatOf(const std::string& path, const std::string& word = "");

/// What messages call a path: standard input for "-".
std::string inputName(const std::string& path);

/// Reads a mesh of the path's format. Fails with one line that begins with the path; may be cancelled.
void loadMesh(const std::string& path, znUtil::Progress& progress, LoadedMesh& result, const std::string& word = "");

/// The same from memory. Failures don't begin with a path.
/// \param folder  where glTF buffers may be; empty when there is none
void loadMesh(std::string_view bytes, const FileFormat& format, const std::string& folder, znUtil::Progress& progress,
              LoadedMesh& result);

/// Checks, before any work is done, that there is a writer for this path; fails if not.
void checkOutputFormat(const std::string& path, const std::string& word = "");

/// The same for a mesh whose texture coordinates are what matters.
void checkWritesUVs(const std::string& path, const std::string& word = "");

/// Writes the faces to a new file beside the target, for `putInPlace`. Fails with one line that begins with the
/// path, and leaves no file; so does a cancel. Not for "-".
std::unique_ptr<PendingFile> writeAside(const znGeom::CompactMesh& mesh, const std::string& path,
                                        znUtil::Progress& progress, const std::string& word = "",
                                        const znGeom::MeshSaveOptions& options = {});

/// Fails with one line that begins with the path.
void putInPlace(PendingFile& file, const std::string& path);

/// Adds to the mesh's notes what it has and a file at this path won't.
void noteUnwritten(LoadedMesh& loaded, const std::string& path, const std::string& word = "");

/// Writes the faces to a new file, which replaces the old one when it is complete; a failure or a cancel leaves what
/// was there as it was. Standard output receives them as they come. Returns the number of bytes.
std::int64_t saveMesh(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress,
                      const std::string& word = "", const znGeom::MeshSaveOptions& options = {});

/// The same with the groups of the mesh, with its polygons if it keeps them, and with notes on what isn't written.
std::int64_t saveMesh(LoadedMesh& loaded, const std::string& path, znUtil::Progress& progress,
                      const std::string& word = "");

} // namespace tool
