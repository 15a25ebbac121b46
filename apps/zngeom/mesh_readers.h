/// The readers of the tool, one per file format. All read what the file has and fail with one line for a file that is
/// cut off, that names vertices it doesn't have, or that is something else. None needs more memory than the file's own
/// size justifies. All report their progress and may be cancelled.
#pragma once

#include <string>

#include "apps/zngeom/loaded_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// OBJ, through tinyobjloader: vertices and faces in the file's order, polygons of any size, relative indices, blanks
/// at line ends, lines continued by a backslash, line ends of any kind. Normals and texture coordinates belong to face
/// corners there; they become channels where all corners of a vertex agree.
void readObj(const std::string& path, znUtil::Progress& progress, LoadedMesh& result);

/// The plain format, by the library's own reader; the file is checked first, since that reader trusts it.
void readPlain(const std::string& path, znUtil::Progress& progress, LoadedMesh& result);

/// PLY: text and both binary forms, vertices with normals and texture coordinates, faces and triangle strips.
/// (Assimp's reader doesn't end on a file that is cut in its header, fills up one that is cut later, and is put out of
/// step by an element in front of the vertices.)
void readPly(const std::string& path, znUtil::Progress& progress, LoadedMesh& result);

/// OFF as text, with or without normals; the colours of COFF are passed over. (Assimp's reader leaves out polygons of
/// more than nine corners, and pulls wrong indices into range.)
void readOff(const std::string& path, znUtil::Progress& progress, LoadedMesh& result);

/// STL, text and binary, through Assimp: three vertices of its own for every triangle, as the format has it. Its
/// normals belong to triangles and follow from them, so they are not taken.
void readStl(const std::string& path, znUtil::Progress& progress, LoadedMesh& result);

/// glTF, text and binary, through Assimp: all meshes of the scene, in the places where its nodes put them, in one mesh.
/// Vertices are those of the file, one copy for each placement.
void readGltf(const std::string& path, znUtil::Progress& progress, LoadedMesh& result);

} // namespace tool
