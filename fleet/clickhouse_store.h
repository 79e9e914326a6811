// Rows on servers of ClickHouse, over its HTTP interface. Rows go in batches. Whatever fails, each
// row is inserted once: before a batch is sent, and sent again, the rows of it that are there are
// left out.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "fleet/http.h"
#include "fleet/store.h"

namespace fleet {

struct ClickhouseAddress {
  std::string url;  // http://host:port/
  std::string database;
};

// Of "clickhouse://host:port/database"; throws records::Failure.
ClickhouseAddress clickhouse_address(const std::string& text);
bool is_clickhouse(const std::string& text);

// The type of a column in its table.
std::string clickhouse_type(const Column& column);

// A row as it is sent.
struct RowLine {
  int64_t key;
  std::string name;  // {"host":...,"time":...,"key":...} with its newline
  std::string text;  // the row
};

// The row as a line of JSON.
std::string line_of(const Row& row);

class ClickhouseStore : public Store {
 public:
  // How long an answer may take, how long a server that fails is tried again, and how to wait
  // meanwhile.
  struct Patience {
    long answer_s;
    int64_t seconds;
    void (*wait)(unsigned seconds);
  };
  // The writer's name tells its inserts from those of others; one of a name writes at a time. The
  // server is not asked yet.
  ClickhouseStore(const std::string& address, const std::string& writer, void (*check)(),
                  const Patience& patience);

  // Once, before the first row or question. Throws records::Failure when the server's table is not
  // the one that this zopctl knows.
  void check_table();

  void form(KeptRow& kept, const Row& row) const override;
  void add(KeptRow& kept) override;
  void add(RowLine line);
  void flush() override;
  Answer ask(const std::string& sql, const Ask& values) override;

 private:
  void compare_columns(const std::string& found) const;
  std::string query(const std::string& sql);
  // A table that is sent with a query.
  struct DataTable {
    std::string name, columns;
    std::string_view lines;  // JSON
  };
  std::string query_with_table(const std::string& sql, const DataTable& table);
  void drop_known();
  void write_batch();
  void insert();
  void wait_for_end_of_insert();
  [[noreturn]] void fail(const std::string& text) const;
  [[noreturn]] void give_up(const std::string& text);

  ClickhouseAddress address_;
  Http http_;
  Patience patience_;
  std::vector<RowLine> batch_;
  std::unordered_set<int64_t> keys_;  // of the batch
  std::string insert_id_;
  bool is_checked_ = false;
  bool settled_ = false;  // no insert of ours may still run
};

}  // namespace fleet
