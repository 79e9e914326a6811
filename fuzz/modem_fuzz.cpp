// Feeds arbitrary requests to the simulated modem. The first byte selects its first mode; then each
// request is a little-endian length of two bytes and its bytes, sent as a good frame or, when
// bit 15 of the length is set, as they are. The device comes back from every restart.
#include <cstdlib>

#include "simulator/modem.h"

using namespace std::chrono_literals;

enum { RAW = 0x80 };  // in the upper byte of a length

static void require(bool holds) {
  if (!holds) abort();
}

static sim::Scenario scenario_of(uint8_t first) {
  static const char* const STARTS[] = {"", "[device]\ncrashed = true",
                                       "[sim]\nlock = \"pin-wanted\""};
  return sim::parse_scenario(STARTS[first % std::size(STARTS)], "start");
}

static void run_until(sim::Modem& modem, sim::Time now) {
  while (modem.take_output(now)) {
  }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  sim::Modem modem(scenario_of(data[0]));
  sim::View rest(data + 1, size - 1);
  sim::Time now{0};
  while (rest.size() >= 2) {
    bool raw = (rest[1] & RAW) != 0;
    size_t length = std::min<size_t>(rest[0] | (rest[1] & 0x7Fu) << 8, rest.size() - 2);
    sim::Bytes bytes(rest.begin() + 2, rest.begin() + 2 + static_cast<ptrdiff_t>(length));
    rest = rest.subspan(2 + length);
    modem.receive(raw ? bytes : sim::frame(bytes), now);
    run_until(modem, now += 100ms);
  }
  run_until(modem, now + 1h);
  require(!modem.is_gone());
  return 0;
}
