// Feeds arbitrary requests to the simulated modem. The first byte selects its first mode; then each
// request is a little-endian length of two bytes and its bytes, sent as a good frame or, when
// bit 15 of the length is set, as they are. The device comes back from every restart.
#include "fuzz/fuzz.h"
#include "simulator/modem.h"

using namespace std::chrono_literals;

enum { RAW = 0x80 };  // in the upper byte of a length

static sim::Scenario scenario_of(uint8_t first) {
  static const char* const STARTS[] = {"", "[device]\ncrashed = true",
                                       "[sim]\nlock = \"pin-wanted\""};
  return sim::parse_scenario(STARTS[first % std::size(STARTS)], "start");
}

static void run_until(sim::Modem& modem, sim::Time now) {
  while (modem.take_output(now)) {
  }
}

void fuzz(std::span<const uint8_t> input) {
  if (input.empty()) return;
  sim::Modem modem(scenario_of(take(input, 1)[0]));
  sim::Time now{0};
  while (input.size() >= 2) {
    sim::Bytes length = take(input, 2);
    sim::Bytes bytes = take(input, length[0] | (length[1] & 0x7Fu) << 8);
    modem.receive((length[1] & RAW) != 0 ? bytes : sim::frame(bytes), now);
    run_until(modem, now += 100ms);
  }
  run_until(modem, now + 1h);
  require(!modem.is_gone());
}
