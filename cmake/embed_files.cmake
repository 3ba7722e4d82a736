# cmake -DOUTPUT=FILE -DFILES=LIST -P embed_files.cmake
#
# Writes C++ that defines an array `embeddedFiles` of { name without folders, bytes, number of bytes }, one for each
# file. It is to be included where a struct EmbeddedFile with these members is known.
set(text "// Made from the files that it names.\n")
set(rows "")
set(number 0)
foreach(path IN LISTS FILES)
  cmake_path(GET path FILENAME name)
  file(READ ${path} bytes HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  string(APPEND text "constexpr unsigned char bytesOfFile${number}[] = {${bytes}};\n")
  string(APPEND rows "    {\"${name}\", bytesOfFile${number}, sizeof bytesOfFile${number}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUTPUT} "${text}constexpr EmbeddedFile embeddedFiles[] = {\n${rows}};\n")
