// Field testing. While it is on, the listener delivers a screen every 1.5 s.
#define LOG_SOURCE "zop_module"

#include "report/field_test.h"

#include <string.h>
#include <time.h>

#include "core/log.h"
#include "core/module_state.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"
#include "link/upcalls.h"
#include "report/deferred_action.h"
#include "report/rendering.h"

constinit pthread_mutex_t gFtdMutex = PTHREAD_MUTEX_INITIALIZER;
constinit std::atomic<uint32_t> gExceptionCode = 0;
constinit std::atomic<const char*> gExceptionName = nullptr;
constinit uint8_t gFtdSnapshotFlag = 0;

enum { EVENT_POLLS = 1 };                          // one less than between two screens
enum { ALREADY_RUNS = ZOP_ERR_INVALID_ARGUMENT };  // of zop_debug_start

// Does not start a listener while the module is closed.
static unsigned prv_start_debugging() {
  return gModuleOpen ? zop_debug_start(EVENT_POLLS) : unsigned{ZOP_ERR_NOT_OPEN};
}

// A close that ends the deferred-action thread has switched field testing off, so the thread does
// not switch it on again. If the listener can't be started, field testing is off and the thread is
// notified; a listener that is already running counts as started.
void prv_set_field_testing(bool on, bool lockModule) {
  bool start_failed = false;
  if (lockModule) pthread_mutex_lock(&gModuleMutex);
  if (!on) {
    LOG_D(VURN_LOG_GENERAL, "D zop:turning off field testing");
    int status = static_cast<int>(zop_debug_stop());
    if (status != 0) LOG_E("E zop:stopdeb:status=%d:can't stop debugging", status);
    if (status == 0) LOG_D(VURN_LOG_GENERAL, "D zop:turned off field testing");
  } else if (!prv_is_deferred_action_thread_stopped()) {
    LOG_D(VURN_LOG_GENERAL, "D zop:turning on field testing");
    int status = static_cast<int>(prv_start_debugging());
    if (status != 0) LOG_E("E zop:startdeb:status=%d:can't start debugging", status);
    if (status == 0) LOG_D(VURN_LOG_GENERAL, "D zop:turned on field testing");
    start_failed = status != ZOP_SUCCESS && status != ALREADY_RUNS;
    if (!start_failed) prv_discard_switch_off();
  }
  // Posted before another thread can take the lock and post an event, which this one would replace.
  if (start_failed) prv_deferred_action_event(DEFERRED_TURNED_OFF_FIELD_TESTING);
  if (lockModule) pthread_mutex_unlock(&gModuleMutex);
  if (!on) prv_deferred_action_event(DEFERRED_TURNED_OFF_FIELD_TESTING);
}

void prv_output_field_test_data_to_syslog() {
  LOG_ENTER();
  {
    ScopedLock lock(gFtdMutex);
    prv_zop_output_to_syslog(gExceptionCode, gExceptionName, gFtdSnapshotFlag);
  }
  LOG_RETURN();
}

void field_information_callback(const void* screen) {
  LOG_D(VURN_LOG_FIELD_INFORMATION, "D zop:field information callback called");
  {
    ScopedLock lock(gFtdMutex);
    gDiagInfo.screen_time = static_cast<uint32_t>(time(nullptr));
    memcpy(&gDiagInfo.screen, screen, sizeof gDiagInfo.screen);
  }
  prv_deferred_action_event(DEFERRED_FIELD_TEST_DATA);
}
