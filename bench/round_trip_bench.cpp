// One zop_get_rssi over a pseudo-terminal beside a raw write, select, read of the same bytes on the
// same terminal. The modem's end is a thread that answers each frame with a fixed one.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <thread>

#include "bench/allocations.h"
#include "include/zop.h"
#include "link/frame_codec.h"
#include "link/serial_port.h"

static const uint8_t REQUEST[] = {0xCF, 0x20, 0x00, 0xA2, 0xA5, 0x7E};
static const uint8_t ANSWER_PAYLOAD[] = {0xCF, 0x20, 0x00, 0x00, 0x00, 0xB5, 0xFF};

// A pseudo-terminal whose far end answers, for as long as it lives.
class AnsweringTerminal {
 public:
  AnsweringTerminal() {
    master_ = posix_openpt(O_RDWR | O_NOCTTY);
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) {
      throw std::runtime_error("no pseudo-terminal");
    }
    termios raw;
    tcgetattr(master_, &raw);
    cfmakeraw(&raw);
    tcsetattr(master_, TCSANOW, &raw);
    path = ptsname(master_);
    held_open_ = open(path.c_str(), O_RDWR | O_NOCTTY);
    answer_size_ = encode_frame(answer_, ANSWER_PAYLOAD, sizeof ANSWER_PAYLOAD, false);
    thread_ = std::thread([this] { answer(); });
  }
  ~AnsweringTerminal() {
    stop_ = true;
    thread_.join();
    close(held_open_);
    close(master_);
  }
  std::string path;

 private:
  void answer() {
    uint8_t buffer[512];
    while (!stop_) {
      pollfd input = {master_, POLLIN, 0};
      if (poll(&input, 1, 10) <= 0) continue;
      ssize_t size = read(master_, buffer, sizeof buffer);
      if (size > 0 && buffer[size - 1] == 0x7E) {
        if (write(master_, answer_, answer_size_) < 0) return;
      }
    }
  }
  int master_;
  int held_open_;
  uint8_t answer_[32];
  size_t answer_size_;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

static void raw_ping_pong(benchmark::State& state) {
  AnsweringTerminal terminal;
  diag_open(terminal.path.c_str());
  int fd = SER_SIG;
  uint8_t buffer[360];
  for (auto _ : state) {
    if (write(fd, REQUEST, sizeof REQUEST) < 0) state.SkipWithError("write");
    fd_set input;
    FD_ZERO(&input);
    FD_SET(fd, &input);
    timeval limit = {5, 0};
    if (select(fd + 1, &input, nullptr, nullptr, &limit) != 1) state.SkipWithError("select");
    if (read(fd, buffer, sizeof buffer) <= 0) state.SkipWithError("read");
  }
  diag_close();
}

static void get_rssi(benchmark::State& state) {
  AnsweringTerminal terminal;
  diag_open(terminal.path.c_str());
  long before = allocation_count;
  for (auto _ : state) {
    int32_t rssi;
    if (zop_get_rssi(&rssi) != ZOP_SUCCESS) state.SkipWithError("no rssi");
  }
  state.counters["allocations"] = static_cast<double>(allocation_count - before);
  diag_close();
}

BENCHMARK(raw_ping_pong)->UseRealTime();
BENCHMARK(get_rssi)->UseRealTime();
