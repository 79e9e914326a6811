// Gets the log string with a buffer that grows until it fits.
#include "zopctl/host/report_text.h"

#include <algorithm>

#include "records/report_items.h"
#include "zopctl/host/refusals.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/words.h"

namespace zopctl {

std::string log_string(const ModuleLibrary& m) {
  QuietOutput quiet;
  for (unsigned size = 8192;; size *= 2) {
    std::string text(size, '\0');
    int result = m.vurn_get_log_string(text.data(), size);
    if (result == VURN_OK) return text.substr(0, text.find('\0'));
    bool too_small = result == VURN_ERR_TRUNCATED && size < 1'000'000;
    if (!too_small) throw Failure("the report: " + vurn_result(result), 1, ASK_DOCTOR);
  }
}

bool has_screen(const std::string& report) {
  constexpr std::string_view AGE = "\nFTD Age: ";
  size_t at = report.find(AGE);
  return at != std::string::npos && report.compare(at + AGE.size(), 8, "None yet") != 0;
}

std::string without_screen(std::string_view report) {
  std::string text;
  while (!report.empty()) {
    std::string_view line = report.substr(0, report.find('\n'));
    report.remove_prefix(std::min(line.size() + 1, report.size()));
    std::string_view label = line.substr(0, line.find(": "));
    const records::ReportItem* item = records::find_item(label);
    bool is_known = item == nullptr || item->source != records::Source::SCREEN;
    text += is_known ? std::string(line) : std::string(label) + ": ---";
    text += '\n';
  }
  return text;
}

}  // namespace zopctl
