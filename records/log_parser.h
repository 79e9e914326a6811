// The reports in device logs as JSON, an object a line. Works as a filter: its memory does not grow
// with the log.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "records/log_piece.h"
#include "records/log_reports.h"
#include "records/reading.h"
#include "records/report_form.h"

namespace records {

// Appends the object of a report, through an empty collection of items.
//   {"host":"one","stamp":"4c4ae3f3","time":"...","lines":2,"report":{"state":{"bars":5}}}
// The versions, which the device logs when it starts, are in it as in a report for a host.
void append_row(std::string& out, ReportText& items, const LogReport& report);

class LogParser {
 public:
  // Whole reports go to out, which the caller keeps; broken ones go to callbacks.warn.
  LogParser(std::FILE* out, const Callbacks& callbacks);

  // The log's files in their order, by this many threads; "-" is standard input. What comes out
  // does not depend on the threads. Throws Failure.
  void read(const std::vector<std::string>& files, unsigned threads);

  // Reports the totals.
  void end();

 private:
  void take(const LogPiece& piece);
  void take_rest(std::string_view text);
  void end_line();
  void print(const LogReport& report);
  void warn_of_broken(const LogReport& report);
  void warn_of_stray(uint64_t line);
  std::string place(uint64_t line) const;
  void write_out();

  std::FILE* out_;
  Callbacks callbacks_;
  LogReports reports_;
  ReportText items_;  // of the report that is printed
  std::string text_;  // for out_
  std::string rest_;  // the beginning of a line
  struct File {
    std::string name;
    uint64_t lines_before;
  };
  std::vector<File> files_;
  uint64_t whole_ = 0, broken_ = 0, strays_ = 0;
};

}  // namespace records
