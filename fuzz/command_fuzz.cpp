// Feeds arbitrary answers to every command in turn: as the payload of a good frame, to get past the
// check sequence, and as they are. The first byte selects the command.
#include <cstdlib>
#include <cstring>
#include <memory>

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
  out->size = sizeof out->bytes;
  command.run(*out);
  diag_close();
  if (SIO_USED_LOCK != 0) abort();  // a claim that nobody releases
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  return freopen("/dev/null", "w", stdout) == nullptr;  // zop_get_bars prints
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1 || size > 1024) return 0;
  const auto& commands = every_command();
  const Command& command = commands[data[0] % commands.size()];
  Bytes payload(data + 1, data + size);
  run(command, frame(payload));
  payload.push_back(0x7E);
  run(command, payload);
  return 0;
}
