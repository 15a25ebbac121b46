/// A file that lives as long as the test that made it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "znGeom/foundation/text/filename.h"

namespace znTest {

/// A file in a temporary folder of its own, which is removed with all that is in it. It is not there before it is
/// written.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::string& name = "mesh.obj")
        : folder(std::filesystem::temp_directory_path() / ("znGeom-" + std::to_string(std::random_device()()))),
          path(folder / name)
    {
        std::filesystem::create_directories(folder);
    }
    ~TemporaryFile() { std::filesystem::remove_all(folder); }

    znOS::Filename name() const { return znOS::Filename(path.string().c_str()); }
    void write(const std::string& content) const { std::ofstream(path, std::ios::binary) << content; }
    std::string read() const { return readFile(path); }

    static std::string readFile(const std::filesystem::path& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::filesystem::path folder, path;
};

} // namespace znTest
