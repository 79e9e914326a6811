// Field testing: switching it on and off, and storing the modem's screens in gDiagInfo.
#pragma once

#include <pthread.h>
#include <stdint.h>

#include <atomic>

// Guards gDiagInfo.screen and gDiagInfo.screen_time. May be taken with gModuleMutex held, not the
// other way round.
extern pthread_mutex_t gFtdMutex;

// The host's exception code and name. Written under gModuleMutex; the renderer is passed both and
// shows only the name.
extern std::atomic<uint32_t> gExceptionCode;
extern std::atomic<const char*> gExceptionName;

// 1 if the next report is a diagnostic snapshot. Used by the deferred-action thread only.
extern uint8_t gFtdSnapshotFlag;

// Switches field testing on or off. Under gModuleMutex, which is taken here if lockModule. Posts
// DEFERRED_TURNED_OFF_FIELD_TESTING after switching it off and after a failure to switch it on.
void prv_set_field_testing(bool on, bool lockModule);

// Writes the report to syslog. No screen is stored meanwhile.
void prv_output_field_test_data_to_syslog();
