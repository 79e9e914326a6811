// The row of a report: the one table of its columns. The schemas of both engines and docs/fleet.md
// are made of it. A report that is read twice is one row: time, host and key are its name.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

namespace fleet {

// Raised when a column is added or gets another meaning.
constexpr int SCHEMA_VERSION = 1;

enum class Type : uint8_t {
  NUMBER,
  FLAG,  // 0 or 1
  TEXT,  // of a state its word
};

struct Column {
  std::string_view name;
  Type type;
  std::string_view section;  // of the report in its common form; empty: made of other items
  std::string_view key;
  std::string_view meaning;
  bool always = false;  // never null
};

// Keys of items are those of records/report_items.cpp.
// clang-format off
inline constexpr Column COLUMNS[] = {
    {"time",               Type::NUMBER, "",        "",                   "when the device made the report, seconds since 1970 UTC", true},
    {"host",               Type::TEXT,   "",        "",                   "the device: the host name in the log line's header", true},
    {"key",                Type::NUMBER, "",        "",                   "hash of host, time and the report's lines", true},
    {"library",            Type::TEXT,   "modem",   "library",            "version of the modem's command library"},
    {"firmware",           Type::TEXT,   "modem",   "firmware",           "version of the modem's firmware"},
    {"hardware",           Type::TEXT,   "modem",   "hardware",           "version of the modem's hardware"},
    {"sim",                Type::TEXT,   "sim",     "status",             "state of the SIM card"},
    {"network",            Type::TEXT,   "network", "name",               "name of the network"},
    {"mcc",                Type::TEXT,   "network", "mcc",                "mobile country code"},
    {"mnc",                Type::TEXT,   "network", "mnc",                "mobile network code"},
    {"band",               Type::TEXT,   "network", "band",               "frequency band"},
    {"channel",            Type::NUMBER, "network", "channel",            "ARFCN or UARFCN"},
    {"lac",                Type::NUMBER, "network", "lac",                "location area"},
    {"rac",                Type::NUMBER, "network", "rac",                "routing area"},
    {"cell_id",            Type::NUMBER, "network", "cell_id",            "serving cell"},
    {"bars",               Type::NUMBER, "state",   "bars",               "signal quality, 0 to 5 bars"},
    {"roaming",            Type::FLAG,   "state",   "roaming",            "whether the network is not the home network"},
    {"rssi_dbm",           Type::NUMBER, "state",   "rssi_dbm",           "received power, dBm"},
    {"rscp_dbm",           Type::NUMBER, "wcdma",   "rscp_dbm",           "level of the serving WCDMA cell, dBm"},
    {"ecio_db",            Type::NUMBER, "",        "",                   "Ec/Io of the best cell of the active set, dB"},
    {"tx_power_dbm",       Type::NUMBER, "state",   "tx_power_dbm",       "transmitted power, dBm"},
    {"system_mode",        Type::TEXT,   "state",   "system_mode",        "technology of the serving network"},
    {"data_service",       Type::TEXT,   "state",   "data_service",       "data service of the technology"},
    {"service",            Type::TEXT,   "status",  "service",            "service of the network"},
    {"registration",       Type::TEXT,   "status",  "registration",       "registration with the network"},
    {"call",               Type::TEXT,   "status",  "call",               "state of the call"},
    {"mm_attach",          Type::TEXT,   "status",  "mm_attach",          "result of the last attach, circuit domain"},
    {"mm_location_update", Type::TEXT,   "status",  "mm_location_update", "result of the last location update"},
    {"gmm_attach",         Type::TEXT,   "status",  "gmm_attach",         "result of the last attach, packet domain"},
    {"gmm_state",          Type::TEXT,   "status",  "gmm_state",          "state of GPRS mobility management"},
    {"gmm_routing_update", Type::TEXT,   "status",  "gmm_routing_update", "result of the last routing area update"},
    {"pdp_state",          Type::TEXT,   "status",  "pdp_state",          "state of the data connection"},
    {"mm_attach_cause",    Type::NUMBER, "errors",  "mm_attach",          "reject cause of mm_attach; causes are those of 3GPP TS 24.008, 0 is none"},
    {"mm_location_cause",  Type::NUMBER, "errors",  "mm_location_update", "reject cause of mm_location_update"},
    {"gmm_attach_cause",   Type::NUMBER, "errors",  "gmm_attach",         "reject cause of gmm_attach"},
    {"gmm_routing_cause",  Type::NUMBER, "errors",  "gmm_routing_update", "reject cause of gmm_routing_update"},
    {"pdp_cause",          Type::NUMBER, "errors",  "pdp",                "why the data connection was refused or ended"},
    {"rejected",           Type::TEXT,   "",        "",                   "why the network rejects the device, in words: the first cause of a rejected attach or update, those of the packet domain first; null without one"},
    {"refused",            Type::TEXT,   "",        "",                   "pdp_cause in words; null without one, and after a regular end"},
    {"stuck",              Type::TEXT,   "",        "",                   "marks of a stuck modem, as its detectors see them; null without one"},
    {"exception",          Type::TEXT,   "errors",  "exception",          "the exception for which the report was made"},
    {"rx_bytes",           Type::NUMBER, "wan",     "rx_bytes",           "bytes received on the data link since it began"},
    {"tx_bytes",           Type::NUMBER, "wan",     "tx_bytes",           "bytes sent on it"},
    {"rx_errors",          Type::NUMBER, "wan",     "rx_errors",          "errors while receiving"},
    {"tx_errors",          Type::NUMBER, "wan",     "tx_errors",          "errors while sending"},
    {"field_test_age_s",   Type::NUMBER, "wan",     "field_test_age_s",   "age of the modem's screen, s"},
    {"rest",               Type::TEXT,   "",        "",                   "all other items: a JSON object in the common form", true},
};
// clang-format on
constexpr size_t COLUMN_COUNT = std::size(COLUMNS);

// Where a column of this name is in a row.
consteval size_t column(std::string_view name) {
  const Column* found = std::ranges::find(COLUMNS, name, &Column::name);
  if (found == std::end(COLUMNS)) throw "no such column";
  return static_cast<size_t>(found - COLUMNS);
}

// The table of docs/fleet.md.
std::string columns_as_markdown();

}  // namespace fleet
