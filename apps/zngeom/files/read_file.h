/// Reading a whole file.
#pragma once

#include <string>

#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// The name that stands for standard input and output.
constexpr const char* standardStream = "-";

/// The bytes of a file or a named pipe, or of standard input for "-". Fails with the system's reason for a file that
/// can't be read, and for an empty one. May be cancelled.
std::string readFile(const std::string& path, const znUtil::Progress& progress);

} // namespace tool
