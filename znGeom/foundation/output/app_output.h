/// `znOS::AppOutput`: messages for the application's user.
#pragma once

#include "znGeom/foundation/output/text_sink.h"

namespace znOS {

/// Messages and errors that the application may show. Silent until the host sets functions to receive them; until
/// then a call costs one test.
class ZNGEOM_API AppOutput
{
public:
    /// The one instance, alive for the whole process.
    static AppOutput& getInstance();

    void info(const char* format, ...) ZNGEOM_PRINTF(2, 3);
    void error(const char* format, ...) ZNGEOM_PRINTF(2, 3);

    /// \param function  receives each text; empty to stop listening. Called by one thread at a time, on the thread that
    ///                  writes; it must not write to the same channel.
    void setInfoSink(TextSink::Function function) { m_info.set(std::move(function)); }
    void setErrorSink(TextSink::Function function) { m_error.set(std::move(function)); }

private:
    TextSink m_info, m_error;
};

} // namespace znOS
