// Tables: cells, events, and the report with the meaning of its short labels.
#include <fmt/format.h>

#include <algorithm>

#include "page/chart.h"
#include "page/page.h"

namespace page {

constexpr size_t MAX_EVENT_ROWS = 1000;
constexpr size_t OPEN_EVENT_ROWS = 30;  // shown without unfolding

// ---- cells ----

static const char* const SETS[] = {"Active", "Monitored", "Detected"};

static void write_cell(HtmlWriter& html, const CellId& cell, const CellReading& reading) {
  float least = cell.gsm ? -110 : -24, most = cell.gsm ? -40 : 0;
  double share = std::clamp((reading.level - least) / (most - least), 0.02F, 1.0F);
  html.open("tr").element("th", {{"scope", "row"}}, cell_name(cell));
  if (!cell.gsm) {
    html.open("td").element("span", {{"class", fmt::format("set set{}", reading.set)}},
                            SETS[reading.set]);
    html.close();
  }
  html.element("td", {{"class", "number"}}, value_text(cell.gsm ? RSSI : ECIO, reading.level));
  html.open("td", {{"class", "meter"}}).open("svg", {{"role", "img"}, {"class", "meter"}});
  html.element("title", {},
               fmt::format("{}: {:g} {}", cell_name(cell), reading.level, cell.gsm ? "dBm" : "dB"));
  html.empty("rect", {{"class", "scale"}, {"width", "100%"}, {"height", "100%"}, {"rx", "3"}});
  html.empty("rect", {{"class", level_style(cell, reading.level)},
                      {"width", percent(share)},
                      {"height", "100%"},
                      {"rx", "3"}});
  html.close().close().close();
}

static void write_cell_table(HtmlWriter& html, const Recording& recording,
                             std::vector<CellReading> readings, bool gsm) {
  std::erase_if(readings, [&](const CellReading& r) { return recording.cells[r.cell].gsm != gsm; });
  if (readings.empty()) return;
  std::stable_sort(readings.begin(), readings.end(), [](const auto& a, const auto& b) {
    return a.set != b.set ? a.set < b.set : a.level > b.level;
  });
  html.open("table", {{"class", "cells"}});
  html.element("caption", {},
               gsm ? "GSM neighbours, \u2212110 to \u221240 dBm" : "WCDMA sets, \u221224 to 0 dB");
  html.open("thead").open("tr");
  html.element("th", {{"scope", "col"}}, gsm ? "ARFCN / BSIC" : "Scrambling code");
  if (!gsm) html.element("th", {{"scope", "col"}}, "Set");
  html.element("th", {{"scope", "col"}}, gsm ? "RSSI" : "Ec/Io");
  html.element("th", {{"scope", "col"}}, "Strength").close().close().open("tbody");
  for (const CellReading& reading : readings) {
    write_cell(html, recording.cells[reading.cell], reading);
  }
  html.close().close();
}

void write_cells(HtmlWriter& html, const Recording& recording) {
  const Moment& moment = recording.latest_cells();
  if (moment.time != 0) {
    html.element("p", {{"class", "extent"}}, "at " + time_text(moment.time) + " UTC");
  }
  for (bool gsm : {false, true}) write_cell_table(html, recording, moment.cells, gsm);
}

// ---- events ----

void write_events(HtmlWriter& html, const Recording& recording) {
  const auto& events = recording.events;
  bool few = events.size() <= OPEN_EVENT_ROWS;
  if (!few) {
    html.open("details").element("summary", {}, fmt::format("{} events", recording.event_count()));
  }
  html.open("table").open("thead").open("tr");
  html.element("th", {{"scope", "col"}}, "Time").element("th", {{"scope", "col"}}, "Event");
  html.close().close().open("tbody");
  for (size_t i = 0; i < std::min(events.size(), MAX_EVENT_ROWS); ++i) {
    html.open("tr").element("th", {{"scope", "row"}}, time_text(events[i].time));
    html.element("td", {}, events[i].text).close();
  }
  html.close().close();
  if (events.size() > MAX_EVENT_ROWS) {
    html.element("p", {}, fmt::format("and {} more", recording.event_count() - MAX_EVENT_ROWS));
  }
  if (!few) html.close();
}

// ---- the report ----

namespace {
struct Meaning {
  const char* label;
  const char* unit;
  const char* meaning;
};
}  // namespace

static const Meaning MEANINGS[] = {
    {"C1", "", "cell identity"},
    {"L1", "", "location area code"},
    {"R1", "", "routing area code"},
    {"RSSI", "dBm", ""},
    {"RSCP", "dBm", ""},
    {"Tx Power", "dBm", ""},
    {"Pathloss", "dB", ""},
    {"Active/Monitored Sets", "", "set;scrambling code;Ec/Io in dB"},
    {"DRX", "", "cycle length coefficient"},
    {"N1", "", "neighbours: RSSI in dBm;ARFCN;BSIC"},
    {"B1", "", "best cells"},
    {"MFRM", "", "multiframes between paging"},
    {"Rx Bytes", "bytes", ""},
    {"Tx Bytes", "bytes", ""},
    {"Res", "", "name servers"},
    {"Rh", "", "wake-ups by rings"},
    {"FTD Age", "", "age of the field-test data"},
    {"HPLMN", "", "home"},
    {"RPLMN", "", "registered"},
    {"FPLMN", "", "forbidden"},
    {"OPLMN", "", "operator's list"},
    {"MM LU State", "", "location update"},
    {"MM LU Error", "", "location update"},
    {"GMM RAU State", "", "routing area update"},
    {"GMM RAU Error", "", "routing area update"},
};

static const Meaning& meaning_of(std::string_view label) {
  static const Meaning NONE = {"", "", ""};
  for (const Meaning& row : MEANINGS) {
    if (label == row.label) return row;
  }
  return NONE;
}

static std::string heading(const std::string& section) {
  for (const char* acronym : {"sim", "wcdma", "gsm", "wan", "plmn"}) {
    if (section != acronym) continue;
    std::string upper = section;
    for (char& c : upper) c = static_cast<char>(c - 'a' + 'A');
    return upper;
  }
  std::string text = section;
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') {
    text[0] = static_cast<char>(text[0] - 'a' + 'A');
  }
  return text;
}

static void write_item(HtmlWriter& html, const std::string& section, const std::string& label,
                       const std::string& value) {
  const Meaning& meaning = meaning_of(label);
  html.open("tr").open("th", {{"scope", "row"}}).text(label);
  if (*meaning.meaning != '\0') {
    html.element("span", {{"class", "meaning"}}, meaning.meaning);
  }
  bool wrong = section == "error" && value != "No error";
  html.close().open("td", {{"class", wrong ? "wrong" : ""}}).text(value);
  if (*meaning.unit != '\0') html.text("\u00A0").text(meaning.unit);
  html.close().close();
}

static void write_section(HtmlWriter& html, const std::string& section, const Json& items) {
  std::string unknown;
  html.open("div", {{"class", "card"}}).element("h4", {}, heading(section)).open("table");
  html.open("tbody");
  for (const auto& [label, value] : items.items()) {
    std::string text = text_of(value);
    if (text.empty()) {
      unknown += unknown.empty() ? "" : ", ";
      unknown += label;
    } else {
      write_item(html, section, label, text);
    }
  }
  html.close().close();
  if (!unknown.empty()) html.element("p", {{"class", "unknown"}}, "Empty or not known: " + unknown);
  html.close();
}

void write_report(HtmlWriter& html, const Recording& recording) {
  html.open("div", {{"class", "cards"}});
  for (const auto& [section, items] : recording.latest.items()) {
    if (items.is_object()) write_section(html, section, items);
  }
  html.close();
  if (recording.latest.empty()) html.element("p", {}, "There was none.");
}

}  // namespace page
