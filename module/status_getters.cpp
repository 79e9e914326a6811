// Status getters: lock, check that the module is open, query, log, store, return. Values of the
// diagnostic record are stored under the same lock. The host never gets the commands' result codes.
#define LOG_SOURCE "zop_module"

#include <string.h>
#include <time.h>

#include "core/bytes.h"
#include "core/log.h"
#include "core/module_state.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"
#include "report/text.h"

// Copies a text of the modem, which may not be terminated, to a field of the record.
template <unsigned SIZE>
static void prv_store_text(char (&field)[SIZE], const char* text, size_t width) {
  prv_strmaxcpy(field, text, SIZE, static_cast<int>(strnlen(text, width)));
}

int vurn_get_rssi(int* rssi) {
  ScopedLock lock(gModuleMutex);
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  int32_t value;
  if (unsigned error = zop_get_rssi(&value)) {
    LOG_GET_ERROR("rssi", error);
    return VURN_ERR_FAILED;
  }
  LOG_D(VURN_LOG_GENERAL, "D zop:rssi=%d", value);
  *rssi = value;
  return VURN_OK;
}

int vurn_get_roaming_status(int* roaming) {
  ScopedLock lock(gModuleMutex);
  uint32_t indicator = 0;
  unsigned error = ZOP_ERR_NOT_OPEN;
  if (gModuleOpen) error = zop_get_roaming_status(&indicator);
  if (error != ZOP_SUCCESS) gDiagInfo.roaming = ZOP_ROAMING_UNKNOWN;
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  if (error != ZOP_SUCCESS) {
    LOG_E("E zop:roaming:status=%d:can't get roaming status", static_cast<int>(error));
    return VURN_ERR_FAILED;
  }
  gDiagInfo.roaming = static_cast<int32_t>(indicator);  // the report shows the raw indicator
  *roaming = indicator != ZOP_ROAMING_HOME ? 1 : 0;
  return VURN_OK;
}

int vurn_get_realm(char* buf, unsigned size) {
  ScopedLock lock(gModuleMutex);
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  uint32_t capacity = size;
  if (unsigned error = zop_get_imei(text_bytes(buf), &capacity)) {
    LOG_GET_ERROR("imei", error);
    return VURN_ERR_FAILED;
  }
  return VURN_OK;
}

// Hosts use the IMEI as the radio's serial number.
int vurn_get_radio_serial_number(char* buf, unsigned size) { return vurn_get_realm(buf, size); }

int vurn_get_radio_cert_param1(char* buf, unsigned size) {
  ScopedLock lock(gModuleMutex);
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  uint32_t capacity = size;
  if (unsigned error = zop_get_iccid(text_bytes(buf), &capacity)) {
    LOG_GET_ERROR("iccid", error);
    return VURN_ERR_FAILED;
  }
  prv_store_text(gDiagInfo.iccid, buf, ZOP_IDENTITY_SIZE);
  return VURN_OK;
}

int vurn_get_radio_cert_param2(char* buf, unsigned size) { return vurn_get_imsi(buf, size); }

int vurn_get_radio_phone_number(char* buf, unsigned size) {
  ScopedLock lock(gModuleMutex);
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  uint32_t capacity = size;
  if (unsigned error = zop_get_radio_phone_number(buf, &capacity)) {
    LOG_GET_ERROR("phone number", error);
    return VURN_ERR_FAILED;
  }
  LOG_D(VURN_LOG_GENERAL, "D zop:radio phone number=%.*s", ZOP_PHONE_NUMBER_SIZE, buf);
  prv_store_text(gDiagInfo.phone_number, buf, ZOP_PHONE_NUMBER_SIZE);
  return VURN_OK;
}

int vurn_get_imsi(char* buf, unsigned size) {
  ScopedLock lock(gModuleMutex);
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  uint32_t capacity = size;
  if (unsigned error = zop_get_imsi(text_bytes(buf), &capacity)) {
    LOG_GET_ERROR("imsi", error);
    return VURN_ERR_FAILED;
  }
  LOG_D(VURN_LOG_GENERAL, "D zop:imsi=%s", buf);
  return VURN_OK;
}

int vurn_get_firmware_version(char* buf, unsigned size) {
  ScopedLock lock(gModuleMutex);
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  uint32_t capacity = size;
  if (unsigned error = zop_get_firmware_version(text_bytes(buf), &capacity)) {
    LOG_E("E zop:fwver:status=%d:can't get firmware version", static_cast<int>(error));
    return VURN_ERR_FAILED;
  }
  return VURN_OK;
}

int vurn_get_data_service_mode(int* mode) {
  ScopedLock lock(gModuleMutex);
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  LOG_D(VURN_LOG_TRACE, "D zop:getting data service mode");
  uint32_t system;
  if (unsigned error = zop_get_system_mode(&system)) {
    LOG_E("E zop:dataserv:status=%d:can't get data service mode", static_cast<int>(error));
    return VURN_ERR_FAILED;
  }
  LOG_D(VURN_LOG_TRACE, "D zop:data service mode = %d", static_cast<int>(system));
  int32_t egprs = 0;
  if (system == ZOP_SYSTEM_GSM) {
    if (unsigned error = zop_get_egprs_indication(&egprs)) {
      LOG_E("E zop:egprs:status=%d:can't get egprs indication", static_cast<int>(error));
      return VURN_ERR_FAILED;
    }
  }
  switch (system) {
    case ZOP_SYSTEM_WCDMA:
    case ZOP_SYSTEM_GW:
      *mode = VURN_DATA_WCDMA;
      break;
    case ZOP_SYSTEM_GSM:
      *mode = egprs == ZOP_EGPRS_AVAILABLE ? VURN_DATA_EDGE : VURN_DATA_GPRS;
      break;
    default:
      *mode = VURN_DATA_NONE;
  }
  return VURN_OK;
}

// Offsets in the modem's network time, 16 bits wide unless noted. The weekday at 12 is not used.
enum {
  TIME_YEAR = 0,
  TIME_MONTH = 2,
  TIME_DAY = 4,
  TIME_HOUR = 6,
  TIME_MINUTE = 8,
  TIME_SECOND = 10,
  TIME_ZONE = 14,  // s32, quarter hours from UTC
  TIME_DST = 18,   // u8
};
enum : uint32_t { SECONDS_PER_QUARTER_HOUR = 900 };

static void prv_clear_time_fields() {
  gDiagInfo.local_time_offset = -1;
  memset(gDiagInfo.network_time, 0, sizeof gDiagInfo.network_time);
}

// Interpreted in the device's local time zone; the C library decides on daylight saving.
static time_t prv_time_of(const uint8_t* network_time) {
  tm broken_down = {};
  broken_down.tm_year = get_le16(network_time + TIME_YEAR) - 1900;
  broken_down.tm_mon = get_le16(network_time + TIME_MONTH) - 1;
  broken_down.tm_mday = get_le16(network_time + TIME_DAY);
  broken_down.tm_hour = get_le16(network_time + TIME_HOUR);
  broken_down.tm_min = get_le16(network_time + TIME_MINUTE);
  broken_down.tm_sec = get_le16(network_time + TIME_SECOND);
  broken_down.tm_isdst = -1;
  return mktime(&broken_down);
}

int vurn_get_module_time(time_t* when, int* offset) {
  ScopedLock lock(gModuleMutex);
  uint8_t network_time[ZOP_NETWORK_TIME_SIZE];
  unsigned error = ZOP_ERR_NOT_OPEN;
  if (gModuleOpen) error = zop_get_network_time(network_time);
  if (error != ZOP_SUCCESS) prv_clear_time_fields();
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  if (error == ZOP_ERR_MODEM_FAILURE) {
    LOG_D(VURN_LOG_TRACE, "D zop:Network time not provided");
    return VURN_ERR_TIME_NOT_PROVIDED;
  }
  if (error != ZOP_SUCCESS) {
    LOG_GET_ERROR("local_time", error);
    return VURN_ERR_FAILED;
  }
  uint32_t seconds = get_le32(network_time + TIME_ZONE) * SECONDS_PER_QUARTER_HOUR;
  *when = prv_time_of(network_time);
  *offset = static_cast<int32_t>(seconds);
  LOG_D(VURN_LOG_STUCK, "D zop:localTimeOffset=%d dst=%d", *offset, network_time[TIME_DST]);
  gDiagInfo.local_time_offset = *offset;
  memcpy(gDiagInfo.network_time, network_time, sizeof gDiagInfo.network_time);
  return VURN_OK;
}
