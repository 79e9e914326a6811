// The event slot, the thread and its actions.
//
// The thread is stopped by a flag, which it checks while it waits and before it switches field
// testing on: it ends without holding a lock and never in the middle of an action.
#define LOG_SOURCE "zop_module"

#include "report/deferred_action.h"

#include <pthread.h>
#include <time.h>

#include "core/log.h"
#include "core/module_state.h"
#include "link/event_listener.h"
#include "report/field_test.h"

// The slot; under gDeferredMutex. No other lock is taken while this one is held.
static constinit pthread_mutex_t gDeferredMutex = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t gDeferredCond = PTHREAD_COND_INITIALIZER;
static constinit int gDeferredEvent = DEFERRED_NONE;
static constinit bool gDeferredStop = false;

static pthread_t gDeferredThread;
static constinit bool gDeferredRuns = false;  // not yet joined; under gDeferredMutex

// Used by the thread only.
static constinit int32_t gFtdOutputCount = 0;  // screens since the request
static constinit int32_t gLogStringTime = 0;   // monotonic seconds

void prv_deferred_action_event(int event) {
  ScopedLock lock(gDeferredMutex);
  if (gDeferredEvent == DEFERRED_TURNED_OFF_FIELD_TESTING) {
    // The thread must not miss that field testing is off, so events are lost until it has seen it.
    LOG_D(VURN_LOG_ACTION_EVENTS, "D zop:pending turned_off_field_testing action - ignoring %s",
          prv_deferred_event_name(event));
  } else {
    gDeferredEvent = event;
    LOG_D(VURN_LOG_ACTION_EVENTS, "D zop:new action event: %s", prv_deferred_event_name(event));
  }
  pthread_cond_signal(&gDeferredCond);
}

void prv_discard_switch_off() {
  ScopedLock lock(gDeferredMutex);
  if (gDeferredEvent == DEFERRED_TURNED_OFF_FIELD_TESTING) gDeferredEvent = DEFERRED_NONE;
}

// False if the thread must end.
static bool prv_take_event(DeferredEvent* event) {
  ScopedLock lock(gDeferredMutex);
  while (gDeferredEvent == DEFERRED_NONE && !gDeferredStop) {
    LOG_D(VURN_LOG_GENERAL, "D zop:waiting for deferred action signal");
    pthread_cond_wait(&gDeferredCond, &gDeferredMutex);
  }
  if (gDeferredStop) return false;
  *event = static_cast<DeferredEvent>(gDeferredEvent);
  gDeferredEvent = DEFERRED_NONE;
  return true;
}

static void prv_perform(DeferredAction action) {
  switch (action) {
    case ACTION_NONE:
      return;
    case ACTION_COUNT_0:
      gFtdOutputCount = 0;
      return;
    case ACTION_COUNT_UP:
      ++gFtdOutputCount;
      return;
    case ACTION_FT_ON:
      return prv_set_field_testing(true, true);
    case ACTION_FT_OFF:
      return prv_set_field_testing(false, true);
    case ACTION_OUTPUT:
      return prv_output_field_test_data_to_syslog();
    case ACTION_LOG_DONE:
      LOG_D(VURN_LOG_GENERAL, "D zop:done outputting to syslog");
      return;
    case ACTION_SNAPSHOT:
      gFtdSnapshotFlag = 1;
      return;
    case ACTION_NO_SNAPSHOT:
      gFtdSnapshotFlag = 0;
      return;
    case ACTION_NOTE_TIME:
      gLogStringTime = prv_get_monotonic_seconds();
      return;
  }
}

static DeferredState prv_step(DeferredState state, DeferredEvent event) {
  int32_t elapsed = prv_seconds_between(gLogStringTime, prv_get_monotonic_seconds());
  DeferredPlan plan = prv_deferred_plan(state, event, {gFtdOutputCount, elapsed});
  for (DeferredAction action : plan.actions) prv_perform(action);
  return plan.next;
}

static void* prv_deferred_action_func(void*) {
  LOG_ENTER();
  DeferredState state = STATE_IDLE;
  DeferredEvent event;
  while (prv_take_event(&event)) {
    DeferredState before = state;
    state = prv_step(before, event);
    LOG_D(VURN_LOG_GENERAL, "D zop:DA state oldState=%s newState=%s event=%s",
          prv_deferred_state_name(before), prv_deferred_state_name(state),
          prv_deferred_event_name(event));
  }
  return nullptr;
}

int prv_start_deferred_action_thread() {
  {
    ScopedLock lock(gDeferredMutex);
    gDeferredStop = false;
  }
  int error = create_module_thread(&gDeferredThread, prv_deferred_action_func, nullptr);
  ScopedLock lock(gDeferredMutex);
  gDeferredRuns = error == 0;
  return error;
}

void prv_stop_deferred_action_thread() {
  ScopedLock lock(gDeferredMutex);
  gDeferredStop = true;
  pthread_cond_signal(&gDeferredCond);
}

bool prv_is_deferred_action_thread_stopped() {
  ScopedLock lock(gDeferredMutex);
  return gDeferredStop;
}

// True for the one caller that must join the thread. Under gDeferredMutex.
static bool prv_take_thread() {
  bool runs = gDeferredRuns;
  gDeferredRuns = false;
  return runs;
}

void prv_join_deferred_action_thread() {
  bool joins;
  {
    ScopedLock lock(gDeferredMutex);
    joins = prv_take_thread();
  }
  if (joins) pthread_join(gDeferredThread, nullptr);
}

void prv_stop_deferred_action_thread_until(const timespec& end) {
  if (pthread_mutex_timedlock(&gDeferredMutex, &end) != 0) return;
  gDeferredStop = true;
  pthread_cond_signal(&gDeferredCond);
  bool joins = prv_take_thread();
  pthread_mutex_unlock(&gDeferredMutex);
  if (joins) pthread_timedjoin_np(gDeferredThread, nullptr, &end);
}
