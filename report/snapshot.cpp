// The host's requests for a report: as text, for an exception, or as a snapshot.
#define LOG_SOURCE "zop_module"

#include "report/snapshot.h"

#include <stdio.h>
#include <string.h>
#include <time.h>

#include "core/log.h"
#include "core/module_state.h"
#include "include/zop_diag_info.h"
#include "report/deferred_action.h"
#include "report/field_test.h"
#include "report/rendering.h"
#include "report/supplement.h"
#include "report/wan_data.h"

enum { PLMN_REFETCH_S = 10, UNAVAILABLE_MIN_SIZE = 85 };
enum { FIRST_SILENT_CODE = 3, LAST_SILENT_CODE = 7 };  // exceptions that are not reported

static constinit int32_t gPlmnRequestTime = 0;  // monotonic seconds; under gModuleMutex

// Without gModuleMutex, which the getters take themselves. They store their results in gDiagInfo.
static void prv_refresh_diagnostic_data() {
  int number;
  int offset;
  time_t when;
  prv_get_wan_data();
  prv_get_uptime();
  vurn_get_bars(&number);
  vurn_get_module_time(&when, &offset);
  vurn_get_roaming_status(&number);
  if (gDiagInfo.phone_number[0] == '\0') {
    char text[64];
    vurn_get_radio_phone_number(text, sizeof text);
  }
}

// Log strings make the SIM's lists be read again at most once in ten seconds.
static void prv_note_plmn_request() {
  ScopedLock lock(gModuleMutex);
  int32_t now = prv_get_monotonic_seconds();
  if (prv_seconds_between(gPlmnRequestTime, now) <= PLMN_REFETCH_S) return;
  gPlmnRequestTime = now;
  gRefetchPlmns = true;
}

static void prv_write_unavailable(char* buf, unsigned len) {
  if (len > 0) buf[0] = '\0';
  if (len < UNAVAILABLE_MIN_SIZE) return;
  char when[32] = "";
  time_t now = time(nullptr);
  ctime_r(&now, when);
  snprintf(buf, len, "Sorry, WAN information is not available at this time.\n%s", when);
}

int vurn_get_log_string(char* buf, unsigned len) {
  prv_note_plmn_request();
  prv_refresh_diagnostic_data();
  ScopedLock lock(gModuleMutex);
  if (!gModuleOpen) {
    prv_write_unavailable(buf, len);
    return VURN_OK;
  }
  prv_deferred_action_event(DEFERRED_LOG_STRING);
  prv_get_supplement_data();
  ScopedLock screen(gFtdMutex);
  bool whole = prv_zop_output_to_log_string(buf, static_cast<int>(len), 1) != 0;
  return whole ? VURN_OK : VURN_ERR_TRUNCATED;
}

static int prv_report_exception(unsigned code, const char* name) {
  prv_refresh_diagnostic_data();
  ScopedLock lock(gModuleMutex);
  gExceptionCode = code;
  gExceptionName = name;
  LOG_I("I zop:wanexc:name=%s:wan exception occurred", name != nullptr ? name : "(none)");
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  prv_get_supplement_data();
  prv_deferred_action_event(DEFERRED_EXCEPTION);
  return VURN_OK;
}

int vurn_log_message(unsigned code, const char** names) {
  LOG_ENTER();
  int result = VURN_OK;
  bool silent = code >= FIRST_SILENT_CODE && code <= LAST_SILENT_CODE;
  if (!silent) result = prv_report_exception(code, names != nullptr ? names[code] : nullptr);
  LOG_RETURN();
  return result;
}

void prv_start_diagnostic_data_snapshot(bool lockModule) {
  LOG_ENTER();
  if (!lockModule) pthread_mutex_unlock(&gModuleMutex);
  prv_refresh_diagnostic_data();
  pthread_mutex_lock(&gModuleMutex);
  prv_deferred_action_event(DEFERRED_START_DIAGNOSTIC_SNAPSHOT);
  prv_get_supplement_data();
  if (lockModule) pthread_mutex_unlock(&gModuleMutex);
  LOG_RETURN();
}

int vurn_enable_logging(int enable) {
  if (enable != 0) prv_start_diagnostic_data_snapshot(true);
  return VURN_OK;
}
