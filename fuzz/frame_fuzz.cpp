// Feeds arbitrary bytes to the frame decoder and checks its rules: it reads and writes only the
// bytes it was given, leaves a refused input alone, and what it accepts encodes back to an
// equivalent frame. To get past the check sequence, every input is also tried as a payload.
#include "fuzz/fuzz.h"
#include "link/frame_codec.h"

// Decodes in a heap buffer of exactly this size, so that a sanitizer detects every access outside.
static int decode(std::vector<uint8_t>& buffer) {
  return DiagPacketRXCRC(buffer.data(), static_cast<uint32_t>(buffer.size()));
}

static void arbitrary(std::span<const uint8_t> input) {
  std::vector<uint8_t> buffer(input.begin(), input.end());
  if (decode(buffer) != 0) require(std::ranges::equal(buffer, input));
}

static void round_trip(std::span<const uint8_t> input) {
  if (input.empty() || input.size() > MAX_FRAME_PAYLOAD) return;
  std::vector<uint8_t> wire(2 * (input.size() + 2) + 2);
  uint32_t size = static_cast<uint32_t>(input.size());
  wire.resize(encode_frame(wire.data(), input.data(), size, false));
  require(wire.back() == 0x7E);
  wire.pop_back();
  require(std::find(wire.begin(), wire.end(), 0x7E) == wire.end());
  require(decode(wire) == 0);
  require(static_cast<size_t>(m_nRxLen) == size);
  require(std::ranges::equal(input, std::span(wire).first(size)));
}

void fuzz(std::span<const uint8_t> input) {
  arbitrary(input);
  round_trip(input);
}
