// The module's shared state and its clock. The exported log mask starts at 0, so that a module that
// was not configured writes nothing.
#include "core/module_state.h"

#include <errno.h>
#include <unistd.h>

#include <atomic>

#include "core/log.h"
#include "include/zop_diag_info.h"

constinit uint32_t gZOPModuleLogMask = 0;
constinit zop_diag_info gDiagInfo = {};

constinit pthread_mutex_t gModuleMutex = PTHREAD_MUTEX_INITIALIZER;
constinit bool gModuleOpen = false;
constinit bool gRefetchPlmns = true;

static constinit std::atomic<pid_t> gProcess = 0;

void prv_note_process() { gProcess = getpid(); }
bool prv_is_noted_process() { return gProcess == getpid(); }

timespec prv_wall_clock_in(int seconds) {
  timespec moment = {};
  clock_gettime(CLOCK_REALTIME, &moment);
  moment.tv_sec += seconds;
  return moment;
}

int32_t prv_get_monotonic_seconds() {
  timespec now;
  if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) {
    LOG_E("E zop:monotime:err=%d:can't get monotonic time", errno);
    return 0;
  }
  return static_cast<int32_t>(now.tv_sec);
}
