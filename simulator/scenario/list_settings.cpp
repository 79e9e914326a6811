// The table of lists, and their textual forms. A screen holds 31 WCDMA cells and the empty entry
// that ends them, 32 GSM neighbours and the six best cells.
#include "simulator/scenario/list_settings.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace sim {

constexpr size_t MAX_PLMNS = 200;
constexpr size_t MAX_FORBIDDEN = 20;
constexpr int LAST_NV_ITEM = 0xFFFF;

static void store_cells(Model& m, const Rows& rows) {
  m.radio.cells.clear();
  for (auto& row : rows) m.radio.cells.push_back({row[0], row[1], row[2]});
}

static void store_neighbors(Model& m, const Rows& rows) {
  m.radio.neighbors.clear();
  for (auto& row : rows) m.radio.neighbors.push_back({row[0], row[1], row[2]});
}

static void store_best(Model& m, const Rows& rows) {
  m.radio.best.clear();
  for (auto& row : rows) m.radio.best.push_back({row[0], row[1], row[2], row[3]});
}

static const RecordSetting RECORDS[] = {
    {"radio.cells",
     31,
     {{"set", 0, 2, {{"active", 0}, {"monitored", 1}, {"detected", 2}}},
      {"code", 0, 511},
      {"ecio", -32, 0}},
     store_cells},
    {"radio.neighbors",
     32,
     {{"rssi", -200, 0}, {"arfcn", 0, 0xFFFF}, {"bsic", 0, 63}},
     store_neighbors},
    {"radio.best",
     6,
     {{"first", 0, 255}, {"second", 0, 255}, {"cell_id", 0, 0x7FFFFFFF}, {"channel", 0, 0xFFFF}},
     store_best},
};

#define PLMNS(name) \
  "sim." #name, MAX_PLMNS, [](Model& m) -> std::vector<Plmn>& { return m.sim.name; }
static const PlmnSetting PLMN_LISTS[] = {
    {PLMNS(home)},
    {PLMNS(user)},
    {PLMNS(operators)},
    {"sim.forbidden", MAX_FORBIDDEN,
     [](Model& m) -> std::vector<Plmn>& { return m.sim.forbidden; }},
};

const RecordSetting* find_record_setting(const std::string& key) {
  return find_by_key(RECORDS, key);
}

const PlmnSetting* find_plmn_setting(const std::string& key) {
  return find_by_key(PLMN_LISTS, key);
}

std::vector<std::string> describe_lists() {
  std::vector<std::string> lines;
  for (const RecordSetting& setting : RECORDS) {
    std::string fields;
    for (const RecordField& field : setting.fields) {
      fields += std::string(fields.empty() ? "" : ", ") + field.name;
    }
    lines.push_back(std::string(setting.key) + "\t[{ " + fields + " }], up to " +
                    std::to_string(setting.most));
  }
  for (const PlmnSetting& setting : PLMN_LISTS) {
    lines.push_back(std::string(setting.key) + "\t[\"MCC-MNC\" or \"MCC-MNC gsm\"], up to " +
                    std::to_string(setting.most));
  }
  lines.push_back(
      "device.memory\t[{ name, base, length }], and description, preference, fill, unreadable");
  lines.push_back("device.partition\tpartition table in hexadecimal, up to 2048 bytes");
  lines.push_back("nv.NUMBER\tbytes of an NV item in hexadecimal, up to 128");
  return lines;
}

Plmn parse_plmn(const std::string& text) {
  size_t dash = text.find('-');
  size_t blank = text.find(' ');
  std::string mcc = text.substr(0, dash);
  std::string mnc = dash == std::string::npos ? "" : text.substr(dash + 1, blank - dash - 1);
  std::string technology = blank == std::string::npos ? "umts" : text.substr(blank + 1);
  bool digits = (mcc + mnc).find_first_not_of("0123456789") == std::string::npos;
  bool known = technology == "umts" || technology == "gsm";
  if (!digits || mcc.size() != 3 || mnc.size() < 2 || mnc.size() > 3 || !known) {
    throw std::invalid_argument("\"" + text +
                                "\" is not a PLMN like \"310-410\" or \"001-01 gsm\"");
  }
  if (technology == "gsm") return {mcc, mnc, 0, 128};
  return {mcc, mnc, 128, 0};
}

int nv_item_of_key(const std::string& key) {
  constexpr char SECTION[] = "nv.";
  if (!key.starts_with(SECTION)) return -1;
  int item = -1;
  const char* end = key.data() + key.size();
  auto [stop, error] = std::from_chars(key.data() + 3, end, item);
  bool good = error == std::errc{} && stop == end && item >= 0 && item <= LAST_NV_ITEM;
  return good ? item : -1;
}

Bytes parse_hex(const std::string& text, size_t most) {
  std::string digits;
  std::ranges::copy_if(text, std::back_inserter(digits), [](char c) { return c != ' '; });
  bool good = digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (!good || digits.size() % 2 != 0 || digits.size() > 2 * most) {
    throw std::invalid_argument("takes up to " + std::to_string(most) +
                                " bytes as pairs of hexadecimal digits");
  }
  Bytes bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

}  // namespace sim
