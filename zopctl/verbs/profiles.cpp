// zopctl profile: the packet data profiles. What stands where in a profile is the modem's: only its
// bytes and the texts among them are shown.
#include <fmt/format.h>

#include <algorithm>

#include "zopctl/host/refusals.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/failure.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

namespace {
struct Text {
  size_t offset;
  std::string text;
};
struct Profile {
  uint32_t number;
  std::vector<uint8_t> bytes;
  bool is_empty() const {
    return std::ranges::all_of(bytes, [](uint8_t byte) { return byte == 0; });
  }
};
}  // namespace

// Runs of at least three printable characters; shorter ones are numbers more often than texts.
static std::vector<Text> texts_in(const std::vector<uint8_t>& bytes) {
  constexpr size_t SHORTEST = 3;
  auto is_character = [](uint8_t byte) { return byte >= ' ' && byte <= '~'; };
  std::vector<Text> texts;
  for (auto at = bytes.begin(); at != bytes.end();) {
    auto first = std::find_if(at, bytes.end(), is_character);
    at = std::find_if_not(first, bytes.end(), is_character);
    if (at - first < static_cast<ptrdiff_t>(SHORTEST)) continue;
    texts.push_back({static_cast<size_t>(first - bytes.begin()), std::string(first, at)});
  }
  return texts;
}

static Json json_of(const std::vector<Text>& texts) {
  Json list = Json::array();
  for (const Text& row : texts) list.push_back({{"offset", row.offset}, {"text", row.text}});
  return list;
}

static std::string words_of(const std::vector<Text>& texts) {
  std::string words;
  for (const Text& row : texts)
    words += fmt::format("{}\"{}\" at {}", words.empty() ? "" : ", ", row.text, row.offset);
  return words.empty() ? "none" : words;
}

// They have odd numbers.
static std::vector<Profile> read_profiles(const ModuleLibrary& m) {
  std::vector<uint8_t> bytes(size_t{ZOP_PDP_PROFILE_SIZE} * ZOP_PDP_PROFILE_COUNT);
  require(m.zop_read_pdp_profile(bytes.data()), "profiles");
  std::vector<Profile> profiles;
  for (uint32_t k = 0; k < ZOP_PDP_PROFILE_COUNT; ++k) {
    auto first = bytes.begin() + ptrdiff_t{ZOP_PDP_PROFILE_SIZE} * k;
    profiles.push_back({2 * k + 1, {first, first + ZOP_PDP_PROFILE_SIZE}});
  }
  return profiles;
}

static Findings list_profiles(const ModuleLibrary& m, const Arguments& arguments) {
  Json list = Json::array();
  std::vector<Item> rows;
  for (const Profile& profile : read_profiles(m)) {
    std::vector<Text> texts = texts_in(profile.bytes);
    list.push_back({{"number", profile.number},
                    {"empty", profile.is_empty()},
                    {"texts", json_of(texts)},
                    {"data", hex_of(profile.bytes)}});
    rows.push_back(shown("", fmt::format("Profile {}", profile.number), true,
                         profile.is_empty() ? "empty" : "texts: " + words_of(texts)));
  }
  if (arguments.json) rows = {shown("list", "Profiles", list, "")};
  return one_section("profiles", "PDP profiles", rows);
}

static Findings show_profile(const ModuleLibrary& m, const Arguments& arguments) {
  uint32_t number = arguments.number("NUMBER");
  Profile profile = read_profiles(m)[number / 2];
  std::vector<Text> texts = texts_in(profile.bytes);
  return one_section("profile", "PDP profile",
                     {shown("number", "Number", number, std::to_string(number)),
                      yes_or_no("empty", "Empty", profile.is_empty()),
                      shown("texts", "Texts", json_of(texts), words_of(texts)),
                      shown("data", "Data", hex_of(profile.bytes), hexdump(profile.bytes))});
}

static zop_pdp_record record_of(const Arguments& arguments) {
  zop_pdp_record record = {};
  std::vector<uint8_t> bytes =
      bytes_of_hex("RECORD", arguments.text("RECORD"), sizeof record.bytes);
  std::ranges::copy(bytes, record.bytes);
  return record;
}

static void check_record(const Arguments& arguments) { record_of(arguments); }

static Findings write_profile(const ModuleLibrary& m, const Arguments& arguments) {
  zop_pdp_record record = record_of(arguments);
  require(m.zop_write_pdp_profile(record), "write profile");
  return confirmation("profiles", "PDP profiles",
                      fmt::format("profile {} written", record.bytes[0]));
}

const Verbs PROFILE_VERBS = {
    {.noun = "profile",
     .name = "list",
     .help = "the profiles, and the texts in them",
     .run = list_profiles},
    {.noun = "profile",
     .name = "show",
     .help = "one profile: its texts and bytes",
     .arguments = {{.name = "NUMBER",
                    .help = "the profile",
                    .choices = {"1", "3", "5", "7", "9", "11", "13", "15"}}},
     .run = show_profile},
    {.noun = "profile",
     .name = "write",
     .help = "write a profile",
     .arguments = {{.name = "RECORD",
                    .help = "up to 103 bytes in hexadecimal, the first is the profile number"}},
     .check = check_record,
     .run = write_profile},
};

}  // namespace zopctl
