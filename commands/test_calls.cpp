// Test calls, messages, the error log and the clock.
//
// Test calls are ended on host threads, on the event listener and in a signal handler, possibly
// during a host's command; zop_debug_mode_start runs on the module's own threads. Both have their
// own buffers and never use the shared ones.
#include <errno.h>
#include <signal.h>
#include <string.h>
#include <unistd.h>

#include "commands/exchange.h"
#include "core/bytes.h"
#include "link/event_listener.h"

enum { MAX_NUMBER = 32 };

// Call request.
enum { CALL_LENGTH = 3, CALL_NUMBER = 4, CALL_REQUEST = 37 };

// SMS request: two lengths, the number and the text in fields of fixed width, and constant bytes
// that the modem requires.
enum {
  SMS_COMMAND = 208,
  SMS_KIND = 3,
  SMS_KIND_VALUE = 9,
  SMS_NUMBER_LENGTH = 4,
  SMS_TEXT_LENGTH = 5,
  SMS_NUMBER = 7,
  SMS_TEXT = 43,
  SMS_FIXED = 298,
  SMS_TAIL = 343,
  SMS_REQUEST = 346,
};
static constexpr uint8_t SMS_FIXED_BYTES[] = {0, 0, 1, 0, 1, 0, 1, 0, 0};
static constexpr uint8_t SMS_TAIL_BYTES[] = {0, 0, 0};

enum { ERROR_LOG_READ = 42, ERROR_LOG_CLEAR = 43 };
enum { TIME_SUBCOMMAND = 19, TIME_REQUEST = 17 };

static constexpr uint8_t END_CALL[] = {ZOP_VENDOR_COMMAND, 'd', 0};
static constexpr uint8_t DEBUG_MODE[] = {ZOP_VENDOR_COMMAND, 'M', 0, 0};

static void end_call_on_alarm(uint32_t seconds) {
  struct sigaction action = {};
  action.sa_handler = callback_function;
  sigemptyset(&action.sa_mask);
  sigaction(SIGALRM, &action, nullptr);
  alarm(seconds);
}

unsigned zop_originate_call_test(uint32_t timeout_s, const char* number) {
  size_t length = strnlen(number, MAX_NUMBER + 1);
  if (length == 0 || length > MAX_NUMBER) return ZOP_ERR_INVALID_ARGUMENT;
  if (unsigned error = begin_vendor('c')) return error;
  ft_buff[CALL_LENGTH] = static_cast<uint8_t>(length);
  put_request(CALL_NUMBER, number, length);
  if (unsigned error = exchange(CALL_REQUEST)) return error;
  if (timeout_s == 0) return ZOP_SUCCESS;
  if (!time_call_by_listener(timeout_s)) end_call_on_alarm(timeout_s);
  return ZOP_SUCCESS;
}

// The answer is read so that the next command does not get it; its content does not matter.
static int32_t send_end_call(const ExchangePolicy& policy) {
  uint8_t answer[RESPONSE_SIZE] = {};
  Response response = {answer};
  return line_exchange({END_CALL, sizeof END_CALL}, policy, &response);
}

unsigned zop_end_call_test() {
  if (diag_status() == 0) return ZOP_ERR_NOT_OPEN;
  int32_t received = send_end_call(COMMAND_POLICY);
  return received > 0 || received == PORT_TIMEOUT ? ZOP_SUCCESS : ZOP_ERR_NO_RESPONSE;
}

bool end_call_if_port_is_free(bool (*wanted)()) {
  if (diag_status() == 0) return true;
  return send_end_call({try_claim_port, 1, SILENCE_LIMIT_MS, ANSWER_LIMIT_MS, wanted}) != PORT_BUSY;
}

// Number and text are copied up to the end of the buffer; the constant bytes overwrite them.
unsigned zop_send_sms(const char* number, const char* text) {
  if (unsigned error = begin()) return error;
  size_t number_length = strlen(number);
  size_t text_length = strlen(text);
  ft_buff[0] = SMS_COMMAND;
  ft_buff[SMS_KIND] = SMS_KIND_VALUE;
  ft_buff[SMS_NUMBER_LENGTH] = static_cast<uint8_t>(number_length);
  put_le16(ft_buff + SMS_TEXT_LENGTH, static_cast<uint16_t>(text_length));
  put_request(SMS_NUMBER, number, number_length);
  put_request(SMS_TEXT, text, text_length);
  put_request(SMS_FIXED, SMS_FIXED_BYTES, sizeof SMS_FIXED_BYTES);
  put_request(SMS_TAIL, SMS_TAIL_BYTES, sizeof SMS_TAIL_BYTES);
  if (unsigned error = exchange(SMS_REQUEST)) return error;
  return status(STATUS_BYTE3);
}

unsigned zop_test(uint32_t value) {
  if (unsigned error = begin_vendor('p')) return error;
  ft_buff[REQUEST_PAYLOAD] = static_cast<uint8_t>(value);
  if (unsigned error = direct_exchange(PLAIN_REQUEST + 1)) return error;
  return inverted_status();
}

unsigned zop_get_err_log(uint8_t* log264) {
  if (unsigned error = begin()) return error;
  ft_buff[0] = ERROR_LOG_READ;
  if (unsigned error = exchange(1)) return error;
  copy_fields({bytes(1, ZOP_ERROR_LOG_SIZE, log264)});
  return ZOP_SUCCESS;
}

unsigned zop_get_err_clr(uint32_t index) {
  if (unsigned error = begin()) return error;
  if (index > 255) return ZOP_ERR_BAD_RESPONSE;
  ft_buff[0] = ERROR_LOG_CLEAR;
  ft_buff[1] = static_cast<uint8_t>(index);
  return exchange(2);
}

unsigned zop_debug_mode_start() {
  uint8_t answer[RESPONSE_SIZE];
  if (unsigned error = unlocked_exchange({DEBUG_MODE, sizeof DEBUG_MODE}, answer)) return error;
  return get_le16(answer + STATUS) != 0 ? ZOP_ERR_MODEM_FAILURE : ZOP_SUCCESS;
}

// Does not clear the buffers first: it sets every byte that it sends.
unsigned zop_set_module_time(const uint8_t* time14, uint32_t* size) {
  if (unsigned error = capacity(size, ZOP_MODULE_TIME_SIZE)) return error;
  if (diag_status() == 0) return ZOP_ERR_NOT_OPEN;
  ft_buff[0] = ZOP_VENDOR_COMMAND;
  ft_buff[SUBCOMMAND] = TIME_SUBCOMMAND;
  ft_buff[2] = 0;
  put_request(REQUEST_PAYLOAD, time14, ZOP_MODULE_TIME_SIZE);
  return exchange(TIME_REQUEST);
}
