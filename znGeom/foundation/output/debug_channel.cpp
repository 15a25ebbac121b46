#include "znGeom/foundation/output/debug_channel.h"

namespace znOS {

void DebugChannel::print(const char* format, ...)
{
    if (!m_sink.isSet()) return;
    std::va_list arguments;
    va_start(arguments, format);
    m_sink.write(format, arguments);
    va_end(arguments);
}

} // namespace znOS

namespace znGeom {

znOS::DebugChannel& debugChannel()
{
    // Never destroyed: threads of the host may still print while the process ends.
    static znOS::DebugChannel& channel = *new znOS::DebugChannel;
    return channel;
}

} // namespace znGeom
