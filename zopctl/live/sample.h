// The modem at one time: its bars, its diagnostic report, and what has happened since the last
// sample. Kept as a line of JSON.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "records/report.h"
#include "zopctl/host/bars.h"

namespace zopctl {

struct Sample {
  std::chrono::system_clock::time_point time;  // in the modem's time
  bool link_is_open = false;
  Bars bars = {};
  std::string deferred;             // state of the module's deferred-action thread
  std::vector<std::string> events;  // since the sample before
  records::Json report;             // null while there is no fresh one

  // An item of the report as text for a terminal; empty when it is not known.
  std::string text(const char* section, const char* key) const;
  std::optional<int64_t> number(const char* section, const char* key) const;
};

records::Json as_json(const Sample& sample);

// On one line, for people.
std::string as_line(const Sample& sample);

}  // namespace zopctl
