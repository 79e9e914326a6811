// What a host waits for: vurn_open and one poll of the bars with the simulated modem, compared with
// the same requests written and read raw on the same terminal. Also whole runs of zopctl.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/select.h>
#include <unistd.h>

#include "bench/answering_modem.h"
#include "bench/run_program.h"
#include "include/vurn.h"

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

static void run_raw(benchmark::State& state, const AnsweringModem& modem,
                    const std::vector<std::vector<uint8_t>>& requests) {
  for (auto _ : state) {
    int fd = open(modem.device().c_str(), O_RDWR | O_NOCTTY);
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
  run_raw(state, modem, modem.take_requests());
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
  run_raw(state, modem, requests);
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
