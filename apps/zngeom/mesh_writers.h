/// The writers of the tool, one per file format: vertices in the mesh's order, triangles, and the channels that the
/// format has. Each fails with one line when the file isn't complete on the disk, and may be cancelled.
#pragma once

#include <string>

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// By the library: positions, normals and texture coordinates with six significant digits. A cancel waits for its end.
void writeObj(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress);

/// By the library: positions with ten significant digits. A cancel waits for its end.
void writePlain(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress);

/// Binary, lowest byte first, with normals and texture coordinates.
void writePly(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress);

/// Text; positions with as many digits as they need.
void writeOff(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress);

/// Binary, with the normals of the triangles; every triangle gets three vertices of its own.
void writeStl(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress);

/// One binary file of one mesh, with normals and texture coordinates; a mesh without triangles becomes points. Fails
/// for what the format has no place for: no vertices, and coordinates that are not finite.
void writeGlb(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress);

} // namespace tool
