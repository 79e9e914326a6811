// SIM card and PIN operations: command byte 210 with an operation code. The result code says only
// whether the exchange succeeded; the SIM's answer goes to *result.
#include <string.h>

#include "commands/exchange.h"
#include "core/bytes.h"

enum { SIM_COMMAND = 210, VSIM_COMMAND = 213, VSIM_STATE = 40 };

// Operations, and their request lengths.
enum { SIM_STATUS, SIM_VERIFY, SIM_CHANGE, SIM_DISABLE, SIM_ENABLE, SIM_UNBLOCK };
enum { ONE_CODE_REQUEST = 19, TWO_CODE_REQUEST = 27 };

// Offsets.
enum { FIRST_CODE = 11, SECOND_CODE = 19, OPERATION_RESULT = 8 };

static unsigned begin_sim(uint8_t operation) {
  if (unsigned error = begin_clearing_first()) return error;
  ft_buff[0] = SIM_COMMAND;
  ft_buff[SUBCOMMAND] = operation;
  return ZOP_SUCCESS;
}

// Sends the operation in the request. *result is 0 if the SIM accepted it, otherwise 1.
static unsigned operate(int length, uint32_t* result) {
  if (unsigned error = exchange(length)) return error;
  bool accepted = get_le16(fr_buff + STATUS) == 0 && fr_buff[OPERATION_RESULT] == 0;
  *result = accepted ? 0 : 1;
  return ZOP_SUCCESS;
}

// An operation with one code; copied is the number of its bytes to send.
static unsigned one_code(uint8_t operation, const uint8_t* code, uint32_t length, uint32_t copied,
                         uint32_t* result) {
  if (unsigned error = begin_sim(operation)) return error;
  if (length > ZOP_PIN_SIZE) return ZOP_ERR_PIN_TOO_LONG;
  put_request(FIRST_CODE, code, copied);
  return operate(ONE_CODE_REQUEST, result);
}

unsigned zop_simcard_status(uint32_t* sim_status, uint32_t* lock_status, uint32_t* retries) {
  if (unsigned error = begin_sim(SIM_STATUS)) return error;
  if (unsigned error = exchange(PLAIN_REQUEST)) return error;
  if (unsigned error = status(STATUS_BYTE3)) return error;
  copy_fields({u8(6, sim_status), u8(7, lock_status), u8(8, retries)});
  return ZOP_SUCCESS;
}

// Sends 8 bytes whatever the length of the PIN is: callers pad their buffer.
unsigned zop_simcard_verify(const uint8_t* pin, uint32_t pin_len, uint32_t* result) {
  return one_code(SIM_VERIFY, pin, pin_len, ZOP_PIN_SIZE, result);
}

unsigned zop_simcard_disable(const uint8_t* pin, uint32_t pin_len, uint32_t* result) {
  return one_code(SIM_DISABLE, pin, pin_len, pin_len, result);
}

unsigned zop_simcard_enable(const uint8_t* pin, uint32_t pin_len, uint32_t* result) {
  unsigned error = one_code(SIM_ENABLE, pin, pin_len, pin_len, result);
  if (error != ZOP_SUCCESS || *result != 0) return error;
  uint32_t copy_result;
  (void)zop_simcard_pin_write(pin, pin_len, &copy_result);  // the SIM has accepted the PIN
  return ZOP_SUCCESS;
}

// The length of the new PIN is not checked: bytes after the eighth are beyond the request's end.
unsigned zop_simcard_change(const uint8_t* old_pin, uint32_t old_len, const uint8_t* new_pin,
                            uint32_t new_len, uint32_t* result) {
  if (unsigned error = begin_sim(SIM_CHANGE)) return error;
  if (old_len > ZOP_PIN_SIZE) return ZOP_ERR_PIN_TOO_LONG;
  put_request(FIRST_CODE, old_pin, old_len);
  put_request(SECOND_CODE, new_pin, new_len);
  if (unsigned error = operate(TWO_CODE_REQUEST, result)) return error;
  if (*result != 0) return ZOP_SUCCESS;
  uint32_t copy_result;
  (void)zop_simcard_pin_write(new_pin, new_len, &copy_result);  // the SIM has accepted it
  return ZOP_SUCCESS;
}

// Does not update the copy of the PIN.
unsigned zop_simcard_unblock(const uint8_t* key, uint32_t key_len, const uint8_t* new_pin,
                             uint32_t new_len, uint32_t* result) {
  if (unsigned error = begin_sim(SIM_UNBLOCK)) return error;
  if (key_len > ZOP_PIN_SIZE || new_len > ZOP_PIN_SIZE) return ZOP_ERR_PIN_TOO_LONG;
  put_request(FIRST_CODE, key, key_len);
  put_request(SECOND_CODE, new_pin, new_len);
  return operate(TWO_CODE_REQUEST, result);
}

unsigned zop_vsim_status_change(uint32_t state) {
  if (unsigned error = begin_clearing_first()) return error;
  ft_buff[0] = VSIM_COMMAND;
  ft_buff[SUBCOMMAND] = VSIM_STATE;
  ft_buff[REQUEST_PAYLOAD] = static_cast<uint8_t>(state);
  if (unsigned error = exchange(PLAIN_REQUEST + 1)) return error;
  return status(STATUS_BYTE3);
}
