// Takes samples apart. The files come from anywhere: a value of the wrong type counts as missing,
// and numbers are limited to what a modem can measure.
#include "records/recording.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <chrono>

#include "records/utf8_text.h"

namespace records {

constexpr int64_t SILENCE_MS = 5'000;     // a sample may take this long with a silent modem
constexpr int64_t REOPENING_MS = 30'000;  // and with one that is opened again
constexpr int64_t USUAL_STEP_MS = 1'000;  // of a sample that is alone
constexpr size_t STEPS_AROUND = 2;        // on each side
constexpr size_t MAX_WORDS = 4096;        // of one track
constexpr size_t MAX_WORD_LENGTH = 120;
constexpr size_t MAX_CELLS = 4096;
constexpr size_t MAX_CELLS_PER_SAMPLE = 32;  // the modem's lists are no longer
constexpr size_t MAX_EVENTS = 100'000;

const std::array<Quantity, SERIES_COUNT> QUANTITIES = {{
    {"RSSI", "dBm", "rssi"},
    {"RSCP", "dBm", "rscp"},
    {"Ec/Io", "dB", "ecio"},
    {"Tx power", "dBm", "power"},
    {"Bars", "", "bars"},
}};

const std::array<Track, TRACK_COUNT> TRACKS = {{
    {"Link", nullptr, "link"},
    {"No bars", nullptr, "reason"},
    {"Network", "network", "name"},
    {"System mode", "state", "system_mode"},
    {"Data service", "state", "data_service"},
    {"Band", "network", "band"},
    {"Serving cell", "network", "cell_id"},
    {"Service", "status", "service"},
    {"Registration", "status", "registration"},
    {"PDP", "status", "pdp_state"},
    {"Call", "status", "call"},
    {"Deferred action", nullptr, "deferred"},
}};

// ---- values ----

static float number_of(const Json& value, float least, float most) {
  double number = 0;
  if (value.is_number()) {
    number = value.get<double>();
  } else if (value.is_string()) {
    const auto& text = value.get_ref<const std::string&>();
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return MISSING;
  } else {
    return MISSING;
  }
  if (!std::isfinite(number)) return MISSING;
  return static_cast<float>(std::clamp<double>(number, least, most));
}

// A received level. The modem gives 0 when it has none.
static float level_of(const Json& value) {
  float level = number_of(value, -140, 0);
  return level < 0 ? level : MISSING;
}

static float bars_of(const Json& value) {
  float bars = number_of(value, -1, 5);
  return bars < 0 ? MISSING : bars;
}

std::optional<int64_t> time_of(const Json& value) {
  if (!value.is_string()) return std::nullopt;
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, used = 0;
  double second = 0;
  const auto& text = value.get_ref<const std::string&>();
  if (sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%6lfZ%n", &year, &month, &day, &hour, &minute,
             &second, &used) != 6 ||
      static_cast<size_t>(used) != text.size()) {
    return std::nullopt;
  }
  using namespace std::chrono;
  year_month_day date(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                      std::chrono::day(static_cast<unsigned>(day)));
  bool right = date.ok() && year >= 1970 && year < 2200 && hour >= 0 && hour < 24 && minute >= 0 &&
               minute < 60 && second >= 0 && second < 61;
  if (!right) return std::nullopt;
  auto whole = sys_days(date).time_since_epoch() + hours(hour) + minutes(minute);
  return duration_cast<milliseconds>(whole).count() + std::llround(second * 1000);
}

// ---- samples ----

uint32_t Words::number(const std::string& word) {
  if (word.empty()) return 0;
  auto found = numbers_.find(word);
  if (found != numbers_.end()) return found->second;
  if (words_.size() >= MAX_WORDS) return static_cast<uint32_t>(MAX_WORDS - 1);
  words_.push_back(words_.size() + 1 == MAX_WORDS ? "others" : word);
  auto number = static_cast<uint32_t>(words_.size() - 1);
  numbers_[word] = number;
  return number;
}

static std::string state_word(const Json& value) {
  return shortened(text_of(value), MAX_WORD_LENGTH);
}

void Recording::add_cell(Moment& moment, const Cell& cell) {
  CellId id = {cell.is_gsm(), cell.code, cell.bsic};
  auto found = std::find(cells.begin(), cells.end(), id);
  auto index = static_cast<uint32_t>(found - cells.begin());
  if (found == cells.end()) {
    if (cells.size() >= MAX_CELLS) return;
    cells.push_back(id);
  }
  int least = id.gsm ? -140 : -32;
  moment.cells.push_back({index, cell.set, static_cast<float>(std::clamp(cell.level, least, 0))});
}

void Recording::take_cells(Moment& moment, const Json& report) {
  for (const Cell& cell : cells_of(report)) {
    if (moment.cells.size() < MAX_CELLS_PER_SAMPLE) add_cell(moment, cell);
  }
}

void Recording::take_report(Moment& moment, const Json& report) {
  moment.values[RSSI] = level_of(item_of(report, "state", "rssi_dbm"));
  moment.values[RSCP] = level_of(item_of(report, "wcdma", "rscp_dbm"));
  moment.values[TX_POWER] = number_of(item_of(report, "state", "tx_power_dbm"), -80, 40);
  for (size_t track = 0; track < TRACK_COUNT; ++track) {
    if (TRACKS[track].section == nullptr) continue;
    const Json& value = item_of(report, TRACKS[track].section, TRACKS[track].key);
    moment.states[track] = words[track].number(state_word(value));
  }
  take_cells(moment, report);
  for (const CellReading& reading : moment.cells) {
    bool active = reading.set == Cell::ACTIVE;
    float& best = moment.values[ECIO];
    if (active) best = std::isnan(best) ? reading.level : std::max(best, reading.level);
  }
}

void Recording::add_events(int64_t time, const Json& list) {
  if (!list.is_array()) return;
  for (const Json& event : list) {
    if (events.size() < MAX_EVENTS) {
      events.push_back({time, state_word(event)});
    } else {
      ++more_events;
    }
  }
}

void Recording::set_report(const Json& report) {
  latest = report;
  at_rest_ = {};
  take_report(at_rest_, report);
  at_rest_.values[BARS] = bars_of(item_of(report, "state", "bars"));
}

// While the link is lost the report is an old one.
void Recording::add_sample(const Json& line, const Json& report) {
  bool lost = text_of(member_of(line, "link")) == "lost";
  if (report.is_object() && (!lost || latest.empty())) latest = report;
  auto time = time_of(member_of(line, "time"));
  if (!time) {
    ++without_time;
    return;
  }
  Moment moment;
  moment.time = *time;
  auto take_word = [&](TrackId track) {
    moment.states[track] = words[track].number(state_word(member_of(line, TRACKS[track].key)));
  };
  take_word(LINK_STATE);
  take_word(DEFERRED);
  if (!lost) {  // which is reason enough for no bars
    take_report(moment, report);
    take_word(NO_BARS);
    moment.values[BARS] = bars_of(member_of(line, "bars"));
    bool unexplained = std::isnan(moment.values[BARS]) && moment.states[NO_BARS] == 0;
    if (unexplained) moment.states[NO_BARS] = words[NO_BARS].number("no reason given");
  }
  add_events(*time, member_of(line, "events"));
  moments.push_back(std::move(moment));
}

void Recording::add_log_report(const Json& time, const Json& report) {
  latest = report;
  auto when = time_of(time);
  if (!when) {
    ++without_time;
    return;
  }
  Moment moment;
  moment.time = *when;
  take_report(moment, report);
  moment.values[BARS] = bars_of(item_of(report, "state", "bars"));
  std::string exception = state_word(item_of(report, "errors", "exception"));
  if (!exception.empty()) add_events(*when, Json::array({"exception: " + exception}));
  moments.push_back(std::move(moment));
}

// The time between two samples around this one: their lower median, so that neither a gap nor a
// user who changes the interval misleads it.
int64_t Recording::usual_step(size_t moment) const {
  std::array<int64_t, 2 * STEPS_AROUND + 1> steps;
  size_t count = 0;
  size_t first = moment > STEPS_AROUND ? moment - STEPS_AROUND : 0;
  size_t last = std::min(moment + STEPS_AROUND + 1, moments.size() - 1);
  for (size_t i = first; i < last; ++i) {
    int64_t step = moments[i + 1].time - moments[i].time;
    if (step > 0) steps[count++] = step;
  }
  if (count == 0) return USUAL_STEP_MS;
  auto middle = steps.begin() + static_cast<std::ptrdiff_t>((count - 1) / 2);
  std::nth_element(steps.begin(), middle, steps.begin() + static_cast<std::ptrdiff_t>(count));
  return *middle;
}

int64_t Recording::end_of(size_t moment) const {
  int64_t start = moments[moment].time, step = usual_step(moment);
  if (moment + 1 == moments.size()) return start + step;
  int64_t next = moments[moment + 1].time;
  bool lost = words[LINK_STATE].word(moments[moment].states[LINK_STATE]) == "lost";
  bool gap = next - start > 3 * step + (lost ? REOPENING_MS : SILENCE_MS);
  return gap ? start + step : next;
}

void Recording::finish() {
  auto earlier = [](const auto& a, const auto& b) { return a.time < b.time; };
  std::stable_sort(moments.begin(), moments.end(), earlier);
  std::stable_sort(events.begin(), events.end(), earlier);
  for (size_t i = 0; i < moments.size(); ++i) moments[i].end = end_of(i);
}

const Moment& Recording::latest_cells() const {
  auto heard = [](const Moment& moment) { return !moment.cells.empty(); };
  auto found = std::find_if(moments.rbegin(), moments.rend(), heard);
  return found == moments.rend() ? at_rest_ : *found;
}

const Moment& Recording::latest_level() const {
  auto heard = [](const Moment& moment) { return !std::isnan(moment.values[RSSI]); };
  auto found = std::find_if(moments.rbegin(), moments.rend(), heard);
  return found == moments.rend() ? at_rest_ : *found;
}

}  // namespace records
