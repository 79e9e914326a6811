// The reader of logs calls back with reports; each becomes a row or is refused.
#include "fleet/loader.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "records/file_error.h"

namespace fleet {

using records::file_failure;
using records::LogReport;

Loader::Loader(Store& store, Database& ledger, const records::Callbacks& callbacks, int64_t newest,
               unsigned threads)
    : store_(store),
      database_(ledger),
      ledger_(ledger),
      callbacks_(callbacks),
      newest_(newest),
      threads_(threads),
      batches_(records::LogPieces::places(threads)),
      batch_(&batches_.front()),
      reports_([this](LogReport&& report) { batch_->reports.push_back(std::move(report)); },
               [this](const LogReport& report) { refuse_broken(report); },
               [this](uint64_t, std::string_view line) { refuse_stray(line); }) {
  ledger_.restore(reports_);
}

// ---- reports ----

const char* Loader::fault_of(const LogReport& report) const {
  constexpr size_t STAMP_DIGITS = 8;
  if (report.host.empty()) return "no host in the line's header";
  if (report.stamp.size() > STAMP_DIGITS) return "a time that is none";
  if (std::stoll(report.stamp, nullptr, 16) > newest_) return "a time in the future";
  return nullptr;
}

// By any thread: the batch is its own meanwhile, and of the loader only constants are read.
void Loader::form(Batch& batch) const {
  if (batch.rows.size() < batch.reports.size()) batch.rows.resize(batch.reports.size());
  auto kept = batch.rows.begin();
  for (const LogReport& report : batch.reports) {
    const Row& row = batch.maker.row_of(report);
    if (const char* fault = fault_of(report)) {
      batch.refused.push_back({fault, batch.maker.json()});
    } else {
      store_.form(*kept++, row);
    }
  }
  batch.row_count = static_cast<size_t>(kept - batch.rows.begin());
  batch.report_count = batch.reports.size();
  batch.reports.clear();
}

void Loader::add(Batch& batch) {
  auto end = batch.rows.begin() + static_cast<ptrdiff_t>(batch.row_count);
  std::for_each(batch.rows.begin(), end, [this](KeptRow& row) { store_.add(row); });
  for (const auto& [why, text] : batch.refused) ledger_.refuse(why, text);
  counts_.reports += batch.report_count;
  counts_.refused += batch.report_count - batch.row_count;
  batch.refused.clear();
}

void Loader::refuse_broken(const LogReport& report) {
  ++counts_.broken;
  std::string text = report.host + " t=" + report.stamp;
  for (const std::string& line : report.lines) text += "\n" + line;
  batch_->refused.push_back(
      {report.mixed ? "a report of two devices" : "a report without all its lines", text});
}

void Loader::refuse_stray(std::string_view line) {
  ++counts_.strays;
  batch_->refused.push_back({"a line without its report's time", std::string(line)});
}

// ---- lines ----

void Loader::begin() {
  if (!transaction_) transaction_.emplace(database_);
}

void Loader::take_line(std::string_view line) {
  begin();
  reports_.line(line);
  form(*batch_);
  add(*batch_);
}

void Loader::keep() {
  if (!transaction_) return;
  store_.flush();
  ledger_.keep(reports_);
  transaction_->commit();
  transaction_.reset();
  database_.share();
  counts_.lines = reports_.lines();
  counts_.waiting = reports_.waiting().size();
  counts_.doubled_lines = reports_.doubled();
}

// ---- logs ----

void Loader::join(const records::LogPiece& piece, size_t place) {
  batch_ = &batches_[place];
  reports_.take(piece);
}

void Loader::form(size_t place) { form(batches_[place]); }

void Loader::take(const records::LogPiece& piece, size_t place) {
  callbacks_.check();
  if (piece.error != 0) throw file_failure(reading_.name, piece.error);
  add(batches_[place]);
  auto bytes = static_cast<int64_t>(piece.size);
  reading_.done += bytes;
  reading_.unended =
      piece.newlines > 0 ? static_cast<int64_t>(piece.tail.size()) : reading_.unended + bytes;
  (*reading_.progress)(reading_.done, reading_.size);
}

// What follows the last newline is left for the next time: it may not be written yet.
void Loader::load(int fd, const std::string& name, const Progress& progress) {
  struct stat status = {};
  bool is_file = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
  int64_t from = is_file ? ledger_.known_size(fd, status.st_size) : 0;
  if (is_file && lseek(fd, from, SEEK_SET) < 0) throw file_failure(name, errno);
  begin();
  reading_ = {name, is_file ? status.st_size : 0, from, 0, &progress};
  records::LogPieces({{name, fd}}, threads_, *this).run();
  reports_.drop_line();
  int64_t end = reading_.done - reading_.unended;
  end == from ? ++counts_.unchanged : ++counts_.files;
  if (is_file) ledger_.keep_source(fd, name, end);
  keep();
}

void Loader::load(const std::string& name, const Progress& progress) {
  if (name == "-") return load(STDIN_FILENO, "standard input", progress);
  struct File {
    int fd;
    ~File() { close(fd); }
  } file = {open(name.c_str(), O_RDONLY | O_CLOEXEC)};
  if (file.fd < 0) throw file_failure(name, errno);
  load(file.fd, name, progress);
}

}  // namespace fleet
