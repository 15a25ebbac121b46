# Installs the library, its headers, the CMake package (find_package(znGeom)) and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS znGeom EXPORT znGeomTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/znGeom DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(EXPORT znGeomTargets NAMESPACE znGeom:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/znGeom)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/znGeomConfig.cmake.in ${PROJECT_BINARY_DIR}/znGeomConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/znGeom)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/znGeomConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/znGeomConfig.cmake ${PROJECT_BINARY_DIR}/znGeomConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/znGeom)

configure_file(${PROJECT_SOURCE_DIR}/cmake/znGeom.pc.in ${PROJECT_BINARY_DIR}/znGeom.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/znGeom.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
