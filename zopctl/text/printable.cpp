// The only place that makes text safe for a terminal.
#include "zopctl/text/printable.h"

#include <algorithm>

namespace zopctl {

std::string printable(std::string_view text, std::string_view kept) {
  std::string shown(text);
  auto is_control = [kept](char c) {
    auto byte = static_cast<uint8_t>(c);
    return (byte < 0x20 || byte == 0x7F) && kept.find(c) == std::string_view::npos;
  };
  std::ranges::replace_if(shown, is_control, '?');
  return shown;
}

std::string printable(std::span<const uint8_t> field) {
  std::string text(field.begin(), std::ranges::find(field, 0));
  return printable(text);
}

std::string printable_ascii(std::string_view text) {
  std::string shown = printable(text);
  std::ranges::replace_if(
      shown, [](char c) { return static_cast<uint8_t>(c) >= 0x80; }, '?');
  return shown;
}

}  // namespace zopctl
