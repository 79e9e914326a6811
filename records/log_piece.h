// A piece of a log, which ends anywhere, within a line or a report. What concerns no report is only
// counted in it: that is most of a log, and pieces are searched by several threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace records {

// Lines with one of these are looked at: each line of a report, and a device's start.
constexpr std::string_view REPORT_MARK = "I zop:diag: t=", START_MARK = "I zop:misc1:lib = ";

struct LogPiece {
  struct Line {
    uint64_t number;  // how many newlines of the piece are before it
    std::string_view text;
  };

  size_t file = 0;         // its place among the log's files
  int error = 0;           // an errno: the file can't be read
  bool ends_file = false;  // nothing of the file is left
  std::vector<char> bytes;
  size_t size = 0;  // of the bytes, those that were read

  // Found by search.
  std::string_view head, tail;  // before the first newline, behind the last
  uint64_t newlines = 0;
  std::vector<Line> lines;  // whole ones between the two that may be of a report

  void search();
};

}  // namespace records
