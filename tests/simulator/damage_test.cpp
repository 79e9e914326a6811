// What each fault puts on the line instead of one answer, and when the device goes and comes back.
#include "simulator/damage.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

using namespace sim;

static std::string shown(const std::vector<Output>& outputs) {
  std::string text;
  for (const Output& output : outputs) {
    if (output.at > Time{0}) text += fmt::format("after {} ms ", output.at.count() / 1000);
    if (output.kind == Output::HANGS_UP) text += "gone ";
    if (output.kind == Output::COMES_BACK) text += "back ";
    if (output.kind == Output::SENDS) text += fmt::format("{:02x} ", fmt::join(output.bytes, ""));
    text += "| ";
  }
  return text;
}

TEST(Damage, of_an_answer) {
  struct {
    const char* fault;
    const char* line;
  } rows[] = {
      {"silence", ""},
      {"delay", "after 1000 ms 1d1c3b7e | "},
      {"delay=20:at=1", "1d | after 20 ms 1c3b7e | "},
      {"delay=20:at=9", "1d1c3b | after 20 ms 7e | "},
      {"bad-crc", "1d1c3a7e | "},
      {"cut=2", "1d1c | "},
      {"cut=0", ""},
      {"shorten=9", "1d1c3b7e | "},
      {"pieces=3", "1d1c3b | after 10 ms 7e | "},
      {"wrong-echo=0", "0d9d2b7e | "},
      {"wrong-echo=1", "1d1c3b7e | "},
      {"extra=2", "55551d1c3b7e | "},
      {"insert=126:at=1", "1d7e | 1c3b7e | "},
      {"lose", "1c3b7e | "},
      {"lose=1", "1d | 3b7e | "},
      {"lose=9", "1d1c3b | "},
      {"hang-up=2", "1d1c | after 1 ms gone | "},
      {"hang-up:back=3", "after 1 ms gone | after 4 ms back | "},
      {"duplicate", "1d1c3b7e1d1c3b7e | "},
      {"duplicate=5", "1d1c3b7e | after 5 ms 1d1c3b7e | "},
      {"status=258", "1d000002017a257e | "},
      {"flip=9:at=1", "1d1c39 | 7e | "},
      {"flip=39", "9d | 1c3b7e | "},
      {"other", "1d1c3b7e | "},  // the modem has made it the other answer
  };
  for (auto& row : rows) {
    EXPECT_EQ(shown(damaged(parse_fault(row.fault), {0x1D}, Time{0})), row.line) << row.fault;
  }
}

TEST(Damage, a_bad_check_is_never_a_flag_or_an_escape) {
  for (unsigned value = 0; value < 0x10000; ++value) {
    Bytes payload = {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8)};
    Bytes bad = damaged(parse_fault("bad-crc"), payload, Time{0}).at(0).bytes;
    Deframer deframer;
    for (uint8_t byte : Bytes(bad.begin(), bad.end() - 1)) {
      ASSERT_EQ(deframer.take(byte), Deframer::PENDING) << value;
    }
    ASSERT_EQ(deframer.take(bad.back()), Deframer::BAD_CHECK) << value;
  }
}
