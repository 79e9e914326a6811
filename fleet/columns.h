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
  bool nullable;
  std::string_view section;  // of the report in its common form; empty: made of other items
  std::string_view key;
  std::string_view meaning;
};

constexpr bool NULLABLE = true, NOT_NULL = false;

// Keys of items are those of records/report_items.cpp.
// clang-format off
inline constexpr Column COLUMNS[] = {
    {"time",               Type::NUMBER, NOT_NULL, "",        "",                   "when the device made the report, seconds since 1970 UTC"},
    {"host",               Type::TEXT,   NOT_NULL, "",        "",                   "the device: the host name in the log line's header"},
    {"key",                Type::NUMBER, NOT_NULL, "",        "",                   "hash of host, time and the report's lines"},
    {"library",            Type::TEXT,   NULLABLE, "modem",   "library",            "version of the modem's command library"},
    {"firmware",           Type::TEXT,   NULLABLE, "modem",   "firmware",           "version of the modem's firmware"},
    {"hardware",           Type::TEXT,   NULLABLE, "modem",   "hardware",           "version of the modem's hardware"},
    {"sim",                Type::TEXT,   NULLABLE, "sim",     "status",             "state of the SIM card"},
    {"network",            Type::TEXT,   NULLABLE, "network", "name",               "name of the network"},
    {"mcc",                Type::TEXT,   NULLABLE, "network", "mcc",                "mobile country code"},
    {"mnc",                Type::TEXT,   NULLABLE, "network", "mnc",                "mobile network code"},
    {"band",               Type::TEXT,   NULLABLE, "network", "band",               "frequency band"},
    {"channel",            Type::NUMBER, NULLABLE, "network", "channel",            "ARFCN or UARFCN"},
    {"lac",                Type::NUMBER, NULLABLE, "network", "lac",                "location area"},
    {"rac",                Type::NUMBER, NULLABLE, "network", "rac",                "routing area"},
    {"cell_id",            Type::NUMBER, NULLABLE, "network", "cell_id",            "serving cell"},
    {"bars",               Type::NUMBER, NULLABLE, "state",   "bars",               "signal quality, 0 to 5 bars"},
    {"roaming",            Type::FLAG,   NULLABLE, "state",   "roaming",            "whether the network is not the home network"},
    {"rssi_dbm",           Type::NUMBER, NULLABLE, "state",   "rssi_dbm",           "received power, dBm"},
    {"rscp_dbm",           Type::NUMBER, NULLABLE, "wcdma",   "rscp_dbm",           "level of the serving WCDMA cell, dBm"},
    {"ecio_db",            Type::NUMBER, NULLABLE, "",        "",                   "Ec/Io of the best cell of the active set, dB"},
    {"tx_power_dbm",       Type::NUMBER, NULLABLE, "state",   "tx_power_dbm",       "transmitted power, dBm"},
    {"system_mode",        Type::TEXT,   NULLABLE, "state",   "system_mode",        "technology of the serving network"},
    {"data_service",       Type::TEXT,   NULLABLE, "state",   "data_service",       "data service of the technology"},
    {"service",            Type::TEXT,   NULLABLE, "status",  "service",            "service of the network"},
    {"registration",       Type::TEXT,   NULLABLE, "status",  "registration",       "registration with the network"},
    {"call",               Type::TEXT,   NULLABLE, "status",  "call",               "state of the call"},
    {"mm_attach",          Type::TEXT,   NULLABLE, "status",  "mm_attach",          "result of the last attach, circuit domain"},
    {"mm_location_update", Type::TEXT,   NULLABLE, "status",  "mm_location_update", "result of the last location update"},
    {"gmm_attach",         Type::TEXT,   NULLABLE, "status",  "gmm_attach",         "result of the last attach, packet domain"},
    {"gmm_state",          Type::TEXT,   NULLABLE, "status",  "gmm_state",          "state of GPRS mobility management"},
    {"gmm_routing_update", Type::TEXT,   NULLABLE, "status",  "gmm_routing_update", "result of the last routing area update"},
    {"pdp_state",          Type::TEXT,   NULLABLE, "status",  "pdp_state",          "state of the data connection"},
    {"mm_attach_cause",    Type::NUMBER, NULLABLE, "errors",  "mm_attach",          "reject cause of mm_attach; causes are those of 3GPP TS 24.008, 0 is none"},
    {"mm_location_cause",  Type::NUMBER, NULLABLE, "errors",  "mm_location_update", "reject cause of mm_location_update"},
    {"gmm_attach_cause",   Type::NUMBER, NULLABLE, "errors",  "gmm_attach",         "reject cause of gmm_attach"},
    {"gmm_routing_cause",  Type::NUMBER, NULLABLE, "errors",  "gmm_routing_update", "reject cause of gmm_routing_update"},
    {"pdp_cause",          Type::NUMBER, NULLABLE, "errors",  "pdp",                "why the data connection was refused or ended"},
    {"rejected",           Type::TEXT,   NULLABLE, "",        "",                   "why the network rejects the device, in words: the first cause of a rejected attach or update, those of the packet domain first; null without one"},
    {"refused",            Type::TEXT,   NULLABLE, "",        "",                   "pdp_cause in words; null without one, and after a regular end"},
    {"stuck",              Type::TEXT,   NULLABLE, "",        "",                   "marks of a stuck modem, as its detectors see them; null without one"},
    {"exception",          Type::TEXT,   NULLABLE, "errors",  "exception",          "the exception for which the report was made"},
    {"rx_bytes",           Type::NUMBER, NULLABLE, "wan",     "rx_bytes",           "bytes received on the data link since it began"},
    {"tx_bytes",           Type::NUMBER, NULLABLE, "wan",     "tx_bytes",           "bytes sent on it"},
    {"rx_errors",          Type::NUMBER, NULLABLE, "wan",     "rx_errors",          "errors while receiving"},
    {"tx_errors",          Type::NUMBER, NULLABLE, "wan",     "tx_errors",          "errors while sending"},
    {"field_test_age_s",   Type::NUMBER, NULLABLE, "wan",     "field_test_age_s",   "age of the modem's screen, s"},
    {"rest",               Type::TEXT,   NOT_NULL, "",        "",                   "all other items: a JSON object in the common form"},
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
