// A report of a log as a row.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "fleet/columns.h"
#include "records/log_parser.h"

namespace fleet {

// What is in a column. A state has both a code and a word.
struct Value {
  bool known = false;
  int64_t number = 0;
  std::string_view text{};
};

using Row = std::array<Value, COLUMN_COUNT>;

// A row that lives on, with its texts, and stays where it is.
struct KeptRow {
  KeptRow() = default;
  ~KeptRow() = default;
  KeptRow(const KeptRow&) = delete;
  KeptRow& operator=(const KeptRow&) = delete;
  void keep(const Row& made);

  Row row;
  std::string texts;
  std::string name;  // for a store that sends lines: the columns that name the row
};

inline int64_t key_of(const KeptRow& kept) { return kept.row[column("key")].number; }

class RowMaker {
 public:
  RowMaker();
  ~RowMaker();
  RowMaker(const RowMaker&) = delete;
  RowMaker& operator=(const RowMaker&) = delete;

  // The row is valid until the next call.
  const Row& row_of(const records::LogReport& report);

  // The object that parse-log prints for the last report.
  const std::string& json() const { return json_; }

 private:
  class Reader;
  void add_made_columns();

  records::ReportText items_;
  std::string json_, host_, stuck_;
  Row row_;
  std::unique_ptr<Reader> reader_;
};

}  // namespace fleet
