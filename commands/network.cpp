// Network and registration queries: one vendor exchange each. Offsets count from the start of the
// answer.
#include <string.h>

#include "commands/exchange.h"

unsigned zop_get_roaming_status(uint32_t* roaming) {
  return vendor_query('!', STATUS_IGNORED, {u8(5, roaming)});
}

unsigned zop_try_to_use_home_network() {
  uint32_t accepted = 0;
  if (unsigned error = vendor_query('"', STATUS_BYTE3, {u8(5, &accepted)})) return error;
  return accepted == 0 ? ZOP_ERR_HOME_NETWORK_REFUSED : ZOP_SUCCESS;
}

unsigned zop_get_data_service_mode(int32_t* mode) {
  return vendor_query('$', STATUS_IGNORED, {s8(5, mode)});
}

unsigned zop_get_uarfcn(uint32_t* channel) {
  return vendor_query('%', STATUS_IGNORED, {u16(5, channel)});
}

unsigned zop_get_call_status(uint32_t* call) {
  return vendor_query('&', STATUS_IGNORED, {u8(5, call)});
}

unsigned zop_get_rac(uint32_t* rac) { return vendor_query('/', STATUS_IGNORED, {u8(5, rac)}); }

unsigned zop_get_mcc(uint8_t* mcc, uint32_t* size) {
  return vendor_text('0', STATUS_IGNORED, {mcc, size, ZOP_MCC_SIZE}, ZOP_MCC_SIZE);
}

unsigned zop_get_mnc(uint8_t* mnc, uint32_t* size) {
  return vendor_text('1', STATUS_IGNORED, {mnc, size, ZOP_MNC_SIZE}, ZOP_MNC_SIZE);
}

// Clears the caller's buffer even if the link is closed.
unsigned zop_get_location_area_id(uint8_t* text, uint32_t* size) {
  if (unsigned error = capacity(size, ZOP_LOCATION_AREA_SIZE)) return error;
  memset(text, 0, ZOP_LOCATION_AREA_SIZE);
  return vendor_query('2', STATUS_IGNORED, {bytes(5, ZOP_LOCATION_AREA_SIZE, text)});
}

unsigned zop_get_cell_id(uint32_t* cell) {
  return vendor_query('3', STATUS_IGNORED, {u32(5, cell)});
}

unsigned zop_get_network_name(uint8_t* name, uint32_t* size) {
  return vendor_text(':', STATUS_IGNORED, {name, size, ZOP_NETWORK_NAME_SIZE},
                     ZOP_NETWORK_NAME_SIZE);
}

unsigned zop_get_service_status(int32_t* service) {
  return vendor_query(';', STATUS_IGNORED, {s8(5, service)});
}

unsigned zop_get_registration_status(uint32_t* registration) {
  return vendor_query('<', STATUS_IGNORED, {u8(5, registration)});
}

unsigned zop_get_info_event_orig(uint8_t* record) {
  return vendor_query('>', STATUS_BYTE3, {bytes(5, ZOP_EVENT_ORIGINATED_SIZE, record)});
}

unsigned zop_get_info_event_act(uint8_t* record) {
  return vendor_query('?', STATUS_BYTE3, {bytes(5, ZOP_EVENT_ACTIVATED_SIZE, record)});
}

unsigned zop_get_info_event_deact(uint8_t* record) {
  return vendor_query('@', STATUS_BYTE3, {bytes(5, 1, record)});
}

unsigned zop_get_info_event_end(uint8_t* record) {
  return vendor_query('A', STATUS_BYTE3, {bytes(5, ZOP_EVENT_ENDED_SIZE, record)});
}

unsigned zop_get_band(int32_t* band) { return vendor_query('Q', STATUS_BYTE3, {s16(5, band)}); }

unsigned zop_get_network_op_mode(int32_t* mode) {
  return vendor_query('R', STATUS_BYTE3, {s16(5, mode)});
}

unsigned zop_get_mm_attach_state(int32_t* state, int32_t* error) {
  return vendor_query('S', STATUS_BYTE3, {s16(5, state), s16(7, error)});
}

unsigned zop_get_gmm_attach_state(int32_t* state, int32_t* error) {
  return vendor_query('T', STATUS_BYTE3, {s16(5, state), s16(7, error)});
}

unsigned zop_get_mfrm(int32_t* multiframes) {
  return vendor_query('U', STATUS_BYTE3, {s16(5, multiframes)});
}

unsigned zop_get_gmm_state(int32_t* state) {
  return vendor_query('V', STATUS_BYTE3, {s16(5, state)});
}

unsigned zop_get_pdp_state(int32_t* state, int32_t* reject_reason) {
  return vendor_query('W', STATUS_BYTE3, {s16(5, state), s16(7, reject_reason)});
}

unsigned zop_get_pmm_mode(int32_t* mode) { return vendor_query('X', STATUS_BYTE3, {s16(5, mode)}); }

unsigned zop_get_drx(uint32_t* drx) { return vendor_query('Y', STATUS_BYTE3, {u16(5, drx)}); }

unsigned zop_get_hsdpa_status(int32_t* status, int32_t* indication) {
  return vendor_query('Z', STATUS_BYTE3, {s16(5, status), s16(7, indication)});
}

unsigned zop_get_egprs_indication(int32_t* egprs) {
  return vendor_query('^', STATUS_BYTE3, {s16(5, egprs)});
}

unsigned zop_get_mm_lu_state(int32_t* state, int32_t* error) {
  return vendor_query('e', STATUS_BYTE3, {s16(5, state), s16(7, error)});
}

unsigned zop_get_gmm_rau_state(int32_t* state, int32_t* error) {
  return vendor_query('f', STATUS_BYTE3, {s16(5, state), s16(7, error)});
}

// A flag is 0 or 1; another value is a failure of the modem.
unsigned zop_get_powerup_flag(uint32_t* flag) {
  uint32_t value = 0;
  if (unsigned error = vendor_query('m', STATUS_BYTE3, {u8(5, &value)})) return error;
  if (value > 1) return ZOP_ERR_MODEM_FAILURE;
  *flag = value;
  return ZOP_SUCCESS;
}

unsigned zop_get_rau_type(uint32_t* type) { return vendor_query('n', STATUS_BYTE3, {u8(5, type)}); }

unsigned zop_get_carrier(int32_t* carrier) {
  return vendor_query('o', STATUS_BYTE3, {s8(5, carrier)});
}

unsigned zop_get_network_time(uint8_t* time19) {
  return vendor_query(0x14, STATUS_BYTE3, {bytes(5, ZOP_NETWORK_TIME_SIZE, time19)});
}

unsigned zop_get_system_mode(uint32_t* mode) {
  return vendor_query(0x1F, STATUS_IGNORED, {u8(5, mode)});
}
