# cmake -DOUTPUT=file.cpp -DBASE=dir -DFILES="a;b" -P embed.cmake: writes the definition
# of VekPanelAssets::addTo with each file's bytes, served at "/" + its name with the
# content type its extension calls for (ES modules must come as text/javascript).
set(_types
  ".html" "text/html; charset=utf-8"
  ".css" "text/css; charset=utf-8"
  ".js" "text/javascript; charset=utf-8"
  ".svg" "image/svg+xml")
set(_arrays "")
set(_adds "")
set(_n 0)
list(SORT FILES)
foreach(_file IN LISTS FILES)
  file(RELATIVE_PATH _name ${BASE} ${_file})
  get_filename_component(_ext ${_file} LAST_EXT)
  list(FIND _types ${_ext} _at)
  if(_at LESS 0)
    message(FATAL_ERROR "${_name}: no content type for '${_ext}' files")
  endif()
  math(EXPR _at "${_at} + 1")
  list(GET _types ${_at} _type)
  file(READ ${_file} _hex HEX)
  if(_hex STREQUAL "")
    message(FATAL_ERROR "${_name} is empty")
  endif()
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," _bytes "${_hex}")
  string(REGEX REPLACE "((0x..,){24})" "\\1\n" _bytes "${_bytes}")
  string(APPEND _arrays "const unsigned char k${_n}[] = {\n${_bytes}};\n")
  string(APPEND _adds "    assets.add(\"/${_name}\", \"${_type}\", bytes(k${_n}, sizeof k${_n}));\n")
  math(EXPR _n "${_n} + 1")
endforeach()
file(WRITE ${OUTPUT}.new
"// Written by pc/panel/embed.cmake from pc/panel/www at build time.
#include \"VekPanelAssets.h\"

namespace vekserve {

namespace {

${_arrays}
std::string bytes(const unsigned char* data, size_t size) {
    return std::string(reinterpret_cast<const char*>(data), size);
}

}  // namespace

void VekPanelAssets::addTo(VekStaticAssets& assets) {
${_adds}}

}  // namespace vekserve
")
# Unchanged bytes keep the old file, so nothing is compiled again.
file(COPY_FILE ${OUTPUT}.new ${OUTPUT} ONLY_IF_DIFFERENT)
file(REMOVE ${OUTPUT}.new)
