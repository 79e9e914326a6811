// States, cells and events over time: strips of colour with their names in them.
#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "page/chart.h"
#include "records/counted.h"
#include "records/state_words.h"

namespace page {

constexpr int PLAIN_COLOURS = 8;
constexpr int LEVELS = 6;
constexpr size_t MAX_CELL_STRIPS = 14;
constexpr size_t EVENT_COLUMNS = 200;
constexpr size_t MAX_EVENTS_PER_MARK = 8;
constexpr size_t MAX_SHARES = 6;

// ---- colours ----

// Classes of the style sheet.
static constexpr char GOOD[] = "good", WARN[] = "warn", BAD[] = "bad", NONE[] = "none";

namespace {
struct StateColour {
  std::string_view word;
  const char* style;
};
}  // namespace

// States that are good or bad whatever the track.
static constexpr StateColour STATE_COLOURS[] = {
    {"open", GOOD},
    {"full", GOOD},
    {"registered", GOOD},
    {"active", GOOD},
    {"conversation", GOOD},
    {"limited", WARN},
    {"limited regional", WARN},
    {"power save", WARN},
    {"originating", WARN},
    {"incoming", WARN},
    {"active pending", WARN},
    {"modify pending", WARN},
    {"inactive pending", WARN},
    {"lost", BAD},
    {"no service", BAD},
    {"no network", BAD},
    {"failed", BAD},
    {"none", NONE},
    {"not registered", NONE},
    {"idle", NONE},
    {"inactive", NONE},
};

// A word that no state has would colour nothing.
static_assert(std::ranges::all_of(STATE_COLOURS, [](const StateColour& row) {
  auto has_it = [&](const auto& states) {
    return std::ranges::find(states, row.word, &records::StateWord::word) != std::end(states);
  };
  return row.word == "open" || row.word == "lost" || has_it(records::SERVICES) ||
         has_it(records::REGISTRATIONS) || has_it(records::CALLS) || has_it(records::PDP_STATES);
}));

std::string state_style(TrackId track, const Words& words, uint32_t state) {
  if (track == NO_BARS) return BAD;
  const std::string& word = words.word(state);
  for (const StateColour& row : STATE_COLOURS) {
    if (word == row.word) return row.style;
  }
  return fmt::format("s{}", (state - 1) % PLAIN_COLOURS);
}

// Ec/Io from -21 dB up by 3 dB, RSSI from -105 dBm up by 9 dB.
static uint32_t level_step(const CellId& cell, float level) {
  float step = cell.gsm ? (level + 105) / 9 : (level + 21) / 3;
  return static_cast<uint32_t>(std::clamp(step + 1, 0.0F, static_cast<float>(LEVELS - 1)));
}

std::string level_style(const CellId& cell, float level) {
  return fmt::format("q{}", level_step(cell, level));
}

std::string cell_name(const CellId& cell) {
  return cell.gsm ? fmt::format("ARFCN {} / {}", cell.code, cell.bsic)
                  : fmt::format("SC {}", cell.code);
}

// ---- states ----

// A name inside its span; a short span has none.
void TimeLine::label(const Span& span, const std::string& text) {
  double width = axis_.share(span.to) - axis_.share(span.from);
  if (width < 0.035) return;
  html_.open("svg", {{"x", percent(axis_.share(span.from))},
                     {"width", percent(width)},
                     {"height", "100%"},
                     {"class", "name"}});
  html_.element("text", {{"x", "5"}, {"y", "14"}}, text).close();
}

// The share of the recorded time that each state took, longest first.
void TimeLine::shares(TrackId track) {
  const Words& words = recording_.words[track];
  const std::vector<StateTime>& times = statistics_.states[track];
  std::vector<uint32_t> order;
  for (uint32_t state = track == NO_BARS ? 1 : 0; state < times.size(); ++state) {
    if (times[state].whole > 0) order.push_back(state);
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](uint32_t a, uint32_t b) { return times[a].whole > times[b].whole; });
  html_.open("p", {{"class", "shares"}});
  for (size_t i = 0; i < std::min(order.size(), MAX_SHARES); ++i) {
    uint32_t state = order[i];
    std::string style = state == 0 ? NONE : state_style(track, words, state);
    html_.element("span", {{"class", "key " + style}},
                  fmt::format("{} {}", state == 0 ? "not known" : words.word(state),
                              share_text(times[state].whole, statistics_.recorded)));
  }
  if (order.size() > MAX_SHARES) {
    html_.element("span", {}, fmt::format("and {} more", order.size() - MAX_SHARES));
  }
  html_.close();
}

void TimeLine::track(TrackId track) {
  const Words& words = recording_.words[track];
  auto state = [track](const Moment& moment) { return moment.states[track]; };
  auto word_of = [&](uint32_t number) { return words.word(number); };
  auto style_of = [&](uint32_t number) { return state_style(track, words, number); };
  Strip strip = strip_of(recording_, axis_, state);
  if (strip.most.empty() && strip.rare.empty()) return;
  std::string description;
  for (size_t i = 0; i < std::min<size_t>(strip.most.size(), 20); ++i) {
    description += fmt::format("{}: {}. ", words.word(strip.most[i].state), when(strip.most[i]));
  }
  open_row(TRACKS[track].title, "");
  open_drawing("strip", fmt::format("{} over time", TRACKS[track].title), description);
  marks(strip, style_of, word_of);
  for (const Span& span : strip.most) label(span, words.word(span.state));
  html_.close();
  if (words.count() > 2) shares(track);
  html_.close().close();
}

// ---- cells ----

static const CellReading* reading_of(const Moment& moment, uint32_t cell) {
  for (const CellReading& reading : moment.cells) {
    if (reading.cell == cell) return &reading;
  }
  return nullptr;
}

// The cells that were heard most often.
static std::vector<uint32_t> most_heard(const Recording& recording) {
  std::vector<std::pair<int64_t, uint32_t>> heard(recording.cells.size());
  for (uint32_t cell = 0; cell < heard.size(); ++cell) heard[cell].second = cell;
  for (const Moment& moment : recording.moments) {
    for (const CellReading& reading : moment.cells) --heard[reading.cell].first;
  }
  std::sort(heard.begin(), heard.end());
  std::vector<uint32_t> cells;
  for (auto [count, cell] : heard) {
    if (count < 0 && cells.size() < MAX_CELL_STRIPS) cells.push_back(cell);
  }
  std::sort(cells.begin(), cells.end());  // in order of appearance
  return cells;
}

// How strong the cell was, and under it when it was in the active set.
void TimeLine::cell(uint32_t cell) {
  std::string name = cell_name(recording_.cells[cell]);
  auto level = [&](const Moment& moment) {
    const CellReading* reading = reading_of(moment, cell);
    return reading == nullptr ? 0 : 1 + level_step(recording_.cells[cell], reading->level);
  };
  auto active = [&](const Moment& moment) {
    const CellReading* reading = reading_of(moment, cell);
    return reading != nullptr && reading->set == Cell::ACTIVE ? 1U : 0U;
  };
  open_row(name.c_str(), "");
  open_drawing("strip", name + " over time", "How strong the cell was heard.");
  marks(
      strip_of(recording_, axis_, level),
      [](uint32_t state) { return fmt::format("q{}", state - 1); }, [&](uint32_t) { return name; });
  marks(
      strip_of(recording_, axis_, active), [](uint32_t) { return "active-cell"; },
      [&](uint32_t) { return name + ", active set"; });
  close_row();
}

void TimeLine::cells() {
  std::vector<uint32_t> cells = most_heard(recording_);
  if (cells.empty()) return;
  html_.open("div", {{"class", "row"}}).element("div", {{"class", "label"}}, "");
  html_.open("p", {{"class", "shares"}});
  html_.element("span", {{"class", "name"}}, "Cells, weak to strong");
  for (int level = 0; level < LEVELS; ++level) {
    html_.element("span", {{"class", fmt::format("key q{}", level)}}, "");
  }
  html_.element("span", {{"class", "key active-key"}}, "in the active set").close().close();
  for (uint32_t heard : cells) cell(heard);
  if (cells.size() < recording_.cells.size()) {
    html_.element(
        "p", {{"class", "shares"}},
        fmt::format("{} more cells were heard less often", recording_.cells.size() - cells.size()));
  }
}

// ---- events ----

void TimeLine::events() {
  if (recording_.events.empty()) return;
  std::map<size_t, std::vector<const Event*>> marks;
  for (const Event& event : recording_.events) {
    marks[static_cast<size_t>(axis_.share(event.time) * EVENT_COLUMNS)].push_back(&event);
  }
  open_row("Events", "");
  open_drawing("strip events", "Events over time",
               records::counted(recording_.event_count(), "event") + "; the table below has them.");
  for (const auto& [column, events] : marks) {
    std::string text;
    for (size_t i = 0; i < std::min(events.size(), MAX_EVENTS_PER_MARK); ++i) {
      text += clock_text(events[i]->time) + " " + events[i]->text + "\n";
    }
    if (events.size() > MAX_EVENTS_PER_MARK) text += fmt::format("{} in all", events.size());
    std::string x = percent(axis_.share(events[0]->time));
    html_.open("g", {{"class", "event"}}).element("title", {}, text);
    html_.empty("line", {{"x1", x}, {"x2", x}, {"y2", "100%"}});
    html_.empty("circle", {{"cx", x}, {"cy", "50%"}, {"r", events.size() > 1 ? "6" : "4.5"}});
    html_.close();
  }
  close_row();
}

}  // namespace page
