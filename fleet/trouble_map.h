// Trouble by cell and firmware version, for the page.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "fleet/store.h"
#include "page/html_writer.h"

namespace fleet {

class TroubleMap {
 public:
  // Of the answer to the question "trouble".
  explicit TroubleMap(const Answer& answer);

  void write(page::HtmlWriter& html) const;

 private:
  struct Device {
    std::string host;
    int64_t reports, troubled;
  };
  struct Field {
    std::vector<Device> devices;  // the most troubled first
    int64_t reports = 0, troubled = 0;
  };
  using Fields = std::map<std::string, Field>;  // by version

  void write_row(page::HtmlWriter& html, const std::string& cell, size_t row) const;
  void write_devices(page::HtmlWriter& html) const;

  std::map<std::string, Fields> cells_;
  std::map<std::string, int64_t> versions_;  // all there are
  std::vector<std::string> worst_;           // cells, the worst first
};

}  // namespace fleet
