// The matrix as docs/faults.md, which is also what the tests expect. Its text is written by hand;
// the rows of its table are written by zop_faults.
#pragma once

#include <map>

#include "tests/faults/matrix.h"

namespace test {

// All rows of one function with one kind of fault.
struct Cell {
  std::set<int> results;
  Time longest{0};
  bool wrong = false, partial = false, next_wrong = false;
  void add(const Row& row);
  std::string text() const;
};

// Of one function: its name, its result on a good line, the number of cases, and its cells.
using Columns = std::vector<std::string>;
inline constexpr size_t CELLS = 3;  // index of the first

struct Page {
  std::map<std::string, Columns> functions;
  std::set<std::string> without_row;  // functions for which the page says why
};
Page read_page(const std::string& path);
void rewrite_page(const std::string& path, const std::vector<Columns>& functions);

// What a row shows that its cell does not; empty if nothing.
std::string difference(const std::string& expected, const Row& row);

}  // namespace test
