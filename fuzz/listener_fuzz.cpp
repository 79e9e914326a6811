// Feeds arbitrary answers to the event listener: flags, event records and screens. The first byte
// is the time-out of a call that the listener ends, or 0. Each answer is a count, in units of two,
// and its bytes; they follow the header that the request expects or, when the count is odd, are the
// whole payload. The listener's function runs on the fuzzer's own thread.
#include "fuzz/fuzzed_modem.h"
#include "include/vurn.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"
#include "link/event_listener.h"
#include "tests/support/fresh_link.h"

using namespace test;

enum { SCALE = 2 };  // enough for a whole screen
enum { TICKS = 6 };  // in which it requests two screens

static Bytes next_answer(std::span<const uint8_t>& rest, std::span<const uint8_t> request) {
  uint8_t count = rest.empty() ? 0 : take(rest, 1)[0];
  Bytes answer = take(rest, count * SCALE);
  if ((count & 1) == 0) answer.insert(answer.begin(), {request[0], request[1], 0, 0, 0});
  return frame(answer);
}

// Started once: each start allocates buffers for good.
static std::function<void*()> started_listener() {
  World world;
  world.holds_threads = true;
  zop_debug_start(1);
  zop_debug_stop();
  vurn_set_log_mask(VURN_LOG_EVENTS);
  return world.held_thread;
}

void fuzz(std::span<const uint8_t> input) {
  static const std::function<void*()> LISTEN = started_listener();
  if (input.empty()) return;
  FuzzedModem modem([&](auto request) { return next_answer(input, request); });
  World world;
  world.keeps_history = false;
  world.far_end = &modem;
  int ticks = 0;
  world.on_timed_wait = [&] {
    bool ends = ++ticks > TICKS || input.empty() || diag_status() == 0;
    if (ends) THREAD_STATUS = LISTENER_STOPPED;
  };
  gDiagInfo = {};
  fresh_link();
  diag_open("/dev/tts/USB1");
  zop_debug_end_callback_status = 0;
  THREAD_STATUS = LISTENER_RUNNING;
  if (uint8_t timeout_s = take(input, 1)[0]) time_call_by_listener(timeout_s);
  LISTEN();
  diag_close();
  require(SIO_USED_LOCK == 0);
}
