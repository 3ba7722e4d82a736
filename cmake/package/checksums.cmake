# Writes SHA256SUMS, for `sha256sum -c`, into the folder `target`: of the files in `folders`, which become one package.
# An install step, run behind all others of a component.
set(lines "")
foreach(folder IN LISTS folders)
  file(GLOB_RECURSE names RELATIVE ${folder} ${folder}/*)
  list(REMOVE_ITEM names SHA256SUMS)
  foreach(name IN LISTS names)
    file(SHA256 ${folder}/${name} sum)
    list(APPEND lines "${sum}  ${name}\n")
  endforeach()
endforeach()
list(SORT lines)
list(JOIN lines "" text)
file(WRITE ${target}/SHA256SUMS "${text}")
