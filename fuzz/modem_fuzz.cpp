// Feeds arbitrary requests to the simulated modem. The first byte selects its first mode; then each
// request is a little-endian length of two bytes and its bytes, sent as a good frame or, when
// bit 15 of the length is set, as they are. The device comes back from every restart.
#include "fuzz/fuzz.h"
#include "simulator/modem.h"

using namespace std::chrono_literals;

enum { RAW = 0x80, MOST_REQUESTS = 8 };  // RAW: in the upper byte of a length

static void run_until(sim::Modem& modem, sim::Time now) {
  while (modem.take_output(now)) {
  }
}

void fuzz(std::span<const uint8_t> input) {
  static const sim::Scenario STARTS[] = {
      {},
      sim::parse_scenario("[device]\ncrashed = true", "start"),
      sim::parse_scenario("[sim]\nlock = \"pin-wanted\"", "start"),
  };
  if (input.empty()) return;
  sim::Modem modem(STARTS[take(input, 1)[0] % std::size(STARTS)]);
  sim::Time now{0};
  for (int i = 0; i < MOST_REQUESTS && input.size() >= 2; ++i) {
    sim::Bytes length = take(input, 2);
    sim::Bytes bytes = take(input, length[0] | (length[1] & 0x7Fu) << 8);
    modem.receive((length[1] & RAW) != 0 ? bytes : sim::frame(bytes), now);
    run_until(modem, now += 100ms);
  }
  run_until(modem, now + 1h);
  require(!modem.is_gone());
}
