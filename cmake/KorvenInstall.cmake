# Installation: the shared library, its C header and the native headers below include/korvenrg/, a CMake package and a
# pkg-config file. Both find the library relative to themselves, so that an installed tree can be moved.
include(CMakePackageConfigHelpers)

set(korven_headers ${CMAKE_INSTALL_INCLUDEDIR}/korvenrg)
set(korven_package ${CMAKE_INSTALL_LIBDIR}/cmake/korvenrg)

# The native headers are C++20; the C header asks for nothing.
target_compile_features(korvenrg INTERFACE cxx_std_20)

install(TARGETS korvenrg EXPORT korvenrgTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/src/exports/korvenrg.h DESTINATION ${korven_headers})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/ DESTINATION ${korven_headers}
  FILES_MATCHING PATTERN "*.h" PATTERN exports EXCLUDE)

if(TARGET korven_command)
  set_target_properties(korven_command PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS korven_command RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(EXPORT korvenrgTargets NAMESPACE korvenrg:: DESTINATION ${korven_package})
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/korvenrgConfig.cmake.in ${PROJECT_BINARY_DIR}/korvenrgConfig.cmake
  INSTALL_DESTINATION ${korven_package})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/korvenrgConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/korvenrgConfig.cmake
  ${PROJECT_BINARY_DIR}/korvenrgConfigVersion.cmake
  DESTINATION ${korven_package})

set(korven_pkgconfig ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH KORVEN_PREFIX_FROM_PC /${korven_pkgconfig} /)
configure_file(${PROJECT_SOURCE_DIR}/cmake/korvenrg.pc.in ${PROJECT_BINARY_DIR}/korvenrg.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/korvenrg.pc DESTINATION ${korven_pkgconfig})
