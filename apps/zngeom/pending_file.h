/// `tool::PendingFile`: output that appears when it is complete.
#pragma once

#include <filesystem>

namespace tool {

/// A new file beside a target, which takes the target's place when everything has gone well. Until then the target
/// stays as it is, or absent; a failure and a cancel leave nothing behind.
class PendingFile
{
public:
    /// Makes the new file, empty. Fails where the target can't be written: its folder, the file itself, or because it
    /// is something else than a file.
    explicit PendingFile(const std::filesystem::path& target);
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;
    ~PendingFile();

    const std::filesystem::path& path() const { return m_path; }

    /// Puts the new file in the target's place, with the target's permissions where there was one.
    void commit();

private:
    std::filesystem::path m_target; ///< links resolved: the file at their end is replaced and not the link
    std::filesystem::path m_path;
    bool m_committed = false;
};

} // namespace tool
