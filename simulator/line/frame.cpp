// Framing. A frame longer than any host sends is dropped up to the next flag.
#include "simulator/line/frame.h"

#include <boost/crc.hpp>

namespace sim {

constexpr uint8_t ESCAPE_BIT = 0x20;
constexpr size_t MAX_FRAME = 8192;

static uint16_t crc_of(View bytes) {
  boost::crc_optimal<16, 0x1021, 0xFFFF, 0xFFFF, true, true> crc;
  crc.process_bytes(bytes.data(), bytes.size());
  return crc.checksum();
}

static void append_stuffed(Bytes& wire, unsigned byte) {
  auto plain = static_cast<uint8_t>(byte);
  if (plain == FLAG || plain == ESCAPE) {
    wire.push_back(ESCAPE);
    plain ^= ESCAPE_BIT;
  }
  wire.push_back(plain);
}

Bytes frame(View payload) {
  Bytes wire;
  wire.reserve(payload.size() + 8);
  for (uint8_t byte : payload) append_stuffed(wire, byte);
  unsigned crc = crc_of(payload);
  append_stuffed(wire, crc & 0xFF);
  append_stuffed(wire, crc >> 8);
  wire.push_back(FLAG);
  return wire;
}

Deframer::Verdict Deframer::take(uint8_t byte) {
  if (byte == FLAG) return close();
  if (raw_.size() > MAX_FRAME) return PENDING;
  if (byte == ESCAPE) {
    escaped_ = true;
    return PENDING;
  }
  raw_.push_back(escaped_ ? byte ^ ESCAPE_BIT : byte);
  escaped_ = false;
  return PENDING;
}

Deframer::Verdict Deframer::close() {
  Bytes raw;
  raw.swap(raw_);
  bool cut = escaped_;
  escaped_ = false;
  if (raw.empty() && !cut) return PENDING;
  if (raw.size() > MAX_FRAME) return TOO_LONG;
  if (cut || raw.size() < 3) return BAD_CHECK;
  size_t size = raw.size() - 2;
  if (crc_of({raw.data(), size}) != (raw[size] | raw[size + 1] << 8)) return BAD_CHECK;
  raw.resize(size);
  payload_ = std::move(raw);
  return GOOD;
}

}  // namespace sim
