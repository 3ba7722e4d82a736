# 32-bit Win32 by clang, with the headers, libraries and linker of the mingw-w64 cross compiler.
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw-i686.cmake)

# clang doesn't find the cross compiler's folder by itself: the distribution has the kind of threads in its name.
execute_process(
  COMMAND ${CMAKE_CXX_COMPILER} -print-libgcc-file-name
  OUTPUT_VARIABLE runtime
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET runtime PARENT_PATH runtime)

set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET i686-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET i686-w64-mingw32)
set(CMAKE_AR i686-w64-mingw32-ar)
set(CMAKE_RANLIB i686-w64-mingw32-ranlib)

# With this root clang doesn't add the headers of this machine. The cross compiler's C++ library keeps thread-local
# variables without the help of the system (-femulated-tls), and has the comparison of type_info as a function of its own,
# which an inline one would be at odds with.
set(CMAKE_C_FLAGS_INIT "--sysroot=/usr/i686-w64-mingw32")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT} -femulated-tls -D__GXX_TYPEINFO_EQUALITY_INLINE=0")
foreach(folder "" /i686-w64-mingw32 /backward)
  string(APPEND CMAKE_CXX_FLAGS_INIT " -isystem ${runtime}/include/c++${folder}")
endforeach()
foreach(kind EXE SHARED MODULE)
  string(APPEND CMAKE_${kind}_LINKER_FLAGS_INIT " -pthread -B${runtime} -L${runtime}")
endforeach()
