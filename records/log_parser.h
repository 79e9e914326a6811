// The reports in device logs as JSON, an object a line. Works as a filter: its memory does not grow
// with the log.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "records/log_pieces.h"
#include "records/log_reports.h"
#include "records/reading.h"
#include "records/report_form.h"

namespace records {

// Appends the object of a report, through an empty collection of items.
//   {"host":"one","stamp":"4c4ae3f3","time":"...","lines":2,"report":{"state":{"bars":5}}}
// The versions, which the device logs when it starts, are in it as in a report for a host.
void append_row(std::string& out, ReportText& items, const LogReport& report);

class LogParser : private LogWork {
 public:
  // Whole reports go to out, which the caller keeps; broken ones go to callbacks.warn.
  LogParser(std::FILE* out, const Callbacks& callbacks);

  // The log's files in their order, by this many threads; "-" is standard input. What comes out
  // does not depend on the threads. Throws Failure.
  void read(const std::vector<std::string>& files, unsigned threads);

  // Reports the totals.
  void end();

 private:
  // The rows of a piece.
  struct Batch {
    std::vector<LogReport> reports;
    ReportText items;  // of the report that becomes a row
    std::string rows;
    std::vector<std::string> warnings;
  };

  void join(const LogPiece& piece, size_t place) override;
  void form(size_t place) override;
  void take(const LogPiece& piece, size_t place) override;
  void write(Batch& batch);
  void warn_of_broken(const LogReport& report);
  void warn_of_stray(uint64_t line);
  std::string place(uint64_t line) const;

  std::FILE* out_;
  Callbacks callbacks_;
  LogReports reports_;
  std::vector<Batch> batches_ = std::vector<Batch>(1);  // by their places
  Batch* batch_ = batches_.data();                      // what is joined goes there
  std::vector<std::string> names_;                      // of the files, for messages
  std::vector<uint64_t> lines_before_;                  // of those that were begun
  uint64_t rows_ = 0, broken_ = 0, strays_ = 0;
};

}  // namespace records
