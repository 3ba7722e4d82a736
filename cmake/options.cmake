# What every target of this project is compiled and linked with.

# Nobody has seen yet what MSVC warns of.
set(warnings_are_errors ON)
if(MSVC)
  set(warnings_are_errors OFF)
endif()
option(VEK_WARNINGS_AS_ERRORS "Stop at the first warning" ${warnings_are_errors})

option(VEK_CHECKED "Trap undefined behaviour, and check the standard library's conditions and the tests' heap" OFF)

add_library(vek_options INTERFACE)
target_include_directories(vek_options INTERFACE ${PROJECT_SOURCE_DIR})
# Narrow Win32 functions are called by their own names (CreateFileA), so UNICODE doesn't matter. 0x0A00 shows the whole
# API; what an older system may lack is looked up at run time.
target_compile_definitions(vek_options INTERFACE _WIN32_WINNT=0x0A00)
if(MSVC)
  # C4996: calls that its headers call deprecated. We make them on purpose: GetVersionExA, the C runtime's and Winsock's.
  target_compile_options(vek_options INTERFACE /W4 /wd4996 /utf-8 $<$<BOOL:${VEK_WARNINGS_AS_ERRORS}>:/WX>)
else()
  target_compile_options(
    vek_options
    INTERFACE -Wall
              -Wextra
              -Wconversion
              -Wshadow
              $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
              $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
              $<$<BOOL:${VEK_WARNINGS_AS_ERRORS}>:-Werror>)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 warns of overlapping copies inside its own std::string (its bug 105651).
    target_compile_options(vek_options INTERFACE -Wno-restrict)
  endif()
endif()
if(VEK_CHECKED)
  target_compile_definitions(vek_options INTERFACE _GLIBCXX_ASSERTIONS)
  # The sanitizer has no run-time library for this target, so a fault is an illegal instruction.
  target_compile_options(vek_options INTERFACE -fsanitize=undefined -fsanitize-undefined-trap-on-error)
endif()

# precompiled(TARGET): the headers that nearly every source includes are compiled once for all libraries. Not with a compiler
# cache: a precompiled header isn't the same in another checkout, and the cache would find nothing there. Not with clang
# either: so one compiler sees each source with its own includes alone, and finds what one has forgotten.
function(precompiled target)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU" OR CMAKE_CXX_COMPILER_LAUNCHER)
    return()
  endif()
  if(NOT TARGET vek_headers)
    file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/vek_headers.cpp CONTENT "// For the headers that are compiled with it.\n")
    add_library(vek_headers OBJECT ${PROJECT_BINARY_DIR}/vek_headers.cpp)
    target_link_libraries(vek_headers PRIVATE vek_options)
    target_precompile_headers(vek_headers PRIVATE <memory> <ostream> <string> <vector>
                              ${PROJECT_SOURCE_DIR}/vek/base/windows.h)
  endif()
  target_precompile_headers(${target} REUSE_FROM vek_headers)
  # GCC 12 may take its own headers in a precompiled one for ours, and warn of faults inside std::string that aren't there
  # (docs/building.md). That must not end a build.
  if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-error=stringop-overflow -Wno-error=stringop-overread -Wno-error=array-bounds)
  endif()
endfunction()

# vek_library(NAME SOURCE... [HEADERS HEADER...] LINKS LIBRARY...): the library of one folder or chief header. It links what
# is below it, and nothing else is visible to it, so that an arrow upwards doesn't link.
# HEADERS are the public ones: `cmake --install` installs these and no others, and public headers include only these.
function(vek_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "HEADERS;LINKS")
  add_library(vek_${name} STATIC ${arg_UNPARSED_ARGUMENTS})
  target_sources(vek_${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${arg_HEADERS})
  target_compile_features(vek_${name} PUBLIC cxx_std_20)
  target_link_libraries(vek_${name} PUBLIC $<BUILD_INTERFACE:vek_options> ${arg_LINKS})
  precompiled(vek_${name})
  add_library(vek::${name} ALIAS vek_${name})
  vek_package_target(${name})
endfunction()

# relink_library(TARGET PROGRAM): the library is part of what a user gets for linking PROGRAM again (cmake/packages.cmake).
function(relink_library target program)
  install(
    TARGETS ${target}
    EXPORT relink
    COMPONENT relink EXCLUDE_FROM_ALL
    ARCHIVE DESTINATION relink/${program})
endfunction()

# vek_package_target(NAME): the target vek_NAME is vek::NAME in the installed package.
function(vek_package_target name)
  set_target_properties(vek_${name} PROPERTIES EXPORT_NAME ${name})
  install(
    TARGETS vek_${name}
    EXPORT vek
    COMPONENT vek
    ARCHIVE DESTINATION lib
    FILE_SET HEADERS DESTINATION include)
endfunction()
