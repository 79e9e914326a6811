// Resets the module to its state at process start: closed, no threads, no posted event.
#pragma once

#include "core/module_state.h"
#include "include/vurn.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"
#include "link/event_listener.h"
#include "module/lifecycle.h"
#include "report/deferred_action.h"
#include "tests/support/fresh_link.h"
#include "tests/support/world.h"

namespace test {

// The deferred-action thread's slot may still hold an event of the previous test.
inline void take_leftover_event(World& world) {
  prv_start_deferred_action_thread();
  world.advance(std::chrono::milliseconds(1));
  prv_stop_deferred_action_thread();
  prv_join_deferred_action_thread();
}

inline void fresh_module(World& world) {
  gDiagInfo = {};
  gModuleOpen = false;
  gDeferredThreadCreated = false;
  fresh_link();
  THREAD_STATUS = 0;
  sTestNum = -1;
  zop_debug_end_callback_status = 0;
  take_leftover_event(world);
}

inline void close_module() {
  vurn_close(1);
  prv_stop_deferred_action_thread();  // vurn_close may have found the module closed
  prv_join_deferred_action_thread();
  zop_debug_stop();
}

}  // namespace test
