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

static int32_t decode(Bytes& frame_without_flag) {
  return DiagPacketRXCRC(frame_without_flag.data(),
                         static_cast<uint32_t>(frame_without_flag.size()));
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
    wire.pop_back();
    ASSERT_EQ(decode(wire), 0) << length;
    ASSERT_EQ(static_cast<size_t>(m_nRxLen), length);
    wire.resize(length);
    ASSERT_EQ(to_hex(wire), to_hex(payload));
    ASSERT_EQ(memcmp(m_pRxDataBufs, payload.data(), length), 0);
  }
}

TEST(FrameCodec, lengths_outside_the_limits_are_not_decoded) {
  Bytes buffer(5001, 0);
  for (uint32_t length : {0u, 1u, 2u, 3u, 5000u, 5001u, 0xFFFFFFFFu}) {
    m_nRxLen = -1;
    EXPECT_EQ(DiagPacketRXCRC(buffer.data(), length), -1) << length;
    bool decoded = length == 3 || length == 5000;
    EXPECT_EQ(m_nRxLen, decoded ? static_cast<int32_t>(length) - 2 : -1) << length;
  }
}

// The decoder must not read past an escape at the end of the input. The last one leaves fewer than
// the two check bytes. What is refused stays as it was received.
TEST(FrameCodec, damaged_frames_are_refused) {
  for (const char* text : {"7d 7d 7d", "01 02 7d", "7d 5e 7d 5d 7d", "7d 5e 7d", "1d 1c 3a"}) {
    Bytes buffer = hex(text);
    EXPECT_EQ(decode(buffer), -1) << text;
    EXPECT_EQ(to_hex(buffer), text);
  }
}
