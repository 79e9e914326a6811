// Gets the log string with a buffer that grows until it fits.
#include "zopctl/host/report_text.h"

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
    if (!too_small) throw Failure("the report: " + vurn_result(result));
  }
}

bool has_screen(const std::string& report) {
  constexpr std::string_view AGE = "\nFTD Age: ";
  size_t at = report.find(AGE);
  return at != std::string::npos && report.compare(at + AGE.size(), 8, "None yet") != 0;
}

records::ItemTable items_of(const ModuleLibrary& m) { return records::ItemTable(*m.gLogItems); }

}  // namespace zopctl
