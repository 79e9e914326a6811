// Bytes as text and back.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zopctl {

// A little-endian field.
inline uint16_t le16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }

std::string hex_of(std::span<const uint8_t> bytes);  // "0a 1b"

// Throws UsageError naming what; white space is ignored, most bytes at the most.
std::vector<uint8_t> bytes_of_hex(const std::string& what, const std::string& text, size_t most);

// "1.2 MB", "17.0 kB", "512 bytes".
std::string size_text(uint64_t bytes);

}  // namespace zopctl
