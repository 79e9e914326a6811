// One zop_get_rssi over a pseudo-terminal, compared with a raw write, select, read of the same
// bytes on the same terminal. The modem's end is a thread that answers each frame with a fixed one.
#include <benchmark/benchmark.h>
#include <sys/select.h>
#include <unistd.h>

#include "bench/allocations.h"
#include "bench/answering_terminal.h"
#include "include/zop.h"
#include "link/frame_codec.h"
#include "link/serial_port.h"

static const uint8_t REQUEST[] = {0xCF, 0x20, 0x00, 0xA2, 0xA5, 0x7E};
static const uint8_t ANSWER_PAYLOAD[] = {0xCF, 0x20, 0x00, 0x00, 0x00, 0xB5, 0xFF};

// The same answer to everything.
static AnsweringTerminal::Answer fixed_answer() {
  return [](std::span<const uint8_t>) -> std::span<const uint8_t> {
    static uint8_t answer[32];
    static const uint32_t size = encode_frame(answer, ANSWER_PAYLOAD, sizeof ANSWER_PAYLOAD, false);
    return {answer, size};
  };
}

static void raw_ping_pong(benchmark::State& state) {
  AnsweringTerminal terminal(fixed_answer());
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
  AnsweringTerminal terminal(fixed_answer());
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
