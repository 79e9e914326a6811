// Events of the host's platform: counts ring wake-ups by origin, and logs the current network after
// a file download.
//
// Takes no lock, and the module may be closed: the platform delivers events on any thread.
#define LOG_SOURCE "zop_module"

#include <string.h>
#include <time.h>

#include <atomic>

#include "core/log.h"
#include "include/nubi.h"
#include "include/zop_diag_info.h"
#include "module/mcc.h"

enum { OTHER_ORIGIN = 5 };  // any except 0 to 4, whose meaning the host defines

static int prv_ring_origin(const NubiEvent* event) {
  int origin = 0;
  int error = NubiGetIntParam != nullptr ? NubiGetIntParam(event, &origin) : -1;
  if (error == 0) return origin;
  LOG_GET_ERROR("wanRing origin", error);
  return 0;
}

// The report may read these fields at the same time, so each is stored atomically.
static void prv_count_ring(int origin) {
  if (origin < 0 || origin >= OTHER_ORIGIN) {
    LOG_W("W zop:unexp_ringorigin:origin=%d:", origin);
    origin = OTHER_ORIGIN;
  }
  __atomic_fetch_add(&gDiagInfo.ring_counts[origin], 1u, __ATOMIC_RELAXED);
  __atomic_store_n(&gDiagInfo.last_ring_origin, static_cast<uint8_t>(origin), __ATOMIC_RELAXED);
  __atomic_store_n(&gDiagInfo.last_ring_time, static_cast<uint32_t>(time(nullptr)),
                   __ATOMIC_RELAXED);
}

// A text of the event, or "(none)", which no event is called.
static const char* prv_text(const char* text) { return text != nullptr ? text : "(none)"; }

// Logged once, when error lines are first enabled.
static void prv_log_unbound_calls() {
  static constinit std::atomic<bool> logged = false;
  if (!log_enabled(VURN_LOG_ERROR) || logged.exchange(true)) return;
  LOG_E("E zop:nubi:name=%d,source=%d:event calls of the platform are not bound",
        NubiGetEventName != nullptr, NubiGetEventSource != nullptr);
}

int vurn_report_event(const struct NubiEvent* event) {
  if (NubiGetEventName == nullptr || NubiGetEventSource == nullptr) {
    prv_log_unbound_calls();
    return VURN_OK;
  }
  const char* name = prv_text(NubiGetEventName(event));
  const char* source = prv_text(NubiGetEventSource(event));
  LOG_D(VURN_LOG_EVENTS, "D zop:event %s %s occurred", source, name);
  if (strcmp(source, "com.orvane.hal") == 0 && strcmp(name, "wanRing") == 0) {
    prv_count_ring(prv_ring_origin(event));
  } else if (strcmp(source, "com.orvane.framework") == 0 && strcmp(name, "fileDownloaded") == 0) {
    prv_report_mcc_mnc();
  }
  return VURN_OK;
}
