// The tiles and the list at the top of a part.
#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "page/chart.h"
#include "page/page.h"

namespace page {

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

// Range and median of a series.
static std::string spread(const Recording& recording, SeriesId series) {
  std::vector<float> values;
  for (const Moment& moment : recording.moments) {
    if (!std::isnan(moment.values[series])) values.push_back(moment.values[series]);
  }
  if (values.size() < 2) return "";
  std::sort(values.begin(), values.end());
  return fmt::format("{:g} to {:g}, median {:g}", values.front(), values.back(),
                     values[values.size() / 2]);
}

static void level_tile(HtmlWriter& html, const Recording& recording, SeriesId series) {
  float value = recording.latest_level().values[series];
  std::string more = spread(recording, series);
  if (std::isnan(value) && more.empty()) return;
  tile(html, QUANTITIES[series].name, std::isnan(value) ? "" : value_text(series, value), more);
}

static std::string item(const Recording& recording, const char* section, const char* label) {
  return text_of(item_of(recording.latest, section, label));
}

static void write_tiles(HtmlWriter& html, const Recording& recording) {
  html.open("div", {{"class", "tiles"}});
  tile(html, "Network", item(recording, "network", "Network Name"),
       item(recording, "network", "MCC MNC"));
  tile(html, "System mode", item(recording, "state", "System Mode"),
       item(recording, "network", "Band"));
  tile(html, "Service", item(recording, "status", "Service Status"),
       "registration: " + or_dash(item(recording, "status", "Reg Status")));
  tile(html, "Packet data", item(recording, "status", "PDP State"),
       item(recording, "state", "Data Service Mode"));
  bars_tile(html, recording.moments.empty() ? recording.latest_level().values[BARS]
                                            : recording.moments.back().values[BARS]);
  for (SeriesId series : {RSSI, RSCP, ECIO, TX_POWER}) level_tile(html, recording, series);
  html.close();
}

// ---- what stands out ----

namespace {
struct Times {
  size_t count = 0;
  int64_t whole = 0, longest = 0;
};
}  // namespace

static Times times_of(const std::vector<Span>& spans, uint32_t state) {
  Times times;
  for (const Span& span : spans) {
    if (span.state != state) continue;
    ++times.count;
    times.whole += span.to - span.from;
    times.longest = std::max(times.longest, span.to - span.from);
  }
  return times;
}

static void note(HtmlWriter& html, const char* style, const std::string& text) {
  html.element("li", {{"class", style}}, text);
}

static std::string how_long(const Times& times, const TimeAxis& axis) {
  double share = static_cast<double>(times.whole) / static_cast<double>(axis.to() - axis.from());
  std::string text =
      fmt::format("{}, {:.1f} % of the time", duration_text(times.whole), 100 * share);
  if (times.count > 1) {
    text += fmt::format(", {} times, at most {}", times.count, duration_text(times.longest));
  }
  return text;
}

static void note_states(HtmlWriter& html, const Recording& recording, const TimeAxis& axis,
                        TrackId track, const std::string& state, const std::string& what) {
  const Words& words = recording.words[track];
  const Words& link = recording.words[LINK_STATE];
  auto of = [&](const Moment& moment) {  // a lost link has its own note
    bool lost = track != LINK_STATE && link.word(moment.states[LINK_STATE]) == "lost";
    return lost ? 0 : moment.states[track];
  };
  std::vector<Span> spans = spans_of(recording, axis, of);
  for (uint32_t number = 1; number < std::min<size_t>(words.count(), 20); ++number) {
    if (!state.empty() && words.word(number) != state) continue;
    std::string why = state.empty() ? ": " + words.word(number) : "";
    Times times = times_of(spans, number);
    if (times.count > 0) note(html, "bad", what + why + ": " + how_long(times, axis));
  }
}

static void note_weakest(HtmlWriter& html, const Recording& recording, SeriesId series) {
  const Moment* weakest = nullptr;
  for (const Moment& moment : recording.moments) {
    float value = moment.values[series];
    if (!std::isnan(value) && (weakest == nullptr || value < weakest->values[series])) {
      weakest = &moment;
    }
  }
  if (weakest == nullptr) return;
  note(html, "plain",
       fmt::format("Weakest {}: {} at {}", QUANTITIES[series].name,
                   value_text(series, weakest->values[series]), time_text(weakest->time)));
}

static void note_changes(HtmlWriter& html, const Recording& recording, TrackId track,
                         const char* what) {
  size_t changes = 0;
  uint32_t before = 0;
  for (const Moment& moment : recording.moments) {
    uint32_t state = moment.states[track];
    if (state != 0 && before != 0 && state != before) ++changes;
    if (state != 0) before = state;
  }
  if (changes > 0) note(html, "plain", fmt::format("{}: {}", what, changes));
}

static void write_notes(HtmlWriter& html, const Recording& recording) {
  TimeAxis axis(recording);
  html.open("ul", {{"class", "notes"}});
  note_states(html, recording, axis, LINK_STATE, "lost", "Link lost");
  note_states(html, recording, axis, NO_BARS, "", "No bars");
  note_changes(html, recording, MODE, "Changes of system mode");
  note_changes(html, recording, CELL, "Changes of the serving cell");
  note_weakest(html, recording, RSSI);
  note_weakest(html, recording, ECIO);
  html.close();
}

void write_summary(HtmlWriter& html, const Recording& recording) {
  write_tiles(html, recording);
  if (recording.moments.size() > 1) write_notes(html, recording);
}

}  // namespace page
