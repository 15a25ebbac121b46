/// Writing a whole file.
#pragma once

#include <string>
#include <string_view>

namespace tool {

/// Fails where the output would take the place of what is read.
void checkIsOther(const std::string& input, const std::string& output);

/// Writes bytes to a new file, which replaces the old one when it is complete; for "-" to standard output. Fails with
/// one line that begins with the path.
void writeFile(std::string_view bytes, const std::string& path);

} // namespace tool
