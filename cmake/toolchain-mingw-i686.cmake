# 32-bit Win32 from Linux: the posix-threads flavour of the mingw-w64 compiler, since std::mutex and friends need it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)

# Third-party libraries for the target, as scripts/setup built them.
if(NOT DEPS_ROOT)
  set(DEPS_ROOT "$ENV{DEPS_ROOT}")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES DEPS_ROOT)
set(CMAKE_FIND_ROOT_PATH ${DEPS_ROOT} /usr/i686-w64-mingw32)
if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/vekConfig.cmake)
  # Installed, beside the package vek: so that is found, too.
  get_filename_component(VEK_PREFIX ${CMAKE_CURRENT_LIST_DIR}/../../.. ABSOLUTE)
  list(PREPEND CMAKE_FIND_ROOT_PATH ${VEK_PREFIX})
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Programs carry the compiler's runtime in them and import system DLLs only.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
