/// A guard for sizes that are computed from other sizes.
#pragma once

#include <cstdint>
#include <limits>
#include <stdexcept>

#include "znGeom/foundation/machine/language.h"

namespace zn {

/// A size as `int`. One that does not fit fails as the standard containers fail: with `std::length_error`.
inline int checkedSize(std::int64_t size)
{
    if (size < 0 || size > std::numeric_limits<int>::max()) throw std::length_error("znGeom: more than 2^31 elements");
    return static_cast<int>(size);
}

} // namespace zn
