// The diagnostic reports in logs of many devices, put together from their lines.
//
// A line is "HEADER I zop:diag: t=STAMP,NAME=VALUE,...:"; the last line of a report ends with
// ",n=LINES". Lines of different devices and reports may be interleaved and repeated: the host in
// the header and the stamp tell which report a line belongs to. Only reports that began recently
// are held in memory, however long the log, and the versions of each device, which it logs once
// when it starts: "HEADER I zop:misc1:lib = LIBRARY, fw = FIRMWARE, hw = HARDWARE, awake = ...:".
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "records/log_piece.h"

namespace records {

struct Versions {
  std::string library, firmware, hardware;
  auto operator<=>(const Versions&) const = default;
};

struct LogReport {
  std::string host;                    // empty when the header has none
  std::string stamp;                   // hexadecimal, seconds since 1970
  std::vector<std::string> lines;      // "NAME=VALUE,..." each; the last line is at the end
  uint64_t first_line = 0;             // its number in the log, from 1
  size_t wanted = 0;                   // lines it should have; 0 until the last one has come
  size_t cut = 0;                      // lines that are cut short
  bool mixed = false;                  // has two last lines: of two devices with one name
  const Versions* versions = nullptr;  // of the device; null until it has told
};

// A line of a report that is not complete.
struct WaitingLine {
  std::string host, stamp, pairs;
};

class LogReports {
 public:
  using Take = std::function<void(LogReport&&)>;
  using TakeStray = std::function<void(uint64_t line, std::string_view text)>;

  // whole gets each report once, as soon as it is complete; broken gets reports whose missing lines
  // are given up; stray gets a report line that has no stamp.
  LogReports(Take whole, Take broken, TakeStray stray);

  // What comes next of the log. The line in which it ends waits for its end.
  void take(const LogPiece& piece);
  void end_line();   // the file ends without its last newline
  void drop_line();  // the rest of the line is not written yet, and all of it will come again

  // A line of the log, without its newline.
  void line(std::string_view text);

  // The end of the log: reports that are not complete are broken.
  void end();

  uint64_t lines() const { return line_; }       // all lines so far
  uint64_t doubled() const { return doubled_; }  // repeated lines of reports

  // ---- to go on later ----

  std::vector<WaitingLine> waiting() const;
  void go_on(const WaitingLine& line) { take(line.host, line.stamp, line.pairs, false); }
  void know(std::string_view host, const Versions& versions);
  // Hosts whose versions have become known since the last call, or changed.
  std::vector<std::string> take_started() { return std::exchange(started_, {}); }
  const Versions* versions_of(std::string_view host) const;

 private:
  struct Pending {
    LogReport report;
    std::vector<uint64_t> hashes;  // of its lines
    uint64_t last_line = 0;
  };
  struct Done {
    std::string stamp;
    std::vector<uint64_t> hashes;
  };
  struct Device {
    std::vector<Pending> pending;  // oldest first
    std::vector<Done> done;        // the latest, to recognise repeated lines
    size_t next_done = 0;
    uint64_t last_line = 0;
    const Versions* versions = nullptr;  // as in versions_
  };
  struct Hash {
    using is_transparent = void;
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  template <typename T>
  using Hosts = std::unordered_map<std::string, T, Hash, std::equal_to<>>;

  void pass(uint64_t lines);
  void add_unended(std::string_view text);
  void take_report_line(std::string_view text, size_t mark);
  void take_start(std::string_view text, size_t mark);
  void take(std::string_view host, std::string_view stamp, std::string_view pairs, bool cut);
  bool was_done(const Device& device, std::string_view stamp) const;
  bool was_done(const Device& device, std::string_view stamp, uint64_t hash) const;
  Pending& pending_of(const std::string& host, Device& device, std::string_view stamp);
  void finish(Device& device, Pending& pending);
  void forget_old();

  Take whole_, broken_;
  TakeStray stray_;
  std::string unended_;  // the beginning of a line
  Hosts<Device> devices_;
  std::set<Versions> all_versions_;  // a fleet has few
  Hosts<const Versions*> versions_;
  std::vector<std::string> started_;
  uint64_t line_ = 0;
  uint64_t doubled_ = 0;
};

// The host in a syslog header; empty when it has none.
std::string_view host_of_header(std::string_view header);

}  // namespace records
