/// The formats of mesh files that `meshLoad` and `meshSave` know.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/machine/export.h"
#include "znGeom/foundation/text/filename.h"

#include <string>

namespace znGeom {

enum class MeshFormat {
    Unknown,
    Obj,
    Ply,
    Stl,
    Off,
    Plain, ///< counts of vertices and faces, x y z per vertex, per face its number of corners and their indices, from 0
    Points ///< x y z on each line, separated by blanks or commas; vertices alone
};

/// By the extension, regardless of case: .obj, .ply, .stl, .off, .xyz for points, and .txt, .mesh or .plain for the
/// plain format.
ZNGEOM_API MeshFormat meshFormat(const znOS::Filename& file);

/// "OBJ", "PLY", ...
ZNGEOM_API const char* meshFormatName(MeshFormat format);

/// Whether files of a format may have faces of more than three corners, and are written with them.
ZNGEOM_API bool hasPolygons(MeshFormat format);

/// Which faces belong together according to the file itself: the groups and objects of an OBJ file.
struct MeshGroups
{
    zn::vector<std::string> names;
    zn::vector<int> ofTriangle; ///< an index into `names` per triangle, -1 for none; empty when there are no groups
};

} // namespace znGeom
