// Reads arbitrary bytes as a log: a complete report has all its lines, no line is reported twice,
// and each text is written as valid JSON.
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "records/json_text.h"
#include "records/log_reports.h"

static void require(bool holds) {
  if (!holds) abort();
}

// ",n=" and a number end the last line of a report; a number that overflows does not count.
static bool says_how_many(const std::string& line) {
  constexpr size_t MOST_DIGITS = 19;
  size_t at = line.rfind(",n=");
  if (at == std::string::npos) return false;
  size_t number = line.find_first_not_of('0', at + 3);
  if (number == std::string::npos || line.size() - number > MOST_DIGITS) return false;
  return line.find_first_not_of("0123456789", number) == std::string::npos;
}

namespace {
// Counts the lines of all reports; there may not be more than the log had.
class Count {
 public:
  void whole(const records::LogReport& report) {
    require(report.lines.size() == report.wanted);
    for (const std::string& line : report.lines) {
      require(says_how_many(line) == (&line == &report.lines.back()));
    }
    add(report);
  }
  void broken(const records::LogReport& report) {
    require(report.lines.size() != report.wanted || report.wanted == 0 || report.mixed);
    add(report);
  }
  void stray(uint64_t) { ++lines; }
  size_t lines = 0;

 private:
  void add(const records::LogReport& report) {
    require(!report.stamp.empty() && report.first_line > 0);
    lines += report.lines.size() + report.cut;
  }
};
}  // namespace

static void check_json(std::string_view text) {
  std::string out;
  records::append_json(out, text);
  require(nlohmann::json::accept(out));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string text(data, data + size);
  Count count;
  records::LogReports reports([&](const auto& report) { count.whole(report); },
                              [&](const auto& report) { count.broken(report); },
                              [&](uint64_t line) { count.stray(line); });
  size_t lines = 0;
  for (size_t at = 0; at < text.size(); ++lines) {
    size_t end = std::min(text.find('\n', at), text.size());
    reports.line(std::string_view(text).substr(at, end - at));
    at = end + 1;
  }
  reports.end();
  require(count.lines + reports.doubled() <= lines);
  check_json(text);
  return 0;
}
