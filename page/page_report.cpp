// Tables: cells, events, and the report with names for people.
#include <fmt/format.h>

#include <algorithm>
#include <span>

#include "page/chart.h"
#include "page/page.h"
#include "records/counted.h"

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
    html.open("details").element("summary", {}, records::counted(recording.event_count(), "event"));
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
struct Word {
  const char* key;
  const char* text;
};
}  // namespace

static const char* text_for(std::span<const Word> words, std::string_view key) {
  auto row = std::ranges::find(words, key, &Word::key);
  return row == words.end() ? "" : row->text;
}

// Of keys, or the order of numbers in a list.
static constexpr Word MEANINGS[] = {
    {"lac", "location area code"},
    {"rac", "routing area code"},
    {"cells", "set, scrambling code, Ec/Io in dB"},
    {"drx_coefficient", "cycle length"},
    {"neighbors", "ARFCN, BSIC, RSSI in dBm"},
    {"rings", "wake-ups by rings, by origin"},
    {"mm_attach", "circuit switched"},
    {"gmm_attach", "packet switched"},
};

// The end of a key.
static constexpr Word UNITS[] = {{"dbm", "dBm"}, {"db", "dB"}, {"s", "s"}};

static bool is_acronym(std::string_view word) {
  static constexpr std::string_view ACRONYMS[] = {
      "bsic", "drx", "egprs", "gmm", "hsdpa", "hspa", "iccid", "id",  "imei", "imsi", "ip",
      "lac",  "mcc", "mm",    "mnc", "pdp",   "pin",  "pmm",   "rac", "rscp", "rssi", "utc"};
  return std::ranges::find(ACRONYMS, word) != std::end(ACRONYMS);
}

static void capitalise(std::string& text, size_t length) {
  for (char& c : std::span(text).first(std::min(text.size(), length))) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
}

namespace {
struct Name {
  std::string name;  // for people: "RSSI" of "rssi_dbm"
  std::string unit;
};
}  // namespace

static Name name_of(std::string_view key) {
  Name made;
  for (bool is_first = true; !key.empty(); is_first = false) {
    std::string word(key.substr(0, key.find('_')));
    key.remove_prefix(std::min(word.size() + 1, key.size()));
    if (key.empty() && !is_first) made.unit = text_for(UNITS, word);
    if (key.empty() && !made.unit.empty()) break;
    capitalise(word, is_acronym(word) ? word.size() : is_first ? 1 : 0);
    made.name += is_first ? word : " " + word;
  }
  return made;
}

static std::string heading(std::string section) {
  static constexpr std::string_view ACRONYMS[] = {"sim", "wcdma", "gsm", "wan", "plmn"};
  bool is_short = std::ranges::find(ACRONYMS, section) != std::end(ACRONYMS);
  capitalise(section, is_short ? section.size() : 1);
  return section;
}

// Ages of the WAN's state are seconds.
static std::string value_of(const std::string& section, const std::string& unit,
                            const Json& value) {
  bool is_age = section == "wan" && unit == "s" && value.is_number_integer();
  constexpr int64_t MOST = 10'000'000'000;
  if (is_age) return duration_text(1000 * std::clamp<int64_t>(value.get<int64_t>(), 0, MOST));
  return text_of(value) + (unit.empty() ? "" : "\u00A0" + unit);
}

static void write_item(HtmlWriter& html, const std::string& section, const std::string& key,
                       const Json& value) {
  Name name = name_of(key);
  html.open("tr").open("th", {{"scope", "row"}}).text(name.name);
  const char* meaning = text_for(MEANINGS, key);
  if (*meaning != '\0') html.element("span", {{"class", "meaning"}}, meaning);
  bool wrong = section == "errors" && text_of(value) != "no error";
  html.close().open("td", {{"class", wrong ? "wrong" : ""}});
  html.text(value_of(section, name.unit, value)).close().close();
}

static void write_section(HtmlWriter& html, const std::string& section, const Json& items) {
  std::string unknown;
  html.open("div", {{"class", "card"}}).element("h4", {}, heading(section)).open("table");
  html.open("tbody");
  for (const auto& [key, value] : items.items()) {
    if (text_of(value).empty()) {
      unknown += unknown.empty() ? "" : ", ";
      unknown += name_of(key).name;
    } else {
      write_item(html, section, key, value);
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
