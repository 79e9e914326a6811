// Rows are taken away only when the servers have them.
#include "fleet/outbox.h"

#include <algorithm>

#include "records/reading.h"

namespace fleet {

constexpr int64_t AT_ONCE = 20'000;  // rows that are sent at once
constexpr std::chrono::seconds WAIT{1};

Outbox::Outbox(Database& database, ClickhouseStore& servers)
    : database_(database), servers_(servers) {}

void Outbox::add(KeptRow& kept) {
  if (!insert_) {
    insert_.emplace(database_.prepare("INSERT INTO outbox(key, name, text) VALUES(?, ?, ?)"));
  }
  insert_->bind(1, key_of(kept)).bind(2, kept.name).bind(3, kept.texts).run();
  waits_ = true;
  ++added_;
}

Answer Outbox::ask(const std::string& sql, const Ask& values) { return servers_.ask(sql, values); }

// True when there are more than can be sent at once.
bool Outbox::send_oldest() {
  int64_t last = 0, count = 0;
  Statement rows = database_.prepare("SELECT id, key, name, text FROM outbox ORDER BY id LIMIT ?");
  rows.bind(1, AT_ONCE);
  while (rows.next()) {
    last = rows.number(0);
    ++count;
    servers_.add({rows.number(1), std::string(rows.text(2)), std::string(rows.text(3))});
  }
  servers_.flush();
  database_.prepare("DELETE FROM outbox WHERE id <= ?").bind(1, last).run();
  return count == AT_ONCE;
}

bool Outbox::send_some() {
  Clock::time_point start = Clock::now();
  try {
    servers_.check_table();
    waits_ = send_oldest();
  } catch (const records::Failure&) {
    next_try_ = Clock::now() + std::max<Clock::duration>(WAIT, Clock::now() - start);
    throw;
  }
  next_try_ = Clock::now() + (waits_ ? Clock::duration(0) : WAIT);
  return waits_;
}

}  // namespace fleet
