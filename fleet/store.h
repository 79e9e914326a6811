// Where rows are kept, and asked.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "fleet/row.h"

namespace fleet {

// What a question may depend on. As a table of one row, "ask", it is the same for all engines, and
// no value becomes a part of a statement.
struct Ask {
  std::string host;
  int64_t since = 0, until = 0;  // seconds since 1970
  int64_t silent_s = 0;          // without a report for so long a device is silent
  int64_t rows = 0;              // at most
};

struct Cell {
  enum { NOTHING, NUMBER, REAL, TEXT } type = NOTHING;
  int64_t number = 0;
  double real = 0;
  std::string text;
};

struct Answer {
  std::vector<std::string> names;
  std::vector<std::vector<Cell>> rows;
  bool is_cut = false;  // there are more rows
};

class Store {
 public:
  Store() = default;
  virtual ~Store() = default;
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  // Makes the row that is added then, by any thread.
  virtual void form(KeptRow& kept, const Row& row) const { kept.keep(row); }
  // A row that is there already is not added again.
  virtual void add(KeptRow& kept) = 0;
  // Rows that have been added are kept from now on, or with the ledger's transaction.
  virtual void flush() = 0;
  virtual Answer ask(const std::string& sql, const Ask& values) = 0;

  uint64_t added() const { return added_; }
  uint64_t doubled() const { return doubled_; }

 protected:
  uint64_t added_ = 0, doubled_ = 0;
};

}  // namespace fleet
