// A log that has grown begins with what was read.
#include "fleet/ledger.h"

#include <unistd.h>
#include <xxhash.h>

#include <algorithm>
#include <vector>

namespace fleet {

constexpr int64_t TAIL = 4096;  // bytes

// A hash of the bytes before this place; -1 when they can't be read.
static int64_t tail_of(int fd, int64_t size) {
  std::vector<char> bytes(static_cast<size_t>(std::min(size, TAIL)));
  ssize_t got = pread(fd, bytes.data(), bytes.size(), size - static_cast<int64_t>(bytes.size()));
  if (got != static_cast<ssize_t>(bytes.size())) return -1;
  return static_cast<int64_t>(XXH3_64bits(bytes.data(), bytes.size()) >> 1);
}

int64_t Ledger::known_size(int fd, int64_t size) {
  Statement rows =
      database_.prepare("SELECT size, tail FROM source WHERE size <= ? ORDER BY size DESC");
  rows.bind(1, size);
  int64_t last_size = -1, tail = -1;
  while (rows.next()) {
    if (rows.number(0) != last_size) tail = tail_of(fd, last_size = rows.number(0));
    if (tail == rows.number(1)) return last_size;
  }
  return 0;
}

void Ledger::keep_source(int fd, const std::string& name, int64_t size) {
  Statement insert = database_.prepare("INSERT OR REPLACE INTO source VALUES(?, ?, ?)");
  insert.bind(1, name).bind(2, size).bind(3, tail_of(fd, size)).run();
}

void Ledger::restore(records::LogReports& reports) {
  Statement versions = database_.prepare("SELECT host, library, firmware, hardware FROM version");
  while (versions.next()) {
    reports.know(versions.text(0), {std::string(versions.text(1)), std::string(versions.text(2)),
                                    std::string(versions.text(3))});
  }
  Statement lines = database_.prepare("SELECT host, stamp, pairs FROM waiting ORDER BY rowid");
  while (lines.next()) {
    reports.go_on(
        {std::string(lines.text(0)), std::string(lines.text(1)), std::string(lines.text(2))});
  }
}

void Ledger::keep(records::LogReports& reports) {
  Statement version = database_.prepare("INSERT OR REPLACE INTO version VALUES(?, ?, ?, ?)");
  for (const std::string& host : reports.take_started()) {
    const records::Versions* told = reports.versions_of(host);
    version.bind(1, host).bind(2, told->library).bind(3, told->firmware).bind(4, told->hardware);
    version.run();
  }
  database_.execute("DELETE FROM waiting");
  Statement line = database_.prepare("INSERT INTO waiting VALUES(?, ?, ?)");
  for (const records::WaitingLine& waiting : reports.waiting()) {
    line.bind(1, waiting.host).bind(2, waiting.stamp).bind(3, waiting.pairs).run();
  }
}

void Ledger::refuse(std::string_view why, std::string_view text) {
  if (!refuse_) refuse_.emplace(database_.prepare("INSERT OR IGNORE INTO refused VALUES(?, ?)"));
  refuse_->bind(1, why).bind(2, text).run();
}

}  // namespace fleet
