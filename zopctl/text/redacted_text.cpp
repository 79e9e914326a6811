// Names as the verbs, the report and the module's log have them; what has another name is caught by
// its form.
#include "zopctl/text/redacted_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <regex>

namespace zopctl {

using Json = nlohmann::ordered_json;

constexpr char REMOVED[] = "removed";

// C1, L1 and R1 are the report's cell, location area and routing area; N1 and B1 the cells around.
static constexpr const char* SECRET_KEYS[] = {
    "imei",         "imsi", "iccid",    "esn",        "phone_number",
    "pin",          "user", "password", "cell_id",    "location_area",
    "routing_area", "lac",  "rac",      "c1",         "l1",
    "r1",           "n1",   "b1",       "ip_address", "dest_ip_address"};

// The report writes "Phone Number".
static bool is_secret(std::string key) {
  std::ranges::transform(key, key.begin(), [](unsigned char c) {
    return c == ' ' ? '_' : static_cast<char>(tolower(c));
  });
  return std::ranges::find(SECRET_KEYS, key) != std::end(SECRET_KEYS);
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
    else if (is_secret(key) && !member.is_null() && !(member.is_string() && member.empty()))
      made[key] = REMOVED;
    else
      made[key] = redacted(member);
  }
  return made;
}

}  // namespace zopctl
