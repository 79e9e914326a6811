// Values go from text to text: a log may be of any size. What can't be is unknown, and null.
#include "records/report_items.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <span>
#include <unordered_map>

#include "records/json_text.h"
#include "records/state_words.h"

namespace records {

const char* const SECTIONS[SECTION_COUNT] = {"modem", "sim", "network", "state", "status", "errors",
                                             "wcdma", "gsm", "wan",     "plmn",  "other"};

constexpr int64_t MOST = std::numeric_limits<int64_t>::max();

// ---- parts of values ----

static bool is_unknown(std::string_view text) {
  static constexpr std::string_view MARKS[] = {"---", "----", "None yet", "Not provided",
                                               "Unknown"};
  return text.find_first_not_of(' ') == text.npos ||
         std::ranges::find(MARKS, text) != std::end(MARKS);
}

static std::optional<int64_t> whole_number(std::string_view text) {
  int64_t number = 0;
  const char* end = text.data() + text.size();
  auto [stop, error] = std::from_chars(text.data(), end, number);
  if (text.empty() || error != std::errc{} || stop != end) return std::nullopt;
  return number;
}

// Takes the part before the mark off the text.
static std::string_view take_part(std::string_view& text, char mark) {
  std::string_view part = text.substr(0, text.find(mark));
  text.remove_prefix(std::min(part.size() + 1, text.size()));
  return part;
}

static void append_number(std::string& out, int64_t number) {
  std::array<char, 24> digits;
  auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
  out.append(digits.data(), static_cast<size_t>(end - digits.data()));
}

static void append_within(std::string& out, std::string_view text, int64_t least, int64_t most) {
  auto number = whole_number(text);
  if (number && *number >= least && *number <= most) {
    append_number(out, *number);
  } else {
    out += "null";
  }
}

// ---- texts and numbers ----

void append_text(std::string& out, std::string_view value) {
  if (is_unknown(value)) {
    out += "null";
  } else {
    append_json(out, value);
  }
}

static void append_any_number(std::string& out, std::string_view value) {
  append_within(out, value, -MOST, MOST);
}

// Of something counted; the module writes -1 of 32 bits where it has none.
static void append_count(std::string& out, std::string_view value) {
  append_within(out, value, 0, 0xFFFFFFFD);
}

// A number that is never 0.
static void append_positive(std::string& out, std::string_view value) {
  append_within(out, value, 1, 0xFFFFFFFD);
}

// A received level, dBm. The modem gives 0 when it has none.
static void append_level(std::string& out, std::string_view value) {
  append_within(out, value, -MOST, -1);
}

// FFFE marks a deleted location area.
static void append_location_area(std::string& out, std::string_view value) {
  append_within(out, value, 1, 0xFFFD);
}

static void append_bars(std::string& out, std::string_view value) {
  append_within(out, value, 0, 5);
}

// The roaming indicator: 0 at home, -1 unknown.
static void append_roaming(std::string& out, std::string_view value) {
  auto indicator = whole_number(value);
  bool known = indicator && *indicator >= 0 && *indicator < 0xFFFFFFFF;
  out += !known ? "null" : *indicator != 0 ? "true" : "false";
}

// ---- states ----

static void append_coded(std::string& out, std::optional<int64_t> code, std::string_view word) {
  out += R"({"code":)";
  code ? append_number(out, *code) : append_text(out, NO_VALUE);
  out += R"(,"text":)";
  append_json(out, word);
  out += '}';
}

// A code without a name is "17 Unknown". A name that is not in the table has no code.
static void append_unnamed(std::string& out, std::string_view value) {
  constexpr std::string_view NAMELESS = " Unknown";
  if (is_unknown(value)) return append_text(out, NO_VALUE);
  std::string_view digits = value.substr(0, value.size() - std::min(value.size(), NAMELESS.size()));
  auto code = value.ends_with(NAMELESS) ? whole_number(digits) : std::nullopt;
  if (code) return append_coded(out, *code, "unknown (" + std::to_string(*code) + ")");
  append_coded(out, std::nullopt, value);
}

static std::vector<std::string> texts_of(std::span<const StateWord> words) {
  std::vector<std::string> texts;
  for (const StateWord& row : words) append_coded(texts.emplace_back(), row.code, row.word);
  return texts;
}

template <const auto& WORDS>
static void append_state(std::string& out, std::string_view value) {
  static const std::vector<std::string> TEXTS = texts_of(WORDS);
  auto row = std::ranges::find(WORDS, value, &StateWord::name);
  if (row == std::end(WORDS)) return append_unnamed(out, value);
  out += TEXTS[static_cast<size_t>(row - std::begin(WORDS))];
}

// "Valid, PIN perm disabled, R3": card, PIN and remaining tries. In syslog, commas are semicolons.
static void append_sim(std::string& out, std::string_view value) {
  char mark = value.find(';') == value.npos ? ',' : ';';
  std::string_view card = take_part(value, mark);
  std::string_view pin = take_part(value, mark);
  pin.remove_prefix(std::min<size_t>(pin.size(), 4));      // " PIN"
  value.remove_prefix(std::min<size_t>(value.size(), 2));  // " R"
  append_state<SIM_STATES>(out, card);
  out += R"(,"lock":)";
  append_state<PIN_STATES>(out, pin);
  out += R"(,"pin_retries":)";
  append_within(out, value, 0, 255);
}

// ---- networks ----

// "001 01".
static void append_mcc_mnc(std::string& out, std::string_view value) {
  append_text(out, take_part(value, ' '));
  out += R"(,"mnc":)";
  append_text(out, value);
}

// An entry of a list, without the mark behind its last number.
template <typename APPEND>
static void append_entries(std::string& out, std::string_view list, APPEND append) {
  if (list.data() == nullptr) {
    out += "null";
    return;
  }
  out += '[';
  size_t start = out.size();
  while (!list.empty()) {
    size_t before = out.size();
    if (before > start) out += ',';
    if (!append(take_part(list, ' '))) out.resize(before);
  }
  out += ']';
}

// "UMTS;001;01", or "001;01" where there is no technology.
static bool append_plmn(std::string& out, std::string_view entry) {
  auto parts = 1 + std::ranges::count(entry, ';');
  if (parts != 2 && parts != 3) return false;
  std::string technology(parts == 3 ? take_part(entry, ';') : "");
  for (char& c : technology) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  out += R"({"mcc":)";
  append_text(out, take_part(entry, ';'));
  out += R"(,"mnc":)";
  append_text(out, entry);
  if (!technology.empty()) {
    out += R"(,"technology":)";
    append_json(out, technology);
  }
  out += '}';
  return true;
}

static void append_plmns(std::string& out, std::string_view value) {
  append_entries(out, value, [&](std::string_view entry) { return append_plmn(out, entry); });
}

// ---- cells ----

// "0;100;-5" as three numbers.
template <size_t COUNT>
static bool numbers_of(std::string_view entry, std::array<int64_t, COUNT>& numbers) {
  for (int64_t& number : numbers) {
    auto found = whole_number(take_part(entry, ';'));
    if (!found) return false;
    number = *found;
  }
  return entry.empty();
}

template <size_t COUNT>
static void append_numbers(std::string& out, const std::array<std::string_view, COUNT>& keys,
                           const std::array<int64_t, COUNT>& numbers) {
  for (size_t i = 0; i < COUNT; ++i) {
    out += i == 0 ? "\"" : ",\"";
    out += keys[i];
    out += "\":";
    append_number(out, numbers[i]);
  }
}

// "0;100;-5": set, scrambling code and Ec/Io.
static void append_wcdma_cells(std::string& out, std::string_view value) {
  static constexpr std::string_view SETS[] = {"active", "monitored", "detected"};
  append_entries(out, value, [&](std::string_view entry) {
    std::array<int64_t, 3> cell;
    if (!numbers_of(entry, cell)) return false;
    out += R"({"set":")";
    out += SETS[std::clamp<int64_t>(cell[0], 0, 2)];
    out += "\",";
    append_numbers<2>(out, {"scrambling_code", "ecio_db"}, {cell[1], cell[2]});
    out += '}';
    return true;
  });
}

// "-71;661;12": RSSI, ARFCN and BSIC.
static void append_gsm_cells(std::string& out, std::string_view value) {
  append_entries(out, value, [&](std::string_view entry) {
    std::array<int64_t, 3> cell;
    if (!numbers_of(entry, cell)) return false;
    out += '{';
    append_numbers<3>(out, {"arfcn", "bsic", "rssi_dbm"}, {cell[1], cell[2], cell[0]});
    out += '}';
    return true;
  });
}

// "c;d;a;b", by the names of zop_gsm_best_cell.
static void append_best_cells(std::string& out, std::string_view value) {
  append_entries(out, value, [&](std::string_view entry) {
    std::array<int64_t, 4> cell;
    if (!numbers_of(entry, cell)) return false;
    out += '{';
    append_numbers<4>(out, {"a", "b", "c", "d"}, {cell[2], cell[3], cell[0], cell[1]});
    out += '}';
    return true;
  });
}

// ---- times ----

// "2010/07/24 08.02.03"; zeros if the network has sent none.
static void append_network_time(std::string& out, std::string_view value) {
  bool is_time = value.size() == 19 && !value.starts_with("0000");
  std::string text(value);
  for (size_t at : {4U, 7U}) is_time = is_time && text[at] == '/' && (text[at] = '-') != 0;
  for (size_t at : {13U, 16U}) is_time = is_time && text[at] == '.' && (text[at] = ':') != 0;
  append_text(out, is_time ? text : NO_VALUE);
}

// "+2h".
static void append_hours(std::string& out, std::string_view value) {
  bool is_offset = value.ends_with('h');
  if (is_offset) value.remove_suffix(1);
  if (value.starts_with('+')) value.remove_prefix(1);
  auto hours = is_offset ? whole_number(value) : std::nullopt;
  bool possible = hours && *hours >= -24 && *hours <= 24;
  possible ? append_number(out, *hours * 3600) : append_text(out, NO_VALUE);
}

// "5s"; or "1/02:03:04 (Jul 24 19:11:28)", days, hours, minutes, seconds, and the start. Each part
// has a minus if the clock was set back.
static std::optional<int64_t> seconds_of(std::string_view age) {
  constexpr int64_t MOST_PART = 1'000'000;
  int64_t days = 0, seconds = 0;
  if (age.find('/') != age.npos) days = whole_number(take_part(age, '/')).value_or(MOST);
  if (age.find(':') == age.npos || std::ranges::count(age, ':') > 2) return std::nullopt;
  while (!age.empty()) {
    auto part = whole_number(take_part(age, ':'));
    if (!part || *part <= -MOST_PART || *part >= MOST_PART) return std::nullopt;
    seconds = 60 * seconds + *part;
  }
  if (days <= -MOST_PART || days >= MOST_PART) return std::nullopt;
  return 86400 * days + seconds;
}

static void append_age(std::string& out, std::string_view value) {
  value = value.substr(0, value.find(" ("));
  if (value.ends_with('s')) return append_any_number(out, value.substr(0, value.size() - 1));
  auto seconds = seconds_of(value);
  seconds ? append_number(out, *seconds) : append_text(out, NO_VALUE);
}

// ---- the link ----

// An address, masked or not, or why there is none.
static void append_address(std::string& out, std::string_view value) {
  bool is_address = value.find('.') != value.npos && value != "xxx.xxx" &&
                    value.find_first_not_of("0123456789.x") == value.npos;
  append_text(out, is_address ? value : NO_VALUE);
}

// As the bytes are in memory: the first one is the lowest.
static void append_server(std::string& out, int64_t address) {
  out += '"';
  for (int shift = 0; shift < 32; shift += 8) {
    if (shift > 0) out += '.';
    append_number(out, address >> shift & 0xFF);
  }
  out += '"';
}

// "24145930, 40923146"; 0 is none. In syslog, the comma is a semicolon.
static void append_servers(std::string& out, std::string_view value) {
  out += '[';
  const char* comma = "";
  while (!value.empty()) {
    std::string_view part = value.substr(0, value.find_first_of(",; "));
    value.remove_prefix(std::min(part.size() + 1, value.size()));
    auto address = whole_number(part);
    if (!address || *address <= 0 || *address > 0xFFFFFFFF) continue;
    out += comma;
    comma = ",";
    append_server(out, *address);
  }
  out += ']';
}

// "1, 0, 0, 0, 2, 0 (W) Jul 24 19:11:28": rings by origin, then the last one.
static void append_rings(std::string& out, std::string_view value) {
  std::string_view counts = value.substr(0, value.find(" ("));
  value.remove_prefix(counts.size());
  out += '[';
  const char* comma = "";
  while (!counts.empty()) {
    std::string_view part = take_part(counts, ',');
    part.remove_prefix(std::min(part.find_first_not_of(' '), part.size()));
    out += comma;
    comma = ",";
    append_count(out, part);
  }
  bool has_last = value.size() > 5 && value.substr(3, 2) == ") ";
  out += R"(],"last_ring_origin":)";
  append_state<RING_ORIGINS>(out, has_last ? value.substr(2, 1) : NO_VALUE);
  out += R"(,"last_ring_time":)";
  append_text(out, has_last ? value.substr(5) : NO_VALUE);
}

// ---- the table ----

// clang-format off
using enum SectionId;
static constexpr Source SCREEN = Source::SCREEN;
static const ReportItem ITEMS[] = {
    {"IMEI",                  "imei",               append_text,                   MODEM,   SCREEN},
    {"Library",               "library",            append_text,                   MODEM},
    {"Firmware",              "firmware",           append_text,                   MODEM},
    {"Hardware",              "hardware",           append_text,                   MODEM},
    {"ICCID",                 "iccid",              append_text,                   SIM},
    {"IMSI",                  "imsi",               append_text,                   SIM,     SCREEN},
    {"Phone Number",          "phone_number",       append_text,                   SIM},
    {"SIM Status",            "status",             append_sim,                    SIM},
    {"Network Name",          "name",               append_text,                   NETWORK, SCREEN},
    {"MCC MNC",               "mcc",                append_mcc_mnc,                NETWORK, SCREEN},
    {"Channel",               "channel",            append_count,                  NETWORK, SCREEN},
    {"Band",                  "band",               append_state<BANDS>,           NETWORK, SCREEN},
    {"C1",                    "cell_id",            append_positive,               NETWORK, SCREEN},
    {"L1",                    "lac",                append_location_area,          NETWORK, SCREEN},
    {"R1",                    "rac",                append_count,                  NETWORK, SCREEN},
    {"Time",                  "network_time",       append_network_time,           NETWORK},
    {"Network Time",          "network_time",       append_network_time,           NETWORK},
    {"Local Time Offset",     "utc_offset_s",       append_hours,                  NETWORK},
    {"Selection Mode",        "selection_mode",     append_state<SELECTION_MODES>, NETWORK, SCREEN},
    {"Test Mode",             "test_mode",          append_count,                  NETWORK, SCREEN},
    {"Bars",                  "bars",               append_bars,                   STATE},
    {"Roaming",               "roaming",            append_roaming,                STATE},
    {"RSSI",                  "rssi_dbm",           append_level,                  STATE,   SCREEN},
    {"Tx Power",              "tx_power_dbm",       append_any_number,             STATE,   SCREEN},
    {"System Mode",           "system_mode",        append_state<SYSTEM_MODES>,    STATE,   SCREEN},
    {"Data Service Mode",     "data_service",       append_state<DATA_SERVICES>,   STATE},
    {"Service Status",        "service",            append_state<SERVICES>,        STATUS,  SCREEN},
    {"Reg Status",            "registration",       append_state<REGISTRATIONS>,   STATUS,  SCREEN},
    {"Call Status",           "call",               append_state<CALLS>,           STATUS,  SCREEN},
    {"MM Attach State",       "mm_attach",          append_state<MM_RESULTS>,      STATUS,  SCREEN},
    {"MM LU State",           "mm_location_update", append_state<MM_RESULTS>,      STATUS,  SCREEN},
    {"GMM Attach State",      "gmm_attach",         append_state<GMM_RESULTS>,     STATUS,  SCREEN},
    {"GMM State",             "gmm_state",          append_state<GMM_STATES>,      STATUS,  SCREEN},
    {"GMM RAU State",         "gmm_routing_update", append_state<GMM_RESULTS>,     STATUS,  SCREEN},
    {"PDP State",             "pdp_state",          append_state<PDP_STATES>,      STATUS,  SCREEN},
    {"Network Mode",          "network_mode",       append_state<NETWORK_MODES>,   STATUS,  SCREEN},
    {"PMM Mode",              "pmm_mode",           append_state<PMM_MODES>,       STATUS,  SCREEN},
    {"MM Attach Error",       "mm_attach",          append_state<REJECT_CAUSES>,   ERRORS,  SCREEN},
    {"MM LU Error",           "mm_location_update", append_state<REJECT_CAUSES>,   ERRORS,  SCREEN},
    {"GMM Attach Error",      "gmm_attach",         append_state<REJECT_CAUSES>,   ERRORS,  SCREEN},
    {"GMM RAU Error",         "gmm_routing_update", append_state<REJECT_CAUSES>,   ERRORS,  SCREEN},
    {"PDP Rej Reason",        "pdp",                append_state<PDP_CAUSES>,      ERRORS,  SCREEN},
    {"Exc",                   "exception",          append_text,                   ERRORS},
    {"Active/Monitored Sets", "cells",              append_wcdma_cells,            WCDMA,   SCREEN},
    {"RSCP",                  "rscp_dbm",           append_level,                  WCDMA,   SCREEN},
    {"DRX",                   "drx_coefficient",    append_count,                  WCDMA,   SCREEN},
    {"HSDPA Status",          "hsdpa",              append_state<HSDPA_STATES>,    WCDMA,   SCREEN},
    {"HSDPA Indication",      "hspa_support",       append_state<HSPA_SUPPORT>,    WCDMA,   SCREEN},
    {"N1",                    "neighbors",          append_gsm_cells,              GSM,     SCREEN},
    {"B1",                    "best_cells",         append_best_cells,             GSM,     SCREEN},
    {"Pathloss",              "pathloss_db",        append_positive,               GSM,     SCREEN},
    {"MFRM",                  "paging_multiframes", append_count,                  GSM,     SCREEN},
    {"EGPRS Indication",      "egprs",              append_state<EGPRS_SUPPORT>,   GSM,     SCREEN},
    {"IP Address",            "ip_address",         append_address,                WAN},
    {"Dest IP Address",       "dest_ip_address",    append_address,                WAN},
    {"Rx Bytes",              "rx_bytes",           append_count,                  WAN},
    {"Tx Bytes",              "tx_bytes",           append_count,                  WAN},
    {"Rx Errors",             "rx_errors",          append_count,                  WAN},
    {"Tx Errors",             "tx_errors",          append_count,                  WAN},
    {"Res",                   "name_servers",       append_servers,                WAN},
    {"Rh",                    "rings",              append_rings,                  WAN},
    {"Awake",                 "awake_s",            append_age,                    WAN},
    {"pppd Age",              "pppd_age_s",         append_age,                    WAN},
    {"FTD Age",               "field_test_age_s",   append_age,                    WAN,     Source::SCREEN_AGE},
    {"HPLMN",                 "home",               append_plmns,                  PLMN},
    {"RPLMN",                 "registered",         append_plmns,                  PLMN},
    {"FPLMN",                 "forbidden",          append_plmns,                  PLMN},
    {"OPLMN",                 "operator",           append_plmns,                  PLMN},
};
// clang-format on

const ReportItem* find_item(std::string_view label) {
  using Table = std::unordered_map<std::string_view, const ReportItem*>;
  static const Table TABLE = [] {
    Table table;
    for (const ReportItem& item : ITEMS) table[item.label] = &item;
    return table;
  }();
  auto found = TABLE.find(label);
  return found == TABLE.end() ? nullptr : found->second;
}

ItemFinder::ItemFinder() : next_(std::size(ITEMS) + 1), last_(std::size(ITEMS)) {}

const ReportItem* ItemFinder::find(std::string_view label) {
  const ReportItem*& next = next_[last_];
  if (next == nullptr || next->label != label) next = find_item(label);
  const ReportItem* found = next;
  last_ = found == nullptr ? std::size(ITEMS) : static_cast<size_t>(found - ITEMS);
  return found;
}

}  // namespace records
