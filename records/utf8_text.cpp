// Overlong forms, surrogates and code points above U+10FFFF are invalid.
#include "records/utf8_text.h"

#include <cstdint>

namespace records {

constexpr char UNREADABLE[] = "\uFFFD";

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

std::string as_utf8(std::string_view text) {
  std::string clean;
  clean.reserve(text.size());
  while (!text.empty()) {
    size_t good = 0;
    while (size_t length = utf8_length(text.substr(good))) good += length;
    clean += text.substr(0, good);
    text.remove_prefix(good);
    if (text.empty()) break;
    clean += UNREADABLE;
    text.remove_prefix(1);
  }
  return clean;
}

std::string shortened(std::string_view text, size_t most) {
  if (text.size() <= most) return std::string(text);
  while (most > 0 && (text[most] & 0xC0) == 0x80) --most;
  return std::string(text.substr(0, most)) + "\u2026";
}

}  // namespace records
