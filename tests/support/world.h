// The world around the module in a test: a clock that jumps, a serial port in memory, a syslog that
// remembers, files that are somewhere else.
//
// The module under test is unchanged: the test program itself defines open, poll, sleep, syslog
// and so on (system_calls.cpp) and asks the World of the calling thread: the thread that made it,
// and those that joined it. On any other thread every call goes to the system.
#pragma once

#include <termios.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "tests/support/conductor.h"

namespace test {

using Bytes = std::vector<uint8_t>;

Bytes hex(const std::string& text);  // "cf 20 00", white space ignored
std::string to_hex(std::span<const uint8_t>);

// What is at the other end of the serial line.
class FarEnd {
 public:
  virtual ~FarEnd() = default;
  virtual void receive(std::span<const uint8_t> bytes, Time now) = 0;
  virtual std::optional<Time> next_due() const = 0;  // when there is more to take
  virtual Bytes take(Time now) = 0;                  // one piece, empty when nothing is due
  virtual bool gone(Time) { return false; }          // the device is unplugged
  virtual int hang_ups() const { return 0; }         // how often, up to now
};

struct LogLine {
  int priority;
  std::string text;
};

// What the next calls on the port do instead of working: bytes to accept at the most, or an error.
struct Accept {
  size_t bytes;
};
struct Fail {
  int error;
};
struct PortCall {
  std::optional<size_t> at_most;
  int error = 0;
  PortCall(Accept accept) : at_most(accept.bytes) {}
  PortCall(Fail fail) : error(fail.error) {}
};

class World {
  Time now_{0};

 public:
  World();
  ~World();
  static World* current();  // of this thread
  void join();              // makes this World that of the calling thread as well

  // ---- for the tests ----
  FarEnd* far_end = nullptr;
  std::vector<LogLine> log;
  bool keeps_log = true;
  bool keeps_history = true;  // sleeps, what was written
  std::vector<Time> sleeps;
  std::function<void(Time)> on_sleep;            // runs inside each sleep
  int polls_made = 0;                            // on the port
  size_t takes = SIZE_MAX;                       // bytes that the line still takes
  std::map<std::string, std::string> files;      // path -> the real file behind it
  std::map<std::string, int> missing;            // path -> errno of an attempt to open it
  std::deque<PortCall> writes, reads, polls;     // upcoming calls on the port that misbehave
  std::time_t wall_clock_start = 1'280'000'000;  // 24 July 2010
  termios line_settings{};                       // of the device, as last applied
  std::optional<unsigned> alarm;                 // seconds that alarm() was last called with
  std::array<std::string, 2> ppp0_addresses;     // local and peer
  int ppp0_error = ENODEV;                       // of asking for them, 0 none
  int socket_error = 0;
  int clock_error = 0;  // errno of clock_gettime
  int opens = 0;
  int flushes = 0;
  Bytes written;  // all that went out on the port

  // Threads really run beside each other, and their sleeps only pass the time. For races: the order
  // differs from run to run.
  bool runs_free = false;
  int thread_error = 0;     // of pthread_create
  int malloc_failures = 0;  // calls that are to fail
  std::atomic<int> threads_made = 0;
  Time now() const { return now_; }
  void advance(Time by);  // other threads do what is due meanwhile
  bool port_is_open() const { return !ports_.empty(); }
  std::string log_text() const;   // all lines, one a line
  std::string log_lines() const;  // the same, with the place in the source cut off "D" lines

  // ---- for system_calls.cpp and threads.cpp ----
  std::recursive_mutex mutex;  // while it runs free
  bool is_port(int fd) const { return ports_.count(fd) != 0; }
  int open_port();
  void close_port(int fd);
  void flush_port();
  ssize_t write_port(const uint8_t* bytes, size_t size);
  ssize_t read_port(uint8_t* bytes, size_t size);
  int wait_for_port(short events, Time limit);  // as poll
  void pass(Time time);                         // a sleep
  void sleep_free(Time time);                   // the same in a World that runs free
  void sleep_free_until(Time end);
  static constexpr Time MONOTONIC_START = std::chrono::seconds(1000);
  Conductor conductor{now_};

 private:
  void let_pass(Time by);
  bool is_dead();        // the device has gone since the port was opened
  bool fetch();          // takes what the far end has to say by now; true when there is input
  std::set<int> ports_;  // its open descriptors
  int hang_ups_at_open_ = 0;
  std::deque<uint8_t> input_;
};

}  // namespace test
