// Logs into a store. A log is read whole or not at all: rows and the ledger change together. What
// can't become a row is kept aside with the reason.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "fleet/ledger.h"
#include "fleet/row.h"
#include "fleet/store.h"
#include "records/line_splitter.h"
#include "records/log_reports.h"
#include "records/reading.h"

namespace fleet {

struct Counts {
  uint64_t files = 0, unchanged = 0;  // read, and had nothing new
  uint64_t lines = 0, reports = 0;
  uint64_t doubled_lines = 0;
  uint64_t refused = 0, broken = 0, strays = 0;  // reports, reports, lines
  uint64_t waiting = 0;                          // lines of reports that are not complete
};

class Loader {
 public:
  using Progress = std::function<void(int64_t done, int64_t size)>;  // bytes of a log

  // The newest time that is plausible, seconds since 1970.
  Loader(Store& store, Database& ledger, const records::Callbacks& callbacks, int64_t newest);

  // The new part of a log; "-" is standard input. Throws records::Failure.
  void load(const std::string& name, const Progress& progress);

  // A line of a log that comes as it is written, and what has come is kept.
  void take_line(std::string_view line);
  void keep();
  bool is_reading() const { return transaction_.has_value(); }  // not all is kept

  const Counts& counts() const { return counts_; }

 private:
  void load(int fd, const std::string& name, const Progress& progress);
  void read(int fd, int64_t from, int64_t size, const Progress& progress);
  void take(const records::LogReport& report);
  void refuse_broken(const records::LogReport& report);
  void refuse_stray();
  const char* fault_of(const records::LogReport& report) const;
  void begin();

  Store& store_;
  Database& database_;
  Ledger ledger_;
  records::Callbacks callbacks_;
  int64_t newest_;
  records::LogReports reports_;
  RowMaker maker_;
  Counts counts_;
  std::string_view line_;  // the one that is looked at
  int64_t read_ = 0;       // bytes of the log, to the end of its last line
  std::optional<Transaction> transaction_;
};

}  // namespace fleet
