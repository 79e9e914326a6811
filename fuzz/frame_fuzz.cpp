// Feeds arbitrary bytes to the frame decoder and compares it with its plain form: it reads and
// writes only the bytes it was given, and leaves a refused input alone. To get past the check
// sequence, every input is also tried as a payload.
#include "fuzz/fuzz.h"
#include "link/frame_codec.h"
#include "tests/link/plain_codec.h"

// Decodes in a heap buffer of exactly this size, so that a sanitizer detects every access outside.
static int decode(std::vector<uint8_t>& buffer) {
  return DiagPacketRXCRC(buffer.data(), static_cast<uint32_t>(buffer.size()));
}

static void arbitrary(std::span<const uint8_t> input) {
  if (input.size() < MIN_FRAME_LENGTH || input.size() > FRAME_BUFFER_SIZE) return;
  std::vector<uint8_t> buffer(input.begin(), input.end());
  auto payload = plain_unframe(input);
  require(decode(buffer) == (payload ? 0 : -1));
  if (payload) buffer.resize(static_cast<size_t>(m_nRxLen));
  require(payload ? buffer == *payload : std::ranges::equal(buffer, input));
}

static void encoded(std::span<const uint8_t> input) {
  if (input.empty() || input.size() > MAX_FRAME_PAYLOAD) return;
  std::vector<uint8_t> wire(2 * (input.size() + 2) + 2);
  uint32_t size = static_cast<uint32_t>(input.size());
  wire.resize(encode_frame(wire.data(), input.data(), size, false));
  require(wire == plain_frame(input));
  wire.pop_back();
  arbitrary(wire);
}

void fuzz(std::span<const uint8_t> input) {
  arbitrary(input);
  encoded(input);
}
