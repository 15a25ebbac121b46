/// Reading a mesh from a file of any common format.
///
/// `meshLoad` takes files as people and other programs write them, checks all that it reads, and says in its result
/// what it did: choose it for files that come from elsewhere. `meshRead` and `meshReadObj` are plain filters that check
/// nothing and report nothing.
///
///     znGeom::CompactMesh mesh;
///     const znGeom::MeshLoadResult result = znGeom::meshLoad(mesh, znOS::Filename("scan.ply"));
///     if (!result) std::fprintf(stderr, "%s\n", result.message.c_str());
#pragma once

#include <cstddef>
#include <string>

#include "znGeom/files/mesh_format.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// The outcome of reading a mesh. Texts are single lines without control characters, whatever the file holds.
struct MeshLoadResult
{
    enum class Status {
        Loaded,
        UnknownFormat, ///< no format has this extension
        Unreadable,    ///< the system doesn't provide the file or a part of it
        Malformed,     ///< empty, cut off, a face names a vertex that isn't there, or not of this format
        TooLarge,      ///< more than a mesh can hold
        Cancelled
    };

    Status status = Status::Loaded;
    std::string message;           ///< what is wrong, with the line where there are lines; empty when loaded
    zn::vector<std::string> notes; ///< what the file has and the mesh doesn't, a line each
    int numFaces = 0;              ///< of three corners or more, as they stand in the file
    int numPolygons = 0;           ///< of more than three corners
    MeshGroups groups;             ///< where the format has them
    /// Texture coordinates of an OBJ or PLY file, and normals of an OBJ file, that differ between the corners at a
    /// vertex, and so are not a channel of the mesh: three in a row per triangle, otherwise empty. `MeshSaveOptions`
    /// takes them.
    zn::vector<MeshUV> cornerUVs;
    zn::vector<MeshNormal> cornerNormals;

    explicit operator bool() const { return status == Status::Loaded; }
};

/// Replaces everything in `mesh` by what is in a file, whose extension gives the format, and announces one
/// `TopologyChanged`. Anything but `Loaded` leaves the mesh as it was and announces nothing.
///
/// Vertices keep their numbers and faces their order. Where a face has more than three corners, all faces are in the
/// polygon description as well, and the triangles are their fans. Faces of one or two corners are left out, with a
/// note. Normals and texture coordinates become channels, normals count as supplied; where the format has them per face
/// corner (OBJ, PLY), the corners at each vertex have to agree for this; otherwise they are in the result, with a note.
/// Coordinates may be infinite or NaN: `nan` and `inf` are read, and a number too large for a `float` is infinite.
///
///  - OBJ: relative indices, all forms of corners, lines continued by a backslash, comments anywhere; groups.
///  - PLY: text and both binary forms, faces and triangle strips, any further elements and properties skipped; the
///    texture coordinates of face corners are a list `texcoord`, and come before those of vertices.
///  - STL: text and binary; each triangle has three vertices of its own; the normals, which follow from them, are
///    dropped.
///  - OFF: text, with or without normals. Plain: faces of any size. Points: vertices alone.
///
/// Lines may end in any way, and numbers read the same under every locale. Memory is in proportion to the bytes that
/// were really there, and there are never two copies of the mesh. Linear; runs on the calling thread. The progress is
/// checked every 128 KiB. A named pipe can be read just like a file.
ZNGEOM_API MeshLoadResult meshLoad(CompactMesh& mesh, const znOS::Filename& file);
ZNGEOM_API MeshLoadResult meshLoad(CompactMesh& mesh, const znOS::Filename& file, znUtil::Progress& progress);
/// The same in a format of the caller's choice, whatever the file's name.
ZNGEOM_API MeshLoadResult meshLoad(CompactMesh& mesh, const znOS::Filename& file, MeshFormat format,
                                   znUtil::Progress& progress);

/// The same from memory.
/// \param bytes  the whole content of a file; may be null when `numBytes` is 0
ZNGEOM_API MeshLoadResult meshLoad(CompactMesh& mesh, const void* bytes, size_t numBytes, MeshFormat format);
ZNGEOM_API MeshLoadResult meshLoad(CompactMesh& mesh, const void* bytes, size_t numBytes, MeshFormat format,
                                   znUtil::Progress& progress);

} // namespace znGeom
