/// The rule by which an index range is divided among threads or chunks.
#pragma once

#include "znGeom/foundation/machine/language.h"

namespace znUtil {

/// One part of [0, count) divided into `parts`: contiguous, in order, the first count mod parts slices one element
/// longer than the rest; empty where there are fewer elements than parts.
struct Slice
{
    int begin, end;

    constexpr Slice(int count, int part, int parts)
        : begin(start(count, part, parts)), end(start(count, part + 1, parts))
    {}
    constexpr int size() const { return end - begin; }

private:
    static constexpr int start(int count, int part, int parts)
    {
        const int quotient = count / parts, remainder = count % parts;
        return part < remainder ? (quotient + 1) * part : quotient * part + remainder;
    }
};

} // namespace znUtil
