// Rows on their way to servers: they are kept in the ledger's database at once, and sent when there
// are many or a second has gone by. So what is confirmed is on the disk, whatever the servers do,
// and whether they are up.
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

  // Whether it is time to send. Servers that fail are left alone for as long as they took.
  bool is_due() const { return waits_ && Clock::now() >= next_try_; }
  // The oldest rows, outside of a transaction. False when no more wait. Throws records::Failure
  // when the servers can't be reached; the rows stay.
  bool send_some();

 private:
  bool send_oldest();

  using Clock = std::chrono::steady_clock;
  Database& database_;
  ClickhouseStore& servers_;
  std::optional<Statement> insert_;
  bool waits_ = true;  // a row, or one may
  Clock::time_point next_try_ = Clock::now();
};

}  // namespace fleet
