// Identity and version queries: fixed-size texts into a caller's buffer, which is cleared first.
#include <string.h>

#include "commands/exchange.h"
#include "link/conversions.h"

enum { ESN_COMMAND = 1, ESN_OFFSET = 1, ESN_SIZE = 4, IDENTITY_DIGITS = 16 };

static constexpr char LIBRARY_VERSION[ZOP_LIBRARY_VERSION_SIZE] = "REV_3.0 20100419";

// IMEI and IMSI have 16 bytes of digits; the last 4 of the minimum stay zero.
unsigned zop_get_imei(uint8_t* imei, uint32_t* size) {
  return vendor_text('g', STATUS_IGNORED, {imei, size, ZOP_IDENTITY_SIZE}, IDENTITY_DIGITS);
}

unsigned zop_get_imsi(uint8_t* imsi, uint32_t* size) {
  return vendor_text('h', STATUS_IGNORED, {imsi, size, ZOP_IDENTITY_SIZE}, IDENTITY_DIGITS);
}

unsigned zop_get_iccid(uint8_t* iccid, uint32_t* size) {
  return vendor_text('#', STATUS_BYTE3, {iccid, size, ZOP_IDENTITY_SIZE}, ZOP_IDENTITY_SIZE);
}

unsigned zop_get_radio_phone_number(char* number, uint32_t* size) {
  return vendor_text(7, STATUS_IGNORED, {number, size, ZOP_PHONE_NUMBER_SIZE},
                     ZOP_PHONE_NUMBER_SIZE);
}

unsigned zop_get_hardware_version(uint8_t* text, uint32_t* size) {
  return vendor_text('H', STATUS_IGNORED, {text, size, ZOP_IDENTITY_SIZE}, ZOP_IDENTITY_SIZE);
}

unsigned zop_get_firmware_version(uint8_t* text, uint32_t* size) {
  return vendor_text(']', STATUS_IGNORED, {text, size, ZOP_IDENTITY_SIZE}, ZOP_IDENTITY_SIZE);
}

// The DIAG serial-number request: one byte, answered by the number in little-endian order.
unsigned zop_get_radio_serial_number(uint8_t* hex, uint32_t* size) {
  if (unsigned error = capacity(size, ZOP_SERIAL_NUMBER_SIZE)) return error;
  if (unsigned error = begin()) return error;
  memset(hex, 0, ZOP_SERIAL_NUMBER_SIZE);
  ft_buff[0] = ESN_COMMAND;
  if (unsigned error = exchange(1)) return error;
  for (int i = 0; i < ESN_SIZE; ++i) {
    char pair[2];
    byte_to_HexAscii(fr_buff + ESN_OFFSET + ESN_SIZE - 1 - i, 1, pair);
    memcpy(hex, pair, sizeof pair);
    hex += sizeof pair;
  }
  return ZOP_SUCCESS;
}

unsigned zop_get_card_mode(int32_t* mode) {
  return vendor_query('J', STATUS_IGNORED, {s16(5, mode)});
}

unsigned zop_get_tq2_version(uint8_t* text, uint32_t* size) {
  if (unsigned error = capacity(size, ZOP_LIBRARY_VERSION_SIZE)) return error;
  memcpy(text, LIBRARY_VERSION, sizeof LIBRARY_VERSION);
  return ZOP_SUCCESS;
}
