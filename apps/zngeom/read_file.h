/// Reading a whole file.
#pragma once

#include <string>

#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// The bytes of a file, also of a pipe that has a name. Fails with the system's reason for a file that can't be read,
/// and for an empty one. May be cancelled.
std::string readFile(const std::string& path, const znUtil::Progress& progress);

/// For readers that open the file themselves, perhaps several times: fails for a file that can't be read, that is
/// empty, or that is no file but a pipe.
void checkReadable(const std::string& path);

} // namespace tool
