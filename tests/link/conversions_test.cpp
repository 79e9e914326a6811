// Identity conversions: the text, and that nothing is written after it.
#include "link/conversions.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "tests/support/world.h"

using test::Bytes;
using test::hex;

// What a conversion writes, on a background of "~"; a terminator is shown as "|".
static std::string painted(const std::function<void(char*)>& convert) {
  char canvas[41] = {};
  memset(canvas, '~', 40);
  convert(canvas);
  std::string text;
  for (size_t i = 0; i < 40; ++i) text += canvas[i] == '\0' ? '|' : canvas[i];
  return text.substr(0, text.find_last_not_of('~') + 1);
}

TEST(Conversions, digits_of_two_a_byte) {
  struct {
    void (*convert)(const uint8_t*, char*);
    const char* input;  // hex
    const char* text;
  } rows[] = {
      {bcd_to_ascii, "02 21 f3", "123?"},  // filler kept, no terminator
      {bcd_to_ascii, "02 21 43", "1234|"},
      {bcd_to_ascii, "00", "|"},
      {bcd_to_ascii, "03 ba dc e1", "*#ab1c|"},
      {bcd_to_ascii, "05 10 32 54 76 98", "0123456789|"},
      {Mobile_ID_bcd_to_ascii, "08 39 01 14 00 00 00 00 21", "310410000000012|"},  // 15 digits
      {Mobile_ID_bcd_to_ascii, "08 31 01 14 00 00 00 00 f1", "31041000000001|"},  // 14 and a filler
      {Mobile_ID_bcd_to_ascii, "01 11", "|"},
      {util_locationID_to_ascii, "13 f0 14 1a 2b", "310-41 0x1A2B"},
      {util_locationID_to_ascii, "13 00 14 1a 2b", "310-410 0x1A2B"},
  };
  for (auto& row : rows) {
    Bytes in = hex(row.input);
    EXPECT_EQ(painted([&](char* out) { row.convert(in.data(), out); }), row.text) << row.input;
  }
}

TEST(Conversions, hexadecimal) {
  Bytes in = hex("01 23 45 67 89 ab cd ef");
  EXPECT_EQ(painted([&](char* out) { byte_to_HexAscii(in.data(), 8, out); }), "0123456789ABCDEF");
  EXPECT_EQ(painted([&](char* out) { byte_to_HexAscii(in.data(), 0, out); }), "");
}

TEST(Conversions, mobile_identification_number) {
  struct {
    uint32_t value;
    const char* text;
  } min2[] = {{0, "111"}, {999, "000"}, {123, "234"}, {456, "567"}, {789, "890"}, {1023, "134"}};
  for (auto& row : min2) {
    EXPECT_EQ(painted([&](char* out) { EXPECT_EQ(MIN2_TO_DEC(row.value, out), 0); }), row.text);
  }
  struct {
    uint32_t first, fourth, last;
    const char* text;
  } min1[] = {{0, 0, 0, "0000000"}, {999, 10, 999, "0000000|"}, {123, 5, 0, "2345111|"}};
  for (auto& row : min1) {
    uint32_t value = row.first << 14 | row.fourth << 10 | row.last;
    EXPECT_EQ(painted([&](char* out) { EXPECT_EQ(MIN1_TO_DEC(value, out), 0); }), row.text);
  }
}

TEST(Conversions, build_date) {
  char build[64] = "Jan 05 2010 12:00:00";
  auto version = [&](char* out) { EXPECT_EQ(parser_version(build, out), 7); };
  const std::string months = "JanFebMarAprMayJunJulAugSepOctNovDec";
  for (size_t month = 0; month < 12; ++month) {
    months.copy(build, 3, 3 * month);
    std::string number = {char('0' + (month + 1) / 10), char('0' + (month + 1) % 10)};
    build[49] = month % 2 == 0 ? 1 : 2;
    EXPECT_EQ(painted(version), number + (month % 2 == 0 ? "0510C|" : "0510E|"));
  }
  memcpy(build, "Mai 31 1999", 11);
  EXPECT_EQ(painted(version), "003199E|");
}
