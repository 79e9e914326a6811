// Little- and big-endian fields at any address, read and written by shifts: records on the wire are
// packed, and the device's processor can't load unaligned words.
#pragma once

#include <stdint.h>

inline uint16_t get_le16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }

inline int16_t get_le16_signed(const uint8_t* p) { return static_cast<int16_t>(get_le16(p)); }

inline uint32_t get_le32(const uint8_t* p) {
  return p[0] | static_cast<uint32_t>(p[1]) << 8 | static_cast<uint32_t>(p[2]) << 16 |
         static_cast<uint32_t>(p[3]) << 24;
}

inline uint16_t get_be16(const uint8_t* p) { return static_cast<uint16_t>(p[0] << 8 | p[1]); }

inline uint32_t get_be32(const uint8_t* p) {
  return static_cast<uint32_t>(get_be16(p)) << 16 | get_be16(p + 2);
}

inline void put_be16(uint8_t* p, unsigned value) {
  p[0] = static_cast<uint8_t>(value >> 8);
  p[1] = static_cast<uint8_t>(value);
}

inline void put_be32(uint8_t* p, uint32_t value) {
  put_be16(p, value >> 16);
  put_be16(p + 2, value);
}

inline void put_le16(uint8_t* p, unsigned value) {
  p[0] = static_cast<uint8_t>(value);
  p[1] = static_cast<uint8_t>(value >> 8);
}

inline void put_le32(uint8_t* p, uint32_t value) {
  put_le16(p, value);
  put_le16(p + 2, value >> 16);
}

// A text buffer as the bytes that the command library fills.
inline uint8_t* text_bytes(char* text) { return static_cast<uint8_t*>(static_cast<void*>(text)); }
