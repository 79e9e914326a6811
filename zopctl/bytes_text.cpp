// Bytes as text. What a modem sends never reaches the user's terminal as control characters.
#include "zopctl/bytes_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "zopctl/verbs.h"

namespace zopctl {

std::string hex_of(std::span<const uint8_t> bytes) {
  return fmt::format("{:02x}", fmt::join(bytes, " "));
}

std::vector<uint8_t> bytes_of_hex(const std::string& what, const std::string& text, size_t most) {
  std::string digits;
  for (char c : text) {
    if (isspace(static_cast<unsigned char>(c)) == 0) digits += c;
  }
  bool good = digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (!good || digits.empty() || digits.size() % 2 != 0 || digits.size() > 2 * most) {
    throw UsageError(fmt::format("{} is 1 to {} bytes in hexadecimal", what, most));
  }
  std::vector<uint8_t> bytes;
  bytes.reserve(digits.size() / 2);
  for (size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

std::string printable(std::span<const uint8_t> field) {
  std::string text(field.begin(), std::find(field.begin(), field.end(), 0));
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
  }
  return text;
}

}  // namespace zopctl
