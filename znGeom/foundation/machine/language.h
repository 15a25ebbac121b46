/// The language that every header of the library needs. Each of them includes this one, if only through another.
#pragma once

#if __cplusplus < 202002L
#error "znGeom needs C++20: compile with -std=c++20, with GCC 12, Clang 14 or a later one."
#endif
