#include "znGeom/files/internal/load_context.h"

#include <system_error>
#include <utility>

namespace znGeom::internal {

std::string printable(std::string_view text)
{
    std::string shown(text);
    for (size_t i = 0; i < shown.size(); ++i) {
        const auto byte = static_cast<unsigned char>(shown[i]);
        const auto next = static_cast<unsigned char>(i + 1 < shown.size() ? shown[i + 1] : ' ');
        const bool isTwoByteControl = byte == 0xC2 && next >= 0x80 && next < 0xA0;
        if (isTwoByteControl) shown[i + 1] = '?';
        if (byte < ' ' || byte == 0x7F || isTwoByteControl) shown[i] = '?';
    }
    return shown;
}

std::string quoted(std::string_view word)
{
    constexpr size_t shown = 24;
    return '"' + printable(word.substr(0, shown)) + (word.size() > shown ? "...\"" : "\"");
}

bool LoadContext::fail(Status status, std::string message)
{
    if (hasFailed()) return false;
    m_result.status = status;
    m_result.message = std::move(message);
    return false;
}

bool LoadContext::tooLarge() { return fail(Status::TooLarge, "is larger than a mesh can be"); }

bool LoadContext::checkCancelled() { return !m_progress.cancelled() || fail(Status::Cancelled, "cancelled"); }

/// After each look at the file.
bool LoadContext::report()
{
    if (!checkCancelled()) return false;
    if (m_text.error() != 0)
        return fail(Status::Unreadable, "can't be read: " + std::generic_category().message(m_text.error()));
    if (m_text.bytesRead() == m_reported) return true;
    m_reported = m_text.bytesRead();
    if (m_size > 0) m_progress.set(static_cast<double>(m_reported) / static_cast<double>(m_size));
    return true;
}

bool LoadContext::nextBlock()
{
    if (hasFailed()) return false;
    const bool hasBlock = m_text.nextBlock();
    return report() && hasBlock;
}

bool LoadContext::requireBytes(const char*& at, size_t count)
{
    if (static_cast<size_t>(m_text.end() - at) >= count) return true;
    const bool hasBytes = m_text.requireBytes(at, count);
    return report() && (hasBytes || malformed("the file ends too soon"));
}

} // namespace znGeom::internal
