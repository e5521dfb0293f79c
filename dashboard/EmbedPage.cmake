# Writes the files of the page into a C++ source, so that the program needs no folder of its own.
#   cmake -DOUT=PageFiles.cpp -DFILES="a.js;b.css" -P EmbedPage.cmake
set(arrays "")
set(rows "")
set(number 0)
foreach(file IN LISTS FILES)
  get_filename_component(name "${file}" NAME)
  file(READ "${file}" bytes HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
  string(APPEND arrays "constexpr unsigned char kFile${number}[] = {${bytes}0};\n")
  string(APPEND rows "    {\"${name}\", TextOf(kFile${number}, sizeof kFile${number} - 1)},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE "${OUT}" "// Made from dashboard/page/ by EmbedPage.cmake.
#include \"dashboard/PageFiles.h\"

namespace zeb {

namespace {

${arrays}
std::string_view TextOf(const unsigned char* bytes, std::size_t size) {
  return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace

std::span<const PageFile> PageFiles() {
  static const PageFile files[] = {
${rows}  };
  return files;
}

}  // namespace zeb
")
