// NV items: entries of the modem's non-volatile memory, 128 bytes each, by the standard DIAG
// commands. The modem reports a failure in the NV status after the data, not in a command status.
#include <string.h>

#include "commands/exchange.h"
#include "core/bytes.h"

enum { NV_READ = 38, NV_WRITE = 39 };

// Offsets, and the length of a request.
enum { NV_ITEM = 1, NV_DATA = 3, NV_STATUS = 131, NV_REQUEST = 133 };

namespace {
// The items that the library knows.
enum NvItem : uint32_t {
  NV_PREF_MODE = 10,             // byte 1: preferred mode
  NV_PREF_SERVICE_DOMAIN = 850,  // byte 1: preferred service domain
  NV_MGRF_SUPPORTED = 5895,      // byte 0: 0 or 1
  NV_SIM_PIN = 16685,            // 8 bytes: copy of the SIM PIN, zero-padded
  NV_ACQ_BAND_ORDER = 16687,     // byte 0: acquisition band order
};
}  // namespace

static unsigned nv_exchange(uint8_t command, uint32_t item, const void* data, size_t length,
                            uint32_t* nv_status) {
  if (unsigned error = begin_clearing_first()) return error;
  ft_buff[0] = command;
  put_le16(ft_buff + NV_ITEM, item);
  if (length > 0) put_request(NV_DATA, data, length);
  if (unsigned error = exchange(NV_REQUEST)) return error;
  *nv_status = get_le16(fr_buff + NV_STATUS);
  return ZOP_SUCCESS;
}

unsigned zop_nv_read(uint32_t item, void* data, uint32_t length, uint32_t* nv_status) {
  if (unsigned error = nv_exchange(NV_READ, item, nullptr, 0, nv_status)) return error;
  constexpr uint32_t ROOM = sizeof fr_buff - NV_DATA;
  if (*nv_status == 0) memcpy(data, fr_buff + NV_DATA, length < ROOM ? length : ROOM);
  return ZOP_SUCCESS;
}

unsigned zop_nv_write(uint32_t item, const void* data, uint32_t length, uint32_t* nv_status) {
  return nv_exchange(NV_WRITE, item, data, length, nv_status);
}

static unsigned nv_get(NvItem item, uint8_t* data, uint32_t length) {
  uint32_t nv_status = 0;
  if (unsigned error = zop_nv_read(item, data, length, &nv_status)) return error;
  return nv_status != 0 ? ZOP_ERR_MODEM_FAILURE : ZOP_SUCCESS;
}

static unsigned nv_set(NvItem item, const uint8_t* data, uint32_t length) {
  uint32_t nv_status = 0;
  if (unsigned error = zop_nv_write(item, data, length, &nv_status)) return error;
  return nv_status != 0 ? ZOP_ERR_MODEM_FAILURE : ZOP_SUCCESS;
}

// An item whose value is the byte at index; bytes before it are 0.
static unsigned nv_get_byte(NvItem item, uint32_t index, uint32_t* value) {
  uint8_t data[2] = {};
  if (unsigned error = nv_get(item, data, index + 1)) return error;
  *value = data[index];
  return ZOP_SUCCESS;
}

static unsigned nv_set_byte(NvItem item, uint32_t index, uint32_t value) {
  uint8_t data[2] = {};
  data[index] = static_cast<uint8_t>(value);
  return nv_set(item, data, index + 1);
}

unsigned zop_set_pref_mode(uint32_t mode) { return nv_set_byte(NV_PREF_MODE, 1, mode); }

unsigned zop_get_pref_mode(uint32_t* mode) { return nv_get_byte(NV_PREF_MODE, 1, mode); }

unsigned zop_get_pref_service_domain(uint32_t* domain) {
  return nv_get_byte(NV_PREF_SERVICE_DOMAIN, 1, domain);
}

unsigned zop_set_mgrf_supported(uint32_t on) {
  if (on > 1) return ZOP_ERR_INVALID_ARGUMENT;
  return nv_set_byte(NV_MGRF_SUPPORTED, 0, on);
}

unsigned zop_get_mgrf_supported(uint32_t* on) { return nv_get_byte(NV_MGRF_SUPPORTED, 0, on); }

unsigned zop_set_acq_band_order(uint32_t order) { return nv_set_byte(NV_ACQ_BAND_ORDER, 0, order); }

unsigned zop_get_acq_band_order(uint32_t* order) {
  return nv_get_byte(NV_ACQ_BAND_ORDER, 0, order);
}

unsigned zop_simcard_pin_write(const uint8_t* pin, uint32_t pin_len, uint32_t* result) {
  uint32_t length = ZOP_PIN_SIZE;
  if (pin_len < length) length = pin_len;
  uint32_t nv_status = 0;
  if (unsigned error = zop_nv_write(NV_SIM_PIN, pin, length, &nv_status)) return error;
  *result = nv_status != 0 ? 1 : 0;
  return ZOP_SUCCESS;
}

unsigned zop_simcard_pin_read(uint8_t* pin8, uint32_t ignored, uint32_t* result) {
  (void)ignored;
  uint32_t nv_status = 0;
  if (unsigned error = zop_nv_read(NV_SIM_PIN, pin8, ZOP_PIN_SIZE, &nv_status)) return error;
  *result = nv_status != 0 ? 1 : 0;
  return ZOP_SUCCESS;
}
