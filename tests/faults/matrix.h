// A call with a fault: what the host gets, how long it takes, and whether everything works again
// after the line is repaired and the modem reopened.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "tests/faults/calls.h"

namespace test {

// A column of the matrix: a kind of fault, as a switch of the simulated modem. {byte} stands for
// every byte of an answer's frame in turn, {answer} for the number of answers before it.
struct Column {
  const char* name;
  const char* fault;
  std::vector<int> values = {0};  // for {value}
  Time host_waits{0};             // before it opens the port again
};
const std::vector<Column>& columns();

struct Fault {
  size_t column;
  std::string text;  // the switch
};

// A call without a fault.
struct Healthy {
  Outcome outcome;
  std::vector<size_t> answers;       // bytes of each answer's frame
  std::set<std::string> true_lines;  // of a report with all or only some of its values
};
Healthy make_healthy(const Call& call);

// Every fault of a call. A call of many bytes gets one flipped bit a byte, the others all eight.
std::vector<Fault> all_faults(const Healthy& healthy);

struct Row {
  int result = 0;
  enum Output { FAILED, RIGHT, PARTIAL, WRONG } output = FAILED;
  enum Next { NOT_ASKED, NEXT_FAILS, NEXT_RIGHT, NEXT_WRONG } next = NOT_ASKED;
  Time took{0};
  std::string complaint;  // why the host has not recovered; empty if it has
};
Row make_row(const Call& call, const Healthy& healthy, const Fault& fault);

}  // namespace test
