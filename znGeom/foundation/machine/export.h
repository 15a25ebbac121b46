/// Marks for what the library exports, and for functions whose printf-style format the compiler checks.
#pragma once

#if defined(ZNGEOM_STATIC)
#define ZNGEOM_API
#elif defined(_WIN32)
#if defined(ZNGEOM_BUILDING)
#define ZNGEOM_API __declspec(dllexport)
#else
#define ZNGEOM_API __declspec(dllimport)
#endif
#else
#define ZNGEOM_API __attribute__((visibility("default")))
#endif

#if defined(__GNUC__)
#define ZNGEOM_PRINTF(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define ZNGEOM_PRINTF(formatIndex, firstArgument)
#endif
