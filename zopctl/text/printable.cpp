// The only place that makes text safe for a terminal; the rule is that of pages and parsed logs.
#include "zopctl/text/printable.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "records/utf8_text.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

std::string printable(std::string_view text, std::string_view kept) {
  return records::safe_text(text, kept);
}

std::string printable(std::span<const uint8_t> field) {
  std::string text(field.begin(), std::ranges::find(field, 0));
  return printable(text);
}

std::string printable_ascii(std::string_view text) {
  std::string shown(text);
  std::ranges::replace_if(
      shown, [](uint8_t c) { return c < 0x20 || c >= 0x7F; }, '?');
  return shown;
}

// Keys too: they may be labels of a report.
static Json made_printable(const Json& value) {
  if (value.is_string()) return printable(value.get_ref<const std::string&>());
  if (!value.is_structured()) return value;
  Json made = value.is_array() ? Json::array() : Json::object();
  for (const auto& [key, member] : value.items()) {
    if (value.is_array())
      made.push_back(made_printable(member));
    else
      made[printable(key)] = made_printable(member);
  }
  return made;
}

std::string printable_json(const Json& value, int indent) {
  return made_printable(value).dump(indent);
}

}  // namespace zopctl
