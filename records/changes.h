// The lines of a recording: a whole sample now and then, and between two of them only what changed.
// All are JSON objects:
//   {"format":3,"time":"...","link":"open","bars":4,"events":[],"report":{...}}
//   {"change":1,"time":"...","bars":5,"report":{"state":{"rssi_dbm":-71}}}
// A change is merged into the sample before it. Null is what went away; time and events belong to
// their line alone. Changes are numbered from each whole sample, so that a lost line is noticed.
#pragma once

#include "records/report.h"

namespace records {

// 1 had whole samples only, and no number; up to 2, reports had the module's labels.
constexpr int RECORDING_FORMAT = 3;

class ChangeWriter {
 public:
  // What to write of a sample. The first line is a whole one.
  Json line_of(const Json& sample);

 private:
  Json last_;
  int number_ = 0;  // of the next line; 0 is a whole sample
};

class ChangeReader {
 public:
  static bool is_change(const Json& line) { return line.contains("change"); }

  // The sample of a line, until the next one; null when a line that it builds on is missing.
  const Json* sample_of(Json line);

  // A line is missing here.
  void miss() { next_ = -1; }

 private:
  Json sample_;
  int64_t next_ = -1;  // number of the change that fits; -1 when none does
};

}  // namespace records
