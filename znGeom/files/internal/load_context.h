/// `znGeom::internal::LoadContext`: the state of reading a mesh file.
#pragma once

#include <string>
#include <string_view>

#include "znGeom/files/internal/text_file.h"
#include "znGeom/files/mesh_load.h"

namespace znGeom::internal {

/// Text from a file as it may be shown: control characters become question marks.
std::string printable(std::string_view text);
/// The same in quotes; junk can be long, and then only its beginning is shown.
std::string quoted(std::string_view word);

/// The first failure stays. What can fail returns false, and so does its caller.
class LoadContext
{
public:
    using Status = MeshLoadResult::Status;

    /// \param size  the number of bytes to be read, for the progress; 0 when not known
    LoadContext(TextReader& text, std::int64_t size, znUtil::Progress& progress, MeshLoadResult& result)
        : m_text(text), m_size(size), m_progress(progress), m_result(result)
    {}

    TextReader& text() { return m_text; }
    /// 0 when not known.
    std::int64_t size() const { return m_size; }
    MeshLoadResult& result() { return m_result; }
    bool hasFailed() const { return m_result.status != Status::Loaded; }

    /// Always false.
    bool fail(Status status, std::string message);
    bool malformed(std::string message) { return fail(Status::Malformed, std::move(message)); }
    bool tooLarge();

    /// Moves on in the text, a block at a time, and reports how far it is. False at its end and after a failure.
    bool nextBlock();
    /// As `TextReader::requireBytes`; fails where the file ends too soon.
    bool requireBytes(const char*& at, size_t count);
    /// False, and failed, when the user has asked to stop.
    bool checkCancelled();

    void note(std::string note) { m_result.notes.append(std::move(note)); }

private:
    bool report();

    TextReader& m_text;
    std::int64_t m_size;
    std::int64_t m_reported = 0;
    znUtil::Progress& m_progress;
    MeshLoadResult& m_result;
};

} // namespace znGeom::internal
