// The frame codec against an independent CRC and hostile input.
#include <gtest/gtest.h>

#include <random>

#include "link/frame_codec.h"
#include "tests/support/far_ends.h"

using test::Bytes;
using test::frame;
using test::hex;
using test::to_hex;

static Bytes encode(const Bytes& payload, bool leading_flag = false) {
  Bytes wire(2 * (payload.size() + 2) + 2);
  auto length = static_cast<uint32_t>(payload.size());
  wire.resize(encode_frame(wire.data(), payload.data(), length, leading_flag));
  return wire;
}

namespace {
struct Decoded {
  int32_t result;
  Bytes buffer;  // the caller's, as the decoder left it
};
}  // namespace

// Decodes a frame without its closing flag, in a buffer of the exact size.
static Decoded decode(const Bytes& wire) {
  Bytes buffer(wire.begin(), wire.end() - 1);
  int32_t result = DiagPacketRXCRC(buffer.data(), static_cast<uint32_t>(buffer.size()));
  return {result, buffer};
}

TEST(FrameCodec, a_known_frame) { EXPECT_EQ(to_hex(encode(hex("1d"))), "1d 1c 3b 7e"); }

TEST(FrameCodec, round_trip_of_every_length_and_byte_value) {
  std::mt19937 random(1);
  for (size_t length = 0; length <= 360; ++length) {
    Bytes payload(length);
    for (size_t i = 0; i < length; ++i) {
      uint8_t counted = static_cast<uint8_t>(length + i);
      uint8_t stuffed = (random() & 1) != 0 ? 0x7D : 0x7E;
      payload[i] = (random() & 3) != 0 ? counted : stuffed;
    }
    Bytes wire = encode(payload);
    ASSERT_EQ(to_hex(wire), to_hex(frame(payload)));
    ASSERT_EQ(to_hex(encode(payload, true)), "7e " + to_hex(wire));
    if (length == 0) continue;  // too short to decode: only the two check bytes
    Decoded decoded = decode(wire);
    ASSERT_EQ(decoded.result, 0) << length;
    ASSERT_EQ(static_cast<size_t>(m_nRxLen), length);
    decoded.buffer.resize(length);
    ASSERT_EQ(to_hex(decoded.buffer), to_hex(payload));
    ASSERT_EQ(memcmp(m_pRxDataBufs, payload.data(), length), 0);
  }
}

TEST(FrameCodec, damaged_frames_are_refused_and_left_as_received) {
  Bytes good = frame(hex("cf 20 00 00 00 7e 7d ff"));
  for (size_t bit = 0; bit < 8 * (good.size() - 1); ++bit) {
    Bytes damaged = good;
    damaged[bit / 8] ^= static_cast<uint8_t>(1 << bit % 8);
    Decoded decoded = decode(damaged);
    EXPECT_EQ(decoded.result, -1) << "bit " << bit;
    EXPECT_EQ(to_hex(decoded.buffer), to_hex({damaged.begin(), damaged.end() - 1}));
  }
}

TEST(FrameCodec, lengths_outside_the_limits_are_refused) {
  Bytes buffer(5001, 0);
  for (uint32_t length : {0u, 1u, 2u, 5001u, 0xFFFFFFFFu}) {
    EXPECT_EQ(DiagPacketRXCRC(buffer.data(), length), -1) << length;
  }
}

// The decoder must not read past an escape at the end of the input.
TEST(FrameCodec, a_lone_escape_at_the_end_is_refused) {
  for (const char* text : {"7d 7d 7d", "01 02 7d", "7d 5e 7d 5d 7d"}) {
    Bytes buffer = hex(text);
    EXPECT_EQ(DiagPacketRXCRC(buffer.data(), static_cast<uint32_t>(buffer.size())), -1) << text;
  }
  // Unstuffing leaves fewer than the two check bytes.
  Bytes buffer = hex("7d 5e 7d");
  EXPECT_EQ(DiagPacketRXCRC(buffer.data(), 3), -1);
}
