/// `znOS::Filename`: the path of a file and its parts.
#pragma once

#include "znGeom/foundation/text/i_string.h"

namespace znOS {

/// A path as the operating system takes it. `dirname() + basename()` is the path again.
class ZNGEOM_API Filename
{
public:
    Filename() = default;
    explicit Filename(const znString::IString& path) : m_path(path) {}
    /// From the bytes that the operating system takes.
    explicit Filename(const char* path) : m_path(path, znString::Encoding::Native) {}

    const znString::IString& path() const { return m_path; }

    /// Everything up to the last separator, the separator included; empty when there is none.
    znString::IString dirname() const;
    /// Everything after the last separator.
    znString::IString basename() const;
    /// The base name without its extension, the part from the last dot on. Dots at the front start no extension.
    znString::IString baseTrunk() const;

private:
    znString::IString m_path;
};

} // namespace znOS
