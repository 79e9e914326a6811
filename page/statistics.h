// What the page says in numbers, counted over all samples: only drawings are thinned. A state lasts
// from its sample to the next one; nothing is known of a gap.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "records/recording.h"

namespace page {

using namespace records;  // whose recordings are counted

struct StateTime {
  size_t times = 0;                // how often it began
  int64_t whole = 0, longest = 0;  // ms
};

struct Spread {
  size_t count = 0;  // samples
  float least = MISSING, most = MISSING;
  float median = MISSING;  // half of the time was below it
  int64_t least_at = 0;    // ms since 1970, the first time
};

struct Statistics {
  int64_t recorded = 0;  // ms
  int64_t gaps = 0;      // ms between the first and the last sample
  std::array<std::vector<StateTime>, TRACK_COUNT> states;  // by number of the word; 0 is unknown
  std::array<size_t, TRACK_COUNT> changes{};               // from one known state to another
  std::array<Spread, SERIES_COUNT> spreads;
};

Statistics statistics_of(const Recording& recording);

// "1.7 %" with one place; no share is rounded to nothing or to all.
std::string share_text(int64_t part, int64_t whole);

}  // namespace page
