// Runs of plain characters are copied at once.
#include "zopctl/json_text.h"

#include <cstdint>

namespace zopctl {

static bool is_plain(unsigned char c) { return c >= 0x20 && c < 0x7F && c != '"' && c != '\\'; }

static uint8_t byte_at(std::string_view text, size_t at) {
  return at < text.size() ? static_cast<uint8_t>(text[at]) : uint8_t{0};
}

size_t utf8_length(std::string_view text) {
  uint8_t first = byte_at(text, 0), second = byte_at(text, 1);
  size_t length = first < 0x80 && !text.empty() ? 1 : 0;
  if (first >= 0xC2 && first <= 0xDF) length = 2;
  if (first >= 0xE0 && first <= 0xEF) length = 3;
  if (first >= 0xF0 && first <= 0xF4) length = 4;
  bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  bool outside = (first == 0xED && second > 0x9F) || (first == 0xF4 && second > 0x8F);
  if (overlong || outside) return 0;
  for (size_t i = 1; i < length; ++i) {
    if ((byte_at(text, i) & 0xC0) != 0x80) return 0;
  }
  return length;
}

// What begins with a character that is not plain. Gives the bytes taken.
static size_t append_special(std::string& out, std::string_view text) {
  constexpr char HEX[] = "0123456789abcdef";
  uint8_t c = byte_at(text, 0);
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

}  // namespace zopctl
