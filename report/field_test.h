// Field testing: the modem's screens in gDiagInfo, and switching them on and off.
#pragma once

#include <pthread.h>
#include <stdint.h>

#include <atomic>

// Guards gDiagInfo.screen and gDiagInfo.screen_time. Taken with no other lock of ours but the
// module's; nobody takes the module's with this one held.
extern pthread_mutex_t gFtdMutex;

// The exception that is reported, as the host named it. Written under gModuleMutex. The renderer
// takes the code too, and shows the name alone.
extern std::atomic<uint32_t> gExceptionCode;
extern std::atomic<const char*> gExceptionName;

// 1 while the next report is a diagnostic snapshot. The deferred-action thread's alone.
extern uint8_t gFtdSnapshotFlag;

// Switches field testing on or off at the modem, under gModuleMutex: taken here if lockModule.
// Posts DEFERRED_TURNED_OFF_FIELD_TESTING when it is off: after switching off, whatever came of it,
// and after an attempt to switch on that failed.
void prv_set_field_testing(bool on, bool lockModule);

// Writes the report to syslog, with no screen coming in meanwhile.
void prv_output_field_test_data_to_syslog();
