// zopctl plmn: the PLMN lists of the SIM.
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <sstream>

#include "zopctl/host/refusals.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

using Json = nlohmann::ordered_json;
using View = std::span<const uint8_t>;

constexpr size_t ENTRY = 8;  // bytes: MCC, MNC, two for the technology
constexpr size_t USER_ENTRIES = 15;
constexpr uint8_t TECHNOLOGY = 128;

static std::string technology(uint8_t first, uint8_t second) {
  if (first == TECHNOLOGY && second == 0) return "umts";
  if (first == 0 && second == TECHNOLOGY) return "gsm";
  return fmt::format("{}_{}", first, second);
}

// Null for what is no part of a PLMN.
static Json digits(View field, size_t least) {
  std::string text = printable(field);
  bool good = text.size() >= least && std::ranges::all_of(text, isdigit);
  return good ? Json(text) : Json();
}

// The block starts with its number of entries. An entry has 6 bytes, or 8 with technology.
static void add_entries(Json& list, View block, size_t width) {
  size_t count = std::min<size_t>(block[0], (block.size() - 1) / width);
  for (size_t i = 0; i < count; ++i) {
    View entry = block.subspan(1 + i * width, width);
    Json plmn = {{"mcc", digits(entry.first(3), 3)}, {"mnc", digits(entry.subspan(3, 3), 2)}};
    if (width == ENTRY) plmn["technology"] = technology(entry[6], entry[7]);
    list.push_back(plmn);
  }
}

static std::string text_of(const Json& list) {
  std::string text;
  for (const Json& plmn : list) {
    if (!text.empty()) text += ", ";
    auto part = [&](const char* key) {
      return plmn[key].is_null() ? "?" : plmn[key].get<std::string>();
    };
    text += part("mcc") + "-" + part("mnc");
    if (plmn.contains("technology"))
      text += fmt::format(" {}", plmn["technology"].get<std::string>());
  }
  return text.empty() ? "(empty)" : text;
}

// A list that comes in one answer.
static Json whole_list(unsigned (*get)(uint8_t*), size_t size, size_t width, const char* what) {
  std::vector<uint8_t> list(size);
  require(get(list.data()), what);
  Json entries = Json::array();
  add_entries(entries, list, width);
  return entries;
}

static Json home(const ModuleLibrary& m) {
  return whole_list(m.zop_get_uim_data_hplmn, ZOP_HPLMN_LIST_SIZE, ENTRY, "home list");
}

static Json user(const ModuleLibrary& m) {
  return whole_list(m.zop_get_uim_data_uplmn, ZOP_UPLMN_LIST_SIZE, ENTRY, "user list");
}

static Json forbidden(const ModuleLibrary& m) {
  return whole_list(m.zop_get_uim_data_fplmn, ZOP_FPLMN_LIST_SIZE, ZOP_PLMN_SIZE, "forbidden list");
}

// The operator's list is read in blocks of 20; 256 is the highest first entry to ask for.
static Json operators(const ModuleLibrary& m) {
  Json entries = Json::array();
  uint32_t total = 1;
  for (uint32_t first = 1; first <= total && first <= 256; first += 20) {
    uint8_t block[ZOP_PLMN_BLOCK_SIZE];
    require(m.zop_get_uim_data_oplmn_partial(first, &total, block), "operator list");
    add_entries(entries, block, ENTRY);
  }
  return entries;
}

static Json registered_plmn(const ModuleLibrary& m) {
  uint8_t plmn[1 + ZOP_PLMN_SIZE] = {1};
  require(m.zop_get_uim_data_rplmn(plmn + 1), "registered PLMN");
  Json entries = Json::array();
  if (plmn[1] != 0) add_entries(entries, plmn, ZOP_PLMN_SIZE);
  return entries;
}

namespace {
struct List {
  const char* key;
  const char* label;
  Json (*read)(const ModuleLibrary&);
};
}  // namespace
static const List LISTS[] = {{"home", "Home", home},
                             {"user", "User", user},
                             {"operator", "Operator", operators},
                             {"forbidden", "Forbidden", forbidden},
                             {"registered", "Registered", registered_plmn}};

static Findings list(const ModuleLibrary& m, const Arguments& arguments) {
  std::vector<Item> items;
  for (const List& list : LISTS) {
    if (arguments.has("LIST") && arguments.text("LIST") != list.key) continue;
    Json entries = list.read(m);
    items.push_back(shown(list.key, list.label, entries, text_of(entries)));
  }
  return one_section("plmn", "PLMN lists", items);
}

// "310-410:gsm" as an entry of 8 bytes.
static void put_entry(const std::string& word, uint8_t* entry) {
  size_t dash = word.find('-');
  size_t colon = word.find(':');
  std::string mcc = word.substr(0, dash);
  std::string mnc = dash == std::string::npos ? "" : word.substr(dash + 1, colon - dash - 1);
  std::string kind = colon == std::string::npos ? "umts" : word.substr(colon + 1);
  auto digits = [](const std::string& s) {
    return s.find_first_not_of("0123456789") == std::string::npos;
  };
  bool good = mcc.size() == 3 && (mnc.size() == 2 || mnc.size() == 3) && digits(mcc + mnc) &&
              (kind == "gsm" || kind == "umts");
  if (!good) throw UsageError("\"" + word + "\" is not a PLMN; write 310-410 or 310-410:gsm");
  memcpy(entry, mcc.data(), 3);
  memcpy(entry + 3, mnc.data(), mnc.size());
  entry[kind == "umts" ? 6 : 7] = TECHNOLOGY;
}

static zop_uplmn_list user_list_of(const Arguments& arguments) {
  zop_uplmn_list list = {};
  std::stringstream words(arguments.text("PLMNS"));
  for (std::string word; std::getline(words, word, ',');) {
    if (list.bytes[0] == USER_ENTRIES) throw UsageError("the list holds at most 15 PLMNs");
    put_entry(word, list.bytes + 1 + ENTRY * list.bytes[0]++);
  }
  return list;
}

static void check_user_list(const Arguments& arguments) { user_list_of(arguments); }

static Findings set_user(const ModuleLibrary& m, const Arguments& arguments) {
  zop_uplmn_list list = user_list_of(arguments);
  require(m.zop_set_uim_data_uplmn(list), "write the user list");
  Json entries = user(m);
  return one_section("plmn", "PLMN lists", {shown("user", "User", entries, text_of(entries))});
}

const Verbs PLMN_VERBS = {
    {.noun = "plmn",
     .name = "list",
     .help = "show one list, by default all",
     .arguments = {{.name = "LIST",
                    .help = "list to show",
                    .optional = true,
                    .choices = {"home", "user", "operator", "forbidden", "registered"}}},
     .run = list},
    {.noun = "plmn",
     .name = "set-user",
     .help = "write the user list, for example 310-410,262-01:gsm",
     .arguments = {{.name = "PLMNS",
                    .help = "MCC-MNC[:gsm|:umts],...; default umts; \"\" clears the list"}},
     .check = check_user_list,
     .run = set_user},
};

}  // namespace zopctl
