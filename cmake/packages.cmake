# The two zips that scripts/package makes by CPack:
#   tolmarhlp-VERSION-win32.zip   what an operator takes away: the component "programs"
#   vek-VERSION-win32-dev.zip     the install (component "vek"), and what it takes to link the programs again with another
#                                 libconfig++ (component "relink"), as its licence asks
# Each has the notices of the third parties whose code is in it, copied from their own packages.

set(PACKAGE_DOC_DIR /usr/share/doc CACHE PATH "Where the distribution's packages have their copyright files")

configure_file(cmake/package/README.txt.in package/README.txt @ONLY NEWLINE_STYLE DOS)
configure_file(docs/logging.conf package/logging.conf @ONLY NEWLINE_STYLE DOS)
install(
  TARGETS tolmarhlp log_application
  COMPONENT programs EXCLUDE_FROM_ALL
  RUNTIME DESTINATION .)
install(
  FILES ${PROJECT_BINARY_DIR}/package/README.txt ${PROJECT_BINARY_DIR}/package/logging.conf
  COMPONENT programs EXCLUDE_FROM_ALL
  DESTINATION .)

# package_notice(FILE NAME): puts the notice FILE into both zips, as third-party/NAME.
function(package_notice file name)
  foreach(component programs relink)
    install(
      FILES ${file}
      COMPONENT ${component} EXCLUDE_FROM_ALL
      DESTINATION third-party
      RENAME ${name})
  endforeach()
endfunction()
package_notice(${PROJECT_SOURCE_DIR}/cmake/package/third-party.txt README.txt)
package_notice(${DEPS_ROOT}/share/libconfig/COPYING.LIB libconfig.txt)
package_notice(${DEPS_ROOT}/share/cpp-httplib/LICENSE cpp-httplib.txt)
package_notice(${PACKAGE_DOC_DIR}/libtclap-dev/copyright tclap.txt)
package_notice(${PACKAGE_DOC_DIR}/g++-mingw-w64-i686-posix/copyright gcc-runtime.txt)
package_notice(${PACKAGE_DOC_DIR}/mingw-w64-i686-dev/copyright mingw-w64.txt)

# relink/PROGRAM has the objects and the libraries that are this program's alone.
install(
  EXPORT relink
  COMPONENT relink EXCLUDE_FROM_ALL
  NAMESPACE relink::
  DESTINATION relink
  FILE libraries.cmake)
install(
  FILES cmake/package/relink/CMakeLists.txt cmake/package/relink/README.txt
  COMPONENT relink EXCLUDE_FROM_ALL
  DESTINATION relink)
foreach(program tolmarhlp log_application)
  install(
    FILES $<TARGET_OBJECTS:${program}>
    COMPONENT relink EXCLUDE_FROM_ALL
    DESTINATION relink/${program})
endforeach()
# The source of the library, as the distribution has it.
install(
  DIRECTORY ${DEPS_ROOT}/share/libconfig/source/
  COMPONENT relink EXCLUDE_FROM_ALL
  DESTINATION relink/libconfig)

# CPack installs each component into a folder of its own, side by side; the files of "vek" are in the archive of "relink".
install(
  CODE "set(target \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
        set(folders \"\${target}\")
        include(\"${PROJECT_SOURCE_DIR}/cmake/package/checksums.cmake\")"
  COMPONENT programs EXCLUDE_FROM_ALL)
install(
  CODE "set(target \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
        set(folders \"\${target}\" \"\${target}/../vek\")
        include(\"${PROJECT_SOURCE_DIR}/cmake/package/checksums.cmake\")"
  COMPONENT relink EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME tolmar)
set(CPACK_PACKAGE_VENDOR tolmar)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build)
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL programs vek relink)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENT_PROGRAMS_GROUP operator)
set(CPACK_COMPONENT_VEK_GROUP dev)
set(CPACK_COMPONENT_RELINK_GROUP dev)
set(CPACK_ARCHIVE_OPERATOR_FILE_NAME tolmarhlp-${PROJECT_VERSION}-win32)
set(CPACK_ARCHIVE_DEV_FILE_NAME vek-${PROJECT_VERSION}-win32-dev)
include(CPack)
