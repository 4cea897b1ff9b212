# cmake -D OUTPUT=FILE.cpp -D HEADER=HEADER -D NAME=ARRAY -D FILES=FILE;... -P embed.cmake: a source with the
# contents of files, as the array NAME of qorfaces::EmbeddedFile that HEADER declares.
set(contents "")
set(entries "")
set(number 0)
foreach(file IN LISTS FILES)
  get_filename_component(name "${file}" NAME)
  file(READ "${file}" hex HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${hex}")
  string(APPEND contents "const unsigned char file${number}[] = {${bytes}};\n")
  string(APPEND entries "    {\"${name}\", file${number}, sizeof file${number}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE "${OUTPUT}"
  "#include \"${HEADER}\"\n\n"
  "namespace qorfaces {\n\nnamespace {\n\n${contents}\n} // namespace\n\n"
  "const std::vector<EmbeddedFile>& ${NAME}() {\n"
  "  static const std::vector<EmbeddedFile> files{\n${entries}  };\n  return files;\n}\n\n"
  "} // namespace qorfaces\n")
