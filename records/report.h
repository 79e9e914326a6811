// The diagnostic report as data. The module writes it in two forms: for a host, a text with a
// "label: value" a line under headings, and to syslog, lines of "label=value,...". Both come out
// with the same values; a report from a file may hold any type anywhere.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "include/zop_diag_info.h"

namespace records {

using Json = nlohmann::ordered_json;  // of a report: {"section": {"label": value}}

// A value in the type of its item; nothing when the modem did not give it.
using Value = std::variant<std::monostate, int64_t, std::string_view>;

// The module's table of items: which are numbers, and the section of each.
class ItemTable {
 public:
  explicit ItemTable(const zop_log_item* items);

  Value value(std::string_view label, std::string_view text) const;
  const std::string& section(std::string_view label) const;  // "other" for an unknown label

 private:
  struct Item {
    bool is_number;
    std::string section;
  };
  std::unordered_map<std::string_view, Item> items_;
};

// The text form. Lines before the first heading are in the section "report".
Json report_of_text(const ItemTable& items, const std::string& text);

// Takes the next "label=value" off a syslog line. Without an "=" the value is empty.
struct Pair {
  std::string_view label, value;
};
Pair take_pair(std::string_view& pairs);

// An item of a report, null when there is none.
const Json& item_of(const Json& report, const char* section, const char* label);

// A member of an object, null when there is none.
const Json& member_of(const Json& object, const char* name);

// An item as text, empty when the modem did not give it.
std::string text_of(const Json& value);

// A cell that the modem hears.
struct Cell {
  enum Set { ACTIVE, MONITORED, DETECTED, GSM_NEIGHBOUR } set;
  int code;   // scrambling code; ARFCN of a GSM neighbour
  int bsic;   // of a GSM neighbour
  int level;  // Ec/Io in dB; RSSI in dBm of a GSM neighbour
  bool is_gsm() const { return set == GSM_NEIGHBOUR; }
};

// The cells of a report, WCDMA first.
std::vector<Cell> cells_of(const Json& report);

// Ec/Io of the best cell of the active set, dB.
std::optional<int> active_ecio(const std::vector<Cell>& cells);

}  // namespace records
