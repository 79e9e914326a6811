// The one reader of the module's report: headings, labels, values and lists of cells.
#include "records/report.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <sstream>

namespace records {

constexpr std::string_view HEADING = "      *********";
static const std::string UNKNOWN_SECTION = "other";

// "      ********* MODEM *********" heads the section "modem".
static std::string section_name(std::string_view heading) {
  std::string name;
  for (char c : heading) {
    if (c >= 'A' && c <= 'Z') name += static_cast<char>(c - 'A' + 'a');
  }
  return name;
}

// ---- items ----

ItemTable::ItemTable(const zop_log_item* items) {
  std::string section = UNKNOWN_SECTION;
  for (const zop_log_item* item = items; item->type != ZOP_ITEM_END; ++item) {
    if (item->label == nullptr) continue;
    if (item->type == ZOP_ITEM_HEADER) {
      section = section_name(item->label);
      continue;
    }
    bool is_number = item->type == ZOP_ITEM_UNSIGNED || item->type == ZOP_ITEM_SIGNED;
    items_[item->label] = {is_number, item->type == ZOP_ITEM_EXCEPTION ? "error" : section};
  }
}

const std::string& ItemTable::section(std::string_view label) const {
  auto item = items_.find(label);
  return item == items_.end() ? UNKNOWN_SECTION : item->second.section;
}

Value ItemTable::value(std::string_view label, std::string_view text) const {
  if (text == "---" || text == "----") return {};
  auto item = items_.find(label);
  if (item == items_.end() || !item->second.is_number) return text;
  int64_t number = 0;
  const char* end = text.data() + text.size();
  auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc{} || stop != end) return text;
  return number;
}

static Json as_json(const Value& value) {
  if (const auto* number = std::get_if<int64_t>(&value)) return *number;
  if (const auto* text = std::get_if<std::string_view>(&value)) return std::string(*text);
  return nullptr;
}

// ---- the two forms ----

Json report_of_text(const ItemTable& items, const std::string& text) {
  Json report;
  std::string section = "report";
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    size_t colon = line.find(": ");
    if (line.starts_with(HEADING)) {
      section = section_name(line);
    } else if (colon != std::string::npos) {
      std::string label = line.substr(0, colon);
      report[section][label] = as_json(items.value(label, line.substr(colon + 2)));
    }
  }
  return report;
}

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

const Json& item_of(const Json& report, const char* section, const char* label) {
  return member_of(member_of(report, section), label);
}

std::string text_of(const Json& value) {
  if (value.is_null()) return "";
  if (!value.is_string()) return value.dump(-1, ' ', false, Json::error_handler_t::replace);
  const auto& text = value.get_ref<const std::string&>();
  return text == "---" || text == "----" ? "" : text;
}

// "0;100;-5 1;101;-11": set, scrambling code and Ec/Io; "-71;661;12": RSSI, ARFCN and BSIC.
std::vector<Cell> cells_of(const Json& report) {
  std::vector<Cell> cells;
  for (bool is_gsm : {false, true}) {
    const Json& list =
        is_gsm ? item_of(report, "gsm", "N1") : item_of(report, "wcdma", "Active/Monitored Sets");
    std::istringstream words(text_of(list));
    for (std::string word; words >> word;) {
      int a = 0, b = 0, c = 0, used = 0;
      bool is_cell = sscanf(word.c_str(), "%6d;%6d;%6d%n", &a, &b, &c, &used) == 3 &&
                     static_cast<size_t>(used) == word.size();
      if (!is_cell) continue;
      auto set = static_cast<Cell::Set>(std::clamp<int>(a, Cell::ACTIVE, Cell::DETECTED));
      cells.push_back(is_gsm ? Cell{Cell::GSM_NEIGHBOUR, b, c, a} : Cell{set, b, 0, c});
    }
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
