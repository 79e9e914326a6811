// What a look at the modem finds: the bars, the diagnostic report, what happened since the last
// look. Kept as a line of JSON.
#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "zopctl/host/bars.h"

namespace zopctl {

struct Sample {
  std::chrono::system_clock::time_point time;  // in the modem's time
  bool link_is_open = false;
  Bars bars = {};
  std::string deferred;             // state of the module's deferred-action thread
  std::vector<std::string> events;  // since the sample before
  nlohmann::ordered_json report;    // as report_as_json; null while there is no fresh one

  // An item of the report as text; empty when it is not known.
  std::string text(const char* section, const char* label) const;
  std::optional<int64_t> number(const char* section, const char* label) const;
};

// A cell of the report: of the WCDMA sets, or a GSM neighbour.
struct Cell {
  enum Kind { ACTIVE, MONITORED, DETECTED, NEIGHBOUR } kind;
  int code;   // scrambling code, or ARFCN
  int level;  // Ec/Io in dB, or RSSI in dBm
};
std::vector<Cell> cells_of(const Sample& sample);

// Ec/Io of the best cell of the active set, dB.
std::optional<int> active_ecio(const Sample& sample);

nlohmann::ordered_json as_json(const Sample& sample);

// For people, on one line.
std::string as_line(const Sample& sample);

// A report's text for a terminal: nothing that moves the cursor, one column a byte.
std::string plain(const std::string& text);

}  // namespace zopctl
