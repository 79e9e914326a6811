// What a host waits for: vurn_open and one poll of the bars with the simulated modem, compared with
// the same requests written and read raw on the same terminal. Also whole runs of zopctl.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdarg.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>

#include "bench/answering_terminal.h"
#include "bench/run_program.h"
#include "include/vurn.h"
#include "simulator/modem.h"

static std::string module_device;  // opened by the module as its device

// The module's open: the linker finds this one first.
extern "C" int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  if (strcmp(path, "/dev/tts/USB1") == 0) path = module_device.c_str();
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

namespace {
// A simulated modem that answers at once and records its requests.
class AnsweringModem {
 public:
  AnsweringModem() : terminal_([this](std::span<const uint8_t> frame) { return answer(frame); }) {
    module_device = terminal_.path;
  }
  // The frames since the last call.
  std::vector<std::vector<uint8_t>> take_requests() { return std::exchange(requests_, {}); }

 private:
  std::span<const uint8_t> answer(std::span<const uint8_t> frame) {
    requests_.emplace_back(frame.begin(), frame.end());
    now_ += std::chrono::seconds(1);
    modem_.receive({frame.data(), frame.size()}, now_);
    answer_.clear();
    while (auto output = modem_.take_output(now_ + std::chrono::milliseconds(900))) {
      answer_.insert(answer_.end(), output->bytes.begin(), output->bytes.end());
    }
    return answer_;
  }
  sim::Modem modem_{sim::Scenario{}};
  sim::Time now_{0};
  std::vector<uint8_t> answer_;
  std::vector<std::vector<uint8_t>> requests_;
  AnsweringTerminal terminal_;  // the last: its thread uses the others
};
}  // namespace

static bool exchange(int fd, const std::vector<uint8_t>& request) {
  uint8_t buffer[4096];
  if (write(fd, request.data(), request.size()) < 0) return false;
  fd_set input;
  FD_ZERO(&input);
  FD_SET(fd, &input);
  timeval limit = {5, 0};
  return select(fd + 1, &input, nullptr, nullptr, &limit) == 1 &&
         read(fd, buffer, sizeof buffer) > 0;
}

static void run_raw(benchmark::State& state, const std::vector<std::vector<uint8_t>>& requests) {
  for (auto _ : state) {
    int fd = open(module_device.c_str(), O_RDWR | O_NOCTTY);
    for (const auto& request : requests) {
      if (!exchange(fd, request)) state.SkipWithError("no answer");
    }
    close(fd);
  }
  state.counters["exchanges"] = static_cast<double>(requests.size());
}

static void vurn_open_close(benchmark::State& state) {
  AnsweringModem modem;
  for (auto _ : state) {
    if (vurn_open() != VURN_OK) state.SkipWithError("not open");
    vurn_close(0);
  }
}

static void open_floor(benchmark::State& state) {
  AnsweringModem modem;
  vurn_open();
  vurn_close(0);
  run_raw(state, modem.take_requests());
}

static void bars(benchmark::State& state) {
  AnsweringModem modem;
  vurn_open();
  for (auto _ : state) {
    int bars = 0;
    if (vurn_get_bars(&bars) != VURN_OK) state.SkipWithError("no bars");
  }
  vurn_close(0);
}

static void bars_floor(benchmark::State& state) {
  AnsweringModem modem;
  vurn_open();
  modem.take_requests();
  int bars = 0;
  vurn_get_bars(&bars);
  auto requests = modem.take_requests();
  vurn_close(0);
  run_raw(state, requests);
}

// ---- programs ----

static void run(benchmark::State& state, const std::vector<std::string>& words) {
  for (auto _ : state) {
    if (run_program(words) < 0) state.SkipWithError("the program failed");
  }
}
static void zopctl_help(benchmark::State& state) { run(state, {ZOPCTL, "--help"}); }
static void zopctl_status(benchmark::State& state) { run(state, {ZOPCTL, "--sim", "status"}); }
static void empty_program(benchmark::State& state) { run(state, {"true"}); }

BENCHMARK(vurn_open_close)->UseRealTime();
BENCHMARK(open_floor)->UseRealTime();
BENCHMARK(bars)->UseRealTime();
BENCHMARK(bars_floor)->UseRealTime();
BENCHMARK(zopctl_help)->UseRealTime();
BENCHMARK(zopctl_status)->UseRealTime();
BENCHMARK(empty_program)->UseRealTime();
