# The target zngeom_fuzz_targets builds all fuzz targets.
if(ZNGEOM_FUZZ)
  add_custom_target(zngeom_fuzz_targets)
endif()

# zngeom_add_fuzz_target(<name> <source>...)
#
# Builds a fuzz target (a program with LLVMFuzzerTestOneInput) as bin/<name>, with the library and the fuzzer's main.
# Names begin with fuzz_; seeds are in tests/fuzz/corpus/<name>. Does nothing without ZNGEOM_FUZZ.
function(zngeom_add_fuzz_target name)
  if(ZNGEOM_FUZZ)
    add_executable(${name} ${ARGN})
    target_link_libraries(${name} PRIVATE znGeom::znGeom zngeom_flags)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    add_dependencies(zngeom_fuzz_targets ${name})
  endif()
endfunction()
