// Reads arbitrary bytes as a log: a complete report has all its lines, no line is reported twice,
// and each text is written as valid JSON.
#include <nlohmann/json.hpp>

#include "fuzz/fuzz.h"
#include "records/json_text.h"
#include "records/log_reports.h"

static void check_json(std::string_view text) {
  std::string out;
  records::append_json(out, text);
  require(nlohmann::json::accept(out));
}

void fuzz(std::span<const uint8_t> input) {
  std::string text = text_of(input);
  size_t reported = 0;
  auto count = [&](const records::LogReport& report, bool whole) {
    require(!report.stamp.empty() && report.first_line > 0);
    bool complete = report.lines.size() == report.wanted && report.wanted != 0 && !report.mixed;
    require(complete == whole);
    reported += report.lines.size() + report.cut;
  };
  records::LogReports reports([&](const auto& report) { count(report, true); },
                              [&](const auto& report) { count(report, false); },
                              [&](uint64_t, std::string_view) { ++reported; });
  size_t lines = 0;
  for (size_t at = 0; at < text.size(); ++lines) {
    size_t end = std::min(text.find('\n', at), text.size());
    reports.line(std::string_view(text).substr(at, end - at));
    at = end + 1;
  }
  reports.end();
  require(reported + reports.doubled() <= lines);
  check_json(text.substr(0, 100));
}
