// Reading scenarios. Every key must be known and every value in its range: a misspelt scenario
// would simulate a modem that nobody asked for.
#include "simulator/scenario/scenario.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <sstream>

#include "simulator/line/private_file.h"
#include "simulator/scenario/list_settings.h"

namespace sim {

using Changes = std::vector<std::function<void(Model&)>>;

namespace {
// Positions in the file, for error messages.
struct Place {
  const std::string& file;
  [[noreturn]] void error(const toml::source_region& region, const std::string& reason) const {
    throw ScenarioError(file + ":" + std::to_string(region.begin.line) + ": " + reason);
  }
};

// The values that a number may have, and its name in errors.
struct Range {
  std::string key;
  int min, max;
  const std::vector<Word>& words;
};
}  // namespace

static int value_in_range(const Place& place, const Range& setting, const toml::node& node) {
  if (auto word = node.value_exact<std::string>()) {
    auto found = std::ranges::find_if(setting.words, [&](Word w) { return *word == w.name; });
    if (found != setting.words.end()) return found->value;
    std::string known;
    for (Word w : setting.words) known += std::string(known.empty() ? "" : ", ") + w.name;
    place.error(node.source(),
                setting.key + ": unknown word \"" + *word + "\"" +
                    (known.empty() ? "; it takes a number" : "; known are " + known));
  }
  if (auto flag = node.value_exact<bool>()) return *flag ? 1 : 0;
  auto number = node.value_exact<int64_t>();
  if (!number) place.error(node.source(), setting.key + " takes a whole number");
  if (*number < setting.min || *number > setting.max) {
    place.error(node.source(), setting.key + " takes " + std::to_string(setting.min) + " to " +
                                   std::to_string(setting.max));
  }
  return static_cast<int>(*number);
}

static std::string text_in_bounds(const Place& place, const TextSetting& setting,
                                  const toml::node& node) {
  auto text = node.value_exact<std::string>();
  if (!text) place.error(node.source(), std::string(setting.key) + " takes a text in quotes");
  if (text->size() > setting.longest) {
    place.error(node.source(), std::string(setting.key) + " takes up to " +
                                   std::to_string(setting.longest) + " characters");
  }
  if (setting.digits_only && text->find_first_not_of("0123456789") != std::string::npos) {
    place.error(node.source(), std::string(setting.key) + " takes digits");
  }
  return *text;
}

// The elements of a list that a setting takes.
static const toml::array& list_of(const Place& place, const std::string& key, size_t most,
                                  const toml::node& node) {
  const toml::array* array = node.as_array();
  if (array == nullptr) place.error(node.source(), key + " takes a list in [ ]");
  if (array->size() > most) {
    place.error(node.source(), key + " takes up to " + std::to_string(most) + " entries");
  }
  return *array;
}

static std::vector<int> row_of(const Place& place, const RecordSetting& setting,
                               const toml::node& node) {
  const toml::table* table = node.as_table();
  bool complete = table != nullptr && table->size() == setting.fields.size();
  std::vector<int> row;
  std::string names;
  for (const RecordField& field : setting.fields) {
    names += std::string(names.empty() ? "" : ", ") + field.name;
    complete = complete && table->contains(field.name);
    if (!complete) continue;
    std::string key = std::string(setting.key) + "." + field.name;
    row.push_back(
        value_in_range(place, {key, field.min, field.max, field.words}, *table->get(field.name)));
  }
  if (!complete)
    place.error(node.source(), std::string(setting.key) + " entries are { " + names + " }");
  return row;
}

static void add_records(const Place& place, const RecordSetting& setting, const toml::node& node,
                        Changes& changes) {
  Rows rows;
  for (const toml::node& entry : list_of(place, setting.key, setting.most, node)) {
    rows.push_back(row_of(place, setting, entry));
  }
  changes.push_back([&setting, rows](Model& model) { setting.store(model, rows); });
}

// Parses a text by a function that throws std::invalid_argument.
template <typename Parse>
static auto parsed(const Place& place, const std::string& key, const toml::node& node,
                   Parse parse) {
  auto text = node.value_exact<std::string>();
  if (!text) place.error(node.source(), key + " takes a text in quotes");
  try {
    return parse(*text);
  } catch (const std::invalid_argument& error) {
    place.error(node.source(), key + ": " + error.what());
  }
}

static Bytes bytes_of(const Place& place, const std::string& key, const toml::node& node,
                      size_t most) {
  return parsed(place, key, node, [=](const std::string& text) { return parse_hex(text, most); });
}

static void add_plmns(const Place& place, const PlmnSetting& setting, const toml::node& node,
                      Changes& changes) {
  std::vector<Plmn> plmns;
  for (const toml::node& entry : list_of(place, setting.key, setting.most, node)) {
    plmns.push_back(parsed(place, setting.key, entry, parse_plmn));
  }
  changes.push_back([&setting, plmns](Model& model) { setting.place(model) = plmns; });
}

// A number or text of a memory region, or its default.
template <typename Value>
static Value field_of(const Place& place, const toml::table& region, const char* key, Value usual) {
  const toml::node* node = region.get(key);
  if (node == nullptr) return usual;
  auto value = node->value_exact<Value>();
  if (!value) place.error(node->source(), std::string("device.memory.") + key + ": wrong type");
  return *value;
}

static int64_t number_of(const Place& place, const toml::table& region, const char* key,
                         int64_t usual, int64_t most) {
  int64_t value = field_of(place, region, key, usual);
  if (value < 0 || value > most) {
    place.error(region.source(),
                std::string("device.memory.") + key + " takes 0 to " + std::to_string(most));
  }
  return value;
}

static MemoryRegion region_of(const Place& place, const toml::node& node, size_t most) {
  const toml::table* table = node.as_table();
  bool named = table != nullptr && table->contains("name") && table->contains("length");
  if (!named) place.error(node.source(), "device.memory entries have a name and a length");
  for (auto&& [key, value] : *table) {
    constexpr const char* KEYS[] = {"name",       "base", "length",    "description",
                                    "preference", "fill", "unreadable"};
    if (std::ranges::find(KEYS, key.str()) == std::end(KEYS))
      place.error(value.source(), "unknown device.memory." + std::string(key.str()));
  }
  auto base = static_cast<uint32_t>(number_of(place, *table, "base", 0, 0xFFFFFFFF));
  auto length =
      static_cast<size_t>(number_of(place, *table, "length", 0, static_cast<int64_t>(most)));
  std::optional<uint8_t> fill;
  if (table->contains("fill"))
    fill = static_cast<uint8_t>(number_of(place, *table, "fill", 0, 0xFF));
  return {static_cast<int>(number_of(place, *table, "preference", 1, 0xFF)),
          base,
          length,
          fill,
          field_of(place, *table, "description", std::string()),
          field_of(place, *table, "name", std::string()),
          static_cast<size_t>(number_of(place, *table, "unreadable", static_cast<int64_t>(length),
                                        static_cast<int64_t>(length)))};
}

static void add_memory(const Place& place, const toml::node& node, Changes& changes) {
  std::vector<MemoryRegion> regions;
  size_t left = MAX_MEMORY;
  for (const toml::node& entry : list_of(place, "device.memory", MAX_REGIONS, node)) {
    regions.push_back(region_of(place, entry, left));
    left -= regions.back().length;
  }
  changes.push_back([regions](Model& model) { model.device.memory = regions; });
}

static void add_change(const Place& place, const std::string& key, const toml::node& node,
                       Changes& changes) {
  if (const NumberSetting* setting = find_number_setting(key)) {
    int value = value_in_range(place, {key, setting->min, setting->max, setting->words}, node);
    changes.push_back([setting, value](Model& model) { setting->place(model) = value; });
  } else if (const TextSetting* setting_of_text = find_text_setting(key)) {
    std::string text = text_in_bounds(place, *setting_of_text, node);
    changes.push_back([setting_of_text, text](Model& m) { setting_of_text->place(m) = text; });
  } else if (const RecordSetting* records = find_record_setting(key)) {
    add_records(place, *records, node, changes);
  } else if (const PlmnSetting* plmns = find_plmn_setting(key)) {
    add_plmns(place, *plmns, node, changes);
  } else if (int item = nv_item_of_key(key); item >= 0) {
    Bytes data = bytes_of(place, key, node, NV_BYTES);
    changes.push_back([item, data](Model& model) { model.nv[item] = data; });
  } else if (key == "device.memory") {
    add_memory(place, node, changes);
  } else if (key == "device.partition") {
    Bytes data = bytes_of(place, key, node, MAX_PARTITION);
    changes.push_back([data](Model& model) { model.device.partition = data; });
  } else {
    place.error(node.source(), "unknown setting \"" + key + "\"");
  }
}

static void add_section(const Place& place, const std::string& section, const toml::node& node,
                        Changes& changes) {
  const toml::table* table = node.as_table();
  if (table == nullptr) place.error(node.source(), "\"" + section + "\" is a table of settings");
  for (auto&& [key, value] : *table) {
    add_change(place, section + "." + std::string(key.str()), value, changes);
  }
}

static bool flag(const Place& place, const toml::node& node, const char* key) {
  auto value = node.value_exact<bool>();
  if (!value || !*value) place.error(node.source(), std::string(key) + " takes true");
  return true;
}

namespace {
// The events that a listening host sees, and how they change the modem.
struct EventWord {
  const char* name;
  void (*raise)(Model&);
};
}  // namespace

static const EventWord EVENT_WORDS[] = {
    {"call-originated",
     [](Model& m) {
       m.state.call = ZOP_CALL_CONVERSATION;
       m.device.events |= EVENT_ORIGINATED;
     }},
    {"pdp-activated",
     [](Model& m) {
       m.state.pdp = ZOP_PDP_ACTIVE;
       m.device.events |= EVENT_ACTIVATED;
     }},
    {"pdp-deactivated",
     [](Model& m) {
       m.state.pdp = ZOP_PDP_INACTIVE;
       m.device.events |= EVENT_DEACTIVATED;
     }},
    {"call-ended",
     [](Model& m) {
       m.state.call = ZOP_CALL_IDLE;
       m.device.events |= EVENT_ENDED;
     }},
};

static void add_event(const Place& place, const toml::node& node, Changes& changes) {
  auto word = node.value_exact<std::string>();
  std::string known;
  for (const EventWord& row : EVENT_WORDS) {
    if (word && *word == row.name) return changes.emplace_back(row.raise), void();
    known += std::string(known.empty() ? "" : ", ") + row.name;
  }
  place.error(node.source(), "event takes one of " + known);
}

static TimelineEntry read_timeline_entry(const Place& place, const toml::table& table) {
  TimelineEntry entry;
  auto seconds = table["time"].value<double>();
  if (!seconds || !(*seconds >= 0 && *seconds < 1e9)) {
    place.error(table.source(), "a time line entry needs a time in seconds");
  }
  entry.at = std::chrono::duration_cast<Time>(std::chrono::duration<double>(*seconds));
  for (auto&& [name, node] : table) {
    std::string key(name.str());
    if (key == "time") continue;
    if (key == "hang_up" && flag(place, node, "hang_up")) {
      entry.line = TimelineEntry::HANGS_UP;
    } else if (key == "replug" && flag(place, node, "replug")) {
      entry.line = TimelineEntry::COMES_BACK;
    } else if (key == "event") {
      add_event(place, node, entry.changes);
    } else if (is_section(key)) {
      add_section(place, key, node, entry.changes);
    } else {
      place.error(node.source(), "unknown key \"" + key + "\" in a time line entry");
    }
  }
  return entry;
}

// Calls read for each table of the array that node must be.
template <typename Read>
static void for_each_table(const Place& place, const toml::node& node, Read read) {
  const toml::array* array = node.as_array();
  if (array == nullptr) place.error(node.source(), "write this as [[...]]");
  for (const toml::node& element : *array) {
    if (!element.is_table()) place.error(element.source(), "write this as [[...]]");
    read(*element.as_table());
  }
}

static Fault read_fault(const Place& place, const toml::table& entry) {
  auto text = entry["switch"].value_exact<std::string>();
  if (!text || entry.size() != 1) place.error(entry.source(), "a fault is one switch = \"...\"");
  try {
    return parse_fault(*text);
  } catch (const std::invalid_argument& error) {
    place.error(entry["switch"].node()->source(), error.what());
  }
}

static void read_clock(const Place& place, const toml::node& start, Scenario& scenario) {
  auto time = start.value_exact<toml::date_time>();
  if (!time) place.error(start.source(), "clock.start takes a time like 2010-07-24T13:02:59Z");
  std::tm t{};
  t.tm_year = time->date.year - 1900;
  t.tm_mon = time->date.month - 1;
  t.tm_mday = time->date.day;
  t.tm_hour = time->time.hour;
  t.tm_min = time->time.minute;
  t.tm_sec = time->time.second;
  scenario.model.clock.start = timegm(&t);
  scenario.clock_is_set = true;
}

static Scenario read_scenario(const Place& place, toml::table& root) {
  Scenario scenario;
  if (auto* clock = root["clock"].as_table(); clock != nullptr && clock->contains("start")) {
    read_clock(place, *clock->get("start"), scenario);
    clock->erase("start");
  }
  Changes initial;
  for (auto&& [name, node] : root) {
    std::string key(name.str());
    if (key == "title" && node.is_string()) {
      scenario.title = *node.value<std::string>();
    } else if (key == "at") {
      for_each_table(place, node, [&](const toml::table& entry) {
        scenario.timeline.push_back(read_timeline_entry(place, entry));
      });
    } else if (key == "fault") {
      for_each_table(place, node, [&](const toml::table& entry) {
        scenario.faults.push_back(read_fault(place, entry));
      });
    } else if (is_section(key)) {
      add_section(place, key, node, initial);
    } else {
      place.error(node.source(), "unknown section \"" + key + "\"");
    }
  }
  for (auto& change : initial) change(scenario.model);
  std::ranges::stable_sort(scenario.timeline, {}, &TimelineEntry::at);
  return scenario;
}

Scenario parse_scenario(const std::string& text, const std::string& name) {
  Place place{name};
  try {
    toml::table root = toml::parse(text, name);
    return read_scenario(place, root);
  } catch (const toml::parse_error& error) {
    place.error(error.source(), std::string(error.description()));
  }
}

Scenario load_scenario(const std::string& path) {
  if (int error = read_error(path)) throw ScenarioError(path + ": " + strerror(error));
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return parse_scenario(text.str(), path);
}

}  // namespace sim
