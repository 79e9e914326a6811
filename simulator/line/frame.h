// The modem's side of the wire: HDLC-like frames with a CRC-16/X.25 (RFC 1662).
//
// Written separately from the module's codec, with Boost's CRC: one mistake can't hide in both.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace sim {

using Bytes = std::vector<uint8_t>;
using View = std::span<const uint8_t>;

constexpr uint8_t FLAG = 0x7E;    // ends a frame
constexpr uint8_t ESCAPE = 0x7D;  // stands before a stuffed byte

// payload with its check bytes, stuffed, and a closing flag.
Bytes frame(View payload);

// Collects bytes from the line into frames.
class Deframer {
 public:
  enum Verdict { PENDING, GOOD, BAD_CHECK, TOO_LONG };

  // Takes one byte; GOOD leaves a payload in payload(). Flags between frames are skipped.
  Verdict take(uint8_t byte);
  const Bytes& payload() const { return payload_; }

 private:
  Verdict close();
  Bytes raw_;  // unstuffed, check bytes included
  Bytes payload_;
  bool escaped_ = false;
};

}  // namespace sim
