// Opening and closing the module. An open that fails at any step leaves the module closed.
#define LOG_SOURCE "zop_module"

#include "module/lifecycle.h"

#include <string.h>
#include <time.h>
#include <unistd.h>

#include "core/bytes.h"
#include "core/log.h"
#include "core/module_state.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"
#include "link/event_listener.h"
#include "link/serial_port.h"
#include "module/stuck_detection.h"
#include "report/deferred_action.h"
#include "report/field_test.h"
#include "report/rendering.h"
#include "report/snapshot.h"
#include "report/wan_data.h"

enum { SIM_POLLS = 20 };
enum { UNLOAD_WAIT_S = 1 };

constinit bool gDeferredThreadCreated = false;

static void prv_close_link() {
  zop_close();
  gModuleOpen = false;
}

static bool prv_open_link() {
  if (unsigned error = zop_open(MODEM_DEVICE)) {
    LOG_E("E zop:openlib:status=%d:can't open zop library", static_cast<int>(error));
    return false;
  }
  LOG_D(VURN_LOG_GENERAL, "D zop:opened successfully");
  gModuleOpen = true;
  gRefetchPlmns = true;
  prv_zop_init_logging();
  prv_clear_stuck_detection();
  return true;
}

// A card that waits for its PIN does not become ready by itself.
static bool prv_sim_may_become_ready(uint32_t status, uint32_t lock_status) {
  return status == ZOP_SIM_NOT_READY ||
         (status == ZOP_SIM_NOT_INITIALISED && lock_status != ZOP_PIN_ENABLED);
}

static void prv_store_sim_state(uint32_t lock_status, uint32_t retries) {
  gDiagInfo.sim_status = ZOP_SIM_READY;
  gDiagInfo.lock_status = static_cast<int32_t>(lock_status);
  gDiagInfo.pin_retries = static_cast<int32_t>(retries);
}

static bool prv_wait_for_sim() {
  uint32_t status = 0;
  uint32_t lock_status = 0;
  uint32_t retries = 0;
  for (int poll = 1; poll <= SIM_POLLS; ++poll) {
    LOG_D(VURN_LOG_GENERAL, "D zop:getting SIM status");
    unsigned error = zop_simcard_status(&status, &lock_status, &retries);
    LOG_D(VURN_LOG_GENERAL, "D zop:SIM status=%d, lockStatus=%d retries=%d",
          static_cast<int>(status), static_cast<int>(lock_status), static_cast<int>(retries));
    if (error != ZOP_SUCCESS) {
      LOG_GET_ERROR("sim_status", error);
      return false;
    }
    if (status == ZOP_SIM_READY) {
      prv_store_sim_state(lock_status, retries);
      return true;
    }
    if (!prv_sim_may_become_ready(status, lock_status)) {
      LOG_E("E zop:simstat:status=%d:bad sim status", static_cast<int>(status));
      return false;
    }
    sleep(1);
  }
  // "tries" is the number of PIN retries, not of polls: readers of this line rely on it.
  LOG_E("E zop:simtries:tries=%d,status=%d:sim not ready after too many tries",
        static_cast<int>(retries), static_cast<int>(status));
  return false;
}

static void prv_read_versions() {
  uint32_t size = sizeof gDiagInfo.firmware;
  if (unsigned error = zop_get_firmware_version(text_bytes(gDiagInfo.firmware), &size)) {
    LOG_E("E zop:get:param=fwvers,error=%d,size=%d,avail=%d:can't get firmware version",
          static_cast<int>(error), static_cast<int>(size),
          static_cast<int>(sizeof gDiagInfo.firmware));
  }
  size = sizeof gDiagInfo.hardware;
  if (unsigned error = zop_get_hardware_version(text_bytes(gDiagInfo.hardware), &size)) {
    LOG_E("E zop:get:param=hwvers,error=%d,size=%d,avail=%d:can't get hardware version",
          static_cast<int>(error), static_cast<int>(size),
          static_cast<int>(sizeof gDiagInfo.hardware));
  }
  size = sizeof gDiagInfo.library;
  if (unsigned error = zop_get_tq2_version(text_bytes(gDiagInfo.library), &size)) {
    LOG_E("E zop:get:param=libvers,error=%d,size=%d,avail=%d:can't get library version",
          static_cast<int>(error), static_cast<int>(size),
          static_cast<int>(sizeof gDiagInfo.library));
  }
}

// Once per process: versions and uptime.
static void prv_log_versions() {
  time_t now = time(nullptr);
  prv_get_uptime();
  prv_read_versions();
  time_t up_since = now - static_cast<time_t>(gDiagInfo.awake_seconds) -
                    static_cast<time_t>(gDiagInfo.asleep_seconds);
  char text[32] = "";
  if (ctime_r(&up_since, text) != nullptr) text[strcspn(text, "\n")] = '\0';
  LOG_I("I zop:misc1:lib = %s, fw = %s, hw = %s, awake = %lu, asleep = %lu, upsince = %s:",
        gDiagInfo.library, gDiagInfo.firmware, gDiagInfo.hardware,
        static_cast<unsigned long>(gDiagInfo.awake_seconds),
        static_cast<unsigned long>(gDiagInfo.asleep_seconds), text);
}

// Once per process: a thread that vurn_close has joined is not restarted.
static bool prv_create_deferred_action_thread() {
  if (gDeferredThreadCreated) return true;
  if (int error = prv_start_deferred_action_thread()) {
    LOG_E("E zop:defthr:err=%i:can't create deferred action thread", error);
    return false;
  }
  gDeferredThreadCreated = true;
  return true;
}

static int prv_fail_open() {
  if (gModuleOpen) prv_close_link();
  return VURN_ERR_FAILED;
}

static int prv_open_module() {
  if (!prv_create_deferred_action_thread()) return prv_fail_open();
  if (gModuleOpen) {  // a second open closes the module
    prv_set_field_testing(false, false);
    prv_close_link();
    return VURN_ERR_REOPENED;
  }
  if (!prv_open_link() || !prv_wait_for_sim()) return prv_fail_open();
  prv_start_diagnostic_data_snapshot(false);
  if (gDiagInfo.hardware[0] == '\0') prv_log_versions();
  return VURN_OK;
}

int vurn_open() {
  LOG_ENTER();
  int result;
  {
    ScopedLock lock(gModuleMutex);
    result = prv_open_module();
  }
  LOG_RETURN();
  return result;
}

// Releases the lock, for which the thread may be waiting. It has been asked to end, so it changes
// nothing when it gets the lock.
static void prv_end_deferred_action_thread() {
  prv_stop_deferred_action_thread();
  pthread_mutex_unlock(&gModuleMutex);
  prv_join_deferred_action_thread();
  LOG_D(VURN_LOG_GENERAL, "D zop:joined deferred action thread");
  pthread_mutex_lock(&gModuleMutex);
}

int vurn_close(int join) {
  ScopedLock lock(gModuleMutex);
  if (!gModuleOpen) return VURN_OK;
  prv_set_field_testing(false, false);
  if (join != 0) prv_end_deferred_action_thread();
  prv_close_link();
  return VURN_OK;
}

// ---- unloading ----

// The host may unload the module or exit while the link is open or a thread is running: nothing may
// run in code that is no longer in memory. Every wait has a limit, because a host thread, even this
// one, may have been stopped while holding a lock. Closing the link ends the exchange in progress.
// The listener is stopped twice because the deferred-action thread may have started it again
// meanwhile.
__attribute__((destructor)) static void prv_unload() {
  if (prv_is_noted_process()) {
    timespec end = prv_wall_clock_in(UNLOAD_WAIT_S);
    diag_close();
    stop_listener_until(end);
    prv_stop_deferred_action_thread_until(end);
    stop_listener_until(end);
  }
  remove_alarm_handlers();
}

// ---- calls that need no modem ----

int vurn_get_module_flags(unsigned* flags) {
  *flags = 1;
  return VURN_OK;
}

void vurn_set_log_mask(unsigned mask) {
  __atomic_store_n(&gZOPModuleLogMask, mask, __ATOMIC_RELAXED);
}

int vurn_try_to_use_home_network() { return VURN_OK; }

int vurn_update_prl() {
  ScopedLock lock(gModuleMutex);
  return gModuleOpen ? VURN_OK : VURN_ERR_NOT_OPEN;
}
