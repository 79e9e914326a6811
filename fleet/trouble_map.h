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
  struct CellRow {
    std::string name;
    std::map<std::string, Field> fields;  // by version
    int64_t reports = 0, troubled = 0;
  };

  void choose_versions(const std::map<std::string, int64_t>& troubled);
  void write_row(page::HtmlWriter& html, size_t row) const;
  void write_field(page::HtmlWriter& html, size_t row, size_t column, const Field& field) const;
  void write_devices(page::HtmlWriter& html, size_t row, size_t column, const Field& field) const;

  std::vector<CellRow> rows_;          // with trouble, the worst first
  std::vector<std::string> versions_;  // those of the columns
  size_t more_cells_ = 0, more_versions_ = 0;
};

}  // namespace fleet
