// Feeds arbitrary bytes to the frame decoder and checks its rules: it reads and writes only the
// bytes it was given, leaves a refused input alone, and what it accepts encodes back to an
// equivalent frame. To get past the check sequence, every input is also tried as a payload.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "link/frame_codec.h"

static void require(bool condition) {
  if (!condition) abort();
}

// Decodes in a heap buffer of exactly this size, so that a sanitizer detects every access outside.
static int decode(std::vector<uint8_t>& buffer) {
  return DiagPacketRXCRC(buffer.data(), static_cast<uint32_t>(buffer.size()));
}

static void arbitrary_input(const uint8_t* data, size_t size) {
  std::vector<uint8_t> buffer(data, data + size);
  if (decode(buffer) != 0) require(std::equal(buffer.begin(), buffer.end(), data));
}

static void round_trip(const uint8_t* data, size_t size) {
  if (size == 0 || size > MAX_FRAME_PAYLOAD) return;
  std::vector<uint8_t> wire(2 * (size + 2) + 2);
  wire.resize(encode_frame(wire.data(), data, static_cast<uint32_t>(size), false));
  require(wire.back() == 0x7E);
  wire.pop_back();
  require(std::find(wire.begin(), wire.end(), 0x7E) == wire.end());
  require(decode(wire) == 0);
  require(static_cast<size_t>(m_nRxLen) == size);
  require(std::equal(data, data + size, wire.begin()));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  arbitrary_input(data, size);
  round_trip(data, size);
  return 0;
}
