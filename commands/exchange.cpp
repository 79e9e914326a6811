// The command exchange over one request and one response buffer.
//
// The response buffer is zeroed after the payload, so that a field beyond a short answer reads as
// 0; every field ends inside the buffer.
#include "commands/exchange.h"

#include <string.h>

#include "core/bytes.h"

constinit uint8_t ft_buff[RESPONSE_SIZE] = {};  // request
constinit uint8_t fr_buff[RESPONSE_SIZE] = {};  // response, unframed

void clear_memory() {
  memset(ft_buff, 0, sizeof ft_buff);
  memset(fr_buff, 0, sizeof fr_buff);
}

int zop_check_buffer_size(int have, int need) { return have >= need ? 1 : 0; }

unsigned capacity(uint32_t* size, uint32_t minimum) {
  if (zop_check_buffer_size(static_cast<int>(*size), static_cast<int>(minimum))) return ZOP_SUCCESS;
  *size = minimum;
  return ZOP_ERR_BUFFER_TOO_SMALL;
}

unsigned begin() {
  if (diag_status() == 0) return ZOP_ERR_NOT_OPEN;
  clear_memory();
  return ZOP_SUCCESS;
}

unsigned begin_clearing_first() {
  clear_memory();
  return diag_status() == 0 ? ZOP_ERR_NOT_OPEN : ZOP_SUCCESS;
}

unsigned begin_vendor(uint8_t subcommand) {
  if (unsigned error = begin()) return error;
  ft_buff[0] = ZOP_VENDOR_COMMAND;
  ft_buff[SUBCOMMAND] = subcommand;
  return ZOP_SUCCESS;
}

void put_request(size_t offset, const void* data, size_t length) {
  size_t room = sizeof ft_buff - offset;
  memcpy(ft_buff + offset, data, length < room ? length : room);
}

static int32_t send_buffer(int length, bool leading_flag, const ExchangePolicy& policy,
                           Response* response) {
  if (length < 0 || length > RESPONSE_SIZE) return PORT_ERROR;
  Request request = {ft_buff, static_cast<uint32_t>(length), leading_flag};
  return line_exchange(request, policy, response);
}

int zop_send(int length, int leading_flag) {
  Response response = {fr_buff};
  int32_t received = send_buffer(length, leading_flag != 0, COMMAND_POLICY, &response);
  return received == PORT_UNSENT ? int{PORT_ERROR} : received;
}

// A time-out counts as a damaged answer.
static unsigned result_of(int32_t received, const Response& response) {
  if (received <= 0 && received != PORT_TIMEOUT) return ZOP_ERR_NO_RESPONSE;
  if (received == PORT_TIMEOUT || response.length < 0) return ZOP_ERR_BAD_RESPONSE;
  return ZOP_SUCCESS;
}

// The answer's first byte is not checked: some modems answer with another command code.
static unsigned exchange_by(const ExchangePolicy& policy, int length) {
  Response response = {fr_buff};
  int32_t received = send_buffer(length, false, policy, &response);
  return result_of(received, response);
}

unsigned exchange(int length) { return exchange_by(COMMAND_POLICY, length); }

unsigned direct_exchange(int length) { return exchange_by(DIRECT_POLICY, length); }

unsigned unlocked_exchange(const Request& request, uint8_t (&answer)[RESPONSE_SIZE]) {
  if (diag_status() == 0) return ZOP_ERR_NOT_OPEN;
  Response response = {answer};
  int32_t received = line_exchange(request, COMMAND_POLICY, &response);
  return result_of(received, response);
}

unsigned status(StatusRule rule) {
  bool failed = false;
  if (rule == STATUS_BYTE3) failed = fr_buff[STATUS] != 0;
  if (rule == STATUS_WORD) failed = get_le16(fr_buff + STATUS) != 0;
  return failed ? ZOP_ERR_MODEM_FAILURE : ZOP_SUCCESS;
}

unsigned inverted_status() { return fr_buff[STATUS] != 0 ? ZOP_SUCCESS : ZOP_ERR_MODEM_FAILURE; }

static void put_unsigned(const Field& field, uint32_t value) {
  *static_cast<uint32_t*>(field.out) = value;
}

static void put_signed(const Field& field, int32_t value) {
  *static_cast<int32_t*>(field.out) = value;
}

static void copy_field(const Field& field) {
  const uint8_t* at = fr_buff + field.offset;
  switch (field.type) {
    case Field::U8:
      return put_unsigned(field, *at);
    case Field::S8:
      return put_signed(field, static_cast<int8_t>(*at));
    case Field::U16:
      return put_unsigned(field, get_le16(at));
    case Field::S16:
      return put_signed(field, get_le16_signed(at));
    case Field::U32:
      return put_unsigned(field, get_le32(at));
    case Field::BYTES:
      memcpy(field.out, at, field.length);
      return;
  }
}

void copy_fields(std::initializer_list<Field> fields) {
  for (const Field& field : fields) {
    if (field.offset + field.length <= RESPONSE_SIZE) copy_field(field);
  }
}

unsigned vendor_query(uint8_t subcommand, StatusRule rule, std::initializer_list<Field> fields) {
  if (unsigned error = begin_vendor(subcommand)) return error;
  if (unsigned error = exchange(PLAIN_REQUEST)) return error;
  if (unsigned error = status(rule)) return error;
  copy_fields(fields);
  return ZOP_SUCCESS;
}

unsigned vendor_set(uint8_t subcommand, uint32_t value) {
  if (unsigned error = begin_vendor(subcommand)) return error;
  ft_buff[REQUEST_PAYLOAD] = static_cast<uint8_t>(value);
  if (unsigned error = exchange(PLAIN_REQUEST + 1)) return error;
  return status(STATUS_BYTE3);
}

unsigned vendor_text(uint8_t subcommand, StatusRule rule, Buffer buffer, uint16_t length) {
  if (unsigned error = capacity(buffer.size, buffer.minimum)) return error;
  if (unsigned error = begin_vendor(subcommand)) return error;
  memset(buffer.out, 0, buffer.minimum);
  if (unsigned error = exchange(PLAIN_REQUEST)) return error;
  if (unsigned error = status(rule)) return error;
  copy_field(bytes(ANSWER_PAYLOAD, length, buffer.out));
  return ZOP_SUCCESS;
}

// The download entry points do this, not the command library.
unsigned int zop_download_firmware() { return ZOP_ERR_INVALID_ARGUMENT; }
unsigned int zop_download_firmware_status() { return ZOP_ERR_INVALID_ARGUMENT; }
unsigned int zop_download_firmware_end() { return ZOP_ERR_INVALID_ARGUMENT; }
