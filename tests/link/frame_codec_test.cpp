// The frame codec against its plain form and hostile input.
#include <gtest/gtest.h>

#include <random>

#include "link/frame_codec.h"
#include "tests/link/plain_codec.h"
#include "tests/support/far_ends.h"

using test::Bytes;
using test::hex;
using test::to_hex;

// Encodes from an address that is this many bytes after an aligned one.
static Bytes encode(const Bytes& payload, size_t offset, bool leading_flag) {
  Bytes data(offset);
  data.insert(data.end(), payload.begin(), payload.end());
  Bytes wire(2 * (payload.size() + 2) + 2);
  auto length = static_cast<uint32_t>(payload.size());
  wire.resize(encode_frame(wire.data(), data.data() + offset, length, leading_flag));
  return wire;
}

TEST(FrameCodec, a_known_frame) { EXPECT_EQ(to_hex(encode({0x1D}, 0, false)), "1d 1c 3b 7e"); }

// Of a frame without its closing flag, at an address as above.
static void expect_decoded_as_by_the_plain_form(const Bytes& wire, size_t offset) {
  Bytes frame(offset);
  frame.insert(frame.end(), wire.begin(), wire.end());
  std::optional<Bytes> payload = plain_unframe(wire);
  auto length = static_cast<uint32_t>(wire.size());
  ASSERT_EQ(DiagPacketRXCRC(frame.data() + offset, length), payload ? 0 : -1);
  Bytes expected = payload.value_or(wire);
  frame.resize(offset + expected.size());
  ASSERT_EQ(to_hex({frame.begin() + static_cast<ptrdiff_t>(offset), frame.end()}),
            to_hex(expected));
  if (payload) expected.assign(m_pRxDataBufs, m_pRxDataBufs + m_nRxLen);
  ASSERT_EQ(expected, payload.value_or(wire));
}

// Payloads with no, some and only stuffed bytes at every length and alignment, and damaged frames.
TEST(FrameCodec, does_what_the_plain_form_does) {
  std::mt19937 random(1);
  for (size_t turn = 0; turn < 4 * 360; ++turn) {
    size_t share = turn % 4;
    Bytes payload(1 + turn / 4);
    for (uint8_t& byte : payload) {
      bool stuffed = random() % 27 < share * share * share;
      byte = static_cast<uint8_t>(stuffed ? 0x7D + random() % 2 : random());
    }
    Bytes wire = plain_frame(payload);
    ASSERT_EQ(to_hex(encode(payload, random() % 8, false)), to_hex(wire));
    ASSERT_EQ(to_hex(encode(payload, random() % 8, true)), "7e " + to_hex(wire));
    wire.pop_back();
    ASSERT_NO_FATAL_FAILURE(expect_decoded_as_by_the_plain_form(wire, random() % 8));
    wire[random() % wire.size()] = static_cast<uint8_t>(0x7C + random() % 4);
    ASSERT_NO_FATAL_FAILURE(expect_decoded_as_by_the_plain_form(wire, random() % 8));
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
  for (const char* text : {"7d 7d 7d", "01 02 7d", "7d 5e 7d 5d 7d", "7d 5e 7d", "1d 1c 3a"})
    expect_decoded_as_by_the_plain_form(hex(text), 0);
}
