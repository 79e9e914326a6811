// vurn_get_bars: the modem's attach state and service, three checks for a stuck modem, then the
// bars. The order of the exchanges is part of the interface.
#define LOG_SOURCE "zop_module"

#include "core/log.h"
#include "core/module_state.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"
#include "module/stuck_detection.h"

enum { FEWEST_BARS = 1 };

static bool prv_read_attach_state(int32_t* attach_state) {
  LOG_D(VURN_LOG_TRACE, "D zop:getting packet registration status");
  int32_t cause;
  unsigned error = zop_get_gmm_attach_state(attach_state, &cause);
  if (error != ZOP_SUCCESS) LOG_GET_ERROR("packet_reg_status", error);
  return error == ZOP_SUCCESS;
}

static bool prv_read_service_status(int32_t* service_status) {
  LOG_D(VURN_LOG_TRACE, "D zop:getting service status");
  unsigned error = zop_get_service_status(service_status);
  if (error != ZOP_SUCCESS) LOG_GET_ERROR("modem_service_Status", error);
  return error == ZOP_SUCCESS;
}

static bool prv_read_registration(bool* registered) {
  LOG_D(VURN_LOG_TRACE, "D zop:getting registration status");
  uint32_t registration;
  if (unsigned error = zop_get_registration_status(&registration)) {
    LOG_E("E zop:regstat:status=%d:can't determine if modem has registered",
          static_cast<int>(error));
    return false;
  }
  *registered = registration != ZOP_REGISTRATION_NONE;
  return true;
}

static bool prv_read_bars(int32_t* bars) {
  LOG_D(VURN_LOG_TRACE, "D zop:getting bars");
  if (unsigned error = zop_get_bars(bars)) {
    gDiagInfo.bars = VURN_BARS_NONE;
    LOG_GET_ERROR("bars", error);
    return false;
  }
  // A registered device in full service shows at least one bar.
  if (*bars == 0) *bars = FEWEST_BARS;
  LOG_D(VURN_LOG_EVENTS, "D zop:bars=%d", *bars);
  return true;
}

// Bars, or VURN_BARS_NONE with the reason in the log. False if a query failed.
static bool prv_find_bars(int32_t attach_state, int32_t service_status, int32_t* bars) {
  *bars = VURN_BARS_NONE;
  if (attach_state != ZOP_ATTACH_ACCEPTED) {
    LOG_D(VURN_LOG_EVENTS, "D zop:gmmAttachState=%d", attach_state);
    return true;
  }
  bool registered;
  if (!prv_read_registration(&registered)) return false;
  if (!registered) {
    LOG_D(VURN_LOG_EVENTS, "D zop:not registered");
    return true;
  }
  if (service_status != ZOP_SERVICE_FULL) {
    LOG_D(VURN_LOG_EVENTS, "D zop:serviceStatus=%d", service_status);
    return true;
  }
  return prv_read_bars(bars);
}

int vurn_get_bars(int* bars) {
  ScopedLock lock(gModuleMutex);
  gDiagInfo.bars = ZOP_BARS_UNKNOWN;
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  int32_t attach_state;
  int32_t service_status;
  if (!prv_read_attach_state(&attach_state)) return VURN_ERR_FAILED;
  if (!prv_read_service_status(&service_status)) return VURN_ERR_FAILED;
  if (prv_get_modem_stuck_illegal_network_reject(attach_state)) return VURN_ERR_FAILED;
  if (prv_get_modem_stuck_pdp_active_no_ppp()) return VURN_ERR_FAILED;
  if (prv_get_modem_stuck_all_plmns_fplmn(service_status)) return VURN_ERR_FAILED;
  int32_t found;
  if (!prv_find_bars(attach_state, service_status, &found)) return VURN_ERR_FAILED;
  *bars = found;
  gDiagInfo.bars = found;
  return VURN_OK;
}
