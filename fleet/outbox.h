// Rows on their way to servers: they are kept in the ledger's database at once, and sent when there
// are many or a second has gone by. So what is confirmed is on the disk, whatever the servers do.
#pragma once

#include <chrono>
#include <optional>

#include "fleet/clickhouse_store.h"
#include "fleet/database.h"

namespace fleet {

class Outbox : public Store {
 public:
  Outbox(Database& database, ClickhouseStore& servers);

  void form(KeptRow& kept, const Row& row) const override { servers_.form(kept, row); }
  void add(KeptRow& kept) override;
  void flush() override {}
  Answer ask(const std::string& sql, const Ask& values) override;

  // Outside of a transaction. Throws records::Failure when the servers can't be reached; the rows
  // stay.
  void send_if_due();
  void send();

 private:
  bool send_some();

  using Clock = std::chrono::steady_clock;
  Database& database_;
  ClickhouseStore& servers_;
  std::optional<Statement> insert_;
  int64_t waiting_ = 0;  // rows
  Clock::time_point last_try_ = Clock::now();
};

}  // namespace fleet
