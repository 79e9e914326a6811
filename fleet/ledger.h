// What has been read, so that reading can go on where it ended: it is kept in one transaction with
// the rows, or, when they are elsewhere, after them.
#pragma once

#include <optional>
#include <string>

#include "fleet/database.h"
#include "records/log_reports.h"

namespace fleet {

class Ledger {
 public:
  explicit Ledger(Database& database) : database_(database) {}

  // How many bytes of the log have been read before. It is known by what is in it, whatever it is
  // called by now.
  int64_t known_size(int fd, int64_t size);
  void keep_source(int fd, const std::string& name, int64_t size);

  // Lines and versions that were kept; those of now are kept instead.
  void restore(records::LogReports& reports);
  void keep(records::LogReports& reports);

  // Kept once, however often it is read.
  void refuse(std::string_view why, std::string_view text);

 private:
  Database& database_;
  std::optional<Statement> refuse_;
};

}  // namespace fleet
