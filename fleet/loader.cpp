// The reader of logs calls back with reports; each becomes a row or is refused.
#include "fleet/loader.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace fleet {

using records::Failure;
using records::LogReport;

constexpr size_t CHUNK = 1 << 20;

Loader::Loader(Store& store, Database& ledger, const records::Callbacks& callbacks, int64_t newest)
    : store_(store),
      database_(ledger),
      ledger_(ledger),
      callbacks_(callbacks),
      newest_(newest),
      reports_([this](const LogReport& report) { take(report); },
               [this](const LogReport& report) { refuse_broken(report); },
               [this](uint64_t, std::string_view) { refuse_stray(); }) {
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

void Loader::take(const LogReport& report) {
  ++counts_.reports;
  const Row& row = maker_.row_of(report);
  const char* fault = fault_of(report);
  if (fault == nullptr) return store_.add(row);
  ++counts_.refused;
  ledger_.refuse(fault, maker_.json());
}

void Loader::refuse_broken(const LogReport& report) {
  ++counts_.broken;
  std::string text = report.host + " t=" + report.stamp;
  for (const std::string& line : report.lines) text += "\n" + line;
  ledger_.refuse(report.mixed ? "a report of two devices" : "a report without all its lines", text);
}

void Loader::refuse_stray() {
  ++counts_.strays;
  ledger_.refuse("a line without its report's time", line_);
}

// ---- lines ----

void Loader::begin() {
  if (!transaction_) transaction_.emplace(database_);
}

void Loader::take_line(std::string_view line) {
  begin();
  ++counts_.lines;
  line_ = line;
  reports_.line(line);
}

void Loader::keep() {
  if (!transaction_) return;
  store_.flush();
  ledger_.keep(reports_);
  transaction_->commit();
  transaction_.reset();
  counts_.waiting = reports_.waiting().size();
  counts_.doubled_lines = reports_.doubled();
}

// ---- logs ----

// What follows the last newline is left for the next time: it may not be written yet.
void Loader::read(int fd, int64_t from, int64_t size, const Progress& progress) {
  std::vector<char> chunk(CHUNK);
  records::LineSplitter splitter;
  int64_t done = from;
  for (;;) {
    ssize_t got = ::read(fd, chunk.data(), chunk.size());
    callbacks_.check();
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw Failure(strerror(errno));
    if (got == 0) break;
    splitter.add({chunk.data(), static_cast<size_t>(got)},
                 [this](std::string_view line) { take_line(line); });
    done += got;
    progress(done, size);
  }
  read_ = done - static_cast<int64_t>(splitter.rest().size());
}

void Loader::load(int fd, const std::string& name, const Progress& progress) {
  struct stat status = {};
  bool is_file = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
  int64_t from = is_file ? ledger_.known_size(fd, status.st_size) : 0;
  if (is_file && lseek(fd, from, SEEK_SET) < 0) throw Failure(strerror(errno));
  begin();
  read(fd, from, is_file ? status.st_size : 0, progress);
  read_ == from ? ++counts_.unchanged : ++counts_.files;
  if (is_file) ledger_.keep_source(fd, name, read_);
  keep();
}

void Loader::load(const std::string& name, const Progress& progress) {
  bool standard_input = name == "-";
  int fd = standard_input ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) throw Failure(name + ": " + strerror(errno));
  load(fd, standard_input ? "standard input" : name, progress);
  if (!standard_input) close(fd);
}

}  // namespace fleet
