// Converts binary identity fields to text. The module itself uses only byte_to_HexAscii. Some of
// these do not terminate the text, as their comments say: callers zero the destination first.
#pragma once

#include <stdint.h>

// Two upper-case hexadecimal characters for each byte, high nibble first, not terminated.
void byte_to_HexAscii(const uint8_t* source, int count, char* destination);

// BCD digits (3GPP TS 24.008), low nibble first: 0..9, "*", "#", "a", "b", "c", and "?" for the
// filler. source[0] counts the bytes that follow. Terminated unless the last nibble is the filler.
void bcd_to_ascii(const uint8_t* source, char* destination);

// A mobile identity (3GPP TS 24.008, 10.5.1.4): its length, then the first digit in the high nibble
// of a byte whose bit 3 is set if the number of digits is odd. Terminated like bcd_to_ascii.
void Mobile_ID_bcd_to_ascii(const uint8_t* source, char* destination);

// A location area, 3 bytes of PLMN identity and 2 bytes of area code, as "310-410 0x1A2B" (14 or 15
// characters), not terminated.
void util_locationID_to_ascii(const uint8_t* location_area, char* destination);

// MIN2 of 10 bits (IS-95) as 3 characters, not terminated. Returns 0.
int MIN2_TO_DEC(uint32_t min2, char* destination);

// MIN1 of 24 bits (IS-95) as 7 digits and a terminator; a MIN1 of 0 as seven "0" without one.
// Returns 0.
int MIN1_TO_DEC(uint32_t min1, char* destination);

// A build text of at least 50 bytes that starts with "Mmm dd yyyy", as "mmddyyC" or "mmddyyE",
// terminated. Returns 7.
int parser_version(const char* build_text, char* destination);
