// The check sequence of a frame as a plain table loop: the work that every codec must do.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

constexpr std::array<uint16_t, 256> crc_table() {
  std::array<uint16_t, 256> table{};
  for (unsigned i = 0; i < 256; ++i) {
    unsigned crc = i;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? crc >> 1 ^ 0x8408 : crc >> 1;
    table[i] = static_cast<uint16_t>(crc);
  }
  return table;
}

inline uint16_t plain_crc(const uint8_t* bytes, size_t size) {
  static constexpr std::array<uint16_t, 256> TABLE = crc_table();
  uint16_t crc = 0xFFFF;
  for (size_t i = 0; i < size; ++i) {
    crc = static_cast<uint16_t>(TABLE[(crc ^ bytes[i]) & 0xFF] ^ crc >> 8);
  }
  return crc;
}
