# What `cmake --install` installs: the public headers and the libraries (vek_library), the libraries of others that these
# need, and the package vek, by which find_package finds all of it.
include(CMakePackageConfigHelpers)

set(package_dir lib/cmake/vek)
install(
  EXPORT vek
  COMPONENT vek
  NAMESPACE vek::
  DESTINATION ${package_dir}
  FILE vekTargets.cmake)

get_filename_component(vek_libconfigxx_file ${LIBCONFIGXX_LIBRARY} NAME)
configure_package_config_file(cmake/vekConfig.cmake.in ${PROJECT_BINARY_DIR}/package/vekConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/vekConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(
  FILES ${PROJECT_BINARY_DIR}/package/vekConfig.cmake ${PROJECT_BINARY_DIR}/package/vekConfigVersion.cmake
        cmake/toolchain-mingw-i686.cmake
  COMPONENT vek
  DESTINATION ${package_dir})

# In a folder of their own, where they hide nothing that the user has.
install(
  FILES ${LIBCONFIGXX_LIBRARY}
  COMPONENT vek
  DESTINATION lib/vek-third-party)
install(
  FILES ${LIBCONFIGXX_INCLUDE_DIR}/libconfig.h++
  COMPONENT vek
  DESTINATION include/vek-third-party)
file(REAL_PATH ${TCLAP_INCLUDE_DIR}/tclap tclap_dir)  # scripts/setup makes a link
install(
  DIRECTORY ${tclap_dir}/
  COMPONENT vek
  DESTINATION include/vek-third-party/tclap
  FILES_MATCHING
  PATTERN "*.h")
