// The diagnostic reports in logs of many devices, put together from their lines.
//
// A line is "HEADER I zop:diag: t=STAMP,NAME=VALUE,...:"; the last line of a report ends with
// ",n=LINES". Lines of different devices and reports may be interleaved and repeated: the host in
// the header and the stamp tell which report a line belongs to. Only reports that began recently
// are held in memory, however long the log.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace records {

constexpr std::string_view REPORT_MARK = "I zop:diag: t=";  // is in each line of a report

struct LogReport {
  std::string_view host;           // empty when the header has none
  std::string_view stamp;          // hexadecimal, seconds since 1970
  std::vector<std::string> lines;  // "NAME=VALUE,..." each; the last line is at the end
  uint64_t first_line = 0;         // its number in the log, from 1
  size_t wanted = 0;               // lines it should have; 0 until the last one has come
  size_t cut = 0;                  // lines that are cut short
  bool mixed = false;              // has two last lines: of two devices with one name
};

class LogReports {
 public:
  using Take = std::function<void(const LogReport&)>;

  // whole gets each report once, as soon as it is complete; broken gets reports whose missing lines
  // are given up; stray gets the number of a report line that has no stamp.
  LogReports(Take whole, Take broken, std::function<void(uint64_t line)> stray);

  // A line of the log, without its newline.
  void line(std::string_view text);

  // Lines without the mark.
  void pass(uint64_t lines);

  // The end of the log: reports that are not complete are broken.
  void end();

  uint64_t lines() const { return line_; }       // all lines so far
  uint64_t doubled() const { return doubled_; }  // repeated lines of reports

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
    std::vector<Done> done;        // the latest, to recognise repeated lines
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
