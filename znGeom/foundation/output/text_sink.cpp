#include "znGeom/foundation/output/text_sink.h"

#include <cstdio>
#include <utility>

namespace znOS {

namespace {

ZNGEOM_PRINTF(1, 0) std::string formatted(const char* format, std::va_list arguments)
{
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

} // namespace

void TextSink::set(Function function)
{
    const std::lock_guard lock(m_mutex);
    m_function = std::move(function);
    m_isSet.store(static_cast<bool>(m_function), std::memory_order_relaxed);
}

void TextSink::write(const char* format, std::va_list arguments)
{
    if (!isSet()) return;
    const std::string text = formatted(format, arguments);
    const std::lock_guard lock(m_mutex);
    if (m_function) m_function(text);
}

} // namespace znOS
