// The function that each target defines, and helpers for all of them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <vector>

void fuzz(std::span<const uint8_t> input);

inline void require(bool holds) {
  if (!holds) abort();
}

// Takes up to this many bytes from the front.
inline std::vector<uint8_t> take(std::span<const uint8_t>& rest, size_t size) {
  std::span<const uint8_t> front = rest.first(std::min(size, rest.size()));
  rest = rest.subspan(front.size());
  return {front.begin(), front.end()};
}

inline std::string text_of(std::span<const uint8_t> input) { return {input.begin(), input.end()}; }
