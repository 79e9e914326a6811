// Bytes as text.
#include "zopctl/text/bytes_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "zopctl/text/counted.h"
#include "zopctl/text/failure.h"

namespace zopctl {

std::string hex_of(std::span<const uint8_t> bytes) {
  return fmt::format("{:02x}", fmt::join(bytes, " "));
}

static std::string characters_of(std::span<const uint8_t> bytes) {
  std::string text;
  for (uint8_t byte : bytes) {
    bool shown = byte >= ' ' && byte <= '~';
    text += shown ? static_cast<char>(byte) : '.';
  }
  return text;
}

std::string hexdump(std::span<const uint8_t> bytes) {
  constexpr size_t WIDTH = 16;
  std::string text;
  bool repeats = false;
  for (size_t at = 0; at < bytes.size(); at += WIDTH) {
    auto line = bytes.subspan(at, std::min(WIDTH, bytes.size() - at));
    bool is_last = at + WIDTH >= bytes.size();
    bool same = at > 0 && !is_last && std::ranges::equal(line, bytes.subspan(at - WIDTH, WIDTH));
    if (!same) {
      text += fmt::format("\n    {:04x}  {:47}  |{}|", at, hex_of(line), characters_of(line));
    } else if (!repeats) {
      text += "\n    *";
    }
    repeats = same;
  }
  return text;
}

std::vector<uint8_t> bytes_of_hex(const std::string& what, const std::string& text, size_t max) {
  std::string digits;
  for (char c : text) {
    if (isspace(static_cast<unsigned char>(c)) == 0) digits += c;
  }
  bool good = digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (!good || digits.empty() || digits.size() % 2 != 0 || digits.size() > 2 * max) {
    throw UsageError(fmt::format("{} must be 1 to {} bytes in hexadecimal", what, max));
  }
  std::vector<uint8_t> bytes;
  bytes.reserve(digits.size() / 2);
  for (size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

std::string size_text(uint64_t bytes) {
  if (bytes < 1000) return counted(bytes, "byte");
  double kilobytes = static_cast<double>(bytes) / 1000;
  if (kilobytes < 1000) return fmt::format("{:.1f} kB", kilobytes);
  return fmt::format("{:.1f} MB", kilobytes / 1000);
}

}  // namespace zopctl
