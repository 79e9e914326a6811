// Conversions of identity fields. No value can index past a table.
#include "link/conversions.h"

#include <string.h>

static constexpr char HEX_DIGITS[] = "0123456789ABCDEF";
static constexpr char BCD_DIGITS[] = "0123456789*#abc?";  // the last one is the filler
static constexpr char MIN_DIGITS[] = "1234567890";        // IS-95 encodes digit 0 as 9

enum { BCD_FILLER = 15, MIN_FOURTH_ZERO = 10 };

namespace {
struct Month {
  char name[4];
  char number[3];
};
}  // namespace

static constexpr Month s_month[] = {
    {"Jan", "01"}, {"Feb", "02"}, {"Mar", "03"}, {"Apr", "04"}, {"May", "05"}, {"Jun", "06"},
    {"Jul", "07"}, {"Aug", "08"}, {"Sep", "09"}, {"Oct", "10"}, {"Nov", "11"}, {"Dec", "12"},
};

static char low_digit(uint8_t byte) { return BCD_DIGITS[byte & 0x0F]; }
static char high_digit(uint8_t byte) { return BCD_DIGITS[byte >> 4]; }

static void terminate_bcd(char* end, uint8_t last_nibble) {
  if (last_nibble != BCD_FILLER) *end = '\0';
}

void byte_to_HexAscii(const uint8_t* source, int count, char* destination) {
  for (int i = 0; i < count; ++i) {
    *destination++ = HEX_DIGITS[source[i] >> 4];
    *destination++ = HEX_DIGITS[source[i] & 0x0F];
  }
}

void bcd_to_ascii(const uint8_t* source, char* destination) {
  if (source == nullptr || destination == nullptr) return;
  uint8_t count = *source++;
  uint8_t last_nibble = 0;
  for (const uint8_t* end = source + count; source < end; ++source) {
    *destination++ = low_digit(*source);
    *destination++ = high_digit(*source);
    last_nibble = *source >> 4;
  }
  terminate_bcd(destination, last_nibble);
}

void Mobile_ID_bcd_to_ascii(const uint8_t* source, char* destination) {
  if (source == nullptr || destination == nullptr) return;
  uint8_t count = source[0];
  uint8_t last_nibble = 0;
  if (count > 0) {
    bool odd = (source[1] & 0x08) != 0;
    for (int i = 1; i <= count; ++i) {
      bool type_nibble = i == 1;  // type and indicator, not a digit
      bool filler = i == count && !odd;
      if (!type_nibble) *destination++ = low_digit(source[i]);
      if (!filler) *destination++ = high_digit(source[i]);
      last_nibble = filler ? source[i] & 0x0F : source[i] >> 4;
    }
  }
  terminate_bcd(destination, last_nibble);
}

void util_locationID_to_ascii(const uint8_t* location_area, char* destination) {
  const uint8_t* plmn = location_area;
  char* out = destination;
  *out++ = low_digit(plmn[0]);  // MCC digits 1, 2, 3
  *out++ = high_digit(plmn[0]);
  *out++ = low_digit(plmn[1]);
  *out++ = '-';
  *out++ = low_digit(plmn[2]);  // MNC digits 1, 2 and, unless it is filler, 3
  *out++ = high_digit(plmn[2]);
  if (plmn[1] >> 4 != BCD_FILLER) *out++ = high_digit(plmn[1]);
  memcpy(out, " 0x", 3);
  byte_to_HexAscii(location_area + 3, 2, out + 3);
}

// Three digits of a 10-bit MIN field. Values above 999 are not valid and wrap.
static void min_digits(uint32_t field, char* destination) {
  destination[0] = MIN_DIGITS[field / 100 % 10];
  destination[1] = MIN_DIGITS[field / 10 % 10];
  destination[2] = MIN_DIGITS[field % 10];
}

int MIN2_TO_DEC(uint32_t min2, char* destination) {
  min_digits(min2, destination);
  return 0;
}

int MIN1_TO_DEC(uint32_t min1, char* destination) {
  if (min1 == 0) {
    memset(destination, '0', 7);
    return 0;
  }
  uint32_t fourth = min1 >> 10 & 0x0F;
  min_digits(min1 >> 14 & 0x3FF, destination);
  destination[3] = fourth == MIN_FOURTH_ZERO ? '0' : BCD_DIGITS[fourth];
  min_digits(min1 & 0x3FF, destination + 4);
  destination[7] = '\0';
  return 0;
}

int parser_version(const char* build_text, char* destination) {
  const char* month = "00";
  for (const Month& row : s_month) {
    if (memcmp(build_text, row.name, 3) == 0) month = row.number;
  }
  memcpy(destination, month, 2);
  memcpy(destination + 2, build_text + 4, 2);
  memcpy(destination + 4, build_text + 9, 2);
  destination[6] = build_text[49] == 1 ? 'C' : 'E';
  destination[7] = '\0';
  return 7;
}
