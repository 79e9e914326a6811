// Modem configuration: band, modes, reset, factory test, NV backup, PDP profiles.
#include "commands/exchange.h"

enum { MODE_CONTROL = 41 };

static bool is_gsm_band(uint32_t band) {
  return band == ZOP_BAND_GSM_850 || band == ZOP_BAND_EGSM_900 || band == ZOP_BAND_GSM_1800 ||
         band == ZOP_BAND_GSM_1900;
}

static bool is_wcdma_band(uint32_t band) {
  return band == ZOP_BAND_WCDMA_2100 || band == ZOP_BAND_WCDMA_1900 || band == ZOP_BAND_WCDMA_850;
}

unsigned zop_set_diag_port(uint32_t port) {
  if (port > 1) return ZOP_ERR_INVALID_ARGUMENT;
  return vendor_set('C', port);
}

unsigned zop_set_reset() { return vendor_set('D', 0); }

unsigned zop_set_error_fatal() { return vendor_set('E', 0); }

// A closed link is reported before a bad argument.
unsigned zop_enable_factory_test(uint32_t enable) {
  if (unsigned error = begin()) return error;
  if (enable > 1) return ZOP_ERR_INVALID_ARGUMENT;
  return vendor_set('I', enable);
}

unsigned zop_set_band(uint32_t band) {
  if (!is_gsm_band(band) && !is_wcdma_band(band)) return ZOP_ERR_INVALID_ARGUMENT;
  return vendor_set('B', band);
}

// The modem echoes the request, without a status.
static unsigned mode_control(uint32_t value) {
  ft_buff[0] = MODE_CONTROL;
  ft_buff[1] = static_cast<uint8_t>(value);
  return exchange(PLAIN_REQUEST);
}

unsigned zop_mode_change(uint32_t mode) {
  if (unsigned error = begin()) return error;
  if (mode > 255) return ZOP_ERR_BAD_RESPONSE;
  return mode_control(mode);
}

unsigned zop_set_network_search_order(uint32_t kind, uint32_t value) {
  if (unsigned error = begin()) return error;
  bool accepted = (kind == ZOP_SEARCH_GSM && is_gsm_band(value)) ||
                  (kind == ZOP_SEARCH_WCDMA && is_wcdma_band(value));
  if (!accepted) return ZOP_ERR_BAD_RESPONSE;
  return mode_control(value);
}

unsigned zop_get_backup_status(uint32_t* a, uint32_t* b) {
  if (unsigned error = begin_vendor('L')) return error;
  if (unsigned error = direct_exchange(PLAIN_REQUEST)) return error;
  if (unsigned error = status(STATUS_BYTE3)) return error;
  copy_fields({u8(5, a), u8(6, b)});
  return ZOP_SUCCESS;
}

// Commands of backup steps 1 to 5. Step 3 restarts the modem, which does not answer it.
enum { STEP_WITHOUT_ANSWER = 3 };
static constexpr uint8_t BACKUP_COMMANDS[] = {216, 214, 218, 215, 217};

unsigned zop_set_backup(uint32_t step) {
  if (unsigned error = begin()) return error;
  if (step < 1 || step > sizeof BACKUP_COMMANDS) return ZOP_ERR_INVALID_ARGUMENT;
  ft_buff[0] = BACKUP_COMMANDS[step - 1];
  if (step == STEP_WITHOUT_ANSWER) {
    send_unanswered({ft_buff, 1});
    return ZOP_SUCCESS;
  }
  if (unsigned error = direct_exchange(1)) return error;
  return inverted_status();
}

// Profiles have odd numbers: 1, 3 ... 15.
unsigned zop_read_pdp_profile(uint8_t* profiles1664) {
  for (uint8_t k = 0; k < ZOP_PDP_PROFILE_COUNT; ++k) {
    if (unsigned error = vendor_set('F', 2u * k + 1)) return error;
    copy_fields({bytes(5, ZOP_PDP_PROFILE_SIZE, profiles1664)});
    profiles1664 += ZOP_PDP_PROFILE_SIZE;
  }
  return ZOP_SUCCESS;
}

unsigned zop_write_pdp_profile(zop_pdp_record record) {
  if (unsigned error = begin_vendor(0x1B)) return error;
  put_request(REQUEST_PAYLOAD, record.bytes, sizeof record.bytes);
  if (unsigned error = exchange(REQUEST_PAYLOAD + static_cast<int>(sizeof record.bytes)))
    return error;
  return status(STATUS_BYTE3);
}
