// A column is narrower than a pixel of a wide screen.
#include "page/time_axis.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>

namespace page {

constexpr int64_t SECOND = 1000, MINUTE = 60 * SECOND, HOUR = 60 * MINUTE, DAY = 24 * HOUR;
constexpr int64_t MAX_TICKS = 8;
constexpr size_t POINT_COLUMNS = 1500;

// ---- the axis ----

TimeAxis::TimeAxis(const Recording& recording) : from_(0), to_(SECOND) {
  if (!recording.moments.empty()) {
    from_ = recording.moments.front().time;
    to_ = std::max(from_ + SECOND, recording.moments.back().end);
  }
  set_ticks();
}

double TimeAxis::share(int64_t time) const {
  double share = static_cast<double>(time - from_) / static_cast<double>(to_ - from_);
  return std::clamp(share, 0.0, 1.0);
}

static int64_t tick_step(int64_t range) {
  static constexpr int64_t STEPS[] = {
      SECOND,     2 * SECOND, 5 * SECOND,  10 * SECOND, 15 * SECOND, 30 * SECOND, MINUTE,
      2 * MINUTE, 5 * MINUTE, 10 * MINUTE, 15 * MINUTE, 30 * MINUTE, HOUR,        2 * HOUR,
      3 * HOUR,   6 * HOUR,   12 * HOUR,   DAY,         2 * DAY,     7 * DAY,     14 * DAY,
      30 * DAY,   90 * DAY,   365 * DAY,   3650 * DAY};
  for (int64_t step : STEPS) {
    if (range / step <= MAX_TICKS) return step;
  }
  return range / MAX_TICKS;
}

static std::string formatted(const char* format, int64_t time) {
  return fmt::format(fmt::runtime(format), fmt::gmtime(static_cast<std::time_t>(time / SECOND)));
}

std::string time_text(int64_t time) { return formatted("{:%Y-%m-%d %H:%M:%S}", time); }
std::string clock_text(int64_t time) { return formatted("{:%H:%M:%S}", time); }

std::string duration_text(int64_t time) {
  if (time < MINUTE) return fmt::format("{:.3g} s", static_cast<double>(time) / SECOND);
  int64_t seconds = time / SECOND;
  if (time < HOUR) return fmt::format("{} min {:02} s", seconds / 60, seconds % 60);
  int64_t minutes = seconds / 60;
  if (time < 2 * DAY) return fmt::format("{} h {:02} min", minutes / 60, minutes % 60);
  return fmt::format("{} days {} h", minutes / 1440, minutes / 60 % 24);
}

void TimeAxis::set_ticks() {
  int64_t step = tick_step(to_ - from_);
  const char* format = step < MINUTE ? "{:%H:%M:%S}" : step < DAY ? "{:%H:%M}" : "{:%Y-%m-%d}";
  for (int64_t time = (from_ + step - 1) / step * step; time <= to_; time += step) {
    bool midnight = step < DAY && time % DAY == 0;
    ticks_.push_back({share(time), formatted(midnight ? "{:%b %d}" : format, time)});
  }
}

// ---- strips ----

static void append(std::vector<Span>& spans, const Span& span) {
  bool goes_on = !spans.empty() && spans.back().state == span.state && spans.back().to == span.from;
  if (goes_on) {
    spans.back().to = span.to;
    spans.back().time += span.time;
  } else if (span.state != 0) {
    spans.push_back(span);
  }
}

static size_t column_of(const TimeAxis& axis, int64_t time, size_t columns) {
  auto count = static_cast<int64_t>(columns);
  int64_t column = (time - axis.from()) * count / (axis.to() - axis.from());
  return static_cast<size_t>(std::clamp<int64_t>(column, 0, count - 1));
}

// The first ms of a column of a strip.
static int64_t column_start(const TimeAxis& axis, size_t column) {
  auto count = static_cast<int64_t>(STRIP_COLUMNS);
  int64_t way = (axis.to() - axis.from()) * static_cast<int64_t>(column);
  return axis.from() + (way + count - 1) / count;
}

namespace {
// How long each state lasted in a column.
using Column = std::map<uint32_t, int64_t>;
}  // namespace

static std::vector<Column> columns_of(const std::vector<Span>& spans, const TimeAxis& axis) {
  std::vector<Column> columns(STRIP_COLUMNS);
  for (size_t i = 0; i < STRIP_COLUMNS; ++i) {
    columns[i][0] = column_start(axis, i + 1) - column_start(axis, i);
  }
  for (const Span& span : spans) {
    for (int64_t from = span.from; from < span.to;) {
      size_t column = column_of(axis, from, STRIP_COLUMNS);
      int64_t to = std::min(span.to, column_start(axis, column + 1));
      columns[column][span.state] += to - from;
      columns[column][0] -= to - from;
      from = to;
    }
  }
  return columns;
}

static Strip thinned(const std::vector<Span>& spans, const TimeAxis& axis) {
  Column length;
  for (const Span& span : spans) length[span.state] += span.time;
  length[0] = std::numeric_limits<int64_t>::max();
  auto shorter = [](const auto& a, const auto& b) { return a.second < b.second; };
  auto rarer = [&](const auto& a, const auto& b) { return length[a.first] < length[b.first]; };
  std::vector<Column> columns = columns_of(spans, axis);
  Strip strip;
  for (size_t i = 0; i < STRIP_COLUMNS; ++i) {
    int64_t from = column_start(axis, i), to = column_start(axis, i + 1);
    auto most = std::max_element(columns[i].begin(), columns[i].end(), shorter);
    auto rare = std::min_element(columns[i].begin(), columns[i].end(), rarer);
    append(strip.most, {from, to, most->first, most->second});
    if (rare != most) append(strip.rare, {from, to, rare->first, rare->second});
  }
  return strip;
}

Strip strip_of(const Recording& recording, const TimeAxis& axis, const StateOf& state) {
  std::vector<Span> spans;
  for (const Moment& moment : recording.moments) {
    append(spans, {moment.time, moment.end, state(moment), moment.end - moment.time});
  }
  if (spans.size() <= STRIP_COLUMNS) return {spans, {}};
  return thinned(spans, axis);
}

// ---- points ----

static std::vector<Point> all_points(const Recording& recording, SeriesId series) {
  std::vector<Point> points;
  bool broken = true;
  for (size_t i = 0; i < recording.moments.size(); ++i) {
    const Moment& moment = recording.moments[i];
    bool present = !std::isnan(moment.values[series]);
    if (present) points.push_back({moment.time, moment.values[series], broken});
    bool last = i + 1 == recording.moments.size();
    bool gap = !last && moment.end != recording.moments[i + 1].time;
    broken = !present || gap;
  }
  return points;
}

std::vector<Point> points_of(const Recording& recording, const TimeAxis& axis, SeriesId series) {
  std::vector<Point> points = all_points(recording, series);
  if (points.size() <= 2 * POINT_COLUMNS) return points;
  std::vector<Point> kept;
  auto lower = [](const Point& a, const Point& b) { return a.value < b.value; };
  for (auto first = points.begin(); first != points.end();) {
    size_t column = column_of(axis, first->time, POINT_COLUMNS);
    auto end = std::find_if(first, points.end(), [&](const Point& point) {
      return column_of(axis, point.time, POINT_COLUMNS) != column;
    });
    auto [least, most] = std::minmax_element(first, end, lower);
    Point a = *std::min(least, most), b = *std::max(least, most);
    a.starts = first->starts;
    b.starts = false;
    kept.push_back(a);
    if (least != most) kept.push_back(b);
    first = end;
  }
  return kept;
}

}  // namespace page
