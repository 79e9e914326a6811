// Logs into a store. A log is read whole or not at all: rows and the ledger change together. What
// can't become a row is kept aside with the reason.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fleet/ledger.h"
#include "fleet/row.h"
#include "fleet/store.h"
#include "records/log_pieces.h"
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

class Loader : private records::LogWork {
 public:
  using Progress = std::function<void(int64_t done, int64_t size)>;  // bytes of a log

  // The newest time that is plausible, seconds since 1970. Rows are made by this many threads, and
  // added by the caller's.
  Loader(Store& store, Database& ledger, const records::Callbacks& callbacks, int64_t newest,
         unsigned threads);

  // The new part of a log; "-" is standard input. Throws records::Failure.
  void load(const std::string& name, const Progress& progress);

  // A line of a log that comes as it is written, and what has come is kept.
  void take_line(std::string_view line);
  void keep();
  bool is_reading() const { return transaction_.has_value(); }  // not all is kept

  const Counts& counts() const { return counts_; }

 private:
  // What becomes of a piece of a log.
  struct Batch {
    std::vector<records::LogReport> reports;
    RowMaker maker;
    std::deque<KeptRow> rows;  // the first ones are of this piece
    size_t row_count = 0, report_count = 0;
    struct Refused {
      const char* why;
      std::string text;
    };
    std::vector<Refused> refused;
  };
  struct Reading {
    std::string name;
    int64_t size = 0;  // of the log
    int64_t done = 0;
    int64_t unended = 0;  // behind the last newline
    const Progress* progress = nullptr;
  };

  void join(const records::LogPiece& piece, size_t place) override;
  void form(size_t place) override;
  void take(const records::LogPiece& piece, size_t place) override;
  void form(Batch& batch) const;
  void add(Batch& batch);
  void load(int fd, const std::string& name, const Progress& progress);
  void refuse_broken(const records::LogReport& report);
  void refuse_stray(std::string_view line);
  const char* fault_of(const records::LogReport& report) const;
  void begin();

  Store& store_;
  Database& database_;
  Ledger ledger_;
  records::Callbacks callbacks_;
  int64_t newest_;
  unsigned threads_;
  std::deque<Batch> batches_;  // by their places
  Batch* batch_;               // what is joined goes there
  records::LogReports reports_;
  Counts counts_;
  Reading reading_;
  std::optional<Transaction> transaction_;
};

}  // namespace fleet
