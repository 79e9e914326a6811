// Feeds an arbitrary answer to one of the commands. The first byte selects the command, the second
// whether the answer is the payload of a good frame, to get past the check sequence, or comes as it
// is.
#include "fuzz/fuzzed_modem.h"
#include "include/zop.h"
#include "tests/commands/every_command.h"
#include "tests/support/fresh_link.h"

using namespace test;

static Bytes wire_of(bool framed, std::span<const uint8_t> answer) {
  if (framed) return frame(answer);
  Bytes wire(answer.begin(), answer.end());
  wire.push_back(0x7E);
  return wire;
}

void fuzz(std::span<const uint8_t> input) {
  if (input.size() < 2) return;
  const auto& commands = every_command();
  const Command& command = commands[input[0] % commands.size()];
  Bytes answer = wire_of(input[1] % 2 == 0, input.subspan(2));
  FuzzedModem modem([&](auto) { return answer; });
  World world;
  world.keeps_history = false;
  world.far_end = &modem;
  fresh_link();
  diag_open("/dev/tts/USB1");
  auto out = std::make_unique<Outputs>();  // a sanitizer detects every access outside
  out->clear();
  command.run(*out);
  diag_close();
  require(SIO_USED_LOCK == 0);  // no claim is left
}
