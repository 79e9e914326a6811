# Writes a header with a text file as a constexpr string that begins on a new line. A comment at the
# head of the file is left out. This happens when configuring, so that static checkers, which read
# the sources without a build, find the header.
function(zop_embed_text input output namespace name)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${input}")
  file(READ "${input}" text)
  string(REGEX REPLACE "^/\\*[^*]*\\*/\n" "" text "${text}")
  file(WRITE "${output}.new" "#pragma once

namespace ${namespace} {

inline constexpr char ${name}[] = R\"text(
${text})text\";

}  // namespace ${namespace}
")
  configure_file("${output}.new" "${output}" COPYONLY)  # changed only when it differs
endfunction()
