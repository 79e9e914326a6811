// What a redacted capture still shows: of each frame, which bytes are blank.
#include "zopctl/host/redaction.h"

#include <gtest/gtest.h>

#include <sstream>

#include "simulator/requests/requests.h"

using sim::Bytes;
using sim::CapturedPacket;

// "cf 33 00*4" repeats a byte.
static Bytes bytes_of(const std::string& text) {
  Bytes bytes;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    size_t count = word.size() > 2 ? std::stoul(word.substr(3)) : 1;
    bytes.insert(bytes.end(), count, static_cast<uint8_t>(std::stoul(word, nullptr, 16)));
  }
  return bytes;
}

static Bytes blanked(zopctl::Redaction& redaction, CapturedPacket::Direction direction,
                     const std::string& payload, bool flag) {
  Bytes wire = sim::frame(bytes_of(payload));
  if (flag) wire.insert(wire.begin(), 0x7E);
  sim::Deframer deframer;
  for (uint8_t byte : redaction.blank({{}, direction, wire})) deframer.take(byte);
  return deframer.payload();
}

TEST(Redaction, blanks_secrets_places_and_what_it_does_not_know) {
  struct {
    const char* name;
    const char* payload;
    const char* shown;
  } rows[] = {
      {"ESN", "01 78 56 34 12", "01 30*4"},
      {"an unknown command", "f0 12 00 34 00", "f0 30*3 00"},
      {"an unknown vendor request", "cf fe 00 01 00 05", "cf 30*5"},
      {"an NV item", "26 0b 00 01 00 02 00*126 01 00", "26 0b 00 30*3 00*126 01 00"},
      {"an NV item is written", "27 2d 41 31*4", "27 2d 41 30*4"},
      {"a harmless NV item", "26 07 17 01 02 03", "26 07 17 01 02 03"},
      {"an NV request that is cut", "26 0a", "26 0a"},
      {"a message", "d0 00 00 09 02 01 00 31*2 00*34 41 00", "d0 00 00 09 30*40 00"},
      {"a PIN", "d2 01 00*9 31*4 00*4", "d2 01 00*9 30*4 00*4"},
      {"old and new PIN", "d2 02 00*9 31*4 00*4 32*4", "d2 02 00*9 30*12"},
      {"a key", "d2 05 00*9 31*8 32*8", "d2 05 00*9 30*16"},
      {"a refused PIN", "14 d2 01 00*9 31*4", "14 d2 01 00*9 30*4"},
      {"the state of the card", "d2 00 00 00 00 00 02 03 03", "d2 00 00 00 00 00 02 03 03"},
      {"an unknown request of the card", "d2 06 00 31", "d2 30*3"},
      {"a profile", "cf 46 00 00 00 03 61 00 62", "cf 46 00 00 00 03 30*3"},
      {"a profile is written", "cf 1b 00 03 61 00 62", "cf 1b 00 03 30*3"},
      {"phone number", "cf 07 00 00 00 31*9 00*27", "cf 07 00 00 00 30*9 00*27"},
      {"ICCID", "cf 23 00 00 00 31*20", "cf 23 00 00 00 30*20"},
      {"IMEI", "cf 67 00 00 00 31*15 00", "cf 67 00 00 00 30*15 00"},
      {"IMSI", "cf 68 00 00 00 31*15 00", "cf 68 00 00 00 30*15 00"},
      {"a call", "cf 63 00 02 31*2 00*31", "cf 63 00 02 30*2 00*31"},
      {"a call's event", "cf 3e 00 00 00 00*2 31*2 00*79 02 00*5",
       "cf 3e 00 00 00 00*2 30*82 00*5"},
      {"an address", "cf 3f 00 00 00 00*4 09 00 1f 00*19 04 0a 40*3 00*16",
       "cf 3f 00 00 00 00*4 09 00 1f 00*19 04 30*4 00*16"},
      {"a file of the SIM", "cf 4b 00 00 00 02 00*3 41 42", "cf 4b 00 00 00 02 00*3 30*2"},
      {"routing area", "cf 2f 00 00 00 07", "cf 2f 00 00 00 30"},
      {"location area", "cf 32 00 00 00 30*8 31*6", "cf 32 00 00 00 30*14"},
      {"cell", "cf 33 00 00 00 01 00 01 00", "cf 33 00 00 00 30*3 00"},
      {"cells around", "cf 2d 00 00 00 01 00*3 01 02 00 07*4", "cf 2d 00 00 00 01 00*3 30*7"},
      {"a screen of WCDMA",
       "cf 34 00 00 00 05 02 01 54*32 31*15 00 32*15 00 11 00*3 07*4 01 33*6 34*4 09 00*3 ff*255",
       "cf 34 00 00 00 05 02 01 54*32 30*15 00 30*15 00 11 00*3 30*4 01 33*6 30*5 00*3 ff*255"},
      {"a screen of GSM", "cf 34 00 00 00 03 00*284 01 00*3 01 02 00 07*4 05*47 ff*2",
       "cf 34 00 00 00 03 00*284 01 00*3 30*54 ff*2"},
      {"country", "cf 30 00 00 00 32 36 32", "cf 30 00 00 00 32 36 32"},
      {"a request alone", "cf 33 00", "cf 33 00"},
  };
  for (auto& row : rows) {
    for (auto direction : {CapturedPacket::TO_MODEM, CapturedPacket::FROM_MODEM}) {
      zopctl::Redaction redaction;
      EXPECT_EQ(blanked(redaction, direction, row.payload, false), bytes_of(row.shown))
          << row.name << ", direction " << direction;
    }
  }
}

TEST(Redaction, keeps_the_protocol_of_a_download_but_no_memory) {
  struct {
    const char *request, *answer, *shown;
  } rows[] = {
      {"12 00*4 00 04", "13 00*4 00 04 01 02 03 04", "13 00*4 00 04 30*4"},
      {"10", "11 00 0c 01 64", "11 00 0c 01 64"},
      {"01 51", "02 51", "02 51"},
      {"17 01", "18 01 d2 31", "18 01 30*2"},
      {"10", "cf 67 00 00 00 31", "cf 67 00 00 00 30"},  // late, to another request
      {"10", "55 01", "55 30"},
  };
  for (auto& row : rows) {
    zopctl::Redaction redaction;
    EXPECT_EQ(blanked(redaction, CapturedPacket::TO_MODEM, row.request, true),
              bytes_of(row.request));
    EXPECT_EQ(blanked(redaction, CapturedPacket::FROM_MODEM, row.answer, true),
              bytes_of(row.shown));
  }
}

TEST(Redaction, takes_no_request_with_a_stray_flag_for_a_download) {
  zopctl::Redaction redaction;
  EXPECT_EQ(blanked(redaction, CapturedPacket::TO_MODEM, "d2 01 00*9 31*4", true),
            bytes_of("d2 01 00*9 30*4"));
}

// A request that is added to the modem must be added to what is redacted, or is blanked.
TEST(Redaction, knows_every_request_of_the_modem) {
  for (const std::string& line : sim::describe_requests()) {
    std::istringstream words(line);
    std::string command, subcommand;
    words >> command >> command >> subcommand;
    std::string payload = command + (subcommand == "--" ? "" : " " + subcommand) + " 01";
    zopctl::Redaction redaction;
    Bytes shown = blanked(redaction, CapturedPacket::TO_MODEM, payload, false);
    bool blank = subcommand != "--" && shown.at(1) != bytes_of(payload).at(1);
    EXPECT_FALSE(blank) << line;
  }
}
