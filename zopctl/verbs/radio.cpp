// zopctl signal, cells: signal levels, and the cells that the modem receives.
#include <fmt/format.h>

#include <tuple>

#include "zopctl/host/refusals.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"
#include "zopctl/verbs/watch.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

static Item level(const char* key, const char* label, const char* unit, unsigned (*get)(int32_t*)) {
  int32_t value = 0;
  std::string why = problem(get(&value));
  return why.empty() ? measured(key, label, value, unit) : failed(key, label, why);
}

static Item bars_item(const ModuleLibrary& m) {
  int32_t value = 0;
  unsigned result = 0;
  {
    QuietOutput quiet;
    result = m.zop_get_bars(&value);
  }
  if (std::string why = problem(result); !why.empty()) return failed("bars", "Bars", why);
  if (value < 0) return unknown("bars", "Bars", "none: limited service");
  return shown("bars", "Bars", value, bars_picture(value));
}

static Findings read_signal(const ModuleLibrary& m) {
  return one_section("signal", "Signal",
                     {level("rssi_dbm", "RSSI", "dBm", m.zop_get_rssi),
                      level("rscp_dbm", "RSCP", "dBm", m.zop_get_rscp),
                      level("tx_power_dbm", "Tx power", "dBm", m.zop_get_txpower),
                      level("pathloss_db", "Path loss", "dB", m.zop_get_pathloss), bars_item(m)});
}

static int signed16(const uint8_t* p) { return static_cast<int16_t>(le16(p)); }

static std::string append_set(unsigned (*get)(uint8_t*, uint32_t*), const char* set, Item& all) {
  uint8_t cells[ZOP_CELL_RECORD_SIZE * 255];
  uint32_t count = 255;
  if (std::string why = problem(get(cells, &count)); !why.empty()) return why;
  for (uint32_t i = 0; i < count; ++i) {
    const uint8_t* cell = cells + size_t{ZOP_CELL_RECORD_SIZE} * i;
    int code = le16(cell + 2);
    int ecio = signed16(cell + 4);
    all.value.push_back({{"set", set}, {"scrambling_code", code}, {"ecio_db", ecio}});
    all.shown += fmt::format("{}{} ({} dB, {})", all.shown.empty() ? "" : ", ", code, ecio, set);
  }
  return "";
}

// As in a report. A set that the modem does not give has a line of its own: the list lacks it.
static Section wcdma_cells(const ModuleLibrary& m) {
  Section section{"wcdma",
                  "WCDMA, by scrambling code and Ec/Io",
                  {shown("cells", "WCDMA cells", Json::array(), "")}};
  for (auto [set, label, get] :
       {std::tuple("active", "Active set", m.zop_get_active_set_list),
        std::tuple("monitored", "Monitored set", m.zop_get_monitored_set_list),
        std::tuple("detected", "Detected set", m.zop_get_detected_set_list)}) {
    std::string why = append_set(get, set, section.items.front());
    if (!why.empty()) section.items.push_back(failed(set, label, why));
  }
  Item& cells = section.items.front();
  if (cells.shown.empty()) cells.shown = "none";
  if (section.items.size() > 3)
    cells = failed("cells", "WCDMA cells", "none of the three sets could be read");
  return section;
}

static Item gsm_neighbors(const ModuleLibrary& m) {
  uint8_t bytes[ZOP_NEIGHBOR_LIST_SIZE];
  std::string why = problem(m.zop_get_neighbor_cell_list(bytes));
  if (!why.empty()) return failed("neighbors", "GSM neighbours", why);
  Json list = Json::array();
  std::string text;
  uint32_t count = std::min<uint32_t>(le16(bytes), 32);
  for (uint32_t i = 0; i < count; ++i) {
    const uint8_t* cell = bytes + 4 + size_t{5} * i;
    int rssi = signed16(cell);
    int arfcn = le16(cell + 2);
    list.push_back({{"arfcn", arfcn}, {"bsic", cell[4]}, {"rssi_dbm", rssi}});
    text += fmt::format("{}{} ({} dBm)", text.empty() ? "" : ", ", arfcn, rssi);
  }
  return shown("neighbors", "GSM neighbours", list, text.empty() ? "none" : text);
}

static Findings read_cells(const ModuleLibrary& m) {
  return {wcdma_cells(m), {"gsm", "GSM, by ARFCN and RSSI", {gsm_neighbors(m)}}};
}

static Findings signal(const ModuleLibrary& m, const Arguments& arguments) {
  if (arguments.has("--watch")) watch_findings(m, arguments, read_signal);
  return read_signal(m);
}

static Findings cells(const ModuleLibrary& m, const Arguments& arguments) {
  if (arguments.has("--watch")) watch_findings(m, arguments, read_cells);
  return read_cells(m);
}

const Verb SIGNAL = {.name = "signal",
                     .help = "RSSI, RSCP, transmit power, path loss and bars",
                     .arguments = {watch_argument()},
                     .run = signal};
const Verb CELLS = {.name = "cells",
                    .help = "the cells that the modem receives",
                    .arguments = {watch_argument()},
                    .run = cells};

}  // namespace zopctl
