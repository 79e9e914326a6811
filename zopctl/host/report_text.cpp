// The log string, read line by line: a header opens a section, "label: value" is an item.
#include "zopctl/host/report_text.h"

#include <charconv>
#include <sstream>

#include "zopctl/host/quiet_output.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/words.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

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

// "      ********* MODEM *********" as "modem"; empty for another line.
static std::string section_of(const std::string& line) {
  if (!line.starts_with("      *********")) return "";
  std::string name;
  for (char c : line) {
    if (c >= 'A' && c <= 'Z') name += static_cast<char>(c - 'A' + 'a');
  }
  return name;
}

static const zop_log_item* item_of(const ModuleLibrary& m, const std::string& label) {
  for (const zop_log_item* item = *m.gLogItems; item->type != ZOP_ITEM_END; ++item) {
    if (item->label != nullptr && label == item->label) return item;
  }
  return nullptr;
}

static Json typed(const zop_log_item* item, const std::string& text) {
  if (text == "---" || text == "----") return nullptr;
  int64_t number = 0;
  const char* end = text.data() + text.size();
  auto [stop, error] = std::from_chars(text.data(), end, number);
  bool numeric =
      item != nullptr && (item->type == ZOP_ITEM_UNSIGNED || item->type == ZOP_ITEM_SIGNED);
  if (numeric && error == std::errc{} && stop == end) return number;
  return text;
}

Json report_as_json(const ModuleLibrary& m, const std::string& report) {
  Json object;
  std::string section = "report";
  std::istringstream lines(report);
  for (std::string line; std::getline(lines, line);) {
    std::string header = section_of(line);
    size_t colon = line.find(": ");
    if (!header.empty()) {
      section = header;
    } else if (colon != std::string::npos) {
      std::string label = line.substr(0, colon);
      object[section][label] = typed(item_of(m, label), line.substr(colon + 2));
    }
  }
  return object;
}

}  // namespace zopctl
