// The diagnostic reports in logs of many devices, put together from their lines.
//
// A line is "HEADER I zop:diag: t=STAMP,NAME=VALUE,...:", the last one of a report holds
// ",n=LINES". Lines of different devices and reports may be mixed, and lines may be doubled; what
// belongs together is told by the host in the header and the stamp. Memory holds only reports that
// have begun lately, whatever the length of the log.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace records {

struct LogReport {
  std::string_view host;           // empty when the header tells none
  std::string_view stamp;          // hexadecimal, seconds since 1970
  std::vector<std::string> lines;  // "NAME=VALUE,..." each, the last one of the report last
  uint64_t first_line = 0;         // its number in the log, from 1
  size_t wanted = 0;               // lines that it has; 0 when its last one has not come
  size_t cut = 0;                  // lines that were cut
  bool mixed = false;              // has two last lines: two devices can't be told apart
};

class LogReports {
 public:
  using Take = std::function<void(const LogReport&)>;

  // whole gets each report once, as soon as it is complete; broken gets those whose lines do not
  // come any more; stray the number of a line that begins as one of a report but has no stamp.
  LogReports(Take whole, Take broken, std::function<void(uint64_t line)> stray);

  // A line of the log, without its newline.
  void line(std::string_view text);

  // The log has ended: what has begun is broken.
  void end();

  uint64_t doubled() const { return doubled_; }  // lines that had come before

 private:
  struct Pending {
    std::string stamp;
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
    std::vector<Done> done;        // the latest, to know doubled lines
    size_t next_done = 0;
    uint64_t last_line = 0;
  };
  struct Hash {
    using is_transparent = void;
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  using Devices = std::unordered_map<std::string, Device, Hash, std::equal_to<>>;

  void take(std::string_view host, std::string_view stamp, std::string_view pairs, bool cut);
  bool was_done(const Device& device, std::string_view stamp) const;
  bool was_done(const Device& device, std::string_view stamp, uint64_t hash) const;
  Pending& pending_of(const std::string& host, Device& device, std::string_view stamp);
  void finish(const std::string& host, Device& device, Pending& pending);
  void give_up(const std::string& host, const Pending& pending);
  void forget_old();

  Take whole_, broken_;
  std::function<void(uint64_t)> stray_;
  Devices devices_;
  uint64_t line_ = 0;
  uint64_t doubled_ = 0;
};

// The host in a syslog header; empty when it has none.
std::string_view host_of_header(std::string_view header);

}  // namespace records
