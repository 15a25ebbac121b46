/// Where formatted text goes: the part that the two output channels share.
#pragma once

#include <atomic>
#include <cstdarg>
#include <functional>
#include <mutex>
#include <string>

#include "znGeom/foundation/machine/export.h"

namespace znOS {

/// Formats text and hands it to a function of the host. Without one, nothing is formatted. May be called from any
/// thread; the host's function is called by one thread at a time and must not print to the same channel.
class ZNGEOM_API TextSink
{
public:
    using Function = std::function<void(const std::string& text)>;

    /// Replaces the host's function; an empty one ends the output.
    void set(Function function);
    bool isSet() const { return m_isSet.load(std::memory_order_relaxed); }

    void write(const char* format, std::va_list arguments) ZNGEOM_PRINTF(2, 0);

private:
    std::atomic<bool> m_isSet{false};
    std::mutex m_mutex;
    Function m_function;
};

} // namespace znOS
