/// The file formats of the tool, and reading and writing a mesh by its file's extension.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/zngeom/loaded_mesh.h"
#include "apps/zngeom/pending_file.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

struct FileFormat
{
    const char* name;
    std::vector<std::string> extensions; ///< in small letters; capitals in a file's name count as small ones
    void (*read)(const std::string& path, znUtil::Progress& progress, LoadedMesh& result);
    /// Null where the tool reads only.
    void (*write)(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress);
    bool writesNormals, writesUVs;
    const char* remark; ///< for the help
};

const std::vector<FileFormat>& fileFormats();

/// By the extension of the path; null for one that no format has.
const FileFormat* findFormat(const std::string& path);

/// The same. Fails for one that no format has.
const FileFormat& formatOf(const std::string& path);

/// Fails with one line that begins with the path.
void loadMesh(const std::string& path, znUtil::Progress& progress, LoadedMesh& result);

/// Finds out before any work is done whether there is a writer for this path; fails if not.
void checkOutputFormat(const std::string& path);

/// Writes the triangles to a new file beside the target, for `putInPlace`. Fails with one line that begins with the
/// path, and leaves no file; so does a cancel.
std::unique_ptr<PendingFile> writeAside(const znGeom::CompactMesh& mesh, const std::string& path,
                                        znUtil::Progress& progress);

/// Fails with one line that begins with the path.
void putInPlace(PendingFile& file, const std::string& path);

/// Adds to the mesh's notes what it has and a file of this path doesn't.
void noteUnwritten(LoadedMesh& loaded, const std::string& path);

/// All three: writes the triangles to a new file, which takes the place of the old one when it is complete. A failure
/// and a cancel leave what was there as it was.
void saveMesh(LoadedMesh& loaded, const std::string& path, znUtil::Progress& progress);

} // namespace tool
