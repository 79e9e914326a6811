// Runs of plain characters are copied at once.
#include "records/json_text.h"

#include <cstdint>

#include "records/utf8_text.h"

namespace records {

static bool is_plain(unsigned char c) { return c >= 0x20 && c < 0x7F && c != '"' && c != '\\'; }

// Appends the first character, which is not plain; returns its length.
static size_t append_special(std::string& out, std::string_view text) {
  constexpr char HEX[] = "0123456789abcdef";
  auto c = static_cast<uint8_t>(text.front());
  if (c == '"' || c == '\\') {
    out += '\\';
    out += static_cast<char>(c);
    return 1;
  }
  if (c < 0x20 || c == 0x7F) {
    out += "\\u00";
    out += HEX[c >> 4];
    out += HEX[c & 15];
    return 1;
  }
  size_t length = utf8_length(text);
  out += length == 0 ? "\uFFFD" : text.substr(0, length);
  return length == 0 ? 1 : length;
}

void append_json(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    size_t run = 0;
    while (run < text.size() && is_plain(static_cast<unsigned char>(text[run]))) ++run;
    out += text.substr(0, run);
    text.remove_prefix(run);
    if (!text.empty()) text.remove_prefix(append_special(out, text));
  }
  out += '"';
}

}  // namespace records
