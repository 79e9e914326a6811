// The module's environment in a test: virtual time, a serial port in memory, a recorded syslog,
// redirected files.
//
// The module under test is unchanged. The test program defines open, poll, sleep, syslog and so on
// (system_calls.cpp), which use the calling thread's World. A World belongs to the thread that
// created it and to those that joined it; calls of other threads go to the system.
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
#include "tests/support/words.h"

namespace test {

class FarEnd {
 public:
  virtual ~FarEnd() = default;
  virtual void receive(std::span<const uint8_t> bytes, Time now) = 0;
  virtual std::optional<Time> next_due() const = 0;  // when the next piece is due
  virtual Bytes take(Time now) = 0;                  // one piece, or empty if none is due
  virtual bool gone(Time) { return false; }          // the device is unplugged
  virtual int hang_ups() const { return 0; }         // number so far
};

struct LogLine {
  int priority;
  std::string text;
};

// A planned misbehaviour of a call on the port: transfer at most this many bytes, or fail.
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
  static World* current();  // of the calling thread; may be null
  void join();              // makes this the calling thread's World too

  // ---- for the tests ----
  FarEnd* far_end = nullptr;
  std::vector<LogLine> log;
  bool keeps_log = true;
  bool keeps_history = true;  // of sleeps and written bytes
  std::vector<Time> sleeps;
  std::function<void(Time)> on_sleep;            // runs at the end of each sleep
  int polls_made = 0;                            // on the port
  size_t write_room = SIZE_MAX;                  // bytes that the line still accepts
  std::map<std::string, std::string> files;      // path -> file to open instead
  std::map<std::string, int> missing;            // path -> errno of opening it
  std::deque<PortCall> writes, reads, polls;     // misbehaviour of the next calls on the port
  std::deque<PortCall> file_calls;               // the same of pread and pwrite
  std::time_t wall_clock_start = 1'280'000'000;  // 24 July 2010
  termios line_settings{};                       // of the device, as last applied
  std::optional<unsigned> alarm;                 // argument of the last alarm() call, in s
  std::array<std::string, 2> ppp0_addresses;     // local and peer
  int ppp0_error = ENODEV;                       // errno of the query; 0: success
  int socket_error = 0;
  int clock_error = 0;  // errno of clock_gettime
  int opens = 0;
  int flushes = 0;
  Bytes written;  // to the port

  // Threads run in parallel, and sleeps only advance the clock. For finding races: the order
  // differs from run to run.
  bool runs_free = false;
  // A thread that is created does not start: the test calls its function itself, and ends it from
  // one of its timed waits.
  bool holds_threads = false;
  std::function<void*()> held_thread;
  std::function<void()> on_timed_wait;
  int thread_error = 0;     // result of pthread_create
  int malloc_failures = 0;  // number of next calls that fail
  std::atomic<int> threads_made = 0;
  Time now() const { return now_; }
  void advance(Time by);  // other threads run as they become due
  bool port_is_open() const { return !ports_.empty(); }
  std::string log_text() const;
  std::string log_lines() const;  // the same, without the source location of "D" lines

  // ---- for system_calls.cpp and threads.cpp ----
  std::recursive_mutex mutex;  // used only while it runs free
  bool is_port(int fd) const { return ports_.count(fd) != 0; }
  int open_port();
  void close_port(int fd);
  void flush_port();
  ssize_t write_port(const uint8_t* bytes, size_t size);
  ssize_t read_port(uint8_t* bytes, size_t size);
  int wait_for_port(short events, Time limit);  // like poll
  void pass(Time time);                         // a sleep
  void sleep_free(Time time);                   // a sleep in a World that runs free
  void sleep_free_until(Time end);
  static constexpr Time MONOTONIC_START = std::chrono::seconds(1000);
  Conductor conductor{now_};

 private:
  void let_pass(Time by);
  bool is_dead();        // gone or hung up since the port was opened
  bool fetch();          // takes a piece that is due; true if there is input
  std::set<int> ports_;  // the port's open descriptors
  int hang_ups_at_open_ = 0;
  Bytes input_;
};

}  // namespace test
