// Rows are taken away only when the servers have them.
#include "fleet/outbox.h"

namespace fleet {

constexpr int64_t AT_ONCE = 20'000;  // rows that are sent at once
constexpr std::chrono::seconds WAIT{1};

Outbox::Outbox(Database& database, ClickhouseStore& servers)
    : database_(database), servers_(servers) {
  Statement count = database_.prepare("SELECT count(*) FROM outbox");
  if (count.next()) waiting_ = count.number(0);
}

void Outbox::add(KeptRow& kept) {
  if (!insert_) {
    insert_.emplace(database_.prepare("INSERT INTO outbox(key, name, text) VALUES(?, ?, ?)"));
  }
  insert_->bind(1, key_of(kept)).bind(2, kept.name).bind(3, kept.texts).run();
  ++waiting_;
  ++added_;
}

Answer Outbox::ask(const std::string& sql, const Ask& values) { return servers_.ask(sql, values); }

// The oldest; false when there are none.
bool Outbox::send_some() {
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
  waiting_ -= count;
  return count > 0;
}

void Outbox::send() {
  last_try_ = Clock::now();
  while (send_some()) continue;
}

void Outbox::send_if_due() {
  if (waiting_ > 0 && Clock::now() - last_try_ >= WAIT) send();
}

}  // namespace fleet
