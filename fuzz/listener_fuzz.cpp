// Feeds arbitrary answers to the event listener: flags, event records and screens, which the
// report then shows. Each answer is a count, in units of two, and its bytes; they follow the header
// that the request expects or, when the count is odd, are the whole payload.
#include <cstdlib>
#include <memory>

#include "include/vurn.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"
#include "link/serial_port.h"
#include "tests/support/far_ends.h"

using namespace std::chrono_literals;
using namespace test;

enum { SCALE = 2 };  // enough for a whole screen

static Bytes next_answer(std::span<const uint8_t>& rest, const Bytes& request) {
  size_t size = std::min<size_t>(rest[0] * SCALE, rest.size() - 1);
  bool bare = (rest[0] & 1) != 0;
  Bytes answer(rest.begin() + 1, rest.begin() + 1 + static_cast<ptrdiff_t>(size));
  rest = rest.subspan(1 + size);
  if (bare) return answer;
  Bytes payload = {request[0], request[1], 0, 0, 0};
  payload.insert(payload.end(), answer.begin(), answer.end());
  return payload;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::span<const uint8_t> rest(data, size);
  World world;
  AnsweringModem modem{[&](const Bytes& request) -> std::optional<Bytes> {
    if (rest.empty() || request.size() < 2) return std::nullopt;
    return next_answer(rest, request);
  }};
  world.far_end = &modem;
  gDiagInfo = {};
  vurn_set_log_mask(VURN_LOG_EVENTS);
  if (zop_open("/dev/tts/USB1") == ZOP_SUCCESS && zop_debug_start(1) == ZOP_SUCCESS) {
    for (int tick = 0; tick < 100 && !rest.empty(); ++tick) world.advance(500ms);
    zop_debug_stop();
  }
  zop_close();
  if (SIO_USED_LOCK != 0) abort();
  return 0;
}
