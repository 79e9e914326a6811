// Feeds arbitrary answers to every command in turn: as the payload of a good frame, to get past the
// check sequence, and as they are. The first byte selects the command.
#include <cstring>
#include <memory>

#include "fuzz/fuzz.h"
#include "include/zop.h"
#include "link/serial_port.h"
#include "tests/commands/every_command.h"
#include "tests/support/far_ends.h"

using namespace test;

static void run(const Command& command, const Bytes& wire) {
  World world;
  Script modem;
  world.far_end = &modem;
  for (int i = 0; i < 8; ++i) modem.answers.push_back({{wire}});
  diag_open("/dev/tts/USB1");
  auto out = std::make_unique<Outputs>();
  out->clear();
  command.run(*out);
  diag_close();
  require(SIO_USED_LOCK == 0);  // no claim is left
}

void fuzz(std::span<const uint8_t> input) {
  if (input.empty() || input.size() > 1024) return;
  const auto& commands = every_command();
  const Command& command = commands[input[0] % commands.size()];
  Bytes payload(input.begin() + 1, input.end());
  run(command, frame(payload));
  payload.push_back(0x7E);
  run(command, payload);
}
