// Rows in an SQLite database.
#pragma once

#include <optional>

#include "fleet/database.h"
#include "fleet/store.h"

namespace fleet {

class SqliteStore : public Store {
 public:
  explicit SqliteStore(Database& database) : database_(database) {}

  void add(KeptRow& kept) override;
  void flush() override;
  Answer ask(const std::string& sql, const Ask& values) override;

 private:
  void prepare();

  Database& database_;
  std::optional<Statement> insert_, insert_rest_;
  int64_t last_rest_ = 0;  // its id
  bool has_host_index_ = true;
};

}  // namespace fleet
