# The libraries of others that ship within this system, as scripts/setup built them or as another toolchain finds them.
# The installed package has targets of the same names.

# A folder of TCLAP's own comes first: beside the machine's other headers it would bring those in.
find_path(TCLAP_INCLUDE_DIR tclap/CmdLine.h PATHS ${DEPS_ROOT}/include-tclap NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
find_path(TCLAP_INCLUDE_DIR tclap/CmdLine.h REQUIRED)
find_path(LIBCONFIGXX_INCLUDE_DIR libconfig.h++ REQUIRED)
find_library(LIBCONFIGXX_LIBRARY NAMES config++ libconfig++ REQUIRED)

add_library(vek::tclap INTERFACE IMPORTED)
target_include_directories(vek::tclap INTERFACE ${TCLAP_INCLUDE_DIR})

add_library(vek::libconfigxx STATIC IMPORTED)
set_target_properties(vek::libconfigxx PROPERTIES IMPORTED_LOCATION ${LIBCONFIGXX_LIBRARY})
target_include_directories(vek::libconfigxx INTERFACE ${LIBCONFIGXX_INCLUDE_DIR})
target_compile_definitions(vek::libconfigxx INTERFACE LIBCONFIG_STATIC LIBCONFIGXX_STATIC)

# All in one header, which takes long to compile: one source file includes it.
find_path(HTTPLIB_INCLUDE_DIR httplib.h PATHS ${DEPS_ROOT}/include-httplib NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
find_path(HTTPLIB_INCLUDE_DIR httplib.h REQUIRED)
add_library(httplib INTERFACE)
target_include_directories(httplib SYSTEM INTERFACE ${HTTPLIB_INCLUDE_DIR})
