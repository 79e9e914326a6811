// Names as the verbs and the report have them; what has another name, or stands in a line of the
// log, is caught by its form.
#include "zopctl/text/redacted_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <regex>

namespace zopctl {

using Json = nlohmann::ordered_json;

constexpr char REMOVED[] = "removed";

// The cells around tell a place, and the name servers a network.
// clang-format off
static constexpr std::string_view SECRET_KEYS[] = {
    "imei", "imsi", "iccid", "esn", "phone_number", "pin", "user", "password",
    "cell_id", "lac", "rac", "cells", "neighbors", "best_cells",
    "ip_address", "dest_ip_address", "name_servers"};
// clang-format on

static bool is_secret(std::string_view key) {
  return std::ranges::find(SECRET_KEYS, key) != std::end(SECRET_KEYS);
}

static bool is_nothing(const Json& value) {
  return value.empty() || (value.is_string() && value.get_ref<const std::string&>().empty());
}

std::string redacted(std::string_view text) {
  static const std::regex NAMED(R"(((?:number|imsi|imei|iccid|address|pin) ?= ?)\S+)",
                                std::regex::icase);
  static const std::regex ADDRESS(R"(\b\d{1,3}\.\d{1,3}\.\d{1,3}\.\d{1,3}\b)");
  // From seven digits on, but for a date.
  static const std::regex NUMBER(R"((^|\D)\+?(?!20\d\d[01]\d[0-3]\d(?!\d))\d{7,})");
  std::string shown = std::regex_replace(std::string(text), NAMED, std::string("$1") + REMOVED);
  shown = std::regex_replace(shown, ADDRESS, REMOVED);
  return std::regex_replace(shown, NUMBER, std::string("$1") + REMOVED);
}

Json redacted(const Json& value) {
  if (value.is_string()) return redacted(std::string_view(value.get_ref<const std::string&>()));
  if (!value.is_structured()) return value;
  Json made = value.is_array() ? Json::array() : Json::object();
  for (const auto& [key, member] : value.items()) {
    if (value.is_array())
      made.push_back(redacted(member));
    else if (is_secret(key) && !is_nothing(member))
      made[key] = REMOVED;
    else
      made[key] = redacted(member);
  }
  return made;
}

}  // namespace zopctl
