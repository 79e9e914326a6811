// A call with a fault: what the host gets, how long it takes, and whether everything works again
// after the line is repaired and the modem reopened.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "tests/faults/calls.h"
#include "tests/faults/faulty_line.h"

namespace test {

// A call without a fault: its outcome, and the frames of its answers.
struct Healthy {
  Outcome outcome;
  std::vector<Bytes> frames;
  std::set<std::string> honest_lines;  // of a report with all or only some of its values
};
Healthy make_healthy(const Call& call);

struct Row {
  Fault fault{};
  int result = 0;
  enum Output { FAILED, RIGHT, PARTIAL, WRONG } output = FAILED;
  enum Next { NOT_ASKED, NEXT_FAILS, NEXT_RIGHT, NEXT_WRONG } next = NOT_ASKED;
  Time took{0};
  std::string complaint;  // why the host has not recovered; empty if it has
};
Row make_row(const Call& call, const Healthy& healthy, const Fault& fault);

}  // namespace test
