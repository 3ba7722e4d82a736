# cmake -DSOURCE_DIR=DIR -DOUTPUT=FILE -P commit.cmake: writes the header FILE for version resources. It has the commit of
# the tree if no file differs from it, and is empty otherwise. The file is left alone if it is right already.
execute_process(
  COMMAND git status --porcelain
  WORKING_DIRECTORY ${SOURCE_DIR}
  RESULT_VARIABLE failed
  OUTPUT_VARIABLE changes
  ERROR_QUIET)
execute_process(
  COMMAND git rev-parse HEAD
  WORKING_DIRECTORY ${SOURCE_DIR}
  OUTPUT_VARIABLE commit
  OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
set(text "")
if(failed EQUAL 0
   AND changes STREQUAL ""
   AND commit)
  set(text "#define TOLMAR_COMMENTS \"commit ${commit}\"\n")
endif()
set(old "(none)")
if(EXISTS ${OUTPUT})
  file(READ ${OUTPUT} old)
endif()
if(NOT text STREQUAL old)
  file(WRITE ${OUTPUT} "${text}")
endif()
