#include "znGeom/files/pending_file.h"

#include <cerrno>
#include <filesystem>
#include <mutex>
#include <system_error>

namespace znGeom {

namespace {

using std::filesystem::path;

std::string systemReason(int number) { return std::generic_category().message(number); }

/// Where a chain of links ends, whether or not there is a file. A circle is left as it is.
path followLinks(path at)
{
    std::error_code error;
    for (int mostLinks = 40; mostLinks > 0 && std::filesystem::is_symlink(at, error); --mostLinks) {
        const path next = std::filesystem::read_symlink(at, error);
        if (error) break;
        at = at.parent_path() / next; // of two paths the second alone, if it is absolute
    }
    return at;
}

// Only this changes the list. At any moment a handler of signals can walk it.
std::mutex listMutex;
std::atomic<PendingFile*> firstPending = nullptr;
static_assert(std::atomic<PendingFile*>::is_always_lock_free);

} // namespace

PendingFile::PendingFile(const znOS::Filename& target)
{
    std::error_code error;
    const path given = followLinks(target.path().asMultibyte(znString::Encoding::Native).asChar());
    const path resolved = std::filesystem::weakly_canonical(given, error);
    m_target = error ? given.string() : resolved.string();
    if (checkTarget()) create();
}

PendingFile::~PendingFile()
{
    m_file.reset();
    if (!m_path.empty()) std::remove(m_path.c_str());
    leaveList();
}

void PendingFile::enlist()
{
    const std::lock_guard lock(listMutex);
    PendingFile* const next = firstPending;
    m_next = next;
    m_linkOfThis = &firstPending;
    if (next) next->m_linkOfThis = &m_next;
    firstPending = this;
}

void PendingFile::leaveList()
{
    const std::lock_guard lock(listMutex);
    if (!m_linkOfThis) return;
    PendingFile* const next = m_next;
    *m_linkOfThis = next;
    if (next) next->m_linkOfThis = m_linkOfThis;
    m_linkOfThis = nullptr;
}

void PendingFile::removeAll()
{
    for (const PendingFile* file = firstPending; file; file = file->m_next) std::remove(file->m_path.c_str());
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
    if (status.type() == std::filesystem::file_type::none) return fail(error.message()); // a circle of links, too
    if (!std::filesystem::exists(status)) return true;
    if (std::filesystem::is_directory(status)) return fail("it is a folder");
    if (!std::filesystem::is_regular_file(status)) return fail("it is no file but a device or a pipe");
    errno = 0;
    const std::unique_ptr<std::FILE, CloseFile> old(std::fopen(m_target.c_str(), "r+b"));
    return old || fail(systemReason(errno));
}

/// Under a name that is still free, and not longer than a name can be where that of the target isn't.
void PendingFile::create()
{
    const path target(m_target);
    constexpr std::size_t longestStem = 200;
    std::string stem(".");
    stem.append(target.filename().string(), 0, longestStem);
    std::string candidate;
    for (int attempt = 0; !m_file; ++attempt) {
        candidate = (target.parent_path() / (stem + "." + std::to_string(attempt) + ".tmp")).string();
        errno = 0;
        m_file.reset(std::fopen(candidate.c_str(), "wbx"));
        if (!m_file && errno != EEXIST) {
            fail(systemReason(errno));
            return;
        }
    }
    m_path = candidate;
    enlist();
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
    leaveList();
    m_path.clear();
    return true;
}

} // namespace znGeom
