// zopctl report, exception: the diagnostic report as a host reads it, and as syslog gets it.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <sstream>

#include "records/log_parser.h"
#include "records/report_form.h"
#include "zopctl/host/log_capture.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/host/report_text.h"
#include "zopctl/host/refusals.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

using Seconds = std::chrono::seconds;

constexpr Seconds FRESH_DATA(15);             // of the modem
constexpr Seconds FRESH_DATA_OF_A_MODULE(5);  // it needs some, however fast the modem's clock runs
constexpr int REPORTS_OF_AN_EXCEPTION = 5;
constexpr Seconds EXCEPTION_TIME(30);

// The first report switches field-test screens on; a screen then arrives within two seconds.
static std::string fresh_log_string(const ModuleLibrary& m) {
  if (isatty(STDERR_FILENO) != 0)
    fprintf(stderr, "zopctl: waiting for the modem's field-test data ...\n");
  std::string report;
  auto has_come = [&] { return has_screen(report = log_string(m)); };
  if (wait_until(has_come, FRESH_DATA, FRESH_DATA_OF_A_MODULE)) return report;
  throw Failure(
      fmt::format("no field-test data within {} s; check with zopctl doctor", FRESH_DATA.count()));
}

constexpr char NO_SCREEN[] = "the modem has sent no field-test data yet";
constexpr char HOW_TO_WAIT[] = "wait for it with zopctl report --wait";

static void print_object(const Json& object) { fmt::print("{}\n", printable_json(object, 2)); }

static void print_text(const std::string& text) { fmt::print("{}", printable(text, "\n")); }

static void print_report(const std::string& text, bool is_whole) {
  Json report = records::report_of_text(text);
  Json& problems = report["problems"] = Json::array();
  if (!is_whole) {
    problems.push_back({{"item", "wan.field_test_age_s"},
                        {"reason", fmt::format("{}; {}", NO_SCREEN, HOW_TO_WAIT)},
                        {"failure", false}});
  }
  print_object(report);
}

static Findings report(const ModuleLibrary& m, const Arguments& arguments) {
  std::string text = arguments.has("--wait") ? fresh_log_string(m) : log_string(m);
  bool is_whole = has_screen(text);
  if (arguments.json) {
    print_report(text, is_whole);
  } else {
    print_text(is_whole ? text : without_screen(text));
    if (!is_whole) fmt::print(stderr, "zopctl: {}; {}\n", NO_SCREEN, HOW_TO_WAIT);
  }
  return {};
}

// ---- exceptions ----

// The names that a host gives its exceptions, by code.
static const char* const EXCEPTION_NAMES[] = {
    "no carrier",    "dial failed",     "ppp timeout", "user hang-up",   "idle hang-up",
    "shutting down", "no subscription", "flight mode", "authentication", "modem reset",
};

// The module does not report codes 3 to 7.
static std::vector<Choice> reported_codes() {
  std::vector<Choice> codes;
  for (const char* code : {"0", "1", "2", "8", "9"})
    codes.emplace_back(code, EXCEPTION_NAMES[*code - '0']);
  return codes;
}

// The report lines, starting at "t=".
static std::vector<std::string> report_lines(const std::string& log) {
  std::vector<std::string> found;
  std::istringstream lines(log);
  for (std::string line; std::getline(lines, line);) {
    constexpr char MARK[] = "zop:diag: ";
    size_t at = line.find(MARK);
    if (at != std::string::npos) found.push_back(line.substr(at + strlen(MARK)));
  }
  return found;
}

static bool ends_report(const std::string& line) { return line.find(",n=") != std::string::npos; }

static int count_reports(const std::vector<std::string>& lines) {
  return static_cast<int>(std::count_if(lines.begin(), lines.end(), ends_report));
}

// As parse-log has them.
static Json rows_of(const std::string& log) {
  Json rows = Json::array();
  auto add = [&rows](const records::LogReport& report) {
    records::ReportText items;
    std::string row;
    records::append_row(row, items, report);
    rows.push_back(Json::parse(row));
  };
  records::LogReports reports(
      add, [](const auto&) {}, [](uint64_t, std::string_view) {});
  std::istringstream lines(log);
  for (std::string line; std::getline(lines, line);) reports.line(line);
  return rows;
}

static std::string wait_for_reports(const LogCapture& log) {
  std::string text;
  auto has_come = [&] {
    text = log.text();
    return count_reports(report_lines(text)) >= REPORTS_OF_AN_EXCEPTION;
  };
  if (wait_until(has_come, EXCEPTION_TIME, EXCEPTION_TIME)) return text;
  throw Failure(fmt::format("fewer than {} reports within {} s; check with zopctl doctor",
                            REPORTS_OF_AN_EXCEPTION, EXCEPTION_TIME.count()));
}

static Findings exception(const ModuleLibrary& m, const Arguments& arguments) {
  uint32_t code = arguments.number("CODE");
  LogCapture log(m, VURN_LOG_INFO);
  {
    QuietOutput quiet;
    require_host(m.vurn_log_message(code, const_cast<const char**>(EXCEPTION_NAMES)),
                 "report the exception");
  }
  if (isatty(STDERR_FILENO) != 0) fprintf(stderr, "waiting for five reports ...\n");
  std::string text = wait_for_reports(log);
  if (arguments.json) {
    print_object({{"exception", {{"code", code}, {"text", EXCEPTION_NAMES[code]}}},
                  {"reports", rows_of(text)}});
  } else {
    for (const std::string& line : report_lines(text)) print_text(line + "\n");
  }
  return {};
}

const Verb REPORT = {
    .name = "report",
    .help = "the diagnostic report, as a host reads it",
    .need = Session::MODULE,
    .arguments = {{.name = "--wait", .help = "wait for fresh data from the modem", .flag = true}},
    .run = report};
const Verb EXCEPTION = {
    .name = "exception",
    .help = "report an exception to the module, and show the five reports that follow",
    .need = Session::MODULE,
    .arguments = {{.name = "CODE", .help = "what happened", .choices = reported_codes()}},
    .run = exception};

}  // namespace zopctl
