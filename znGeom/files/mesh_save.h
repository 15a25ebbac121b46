/// Writing a mesh to a file of any common format.
///
/// `meshSave` writes numbers that read back to the same bits, puts a file in its place only when it is complete, and
/// says in its result what it did. `meshWrite` and `meshWriteObj` are plain filters that report less.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "znGeom/files/mesh_format.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// The outcome of writing a mesh. Texts are single lines.
struct MeshSaveResult
{
    enum class Status {
        Saved,
        UnknownFormat, ///< no format has this extension
        Unwritable,    ///< the system didn't take the file or a part of it
        Cancelled
    };

    Status status = Status::Saved;
    std::string message;           ///< what is wrong; empty when saved
    zn::vector<std::string> notes; ///< what the mesh has and the file doesn't, a line each
    std::int64_t numBytes = 0;     ///< of the file
    int numVertices = 0;           ///< that were written
    int numFaces = 0;              ///< that were written, triangles or polygons
    int numPolygons = 0;           ///< of more than three corners among these

    explicit operator bool() const { return status == Status::Saved; }
};

/// What OBJ files have room for and a mesh doesn't hold, and PLY files in part. Nothing is owned; null means none.
struct MeshSaveOptions
{
    const MeshGroups* groups = nullptr; ///< with one entry per triangle, or nothing; OBJ alone
    /// One per triangle corner, three in a row per triangle; they replace the channel of the mesh. OBJ and PLY.
    const MeshUV* cornerUVs = nullptr;
    const MeshNormal* cornerNormals = nullptr; ///< likewise; OBJ alone
    /// Writes the polygons of a mesh in place of its triangles, which have to be their fans, in their order, as
    /// `meshLoad` makes them. Formats that have none but triangles keep to these.
    bool polygons = false;
};

/// Writes a mesh in the format of the file's extension: vertices in their order, then the triangles, or the polygons of
/// a mesh that has no triangles or where the options say so, and nothing else. Whatever was in the file stays until the
/// new one is complete; a failure or a cancel leaves it as it was, and nothing beside it.
///
///  - OBJ: positions, texture coordinates and normals, and what the options name. No blanks at line ends.
///  - PLY: binary, lowest byte first, with normals and texture coordinates, these per vertex or per face corner.
///  - STL: binary, with the normals of the triangles; polygons as their fans.
///  - OFF, plain, points: text; positions, and faces except in points.
///
/// Text is the same under every locale. Indices are trusted. Linear, with a buffer of fixed size beside the mesh; runs
/// on the calling thread.
ZNGEOM_API MeshSaveResult meshSave(const CompactMesh& mesh, const znOS::Filename& file);
ZNGEOM_API MeshSaveResult meshSave(const CompactMesh& mesh, const znOS::Filename& file, znUtil::Progress& progress);
ZNGEOM_API MeshSaveResult meshSave(const CompactMesh& mesh, const znOS::Filename& file, const MeshSaveOptions& options,
                                   znUtil::Progress& progress);

/// Takes bytes of a file, in order; false when it can't, and then nothing more is passed to it.
using MeshByteWriter = std::function<bool(const void* bytes, size_t count)>;

/// The same, to wherever the caller wants it, piece by piece.
ZNGEOM_API MeshSaveResult meshSave(const CompactMesh& mesh, MeshFormat format, const MeshByteWriter& write,
                                   const MeshSaveOptions& options, znUtil::Progress& progress);

} // namespace znGeom
