# Installs the library, its headers, the CMake package (find_package(znGeom)), a pkg-config file and the licence. What is
# installed can be moved as a whole: both packages find the rest relative to their own place.
include(CMakePackageConfigHelpers)

install(TARGETS znGeom EXPORT znGeomTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Headers in folders named internal serve the library's own sources.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/znGeom DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h" PATTERN internal EXCLUDE)
install(EXPORT znGeomTargets NAMESPACE znGeom:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/znGeom)
# The build folder is a package as well, for projects that export their targets from theirs.
export(EXPORT znGeomTargets NAMESPACE znGeom:: FILE ${PROJECT_BINARY_DIR}/znGeomTargets.cmake)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/znGeomConfig.cmake.in ${PROJECT_BINARY_DIR}/znGeomConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/znGeom)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/znGeomConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/znGeomConfig.cmake ${PROJECT_BINARY_DIR}/znGeomConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/znGeom)

# pkg-config: a folder below the prefix is given relative to the file itself, any other by its full path.
function(zngeom_pkg_config_folder result folder)
  if(IS_ABSOLUTE ${folder})
    set(${result} ${folder} PARENT_SCOPE)
  else()
    set(${result} "\${prefix}/${folder}" PARENT_SCOPE)
  endif()
endfunction()

if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(ZNGEOM_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH ZNGEOM_PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
  string(REGEX REPLACE "/$" "" ZNGEOM_PC_PREFIX "\${pcfiledir}/${ZNGEOM_PC_PREFIX}")
endif()
zngeom_pkg_config_folder(ZNGEOM_PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
zngeom_pkg_config_folder(ZNGEOM_PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
# Users of the static library have to know that it is static, and have to link the threads that it uses.
if(NOT BUILD_SHARED_LIBS)
  set(ZNGEOM_PC_CFLAGS " -DZNGEOM_STATIC")
  set(ZNGEOM_PC_LIBS " -pthread")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/znGeom.pc.in ${PROJECT_BINARY_DIR}/znGeom.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/znGeom.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/licenses/znGeom)
