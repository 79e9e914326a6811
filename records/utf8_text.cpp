// Overlong forms, surrogates and code points above U+10FFFF are invalid. Control characters are
// shown as their Unicode pictures: a terminal would obey them, a browser drop them. C1 controls,
// characters that change the direction of writing and separators of lines are replaced.
#include "records/utf8_text.h"

#include <algorithm>
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

static std::string control_picture(char c) {
  if (c == 0x7F) return "\u2421";
  std::string picture = "\u2400";
  picture.back() = static_cast<char>(picture.back() + c);
  return picture;
}

// U+0080 to U+009F, and U+061C.
static bool two_bytes_mislead(std::string_view character) {
  return character == "\u061C" || (character[0] == '\xC2' && (character[1] & 0xE0) == 0x80);
}

static bool three_bytes_mislead(std::string_view character) {
  return character == "\u200E" || character == "\u200F" ||
         (character >= "\u2028" && character <= "\u202E") ||
         (character >= "\u2066" && character <= "\u2069");
}

std::string instead_of(std::string_view character) {
  if (character.empty()) return UNREADABLE;
  char c = character[0];
  if (character.size() == 1) return uint8_t(c) < 0x20 || c == 0x7F ? control_picture(c) : "";
  bool misleads = (character.size() == 2 && two_bytes_mislead(character)) ||
                  (character.size() == 3 && three_bytes_mislead(character));
  return misleads ? UNREADABLE : "";
}

std::string safe_text(std::string_view text, std::string_view kept) {
  std::string safe;
  safe.reserve(text.size());
  while (!text.empty()) {
    std::string_view character = text.substr(0, utf8_length(text));
    bool stays = character.size() == 1 && kept.find(character[0]) != std::string_view::npos;
    std::string instead = stays ? "" : instead_of(character);
    safe += instead.empty() ? character : instead;
    text.remove_prefix(std::max<size_t>(1, character.size()));
  }
  return safe;
}

std::string shortened(std::string_view text, size_t most) {
  if (text.size() <= most) return std::string(text);
  while (most > 0 && (text[most] & 0xC0) == 0x80) --most;
  return std::string(text.substr(0, most)) + "\u2026";
}

}  // namespace records
