#include "znGeom/files/pending_file.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace znGeom {

namespace {

using std::filesystem::path;

std::string systemReason(int number) { return std::generic_category().message(number); }

} // namespace

PendingFile::PendingFile(const znOS::Filename& target)
{
    std::error_code error;
    const path given(target.path().asMultibyte(znString::Encoding::Native).asChar());
    const path resolved = std::filesystem::weakly_canonical(given, error);
    m_target = error ? given.string() : resolved.string();
    if (checkTarget()) create();
}

PendingFile::~PendingFile()
{
    m_file.reset();
    if (!m_path.empty()) std::remove(m_path.c_str());
}

bool PendingFile::fail(const std::string& reason)
{
    if (!hasFailed()) m_message = "can't be written: " + reason;
    return false;
}

bool PendingFile::checkTarget()
{
    std::error_code error;
    const auto status = std::filesystem::status(m_target, error);
    if (!std::filesystem::exists(status)) return true;
    if (std::filesystem::is_directory(status)) return fail("it is a folder");
    if (!std::filesystem::is_regular_file(status)) return fail("it is no file but a device or a pipe");
    errno = 0;
    const std::unique_ptr<std::FILE, CloseFile> old(std::fopen(m_target.c_str(), "r+b"));
    return old || fail(systemReason(errno));
}

/// Under a name that is still free.
void PendingFile::create()
{
    const path target(m_target);
    std::string stem(".");
    stem.append(target.filename().string());
    for (int attempt = 0; !m_file; ++attempt) {
        const path candidate = target.parent_path() / (stem + "." + std::to_string(attempt) + ".tmp");
        errno = 0;
        m_file.reset(std::fopen(candidate.string().c_str(), "wbx"));
        if (m_file)
            m_path = candidate.string();
        else if (errno != EEXIST) {
            fail(systemReason(errno));
            return;
        }
    }
}

bool PendingFile::write(const void* bytes, size_t count)
{
    if (hasFailed()) return false;
    errno = 0;
    const size_t written = std::fwrite(bytes, 1, count, m_file.get());
    m_size += static_cast<std::int64_t>(written);
    return written == count || fail(systemReason(errno));
}

bool PendingFile::finish()
{
    errno = 0;
    if (m_file && std::fclose(m_file.release()) != 0) fail(systemReason(errno));
    return !hasFailed();
}

bool PendingFile::commit()
{
    if (!finish()) return false;
    std::error_code error;
    const auto old = std::filesystem::status(m_target, error);
    if (std::filesystem::exists(old)) std::filesystem::permissions(m_path, old.permissions(), error);
    std::filesystem::rename(m_path, m_target, error);
    if (error) return fail(error.message());
    m_path.clear();
    return true;
}

} // namespace znGeom
