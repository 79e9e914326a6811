// The report as programs get it, from all that print or keep one: {"section": {"key": value}} with
// keys in snake_case that end in their unit, states as {"code", "text"}, lists as lists, and null
// for what is not known. The keys: records/report_items.cpp.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "records/report.h"
#include "records/report_items.h"

namespace records {

// Collects the items of a report as the module writes them, and makes JSON of them.
class ReportText {
 public:
  // Both are kept by the caller until append_to.
  void add(std::string_view label, std::string_view value);
  // Appends the object, and is empty again.
  void append_to(std::string& out);

 private:
  struct Pair {
    const ReportItem* item;
    std::string_view label, value;
  };
  // What became of a pair.
  struct Made {
    const ReportItem* item = nullptr;
    std::string value, text;
  };
  void append_item(std::string& out, const Pair& pair, Made& last) const;  // behind a comma

  ItemFinder finder_;
  std::vector<Pair> pairs_;
  std::array<Made, 128> made_;  // by their places: most pairs come again as in the last report
  bool no_screen_ = false;      // there has been none yet
  std::array<std::string, SECTION_COUNT> sections_;
};

// Of the text that the module renders for a host.
Json report_of_text(std::string_view text);

// Reports were kept by the module's labels and with its values: whether this is one, and what it is
// in the form above.
bool has_labels(const Json& report);
Json without_labels(const Json& report);

}  // namespace records
