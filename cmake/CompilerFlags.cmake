# Flags shared by the library and everything around it. Floating point is computed as written: no contraction, no
# fast-math. Assuming that nobody reads the exception flags or errno changes no result, and lets loops with branches be
# vectorised.
add_library(zngeom_flags INTERFACE)
target_compile_options(zngeom_flags INTERFACE
  -ffp-contract=off -fno-trapping-math -fno-math-errno -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual
  -Wdouble-promotion -Wformat=2 -Wundef)
# GCC 12 drops the narrowing of a pair of doubles that are widened again at once, when it vectorises straight-line code.
target_compile_options(zngeom_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fno-tree-slp-vectorize>)
# The warnings of later compilers are worth reading, but no reason for a build to fail.
if(ZNGEOM_WERROR AND ((CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 15)
    OR (CMAKE_CXX_COMPILER_ID STREQUAL Clang AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 20)))
  target_compile_options(zngeom_flags INTERFACE -Werror)
endif()


if(ZNGEOM_SANITIZE)
  target_compile_options(zngeom_flags INTERFACE -fsanitize=${ZNGEOM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(zngeom_flags INTERFACE -fsanitize=${ZNGEOM_SANITIZE})
endif()

# For what computes little itself (tests, the tool, examples): the library is optimised, these compile in half the time.
# Under a sanitizer the optimiser alone would take as long as everything else.
add_library(zngeom_program_flags INTERFACE)
target_link_libraries(zngeom_program_flags INTERFACE zngeom_flags)
if(ZNGEOM_SANITIZE)
  target_compile_options(zngeom_program_flags INTERFACE -O0)
elseif(NOT CMAKE_BUILD_TYPE STREQUAL Debug)
  target_compile_options(zngeom_program_flags INTERFACE -O1)
endif()
