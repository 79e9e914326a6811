// Reads arbitrary files as scenarios: each is refused with file and line, or gives a modem that
// answers with the faults it asks for and whose time line runs to its end.
#include "fuzz/fuzz.h"
#include "simulator/modem.h"

static const sim::Bytes REQUESTS[] = {{0xCF, 0x20, 0}, {0xCF, 0x34, 0}, {0x00}, {0x7C}};

void fuzz(std::span<const uint8_t> input) {
  try {
    sim::Modem modem(sim::parse_scenario(text_of(input), "fuzz"));
    for (const sim::Bytes& request : REQUESTS) modem.receive(sim::frame(request), sim::Time{0});
    sim::Time now{0};
    while (auto due = modem.next_due()) {
      require(*due >= now);
      now = *due;
      modem.take_output(now);
    }
  } catch (const sim::ScenarioError& error) {
    require(std::string(error.what()).starts_with("fuzz:"));
  }
}
