/// `znGeom::PendingFile`: output that appears when it is complete.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "znGeom/foundation/machine/export.h"
#include "znGeom/foundation/text/filename.h"

namespace znGeom {

/// A new file beside a target, which takes the target's place when everything has gone well. Until then the target
/// stays as it is, or absent; an object that is destroyed without a commit leaves nothing behind. Where the target is a
/// link, the file that it leads to is replaced, or made where there is none. The first failure stays: nothing is
/// written after it. Objects may be made by several threads; each serves one at a time.
class ZNGEOM_API PendingFile
{
public:
    /// Creates the new file, empty. Fails where the target can't be written: its folder, the file itself, or because it
    /// is a folder, a device or a pipe.
    explicit PendingFile(const znOS::Filename& target);
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;
    ~PendingFile();

    bool hasFailed() const { return !m_message.empty(); }
    /// What is wrong, in one line; empty while nothing is.
    const std::string& message() const { return m_message; }
    /// How many bytes were written.
    std::int64_t size() const { return m_size; }

    /// Appends bytes. False after a failure.
    bool write(const void* bytes, size_t count);
    /// Closes the new file, so that any number of them can wait for their commit. False after a failure.
    bool finish();
    /// For a handler of signals that ends the process: removes the new files of all objects that there are. Does only
    /// what such a handler may.
    static void removeAll();

    /// Finishes, and puts the new file in the target's place, with the permissions of the old one where there was one.
    /// False after a failure, with the target as it was.
    bool commit();

private:
    struct CloseFile
    {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    bool fail(const std::string& reason);
    bool checkTarget();
    void create();
    void enlist();
    void leaveList();

    std::string m_target; ///< links resolved
    std::string m_path;   ///< empty when there is no file to remove
    std::unique_ptr<std::FILE, CloseFile> m_file;
    std::string m_message;
    std::int64_t m_size = 0;
    std::atomic<PendingFile*> m_next = nullptr;        ///< in the list of those that have a file to remove
    std::atomic<PendingFile*>* m_linkOfThis = nullptr; ///< what points here in that list; null outside of it
};

} // namespace znGeom
