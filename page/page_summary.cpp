// The tiles and the list at the top of a part.
#include <fmt/format.h>

#include <algorithm>

#include "page/chart.h"
#include "page/page.h"

namespace page {

constexpr size_t MAX_REASONS = 20;  // for no bars

static std::string or_dash(const std::string& text) { return text.empty() ? "\u2014" : text; }

// ---- tiles ----

static void tile(HtmlWriter& html, const char* title, const std::string& value,
                 const std::string& more) {
  html.open("div", {{"class", "tile"}});
  html.element("span", {{"class", "what"}}, title);
  html.element("span", {{"class", "value"}}, or_dash(value));
  html.element("span", {{"class", "more"}}, more).close();
}

static void bars_tile(HtmlWriter& html, float bars) {
  bool known = !std::isnan(bars);
  int count = known ? static_cast<int>(bars) : 0;
  html.open("div", {{"class", "tile"}}).element("span", {{"class", "what"}}, "Bars");
  html.open("span", {{"class", "value"}}).text(known ? fmt::format("{} ", count) : "none ");
  html.open("svg", {{"class", "icon"}, {"viewBox", "0 0 34 24"}, {"role", "img"}});
  html.element("title", {}, known ? fmt::format("{} of 5 bars", count) : "no bars");
  for (int i = 0; i < 5; ++i) {
    int height = 4 + 5 * i;
    html.empty("rect", {{"class", i < count ? "full" : "hollow"},
                        {"x", std::to_string(7 * i)},
                        {"y", std::to_string(24 - height)},
                        {"width", "5"},
                        {"height", std::to_string(height)},
                        {"rx", "1"}});
  }
  html.close().close().element("span", {{"class", "more"}}, "of 5").close();
}

static std::string spread_text(const Spread& spread) {
  if (spread.count < 2) return "";
  return fmt::format("{:g} to {:g}, median {:g}", spread.least, spread.most, spread.median);
}

static void level_tile(HtmlWriter& html, const Recording& recording, const Statistics& statistics,
                       SeriesId series) {
  float value = recording.latest_level().values[series];
  std::string more = spread_text(statistics.spreads[series]);
  if (std::isnan(value) && more.empty()) return;
  tile(html, QUANTITIES[series].name, std::isnan(value) ? "" : value_text(series, value), more);
}

static std::string item(const Recording& recording, const char* section, const char* key) {
  return text_of(item_of(recording.latest, section, key));
}

static void write_tiles(HtmlWriter& html, const Recording& recording,
                        const Statistics& statistics) {
  html.open("div", {{"class", "tiles"}});
  tile(html, "Network", item(recording, "network", "name"), plmn_of(recording.latest));
  tile(html, "System mode", item(recording, "state", "system_mode"),
       item(recording, "network", "band"));
  tile(html, "Service", item(recording, "status", "service"),
       "registration: " + or_dash(item(recording, "status", "registration")));
  tile(html, "Packet data", item(recording, "status", "pdp_state"),
       item(recording, "state", "data_service"));
  bars_tile(html, recording.moments.empty() ? recording.latest_level().values[BARS]
                                            : recording.moments.back().values[BARS]);
  for (SeriesId series : {RSSI, RSCP, ECIO, TX_POWER}) {
    level_tile(html, recording, statistics, series);
  }
  html.close();
}

// ---- what stands out ----

static void note(HtmlWriter& html, const char* style, const std::string& text) {
  html.element("li", {{"class", style}}, text);
}

static void note_time(HtmlWriter& html, const std::string& what, const StateTime& time,
                      int64_t recorded) {
  if (time.times == 0) return;
  std::string text = fmt::format("{}: {}, {} of the time", what, duration_text(time.whole),
                                 share_text(time.whole, recorded));
  if (time.times > 1) {
    text += fmt::format(", {} times, at most {}", time.times, duration_text(time.longest));
  }
  note(html, "bad", text);
}

static void note_states(HtmlWriter& html, const Recording& recording,
                        const Statistics& statistics) {
  const Words &links = recording.words[LINK_STATE], &reasons = recording.words[NO_BARS];
  for (uint32_t state = 1; state < links.count(); ++state) {
    if (links.word(state) != "lost") continue;
    note_time(html, "Link lost", statistics.states[LINK_STATE][state], statistics.recorded);
  }
  for (uint32_t state = 1; state < std::min<size_t>(reasons.count(), MAX_REASONS); ++state) {
    note_time(html, "No bars: " + reasons.word(state), statistics.states[NO_BARS][state],
              statistics.recorded);
  }
}

static void note_weakest(HtmlWriter& html, const Statistics& statistics, SeriesId series) {
  const Spread& spread = statistics.spreads[series];
  if (spread.count == 0) return;
  note(html, "plain",
       fmt::format("Weakest {}: {} at {}", QUANTITIES[series].name,
                   value_text(series, spread.least), time_text(spread.least_at)));
}

static void note_changes(HtmlWriter& html, const Statistics& statistics, TrackId track,
                         const char* what) {
  size_t changes = statistics.changes[track];
  if (changes > 0) note(html, "plain", fmt::format("{}: {}", what, changes));
}

static void write_notes(HtmlWriter& html, const Recording& recording,
                        const Statistics& statistics) {
  html.open("ul", {{"class", "notes"}});
  note_states(html, recording, statistics);
  note_changes(html, statistics, MODE, "Changes of system mode");
  note_changes(html, statistics, CELL, "Changes of the serving cell");
  note_weakest(html, statistics, RSSI);
  note_weakest(html, statistics, ECIO);
  html.close();
}

void write_summary(HtmlWriter& html, const Recording& recording, const Statistics& statistics) {
  write_tiles(html, recording, statistics);
  if (recording.moments.size() > 1) write_notes(html, recording, statistics);
}

}  // namespace page
