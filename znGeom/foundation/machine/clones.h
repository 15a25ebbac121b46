/// A mark for functions that are compiled several times, once for each kind of processor.
#pragma once

#include <cstddef> // says whether this is glibc

#include "znGeom/foundation/machine/language.h"

/// Goes before the definition of a hot function with plain loops: it is compiled for processors with wider registers as
/// well, and the system picks the version that fits when the program starts. All versions compute the same bits. Has no
/// effect where the compiler or the system lacks the feature, or under sanitizers, whose run-time library is not ready
/// that early.
#if defined(__x86_64__) && defined(__GLIBC__) && defined(__GNUC__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define ZNGEOM_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define ZNGEOM_CLONES
#endif
