# Writes a header with a text file as a constexpr string that begins on a new line:
#   cmake -DINPUT=... -DOUTPUT=... -DNAMESPACE=... -DNAME=... -P embed_text.cmake
# A comment at the head of the file is for who edits it, and stays there.
file(READ "${INPUT}" text)
string(REGEX REPLACE "^/\\*[^*]*\\*/\n" "" text "${text}")
file(WRITE "${OUTPUT}" "#pragma once

namespace ${NAMESPACE} {

inline constexpr char ${NAME}[] = R\"text(
${text})text\";

}  // namespace ${NAMESPACE}
")
