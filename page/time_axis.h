// Time as a position on a drawing, and what is drawn along it, thinned to what an eye can tell
// apart: a recording of a day makes no larger picture than one of an hour.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "records/recording.h"

namespace page {

using namespace records;  // whose recordings are drawn

class TimeAxis {
 public:
  explicit TimeAxis(const Recording& recording);

  double share(int64_t time) const;  // 0 to 1
  struct Tick {
    double share;
    std::string text;
  };
  const std::vector<Tick>& ticks() const { return ticks_; }
  int64_t from() const { return from_; }
  int64_t to() const { return to_; }

 private:
  void set_ticks();

  int64_t from_, to_;  // ms
  std::vector<Tick> ticks_;
};

// ms since 1970 as "2026-11-21 14:20:05", UTC.
std::string time_text(int64_t time);
std::string clock_text(int64_t time);     // "14:20:05"
std::string duration_text(int64_t time);  // "1 h 02 min", "2 min 05 s", "3.2 s"

// A time during which a state was seen.
struct Span {
  int64_t from, to;
  uint32_t state;
  int64_t time;  // ms with that state: all, or less where the drawing is thinned
};

// A strip of states; 0 is no state and has no span. With more spans than columns, each column shows
// the state that took most of it, and its rarest one besides: a short fault stays visible.
struct Strip {
  std::vector<Span> most, rare;
};
constexpr size_t STRIP_COLUMNS = 600;

using StateOf = std::function<uint32_t(const Moment&)>;
Strip strip_of(const Recording& recording, const TimeAxis& axis, const StateOf& state);

struct Point {
  int64_t time;
  float value;
  bool starts;  // a new line, after a gap
};

// A series as points. When there are too many, the least and the most of each column stay.
std::vector<Point> points_of(const Recording& recording, const TimeAxis& axis, SeriesId series);

}  // namespace page
