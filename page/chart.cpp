// Graphs of numbers. Positions in time are shares of the width; only the lines are stretched, and
// their strokes are not.
#include "page/chart.h"

#include <fmt/format.h>

#include <algorithm>

#include "records/counted.h"

namespace page {

constexpr int WIDTH = 10000, HEIGHT = 1000;  // of the stretched drawing
constexpr size_t MANY_POINTS = 1500;         // of a line; more of them look like an area
constexpr size_t PROBES = 160;               // positions of a graph that show their values

std::string value_text(SeriesId series, float value) {
  if (std::isnan(value)) return "\u2014";
  const char* unit = QUANTITIES[series].unit;
  return fmt::format("{:g}{}{}", value, *unit == '\0' ? "" : "\u00A0", unit);
}

TimeLine::TimeLine(HtmlWriter& html, const Recording& recording, const Statistics& statistics)
    : html_(html), recording_(recording), statistics_(statistics), axis_(recording) {
  const Words& words = recording.words[LINK_STATE];
  lost_ = strip_of(recording, axis_, [&](const Moment& moment) {
    return words.word(moment.states[LINK_STATE]) == "lost" ? 1U : 0U;
  });
}

std::string TimeLine::when(const Span& span) const {
  int64_t whole = span.to - span.from;
  std::string text = fmt::format("{} to {}, ", clock_text(span.from), clock_text(span.to));
  if (span.time != whole) text += duration_text(span.time) + " of ";
  return text + duration_text(whole);
}

void TimeLine::open_row(const char* title, const char* unit, const std::vector<SeriesId>& series) {
  html_.open("div", {{"class", "row"}}).open("div", {{"class", "label"}});
  html_.element("span", {{"class", "name"}}, title);
  if (*unit != '\0') html_.element("span", {{"class", "unit"}}, unit);
  for (SeriesId id : series) {
    html_.element("span", {{"class", fmt::format("key {}", QUANTITIES[id].style)}},
                  QUANTITIES[id].name);
  }
  html_.close().open("div", {{"class", "plot"}});
}

void TimeLine::open_drawing(const char* style, const std::string& title,
                            const std::string& description) {
  html_.open("svg", {{"class", style}, {"role", "img"}});
  html_.element("title", {}, title).element("desc", {}, description);
}

void TimeLine::close_row() { html_.close().close().close(); }

void TimeLine::mark(const Span& span, const std::string& style, const std::string& title) {
  double from = axis_.share(span.from);
  html_.open("rect", {{"class", style},
                      {"x", percent(from)},
                      {"width", percent(std::max(0.0015, axis_.share(span.to) - from))},
                      {"height", "100%"}});
  html_.element("title", {}, title).close();
}

void TimeLine::marks(const Strip& strip, const TextOf& style, const TextOf& title) {
  for (const Span& span : strip.most) {
    mark(span, style(span.state), title(span.state) + "\n" + when(span));
  }
  for (const Span& span : strip.rare) {
    mark(span, style(span.state) + " rare", title(span.state) + "\n" + when(span));
  }
}

void TimeLine::lost() {
  marks(
      lost_, [](uint32_t) { return "lost"; }, [](uint32_t) { return "link lost"; });
}

void TimeLine::lines_of_time() {
  for (const TimeAxis::Tick& tick : axis_.ticks()) {
    std::string x = percent(tick.share);
    html_.empty("line", {{"class", "grid"}, {"x1", x}, {"x2", x}, {"y2", "100%"}});
  }
}

void TimeLine::lines_of_values(double least, double most, int step) {
  for (int value = static_cast<int>(least); value <= static_cast<int>(most); value += step) {
    std::string y = percent((most - value) / (most - least));
    html_.empty("line", {{"class", "grid"}, {"x2", "100%"}, {"y1", y}, {"y2", y}});
    html_.element("text", {{"class", "scale-text"}, {"x", "-6"}, {"y", y}, {"dy", "4"}},
                  fmt::format("{}", value));
  }
}

// ---- lines ----

// A point without neighbours is drawn as a dot.
void TimeLine::line(SeriesId series, double least, double most) {
  std::string path, dots;
  std::vector<Point> points = points_of(recording_, axis_, series);
  for (size_t i = 0; i < points.size(); ++i) {
    const Point& point = points[i];
    bool alone = point.starts && (i + 1 == points.size() || points[i + 1].starts);
    fmt::format_to(std::back_inserter(alone ? dots : path), "{}{:.0f} {:.0f}{}",
                   point.starts ? "M" : "L", axis_.share(point.time) * WIDTH,
                   (most - static_cast<double>(point.value)) / (most - least) * HEIGHT,
                   alone ? "h0" : "");
  }
  const char* style = QUANTITIES[series].style;
  bool dense = points.size() > MANY_POINTS;
  html_.empty("path",
              {{"class", fmt::format("line {}{}", style, dense ? " dense" : "")}, {"d", path}});
  if (!dots.empty()) {
    html_.empty("path", {{"class", fmt::format("line dot {}", style)}, {"d", dots}});
  }
}

// Invisible strips with a title each: the graph shows time and values under the pointer.
void TimeLine::probes() {
  size_t next = 0;
  const auto& moments = recording_.moments;
  for (size_t i = 0; i < PROBES; ++i) {
    double end = static_cast<double>(i + 1) / PROBES;
    if (next == moments.size() || axis_.share(moments[next].time) >= end) continue;
    const Moment& moment = moments[next];
    std::string text = time_text(moment.time) + " UTC";
    for (size_t id = 0; id < SERIES_COUNT; ++id) {
      if (std::isnan(moment.values[id])) continue;
      text += fmt::format("\n{} {}", QUANTITIES[id].name,
                          value_text(static_cast<SeriesId>(id), moment.values[id]));
    }
    double start = axis_.share(moment.time);
    html_.open("rect", {{"class", "probe"},
                        {"x", percent(start)},
                        {"width", percent(std::max(end - start, 0.5 / PROBES))},
                        {"height", "100%"}});
    html_.element("title", {}, text).close();
    while (next < moments.size() && axis_.share(moments[next].time) < end) ++next;
  }
}

void TimeLine::graph(const char* title, const std::vector<SeriesId>& series, int step) {
  float lowest = MISSING, highest = MISSING;
  std::string description;
  for (SeriesId id : series) {
    const Spread& spread = statistics_.spreads[id];
    if (spread.count == 0) continue;
    lowest = std::fmin(lowest, spread.least);
    highest = std::fmax(highest, spread.most);
    description += fmt::format("{} from {} to {}. ", QUANTITIES[id].name,
                               value_text(id, spread.least), value_text(id, spread.most));
  }
  if (std::isnan(lowest)) return;
  double least = std::floor((static_cast<double>(lowest) - 1) / step) * step;
  double most = std::ceil((static_cast<double>(highest) + 1) / step) * step;
  if (most - least > 6 * step) step *= 2;
  open_row(title, QUANTITIES[series[0]].unit, series);
  open_drawing("graph", fmt::format("{} over time", title), description);
  lost();
  lines_of_time();
  lines_of_values(least, most, step);
  html_.open("svg", {{"viewBox", fmt::format("0 0 {} {}", WIDTH, HEIGHT)},
                     {"preserveAspectRatio", "none"},
                     {"width", "100%"},
                     {"height", "100%"}});
  for (SeriesId id : series) line(id, least, most);
  html_.close();
  probes();
  close_row();
}

void TimeLine::bars() {
  auto state = [](const Moment& moment) {
    float bars = moment.values[BARS];
    return std::isnan(bars) ? 0U : static_cast<uint32_t>(bars) + 1;
  };
  auto [spans, rare] = strip_of(recording_, axis_, state);
  spans.insert(spans.end(), rare.begin(), rare.end());
  if (spans.empty()) return;
  std::stable_sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) {
    return a.state > b.state;  // the lower ones in front
  });
  open_row("Bars", "0 to 5");
  open_drawing("graph low", "Bars over time", "Bars that a host shows, 0 to 5.");
  lost();
  lines_of_time();
  lines_of_values(0, 5, 5);
  for (const Span& span : spans) {
    uint32_t count = span.state - 1;
    double from = axis_.share(span.from), height = std::max(0.03, count / 5.0);
    html_.open("rect", {{"class", fmt::format("b{}", count)},
                        {"x", percent(from)},
                        {"width", percent(std::max(0.0015, axis_.share(span.to) - from))},
                        {"y", percent(1 - height)},
                        {"height", percent(height)}});
    html_.element("title", {}, records::counted(count, "bar") + ", " + when(span)).close();
  }
  close_row();
}

void TimeLine::clock() {
  open_row("Time, UTC", "");
  html_.open("svg", {{"class", "clock"}, {"aria-hidden", "true"}});
  bool second = false;
  for (const TimeAxis::Tick& tick : axis_.ticks()) {
    const char* anchor = tick.share < 0.04 ? "start" : tick.share > 0.96 ? "end" : "middle";
    html_.element("text",
                  {{"class", second ? "tick minor" : "tick"},
                   {"x", percent(tick.share)},
                   {"y", "12"},
                   {"text-anchor", anchor}},
                  tick.text);
    second = !second;
  }
  close_row();
}

void TimeLine::draw() {
  html_.open("div", {{"class", "timeline"}});
  if (recording_.moments.size() > STRIP_COLUMNS) {
    html_.element(
        "p", {{"class", "extent"}},
        "Where more happened than can be drawn, a strip shows what took most of the time, "
        "and in its lower part what was rarest.");
  }
  events();
  graph("Level", {RSSI, RSCP}, 10);
  graph("Quality", {ECIO}, 5);
  bars();
  graph("Transmit", {TX_POWER}, 10);
  clock();
  for (size_t track_id = 0; track_id < TRACK_COUNT; ++track_id) {
    track(static_cast<TrackId>(track_id));
  }
  cells();
  clock();
  html_.close();
}

}  // namespace page
