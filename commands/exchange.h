// The steps that every command performs: capacity, begin, exchange, status, copy.
//
// The functions below are these steps, in order. A plain query is one vendor_query; other commands
// use the steps directly. Results are the ZOP_ codes. Callers hold the module's lock, because all
// commands share ft_buff and fr_buff.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <initializer_list>

#include "include/zop.h"
#include "link/exchange.h"
#include "link/upcalls.h"

// Offsets of the vendor request and answer.
enum {
  SUBCOMMAND = 1,
  REQUEST_PAYLOAD = 3,
  STATUS = 3,  // 16-bit command status, 0 is success
  ANSWER_PAYLOAD = 5,
  PLAIN_REQUEST = 3,  // length of a request without payload
};

// The part of the command status that a command checks.
enum StatusRule { STATUS_IGNORED, STATUS_BYTE3, STATUS_WORD };

// One output: type, offset and length of the answer's field, and where to store it.
struct Field {
  enum Type : uint8_t { U8, S8, U16, S16, U32, BYTES } type;
  uint16_t offset;
  uint16_t length;
  void* out;
};

constexpr Field u8(uint16_t offset, uint32_t* out) { return {Field::U8, offset, 1, out}; }
constexpr Field s8(uint16_t offset, int32_t* out) { return {Field::S8, offset, 1, out}; }
constexpr Field u16(uint16_t offset, uint32_t* out) { return {Field::U16, offset, 2, out}; }
constexpr Field s16(uint16_t offset, int32_t* out) { return {Field::S16, offset, 2, out}; }
constexpr Field u32(uint16_t offset, uint32_t* out) { return {Field::U32, offset, 4, out}; }
constexpr Field bytes(uint16_t offset, uint16_t length, void* out) {
  return {Field::BYTES, offset, length, out};
}

// ZOP_ERR_BUFFER_TOO_SMALL with the minimum in *size, or ZOP_SUCCESS.
unsigned capacity(uint32_t* size, uint32_t minimum);

// ZOP_ERR_NOT_OPEN, or ZOP_SUCCESS with both buffers zeroed.
unsigned begin();

// Like begin, but zeroes the buffers even if the link is closed: the NV, PIN and SIM commands use
// it so that no PIN stays in memory after a failed attempt.
unsigned begin_clearing_first();

// Like begin, with the vendor header for subcommand in the request.
unsigned begin_vendor(uint8_t subcommand);

// Copies data into the request at offset, up to the end of the buffer.
void put_request(size_t offset, const void* data, size_t length);

// Sends the first length bytes of the request and reads the answer. ZOP_SUCCESS,
// ZOP_ERR_NO_RESPONSE or ZOP_ERR_BAD_RESPONSE.
unsigned exchange(int length);

// Like exchange, but with one attempt only.
unsigned direct_exchange(int length);

// Like exchange, with the caller's own buffers, so that it needs no lock; or ZOP_ERR_NOT_OPEN.
unsigned unlocked_exchange(const Request& request, uint8_t (&answer)[RESPONSE_SIZE]);

// ZOP_ERR_MODEM_FAILURE if the part of the status that rule names is not 0.
unsigned status(StatusRule rule);

// The opposite of status(STATUS_BYTE3): zop_set_backup and zop_test get 0 for a failure.
unsigned inverted_status();

// Copies the fields to the caller, numbers widened to 32 bits.
void copy_fields(std::initializer_list<Field> fields);

// A query without payload: all the steps.
unsigned vendor_query(uint8_t subcommand, StatusRule rule, std::initializer_list<Field> fields);

// A command with a payload of one byte and its status in byte 3.
unsigned vendor_set(uint8_t subcommand, uint32_t value);

// A query that copies length bytes to a buffer of capacity *size. If the link is open, minimum
// bytes of the buffer are cleared first.
struct Buffer {
  void* out;
  uint32_t* size;
  uint32_t minimum;
};
unsigned vendor_text(uint8_t subcommand, StatusRule rule, Buffer buffer, uint16_t length);
