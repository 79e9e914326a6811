// A call against a fault: what the host gets, how long it takes, and whether all is well again once
// the line is mended and the modem opened anew.
#pragma once

#include <array>
#include <set>
#include <string>
#include <vector>

#include "tests/faults/calls.h"
#include "tests/faults/faulty_line.h"

namespace test {

// A call without a fault: what it brings, and the frames of its answers.
struct Healthy {
  Brought brought;
  std::vector<Bytes> frames;
  std::set<std::string> honest_lines;  // of a report, with its values or without some
};
Healthy make_healthy(const Call& call);

struct Row {
  Fault fault{};
  int result = 0;
  enum Output { FAILED, RIGHT, PARTIAL, WRONG } output = FAILED;
  enum Next { NOT_ASKED, NEXT_FAILS, NEXT_RIGHT, NEXT_WRONG } next = NOT_ASKED;
  Time took{0};
  bool recovered = false;
  std::string complaint;  // what is not as it must be, empty when all is
};
Row make_row(const Call& call, const Healthy& healthy, const Fault& fault);

// The longest that a call may take with one fault on the line.
Time time_limit(const Call& call);

// All rows of a function with one kind of fault.
struct Cell {
  std::set<int> results;
  Time longest{0};
  bool wrong = false, partial = false, next_wrong = false;
  size_t rows = 0;
};
struct FunctionRow {
  std::string name;
  int healthy_result;
  std::array<Cell, FAULT_KINDS> cells;
};
void count(const Row& row, FunctionRow& function);

}  // namespace test
