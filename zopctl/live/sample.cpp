// Samples as JSON and as text. What the report says is the modem's: every field may be missing or
// of another shape.
#include "zopctl/live/sample.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "zopctl/text/words.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

static const Json* item(const Json& report, const char* section, const char* label) {
  if (!report.is_object()) return nullptr;
  auto items = report.find(section);
  if (items == report.end() || !items->is_object()) return nullptr;
  auto found = items->find(label);
  return found == items->end() ? nullptr : &*found;
}

std::string Sample::text(const char* section, const char* label) const {
  const Json* found = item(report, section, label);
  if (found == nullptr || found->is_null()) return "";
  return plain(found->is_string() ? found->get<std::string>() : found->dump());
}

std::optional<int64_t> Sample::number(const char* section, const char* label) const {
  const Json* found = item(report, section, label);
  if (found == nullptr || !found->is_number_integer()) return std::nullopt;
  return found->get<int64_t>();
}

std::string plain(const std::string& text) {
  std::string shown = text;
  std::ranges::replace_if(
      shown, [](char c) { return c < 0x20 || c > 0x7E; }, '?');
  return shown;
}

// ---- cells ----

// "0;100;-5 1;101;-11": set, scrambling code, Ec/Io.
static void add_wcdma_sets(const std::string& text, std::vector<Cell>& cells) {
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    int set = 0, code = 0, ecio = 0;
    if (sscanf(word.c_str(), "%d;%d;%d", &set, &code, &ecio) != 3) continue;
    Cell::Kind kind = set == ZOP_CELL_ACTIVE      ? Cell::ACTIVE
                      : set == ZOP_CELL_MONITORED ? Cell::MONITORED
                                                  : Cell::DETECTED;
    cells.push_back({kind, code, ecio});
  }
}

// "-71;661;12": RSSI, ARFCN, BSIC.
static void add_gsm_neighbours(const std::string& text, std::vector<Cell>& cells) {
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    int rssi = 0, arfcn = 0;
    if (sscanf(word.c_str(), "%d;%d;", &rssi, &arfcn) != 2) continue;
    cells.push_back({Cell::NEIGHBOUR, arfcn, rssi});
  }
}

std::vector<Cell> cells_of(const Sample& sample) {
  std::vector<Cell> cells;
  add_wcdma_sets(sample.text("wcdma", "Active/Monitored Sets"), cells);
  add_gsm_neighbours(sample.text("gsm", "N1"), cells);
  return cells;
}

std::optional<int> active_ecio(const Sample& sample) {
  std::optional<int> best;
  for (const Cell& cell : cells_of(sample)) {
    if (cell.kind == Cell::ACTIVE) best = std::max(best.value_or(cell.level), cell.level);
  }
  return best;
}

// ---- as a line ----

Json as_json(const Sample& sample) {
  auto second = std::chrono::floor<std::chrono::seconds>(sample.time);
  auto ms = std::chrono::floor<std::chrono::milliseconds>(sample.time - second).count();
  Json line = {{"time", fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", second, ms)},
               {"link", sample.link_is_open ? "open" : "lost"},
               {"bars", nullptr}};
  if (sample.bars.is_known()) line["bars"] = sample.bars.bars;
  if (!sample.bars.reason.empty()) line["reason"] = sample.bars.reason;
  line["deferred"] = sample.deferred;
  line["events"] = sample.events;
  line["report"] = sample.report;
  return line;
}

std::string as_line(const Sample& sample) {
  auto time = std::chrono::floor<std::chrono::seconds>(sample.time);
  std::string line = fmt::format("{:%H:%M:%S}  ", time);
  line += sample.link_is_open ? bars_picture(sample.bars.bars) : "link lost";
  auto add = [&](const char* before, const std::string& value, const char* behind) {
    if (!value.empty()) line += fmt::format("  {}{}{}", before, value, behind);
  };
  auto ecio = active_ecio(sample);
  add("RSSI ", sample.text("state", "RSSI"), " dBm");
  add("Ec/Io ", ecio ? fmt::to_string(*ecio) : "", " dB");
  add("", sample.text("network", "Band"), "");
  add("cell ", sample.text("network", "C1"), "");
  add("", sample.text("status", "Reg Status"), "");
  add("rx ", sample.text("wan", "Rx Bytes"), "");
  add("tx ", sample.text("wan", "Tx Bytes"), "");
  add("", sample.bars.reason, "");
  for (const std::string& event : sample.events) add("* ", event, "");
  return line;
}

}  // namespace zopctl
