/// A mark for functions of which there are several, one for each kind of processor.
#pragma once

#include <cstddef> // says whether this is glibc

#include "znGeom/foundation/machine/language.h"

/// Before the definition of a hot function with plain loops: it is compiled for processors with wider registers as
/// well, and the system takes the one that fits when the program starts. It computes the same bits. Without effect
/// where compiler or system know no such thing, and under sanitizers, whose run-time is not ready so early.
#if defined(__x86_64__) && defined(__GLIBC__) && defined(__GNUC__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define ZNGEOM_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define ZNGEOM_CLONES
#endif
