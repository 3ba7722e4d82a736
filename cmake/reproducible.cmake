# Two builds of one commit are equal, wherever and whenever they are made: no file gets a path of this machine or a date.
# With a compiler cache that can't be promised, since it returns objects that were compiled elsewhere; then the options
# would only keep it from finding anything.
if(NOT MSVC AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  add_compile_options($<$<NOT:$<COMPILE_LANGUAGE:RC>>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=>)
  foreach(language C CXX)
    set(CMAKE_${language}_ARCHIVE_CREATE "<CMAKE_AR> qcD <TARGET> <LINK_FLAGS> <OBJECTS>")
    set(CMAKE_${language}_ARCHIVE_APPEND "<CMAKE_AR> qD <TARGET> <LINK_FLAGS> <OBJECTS>")
    set(CMAKE_${language}_ARCHIVE_FINISH "<CMAKE_RANLIB> -D <TARGET>")
  endforeach()
endif()
