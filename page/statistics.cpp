// One pass over the moments.
#include "page/statistics.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace page {

namespace {
// The times of one track.
class TrackCount {
 public:
  explicit TrackCount(size_t words) : states_(words) {}

  void add(uint32_t state, int64_t time, bool follows);

  std::vector<StateTime> states_;
  size_t changes_ = 0;

 private:
  uint32_t now_ = 0, known_ = 0;  // the last state, and the last that was known
  int64_t length_ = 0;            // of the run
};

// The values of one series.
class SeriesCount {
 public:
  void add(float value, const Moment& moment);
  Spread spread() const;

 private:
  Spread spread_;
  std::map<float, int64_t> time_at_;  // ms
};
}  // namespace

void TrackCount::add(uint32_t state, int64_t time, bool follows) {
  StateTime& total = states_[state];
  bool begins = !follows || state != now_;
  length_ = begins ? time : length_ + time;
  total.times += begins ? 1 : 0;
  total.whole += time;
  total.longest = std::max(total.longest, length_);
  now_ = state;
  if (state == 0) return;
  changes_ += known_ != 0 && state != known_ ? 1 : 0;
  known_ = state;
}

void SeriesCount::add(float value, const Moment& moment) {
  if (std::isnan(value)) return;
  if (spread_.count++ == 0 || value < spread_.least) {
    spread_.least = value;
    spread_.least_at = moment.time;
  }
  time_at_[value] += moment.end - moment.time;
}

Spread SeriesCount::spread() const {
  Spread spread = spread_;
  if (time_at_.empty()) return spread;
  spread.most = time_at_.rbegin()->first;
  int64_t whole = 0, below = 0;
  for (auto [value, time] : time_at_) whole += time;
  for (auto [value, time] : time_at_) {
    spread.median = value;
    below += time;
    if (2 * below >= whole) break;
  }
  return spread;
}

Statistics statistics_of(const Recording& recording) {
  Statistics result;
  std::vector<TrackCount> tracks;
  for (const Words& words : recording.words) tracks.emplace_back(words.count());
  std::array<SeriesCount, SERIES_COUNT> series;
  int64_t end = recording.moments.empty() ? 0 : recording.moments.front().time;
  for (const Moment& moment : recording.moments) {
    bool follows = moment.time == end;
    int64_t time = moment.end - moment.time;
    result.recorded += time;
    result.gaps += moment.time - end;
    for (size_t i = 0; i < TRACK_COUNT; ++i) tracks[i].add(moment.states[i], time, follows);
    for (size_t i = 0; i < SERIES_COUNT; ++i) series[i].add(moment.values[i], moment);
    end = moment.end;
  }
  for (size_t i = 0; i < TRACK_COUNT; ++i) {
    result.states[i] = std::move(tracks[i].states_);
    result.changes[i] = tracks[i].changes_;
  }
  for (size_t i = 0; i < SERIES_COUNT; ++i) result.spreads[i] = series[i].spread();
  return result;
}

std::string share_text(int64_t part, int64_t whole) {
  double share = static_cast<double>(part) / static_cast<double>(std::max<int64_t>(whole, 1));
  if (part > 0 && share < 0.0005) return "under 0.1\u00A0%";
  if (part < whole && share >= 0.9995) return "over 99.9\u00A0%";
  return fmt::format("{:.1f}\u00A0%", 100 * share);
}

}  // namespace page
