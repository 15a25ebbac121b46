/// `znGeom::debugChannel()`: the diagnostic log, to which every stage writes its counts and times.
#pragma once

#include "znGeom/foundation/output/text_sink.h"

namespace znOS {

/// One log. Silent until the host sets a function to receive the text; until then a `print` costs one test.
class ZNGEOM_API DebugChannel
{
public:
    /// Writes printf-style text, line endings as given. From any thread.
    void print(const char* format, ...) ZNGEOM_PRINTF(2, 3);

    /// \param function  receives each printed text; empty to stop listening. Called by one thread at a time, on the
    ///                  thread that prints; it must not print to this channel.
    void setSink(TextSink::Function function) { m_sink.set(std::move(function)); }
    bool hasSink() const { return m_sink.isSet(); }

private:
    TextSink m_sink;
};

} // namespace znOS

namespace znGeom {

/// The library's own channel, alive for the whole process.
ZNGEOM_API znOS::DebugChannel& debugChannel();

} // namespace znGeom
