/// A file that lives as long as the test that made it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "znGeom/foundation/text/filename.h"

namespace znTest {

/// A name in the temporary folder that nobody else has, in a folder of its own, which goes with all that is in it.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::string& name = "mesh.obj")
    {
        std::random_device random;
        m_folder = std::filesystem::temp_directory_path() /
                   ("znGeom-" + std::to_string(random()) + "-" + std::to_string(random()));
        std::filesystem::create_directories(m_folder);
        m_path = m_folder / name;
    }
    TemporaryFile(const std::string& name, const std::string& content) : TemporaryFile(name) { write(content); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    znOS::Filename name() const { return znOS::Filename(m_path.string().c_str()); }
    const std::filesystem::path& path() const { return m_path; }

    void write(const std::string& content) const { std::ofstream(m_path, std::ios::binary) << content; }
    std::string read() const { return read(m_path); }
    static std::string read(const std::filesystem::path& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path m_folder, m_path;
};

} // namespace znTest
