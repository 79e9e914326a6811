// The frame codec in its plain form, one bit after another: the reference for the module's.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

inline uint16_t plain_fcs(std::span<const uint8_t> bytes) {
  unsigned fcs = 0xFFFF;
  for (uint8_t byte : bytes) {
    fcs ^= byte;
    for (int bit = 0; bit < 8; ++bit) fcs = (fcs & 1) != 0 ? fcs >> 1 ^ 0x8408 : fcs >> 1;
  }
  return static_cast<uint16_t>(~fcs);
}

inline std::vector<uint8_t> plain_frame(std::span<const uint8_t> payload) {
  std::vector<uint8_t> frame;
  auto put = [&](unsigned byte) {
    bool stuffed = byte == 0x7D || byte == 0x7E;
    if (stuffed) frame.push_back(0x7D);
    frame.push_back(static_cast<uint8_t>(stuffed ? byte ^ 0x20 : byte));
  };
  for (uint8_t byte : payload) put(byte);
  put(plain_fcs(payload) & 0xFF);
  put(plain_fcs(payload) >> 8);
  frame.push_back(0x7E);
  return frame;
}

// The payload of the bytes between the flags, if they are a good frame.
inline std::optional<std::vector<uint8_t>> plain_unframe(std::span<const uint8_t> frame) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i < frame.size(); ++i) {
    bool escape = frame[i] == 0x7D;
    if (escape && ++i == frame.size()) return std::nullopt;
    bytes.push_back(escape ? frame[i] ^ 0x20 : frame[i]);
  }
  if (bytes.size() < 2 || plain_fcs(bytes) != 0x0F47) return std::nullopt;
  bytes.resize(bytes.size() - 2);
  return bytes;
}
