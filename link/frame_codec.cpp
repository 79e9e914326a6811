// The frame codec: one pass over the bytes in each direction for both check sequence and stuffing,
// four bytes at a step where none is stuffed.
#include "link/frame_codec.h"

#include <stddef.h>
#include <string.h>

#include <array>

#include "link/serial_port.h"

enum : uint8_t { ESCAPE_BIT = 0x20 };
enum : uint16_t { FCS_INIT = 0xFFFF, FCS_GOOD = 0xF0B8 };

static_assert(2 * (MAX_FRAME_PAYLOAD + 2) + 2 <= FRAME_BUFFER_SIZE);

constinit uint8_t m_pTxBuf[FRAME_BUFFER_SIZE] = {};
constinit int32_t m_nRxLen = 0;

enum : ptrdiff_t { STEP = 4 };

// What a byte does to the check sequence when n more bytes follow it in a step: FCS_TABLE[byte][n].
// With n = 0 this is the table of RFC 1662, appendix C.2.
using FcsTable = std::array<std::array<uint16_t, STEP>, 256>;
static constexpr FcsTable make_fcs_table() {
  FcsTable table{};
  for (unsigned byte = 0; byte < table.size(); ++byte) {
    unsigned fcs = byte;
    for (uint16_t& effect : table[byte]) {
      for (int bit = 0; bit < 8; ++bit) fcs = (fcs & 1) != 0 ? fcs >> 1 ^ 0x8408 : fcs >> 1;
      effect = static_cast<uint16_t>(fcs);
    }
  }
  return table;
}
static constexpr FcsTable FCS_TABLE = make_fcs_table();

static uint16_t fcs_step(uint16_t fcs, uint8_t byte) {
  return static_cast<uint16_t>(FCS_TABLE[(fcs ^ byte) & 0xFF][0] ^ (fcs >> 8));
}

static bool is_stuffed(uint8_t byte) { return byte == FRAME_FLAG || byte == FRAME_ESCAPE; }

static uint8_t* put_stuffed(uint8_t* out, uint8_t byte) {
  if (is_stuffed(byte)) {
    *out++ = FRAME_ESCAPE;
    byte ^= ESCAPE_BIT;
  }
  *out++ = byte;
  return out;
}

namespace {
// How far a frame has been coded.
struct Pass {
  const uint8_t* in;
  uint8_t* out;
  uint16_t fcs = FCS_INIT;
};
}  // namespace

// Copies four bytes at a step until one of the next four is stuffed or fewer are left. Single bytes
// are read: the device can't load words from any address, and the check sequence needs each byte.
static inline Pass copy_plain(Pass at, const uint8_t* end) {
  while (end - at.in >= STEP) {
    const uint8_t* in = at.in;
    if (is_stuffed(in[0]) || is_stuffed(in[1]) || is_stuffed(in[2]) || is_stuffed(in[3])) break;
    const uint8_t a = in[0], b = in[1], c = in[2], d = in[3];
    unsigned first_two = FCS_TABLE[a ^ (at.fcs & 0xFF)][3] ^ FCS_TABLE[b ^ at.fcs >> 8][2];
    at.fcs = static_cast<uint16_t>(first_two ^ FCS_TABLE[c][1] ^ FCS_TABLE[d][0]);
    at.out[0] = a;
    at.out[1] = b;
    at.out[2] = c;
    at.out[3] = d;
    at.in += STEP;
    at.out += STEP;
  }
  return at;
}

uint32_t encode_frame(uint8_t* frame, const uint8_t* data, uint32_t length, bool leading_flag) {
  const uint8_t* end = data + length;
  Pass at = {data, frame};
  if (leading_flag) *at.out++ = FRAME_FLAG;
  while (at.in < end) {
    at = copy_plain(at, end);
    if (at.in == end) break;
    at.fcs = fcs_step(at.fcs, *at.in);
    at.out = put_stuffed(at.out, *at.in++);
  }
  at.fcs = static_cast<uint16_t>(~at.fcs);
  at.out = put_stuffed(at.out, static_cast<uint8_t>(at.fcs));
  at.out = put_stuffed(at.out, static_cast<uint8_t>(at.fcs >> 8));
  *at.out++ = FRAME_FLAG;
  return static_cast<uint32_t>(at.out - frame);
}

int32_t decode_frame(const uint8_t* frame, uint32_t length, uint8_t* payload,
                     int32_t* payload_length) {
  if (length < MIN_FRAME_LENGTH || length > FRAME_BUFFER_SIZE) return -1;
  const uint8_t* end = frame + length;
  bool cut = false;  // the frame ends with an escape
  Pass at = {frame, payload};
  while (at.in < end) {
    at = copy_plain(at, end);
    if (at.in == end) break;
    uint8_t byte = *at.in++;
    if (byte == FRAME_ESCAPE) {
      cut = at.in == end;
      if (cut) break;
      byte = *at.in++ ^ ESCAPE_BIT;
    }
    *at.out++ = byte;
    at.fcs = fcs_step(at.fcs, byte);
  }
  *payload_length = static_cast<int32_t>(at.out - payload) - 2;
  return cut || *payload_length < 0 || at.fcs != FCS_GOOD ? -1 : 0;
}

int32_t DiagPacketRXCRC(uint8_t* buffer, uint32_t length) {
  if (decode_frame(buffer, length, m_pRxDataBufs, &m_nRxLen) != 0) return -1;
  bool stuffed = static_cast<uint32_t>(m_nRxLen) + 2 != length;
  if (stuffed) memcpy(buffer, m_pRxDataBufs, static_cast<size_t>(m_nRxLen));
  return 0;
}

// The port is claimed before the frame is built, so that no other sender overwrites the frame while
// this one waits for the port.
int32_t DiagPacketTXCRC(const uint8_t* data, uint32_t length, int32_t leading_flag) {
  PortUse port;
  if (length > MAX_FRAME_PAYLOAD || !claim_port(port)) return PORT_ERROR;
  uint32_t framed = encode_frame(m_pTxBuf, data, length, leading_flag != 0);
  return write_claimed(port, m_pTxBuf, framed);
}
