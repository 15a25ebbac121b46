#include "apps/zngeom/pending_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "apps/zngeom/failure.h"

namespace tool {

namespace {

[[noreturn]] void failToWrite(const std::string& reason) { throw Failure("can't be written: " + reason); }

void checkTarget(const std::filesystem::path& target)
{
    std::error_code error;
    if (!std::filesystem::exists(target, error)) return;
    if (std::filesystem::is_directory(target, error)) failToWrite("it is a folder");
    if (!std::filesystem::is_regular_file(target, error)) failToWrite("it is no file but a device or a pipe");
    if (access(target.c_str(), W_OK) != 0) failToWrite(std::strerror(errno));
}

/// Makes an empty file of a name that is still free.
std::filesystem::path createBeside(const std::filesystem::path& target)
{
    std::string stem(".");
    stem.append(target.filename().string()).append(".").append(std::to_string(getpid())).append(".");
    for (int attempt = 0;; ++attempt) {
        std::filesystem::path path = target.parent_path() / (stem + std::to_string(attempt) + ".tmp");
        if (std::FILE* file = std::fopen(path.c_str(), "wbx")) {
            std::fclose(file);
            return path;
        }
        if (errno != EEXIST) failToWrite(std::strerror(errno));
    }
}

} // namespace

PendingFile::PendingFile(const std::filesystem::path& target)
{
    std::error_code error;
    m_target = std::filesystem::weakly_canonical(target, error);
    if (error) m_target = target;
    checkTarget(m_target);
    m_path = createBeside(m_target);
}

PendingFile::~PendingFile()
{
    std::error_code error;
    if (!m_committed) std::filesystem::remove(m_path, error);
}

void PendingFile::commit()
{
    std::error_code error;
    const auto old = std::filesystem::status(m_target, error);
    if (std::filesystem::exists(old)) std::filesystem::permissions(m_path, old.permissions(), error);
    std::filesystem::rename(m_path, m_target, error);
    if (error) failToWrite(error.message());
    m_committed = true;
}

} // namespace tool
