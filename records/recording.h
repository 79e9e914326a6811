// What a page shows of one device: samples over time, events, cells and the latest report. Of each
// sample only what is drawn is kept, so that a recording of several days fits in memory.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "records/report.h"

namespace records {

// Numbers over time. A number that is missing or impossible is NaN.
enum SeriesId : size_t { RSSI, RSCP, ECIO, TX_POWER, BARS, SERIES_COUNT };
struct Quantity {
  const char* name;
  const char* unit;
  const char* style;  // class of its line
};
extern const std::array<Quantity, SERIES_COUNT> QUANTITIES;

// States over time.
enum TrackId : size_t {
  LINK_STATE,
  NO_BARS,
  NETWORK,
  MODE,
  DATA_MODE,
  BAND,
  CELL,
  SERVICE,
  REGISTRATION,
  PDP,
  CALL,
  DEFERRED,
  TRACK_COUNT
};
struct Track {
  const char* title;
  const char* section;  // of the report; null: a field of the sample
  const char* key;
};
extern const std::array<Track, TRACK_COUNT> TRACKS;

// Words of a track by number; 0 is no word: unknown.
class Words {
 public:
  uint32_t number(const std::string& word);
  const std::string& word(uint32_t number) const { return words_[number]; }
  size_t count() const { return words_.size(); }

 private:
  std::vector<std::string> words_{""};
  std::unordered_map<std::string, uint32_t> numbers_;
};

// Identifies a cell.
struct CellId {
  bool gsm;
  int code;  // scrambling code; ARFCN of a GSM cell
  int bsic;  // of a GSM cell
  bool operator==(const CellId&) const = default;
};
struct CellReading {
  uint32_t cell;  // in Recording::cells
  Cell::Set set;
  float level;  // Ec/Io in dB; RSSI in dBm of a GSM cell
};

constexpr float MISSING = std::numeric_limits<float>::quiet_NaN();

// A sample as it is drawn.
struct Moment {
  int64_t time = 0;  // ms since 1970, UTC
  int64_t end = 0;   // when it ends: at the next moment, or where a gap begins
  std::array<float, SERIES_COUNT> values = {MISSING, MISSING, MISSING, MISSING, MISSING};
  std::array<uint32_t, TRACK_COUNT> states{};
  std::vector<CellReading> cells;
};

struct Event {
  int64_t time;
  std::string text;
};

class Recording {
 public:
  std::string title;   // of its part of the page
  std::string source;  // the file
  std::vector<Moment> moments;
  std::vector<Event> events;
  size_t more_events = 0;  // left out: there are too many
  std::array<Words, TRACK_COUNT> words;
  std::vector<CellId> cells;
  Json latest = Json::object();  // by section
  size_t without_time = 0;       // samples left out for want of a time
  size_t left_out = 0;           // lines that were cut, or changes of a sample that is missing

  void add_sample(const Json& line, const Json& report);
  void add_log_report(const Json& time, const Json& report);
  // A report on its own, with nothing recorded over time.
  void set_report(const Json& report);
  // Call when all has been added.
  void finish();

  size_t event_count() const { return events.size() + more_events; }
  // The last moment with cells, and the last one with a level; an empty one when there is none.
  const Moment& latest_cells() const;
  const Moment& latest_level() const;

 private:
  void take_report(Moment& moment, const Json& report);
  void take_cells(Moment& moment, const Json& report);
  void add_cell(Moment& moment, const Cell& cell);
  void add_events(int64_t time, const Json& list);
  int64_t usual_step(size_t moment) const;
  int64_t end_of(size_t moment) const;

  Moment at_rest_;  // what a report without a time says
};

// "2026-11-21T14:20:05.120Z" in ms since 1970.
std::optional<int64_t> time_of(const Json& text);

}  // namespace records
