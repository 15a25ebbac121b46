/// Meshes from files that may lie beside the source tree. A test that wants one skips itself when it is absent:
///
///     const std::string path = znTest::meshFile("cow.obj");
///     if (path.empty()) GTEST_SKIP();
#pragma once

#include <filesystem>
#include <string>

namespace znTest {

/// The path of a mesh file; empty when there is none of that name.
inline std::string meshFile(const char* name)
{
    const auto path = std::filesystem::path(ZNGEOM_SOURCE_DIR) / "../shared/meshes" / name;
    return std::filesystem::exists(path) ? path.string() : std::string();
}

} // namespace znTest
