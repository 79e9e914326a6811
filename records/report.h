// The diagnostic report as data. The module writes it in two forms: for a host, a text with a
// "label: value" a line under headings, and to syslog, lines of "label=value,...". Both come out
// alike: keys in snake_case with their unit, states as {"code", "text"}, null for what is not
// known. A report from a file may hold any type anywhere.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace records {

using Json = nlohmann::ordered_json;  // of a report: {"section": {"key": value}}

// Takes the next "label=value" off a syslog line. Without an "=" the value is empty.
struct Pair {
  std::string_view label, value;
};
Pair take_pair(std::string_view& pairs);

// An item of a report, null when there is none.
const Json& item_of(const Json& report, const char* section, const char* key);

// A member of an object, null when there is none.
const Json& member_of(const Json& object, const char* name);

// A value for people: the word of a state, the members of lists; empty when it is not known.
std::string text_of(const Json& value);

// "001 01", the network of a report; empty when it is not known.
std::string plmn_of(const Json& report);

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
