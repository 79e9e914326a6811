// The one reader of the module's report.
#include "records/report.h"

#include <algorithm>

namespace records {

Pair take_pair(std::string_view& pairs) {
  std::string_view pair = pairs.substr(0, pairs.find(','));
  pairs.remove_prefix(std::min(pair.size() + 1, pairs.size()));
  size_t equals = std::min(pair.find('='), pair.size());
  return {pair.substr(0, equals), pair.substr(std::min(equals + 1, pair.size()))};
}

// ---- what a report says ----

const Json& member_of(const Json& object, const char* name) {
  static const Json NOTHING;
  if (!object.is_object()) return NOTHING;
  auto found = object.find(name);
  return found == object.end() ? NOTHING : *found;
}

const Json& item_of(const Json& report, const char* section, const char* key) {
  return member_of(member_of(report, section), key);
}

// An array's members are apart by a comma, an object's by a blank.
static std::string members_text(const Json& value) {
  std::string text;
  for (const Json& member : value) {
    std::string word = text_of(member);
    if (!text.empty() && !word.empty()) text += value.is_array() ? ", " : " ";
    text += word;
  }
  return text;
}

std::string text_of(const Json& value) {
  if (value.is_null()) return "";
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_string()) return value.get<std::string>();
  if (value.is_object() && value.contains("text")) return text_of(value["text"]);
  if (value.is_structured()) return members_text(value);
  return value.dump();
}

std::string plmn_of(const Json& report) {
  std::string mcc = text_of(item_of(report, "network", "mcc"));
  return mcc.empty() ? "" : mcc + " " + text_of(item_of(report, "network", "mnc"));
}

// ---- cells ----

static std::optional<int> whole_number(const Json& object, const char* name) {
  const Json& value = member_of(object, name);
  if (!value.is_number_integer()) return std::nullopt;
  return static_cast<int>(std::clamp<int64_t>(value.get<int64_t>(), -999'999, 999'999));
}

static Cell::Set set_of(const Json& cell) {
  std::string set = text_of(member_of(cell, "set"));
  return set == "active" ? Cell::ACTIVE : set == "monitored" ? Cell::MONITORED : Cell::DETECTED;
}

std::vector<Cell> cells_of(const Json& report) {
  std::vector<Cell> cells;
  for (const Json& cell : item_of(report, "wcdma", "cells")) {
    auto code = whole_number(cell, "scrambling_code"), level = whole_number(cell, "ecio_db");
    if (code && level) cells.push_back({set_of(cell), *code, 0, *level});
  }
  for (const Json& cell : item_of(report, "gsm", "neighbors")) {
    auto code = whole_number(cell, "arfcn"), bsic = whole_number(cell, "bsic");
    auto level = whole_number(cell, "rssi_dbm");
    if (code && bsic && level) cells.push_back({Cell::GSM_NEIGHBOUR, *code, *bsic, *level});
  }
  return cells;
}

std::optional<int> active_ecio(const std::vector<Cell>& cells) {
  std::optional<int> best;
  for (const Cell& cell : cells) {
    if (cell.set == Cell::ACTIVE) best = std::max(best.value_or(cell.level), cell.level);
  }
  return best;
}

}  // namespace records
