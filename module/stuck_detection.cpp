// One detector, used three times: idle until its symptom is first seen, watching while the symptom
// lasts, stuck once it has lasted longer than the limit. It stays stuck until the symptom is gone
// or the module is opened again. It advances only when the host asks for bars.
#define LOG_SOURCE "zop_module"

#include "module/stuck_detection.h"

#include <string.h>

#include "core/log.h"
#include "core/module_state.h"
#include "include/zop.h"

namespace {
struct StuckDetector {
  int32_t limit_s;
  bool watching = false;
  int32_t since = 0;  // monotonic seconds
};
}  // namespace

// Under gModuleMutex.
static constinit StuckDetector gIllegalReject = {60};
static constinit StuckDetector gPdpNoPpp = {5};
static constinit StuckDetector gAllFplmn = {300};

namespace {
enum Verdict { HEALTHY, FIRST_SEEN, STUCK };
}  // namespace

static Verdict prv_advance(StuckDetector* detector, bool symptom, int32_t now) {
  bool was_watching = detector->watching;
  detector->watching = symptom;
  if (!symptom) return HEALTHY;
  if (was_watching)
    return prv_seconds_between(detector->since, now) > detector->limit_s ? STUCK : HEALTHY;
  detector->since = now;
  return FIRST_SEEN;
}

void prv_clear_stuck_detection() {
  gIllegalReject.watching = gPdpNoPpp.watching = gAllFplmn.watching = false;
}

bool prv_get_modem_stuck_illegal_network_reject(int32_t attach_state) {
  int32_t rau_state = 0;
  int32_t rau_error = 0;
  if (unsigned error = zop_get_gmm_rau_state(&rau_state, &rau_error)) {
    LOG_GET_ERROR("RAU State", error);
    return false;
  }
  int32_t now = prv_get_monotonic_seconds();
  // While watching, only an attach ends the symptom: the update's state may change without one.
  bool symptom = rau_state == ZOP_RA_UPDATE_REJECTED && rau_error == ZOP_CAUSE_PROTOCOL_ERROR;
  if (gIllegalReject.watching) {
    LOG_D(VURN_LOG_STUCK, "D zop:AttachState: %d, current_time: %d", attach_state, now);
    symptom = attach_state != ZOP_ATTACH_ACCEPTED;
  }
  Verdict verdict = prv_advance(&gIllegalReject, symptom, now);
  if (verdict == FIRST_SEEN) LOG_D(VURN_LOG_STUCK, "D zop:First RAU Reject: %d", now);
  if (verdict == STUCK) {
    LOG_D(VURN_LOG_STUCK, "D zop:Modem got stuck due to an illegal network reject");
  }
  return verdict == STUCK;
}

bool prv_get_modem_stuck_pdp_active_no_ppp() {
  uint32_t call_status = 0;
  if (unsigned error = zop_get_call_status(&call_status)) {
    LOG_GET_ERROR("Call Status", error);
    return false;
  }
  int32_t pdp_state = 0;
  int32_t reject_reason = 0;
  if (unsigned error = zop_get_pdp_state(&pdp_state, &reject_reason)) {
    LOG_GET_ERROR("PDP State", error);
    return false;
  }
  int32_t now = prv_get_monotonic_seconds();
  bool active = pdp_state == ZOP_PDP_ACTIVE_PENDING || pdp_state == ZOP_PDP_ACTIVE;
  bool symptom = call_status == ZOP_CALL_IDLE && active;
  if (gPdpNoPpp.watching) {
    LOG_D(VURN_LOG_STUCK, "D zop:CallStatus: %d, PDPState: %d, current_time: %d",
          static_cast<int>(call_status), pdp_state, now);
  }
  Verdict verdict = prv_advance(&gPdpNoPpp, symptom, now);
  if (verdict == FIRST_SEEN) LOG_D(VURN_LOG_STUCK, "D zop:PDP Active Call Stuck: %d", now);
  if (verdict == STUCK) LOG_D(VURN_LOG_STUCK, "D zop:Modem got stuck in PDP active no PPP state");
  return verdict == STUCK;
}

// Reads the PDP state again, because the earlier query may have failed.
bool prv_get_modem_stuck_all_plmns_fplmn(int32_t service_status) {
  int32_t pdp_state = 0;
  int32_t reject_reason = 0;
  if (unsigned error = zop_get_pdp_state(&pdp_state, &reject_reason)) {
    LOG_GET_ERROR("PDP State", error);
    return false;
  }
  int32_t now = prv_get_monotonic_seconds();
  if (gAllFplmn.watching) {
    LOG_D(VURN_LOG_STUCK, "D zop:PDP Reject: %d, current_time: %d", reject_reason, now);
  }
  bool unusable = service_status == ZOP_SERVICE_LIMITED || service_status == ZOP_SERVICE_NONE;
  bool symptom =
      unusable && reject_reason != ZOP_CAUSE_NONE && prv_is_current_plmn_forbidden() == 1;
  Verdict verdict = prv_advance(&gAllFplmn, symptom, now);
  if (verdict == FIRST_SEEN) LOG_D(VURN_LOG_STUCK, "D zop:PLMN is FPLMN %d", now);
  if (verdict == STUCK) {
    LOG_D(VURN_LOG_STUCK, "D zop:Modem got stuck with all available PLMNs in FPLMN");
  }
  return verdict == STUCK;
}

// The list: a count, then up to 20 networks of 6 characters.
enum { MAX_FPLMNS = 20 };

int prv_is_current_plmn_forbidden() {
  uint8_t plmn[ZOP_PLMN_SIZE];
  uint32_t size = ZOP_MCC_SIZE;
  if (unsigned error = zop_get_mcc(plmn, &size)) {
    LOG_GET_ERROR("MCC", error);
    return 0;
  }
  if (memcmp(plmn, "FFF", ZOP_MCC_SIZE) == 0) return 1;  // no network
  if (unsigned error = zop_get_mnc(plmn + ZOP_MCC_SIZE, &size)) {
    LOG_GET_ERROR("MNC", error);
    return 0;
  }
  uint8_t list[ZOP_FPLMN_LIST_SIZE];
  if (unsigned error = zop_get_uim_data_fplmn(list)) {
    LOG_GET_ERROR("FPLMN", error);
    return 0;
  }
  int count = list[0];
  if (count > MAX_FPLMNS) count = MAX_FPLMNS;
  const uint8_t* entry = list + 1;
  for (int i = 0; i < count; ++i, entry += ZOP_PLMN_SIZE) {
    if (memcmp(entry, plmn, ZOP_PLMN_SIZE) == 0) return 1;
  }
  return 0;
}
