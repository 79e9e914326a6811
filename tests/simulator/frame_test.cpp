// The simulator's own framing: known frames, and what it drops.
#include "simulator/line/frame.h"

#include <gtest/gtest.h>

using namespace sim;

static Deframer::Verdict take(Deframer& deframer, const Bytes& wire) {
  Deframer::Verdict verdict = Deframer::PENDING;
  for (uint8_t byte : wire) verdict = deframer.take(byte);
  return verdict;
}

TEST(SimulatorFrame, known_frames_both_ways) {
  struct {
    Bytes payload, wire;
  } rows[] = {
      {{0x1D}, {0x1D, 0x1C, 0x3B, 0x7E}},
      {{0xCF, 0x20, 0x00}, {0xCF, 0x20, 0x00, 0xA2, 0xA5, 0x7E}},
      {{0x7E}, {0x7D, 0x5E, 0x81, 0x6A, 0x7E}},
      {{0x7D}, {0x7D, 0x5D, 0x1A, 0x58, 0x7E}},
  };
  Deframer deframer;
  for (auto& row : rows) {
    EXPECT_EQ(frame(row.payload), row.wire);
    EXPECT_EQ(take(deframer, row.wire), Deframer::GOOD);
    EXPECT_EQ(deframer.payload(), row.payload);
  }
}

TEST(SimulatorFrame, drops_what_is_damaged_and_takes_the_next) {
  Deframer deframer;
  EXPECT_EQ(take(deframer, {0x7E, 0x7E}), Deframer::PENDING);
  EXPECT_EQ(take(deframer, {0x1D, 0x1C, 0x3A, 0x7E}), Deframer::BAD_CHECK);
  EXPECT_EQ(take(deframer, {0x1D, 0x7E}), Deframer::BAD_CHECK);
  EXPECT_EQ(take(deframer, {0x1D, 0x1C, 0x3B, 0x7D, 0x7E}), Deframer::BAD_CHECK);
  EXPECT_EQ(take(deframer, Bytes(20000, 0x55)), Deframer::PENDING);
  EXPECT_EQ(take(deframer, {0x7E}), Deframer::TOO_LONG);
  EXPECT_EQ(take(deframer, {0x1D, 0x1C, 0x3B, 0x7E}), Deframer::GOOD);
}
