// Bytes as text and back.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zopctl {

// Reads a little-endian field.
inline uint16_t le16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }
inline uint32_t le32(const uint8_t* p) {
  return le16(p) | static_cast<uint32_t>(le16(p + 2)) << 16;
}

std::string hex_of(std::span<const uint8_t> bytes);  // "0a 1b"

// Lines of an offset, 16 bytes and their characters, each begun on a new line and indented to stand
// below a label. Lines that repeat the one before are a single "*".
std::string hexdump(std::span<const uint8_t> bytes);

// Ignores white space. Throws UsageError, naming what, unless there are 1 to max bytes.
std::vector<uint8_t> bytes_of_hex(const std::string& what, const std::string& text, size_t max);

// "1.2 MB", "17.0 kB", "512 bytes".
std::string size_text(uint64_t bytes);

}  // namespace zopctl
