// Feeds arbitrary answers to the event listener: flags, event records and screens, which the
// report then shows. Each answer is a count, in units of two, and its bytes; they follow the header
// that the request expects or, when the count is odd, are the whole payload.
#include <memory>

#include "fuzz/fuzz.h"
#include "include/vurn.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"
#include "link/serial_port.h"
#include "tests/support/far_ends.h"

using namespace std::chrono_literals;
using namespace test;

enum { SCALE = 2 };  // enough for a whole screen

static Bytes next_answer(std::span<const uint8_t>& rest, const Bytes& request) {
  uint8_t count = take(rest, 1)[0];
  Bytes answer = take(rest, count * SCALE);
  if ((count & 1) != 0) return answer;
  Bytes payload = {request[0], request[1], 0, 0, 0};
  payload.insert(payload.end(), answer.begin(), answer.end());
  return payload;
}

void fuzz(std::span<const uint8_t> input) {
  World world;
  AnsweringModem modem{[&](const Bytes& request) -> std::optional<Bytes> {
    if (input.empty() || request.size() < 2) return std::nullopt;
    return next_answer(input, request);
  }};
  world.far_end = &modem;
  gDiagInfo = {};
  vurn_set_log_mask(VURN_LOG_EVENTS);
  if (zop_open("/dev/tts/USB1") == ZOP_SUCCESS && zop_debug_start(1) == ZOP_SUCCESS) {
    for (int tick = 0; tick < 100 && !input.empty(); ++tick) world.advance(500ms);
    zop_debug_stop();
  }
  zop_close();
  require(SIO_USED_LOCK == 0);
}
