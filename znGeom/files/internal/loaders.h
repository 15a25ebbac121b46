/// The readers behind `meshLoad`, one per format. Each fills the parts and returns false after a failure, which is in
/// the context. The text's first block is there when they begin.
#pragma once

#include "znGeom/files/internal/mesh_parts.h"

namespace znGeom::internal {

bool loadObj(LoadContext& context, CompactMesh& mesh);
bool loadPly(LoadContext& context, CompactMesh& mesh);
bool loadStl(LoadContext& context, CompactMesh& mesh);
bool loadOff(LoadContext& context, CompactMesh& mesh);
bool loadPlain(LoadContext& context, CompactMesh& mesh);
bool loadPoints(LoadContext& context, CompactMesh& mesh);

/// All of `meshLoad` but the opening of the file.
/// \param size  of the text, 0 when it is not known
void loadMesh(TextReader& text, std::int64_t size, MeshFormat format, CompactMesh& mesh, znUtil::Progress& progress,
              MeshLoadResult& result);

} // namespace znGeom::internal
