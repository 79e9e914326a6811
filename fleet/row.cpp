// A row is made of the JSON that parse-log prints: so both mean the same.
#include "fleet/row.h"

#include <simdjson.h>
#include <xxhash.h>

#include <charconv>

#include "include/zop.h"
#include "records/utf8_text.h"

namespace fleet {

namespace json = simdjson::ondemand;

// ---- the name of a row ----

// The lines of a report may come in any order, and again.
static int64_t key_of(const records::LogReport& report) {
  uint64_t seed = XXH3_64bits(report.host.data(), report.host.size());
  uint64_t sum = XXH3_64bits_withSeed(report.stamp.data(), report.stamp.size(), seed);
  for (const std::string& line : report.lines)
    sum += XXH3_64bits_withSeed(line.data(), line.size(), seed);
  return static_cast<int64_t>(sum >> 1);  // positive: alike in all engines
}

static int64_t time_of(std::string_view stamp) {
  uint32_t seconds = 0;
  std::from_chars(stamp.data(), stamp.data() + stamp.size(), seconds, 16);
  return seconds;
}

// ---- values ----

static Value state_of(json::object state) {
  Value value;
  value.known = state["code"].get(value.number) == simdjson::SUCCESS;
  if (!value.known) value.number = -1;
  value.known = state["text"].get(value.text) == simdjson::SUCCESS;
  return value;
}

static Value value_of(json::value& element) {
  switch (element.type().value_unsafe()) {
    case json::json_type::number:
      return {true, element.get_int64().value(), {}};
    case json::json_type::string:
      return {true, -1, element.get_string().value()};
    case json::json_type::boolean:
      return {true, element.get_bool().value() ? 1 : 0, {}};
    case json::json_type::object:
      return state_of(element.get_object());
    default:
      return {};
  }
}

// What is between the quotes of a key.
static std::string_view raw_text(json::raw_json_string key) {
  const char* end = key.raw();
  while (*end != '"') end += *end == '\\' ? 2 : 1;
  return {key.raw(), static_cast<size_t>(end - key.raw())};
}

static const Column* find_column(std::string_view section, std::string_view key) {
  for (const Column& column : COLUMNS) {
    if (column.key == key && column.section == section) return &column;
  }
  return nullptr;
}

static Value best_ecio(json::array cells) {
  Value best;
  for (json::object cell : cells) {
    std::string_view set = cell["set"];
    int64_t level = cell["ecio_db"];
    if (set == "active" && (!best.known || level > best.number)) best = {true, level, {}};
  }
  return best;
}

static bool has_network(json::array networks, const Value& mcc, const Value& mnc) {
  for (json::object network : networks) {
    std::string_view country, code;
    if (network["mcc"].get(country) == simdjson::SUCCESS && mcc.known && country == mcc.text &&
        network["mnc"].get(code) == simdjson::SUCCESS && mnc.known && code == mnc.text)
      return true;
  }
  return false;
}

// ---- items ----

// Goes once over the text of a report: items that have a column go into the row, others stay
// together in the rest.
class RowMaker::Reader {
 public:
  explicit Reader(Row& row) : row_(row) {}

  void read(std::string& text);
  const std::string& rest() const { return rest_; }
  bool is_network_forbidden() const { return forbidden_; }

 private:
  const Column* column_of(std::string_view section, std::string_view key);
  void take_item(std::string_view section, std::string_view key, json::value& value);
  void take_list(std::string_view section, std::string_view key, json::array list);
  void add_to_rest(std::string_view section, std::string_view key, std::string_view text);

  json::parser parser_;
  json::document document_;
  Row& row_;
  std::string rest_;
  std::string_view rest_section_;  // the one that is open
  struct Place {
    std::string section, key;
    const Column* column;
  };
  std::vector<Place> places_;  // of the items of the last report: the next one has the same
  size_t place_ = 0;
  bool forbidden_ = false;  // the serving network is in the list of forbidden ones
};

const Column* RowMaker::Reader::column_of(std::string_view section, std::string_view key) {
  if (place_ == places_.size()) places_.push_back({"", "", nullptr});
  Place& place = places_[place_++];
  if (place.key != key || place.section != section) {
    place = {std::string(section), std::string(key), find_column(section, key)};
  }
  return place.column;
}

void RowMaker::Reader::add_to_rest(std::string_view section, std::string_view key,
                                   std::string_view text) {
  bool first_of_section = section != rest_section_;
  if (first_of_section) {
    rest_ += rest_.empty() ? "{\"" : "},\"";
    rest_ += section;
    rest_ += "\":{";
    rest_section_ = section;
  }
  rest_ += first_of_section ? "\"" : ",\"";
  rest_ += key;
  rest_ += "\":";
  rest_ += text;
}

void RowMaker::Reader::take_list(std::string_view section, std::string_view key, json::array list) {
  if (key == "cells") row_[column("ecio_db")] = best_ecio(list);
  if (key == "forbidden") {
    forbidden_ = has_network(list, row_[column("mcc")], row_[column("mnc")]);
  }
  list.reset();
  add_to_rest(section, key, list.raw_json());
}

void RowMaker::Reader::take_item(std::string_view section, std::string_view key,
                                 json::value& value) {
  if (const Column* found = column_of(section, key)) {
    row_[static_cast<size_t>(found - COLUMNS)] = value_of(value);
    return;
  }
  switch (value.type().value_unsafe()) {
    case json::json_type::array:
      return take_list(section, key, json::array(value.get_array()));
    case json::json_type::object:
      return add_to_rest(section, key, json::object(value.get_object()).raw_json());
    case json::json_type::null:
      return;  // what is not known is not in the rest
    default:
      return add_to_rest(section, key, value.raw_json_token());
  }
}

void RowMaker::Reader::read(std::string& text) {
  text.reserve(text.size() + simdjson::SIMDJSON_PADDING);
  document_ = parser_.iterate(text.data(), text.size(), text.capacity());
  place_ = 0;
  forbidden_ = false;
  rest_.clear();
  rest_section_ = {};
  json::object report = document_["report"];
  for (json::field section : report) {
    std::string_view name = raw_text(section.key());
    json::object items = section.value();
    for (json::field item : items) take_item(name, raw_text(item.key()), item.value());
  }
  rest_ += rest_.empty() ? "{}" : "}}";
}

// ---- columns that are made of others ----

enum : int64_t { NO_CAUSE = ZOP_CAUSE_NONE, REGULAR_END = 36, CAUSE_UNAVAILABLE = 255 };

static Value why(const Value& cause) {
  bool none = !cause.known || cause.number == NO_CAUSE || cause.number == CAUSE_UNAVAILABLE;
  return none ? Value() : cause;
}

// A cause may be left from before; it counts with a result that is a rejection.
static Value first_reject(const Row& row) {
  static constexpr std::pair<size_t, size_t> RESULTS[] = {
      {column("gmm_attach"), column("gmm_attach_cause")},
      {column("gmm_routing_update"), column("gmm_routing_cause")},
      {column("mm_attach"), column("mm_attach_cause")},
      {column("mm_location_update"), column("mm_location_cause")}};
  for (auto [result, cause] : RESULTS) {
    Value value = why(row[cause]);
    if (value.known && row[result].text.ends_with("rejected")) return value;
  }
  return {};
}

// What the module's detectors look for; whether it lasts, only several reports can tell.
static std::string stuck_marks(const Row& row, bool is_network_forbidden) {
  auto is = [&](size_t column, int64_t code) {
    return row[column].known && row[column].number == code;
  };
  std::string marks;
  auto mark = [&](const char* text) { marks.append(marks.empty() ? "" : ", ").append(text); };
  if (is(column("gmm_routing_update"), ZOP_RA_UPDATE_REJECTED) &&
      is(column("gmm_routing_cause"), ZOP_CAUSE_PROTOCOL_ERROR))
    mark("illegal network reject");
  if (is(column("call"), ZOP_CALL_IDLE) &&
      (is(column("pdp_state"), ZOP_PDP_ACTIVE) || is(column("pdp_state"), ZOP_PDP_ACTIVE_PENDING)))
    mark("data connection without a call");
  if (is_network_forbidden && why(row[column("pdp_cause")]).known &&
      (is(column("service"), ZOP_SERVICE_LIMITED) || is(column("service"), ZOP_SERVICE_NONE)))
    mark("all networks forbidden");
  return marks;
}

void RowMaker::add_made_columns() {
  row_[column("rejected")] = first_reject(row_);
  Value refused = why(row_[column("pdp_cause")]);
  if (refused.number != REGULAR_END) row_[column("refused")] = refused;
  stuck_ = stuck_marks(row_, reader_->is_network_forbidden());
  if (!stuck_.empty()) row_[column("stuck")] = {true, 0, stuck_};
  row_[column("rest")] = {true, 0, reader_->rest()};
}

// ---- the row ----

void KeptRow::keep(const Row& made) {
  texts.clear();
  size_t size = 0;
  for (const Value& value : made) size += value.text.size();
  texts.reserve(size);
  row = made;
  for (Value& value : row) {
    size_t at = texts.size();
    texts += value.text;
    value.text = std::string_view(texts).substr(at);
  }
}

RowMaker::RowMaker() : reader_(std::make_unique<Reader>(row_)) {}
RowMaker::~RowMaker() = default;

const Row& RowMaker::row_of(const records::LogReport& report) {
  json_.clear();
  records::append_row(json_, items_, report);
  row_.fill({});
  reader_->read(json_);
  host_ = records::safe_text(report.host);
  row_[column("host")] = {true, 0, host_};
  row_[column("time")] = {true, time_of(report.stamp), {}};
  row_[column("key")] = {true, key_of(report), {}};
  add_made_columns();
  return row_;
}

}  // namespace fleet
