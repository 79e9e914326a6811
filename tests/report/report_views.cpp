// What the report makes of the record, as texts for the transcripts.
#include "tests/report/report_views.h"

#include <cstring>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>

#include "include/vurn.h"
#include "include/zop_diag_info.h"
#include "report/field_test.h"
#include "report/rendering.h"

namespace test {

std::string plans(DeferredState state) {
  static const DeferredSituation SITUATIONS[] = {{3, 10}, {3, 11}, {4, -5}, {4, 11}};
  std::string text = prv_deferred_state_name(state);
  for (int event = DEFERRED_NONE; event <= DEFERRED_EVENT_COUNT; ++event) {
    std::vector<std::string> outcomes;
    for (const DeferredSituation& situation : SITUATIONS) {
      DeferredPlan plan = prv_deferred_plan(state, static_cast<DeferredEvent>(event), situation);
      std::string actions;
      for (DeferredAction action : plan.actions) actions += " 0+NFODSsT"[action];
      actions.erase(actions.find_last_not_of(' ') + 1);
      outcomes.push_back(actions + " > " + prv_deferred_state_name(plan.next));
    }
    text += "\n  " + std::string(prv_deferred_event_name(event)) + ": " + joined(outcomes, ". ");
  }
  return text;
}

static bool contains(const Words& words, const std::string& text) {
  return std::any_of(words.begin(), words.end(), [&](auto& word) { return text_of(word) == text; });
}

static std::string name(const zop_log_item& row, int code) {
  auto value = static_cast<uint8_t*>(const_cast<void*>(row.value));
  memset(value, code == 255 ? 0xFF : 0, static_cast<size_t>(row.size));  // wider ones hold -1
  *value = static_cast<uint8_t>(code);
  const char* text = nullptr;
  int length = 0;
  row.format(&row, &text, &length, 0);
  std::string name(text, static_cast<size_t>(length));
  return name.ends_with(" Unknown") ? "" : "  " + std::to_string(code) + ": " + name + "\n";
}

std::string code_names(const Words& labels) {
  std::string text;
  for (const zop_log_item* row = gLogItems; row->type != ZOP_ITEM_END; ++row) {
    if (row->label == nullptr || !contains(labels, row->label)) continue;
    text += std::string(row->label) + "\n";
    for (int code = 0; code < 256; ++code) text += name(*row, code);
  }
  return text.substr(0, text.size() - 1);
}

std::string render(unsigned size) {
  std::string text(size + 1, '#');
  int whole = prv_zop_output_to_log_string(text.data(), static_cast<int>(size), 1);
  size_t end = text.find_first_of(std::string("\0#", 2));
  return (whole != 0 ? "whole, " : "cut, ") + std::to_string(end) +
         (end < 200 ? " " + in_quotes(text.substr(0, end)) : "");
}

// A list with its repeated entries counted.
static std::string shortened(const std::string& line) {
  std::istringstream in(line);
  std::vector<std::string> entries{std::istream_iterator<std::string>(in), {}};
  return line.size() < 150 ? line : joined(entries, " ");
}

std::string report_items(World& world, const Words& labels, bool syslog) {
  unsigned mask = std::exchange(gZOPModuleLogMask, unsigned{VURN_LOG_INFO});
  std::string whole(8192, '\0'), chosen;
  prv_zop_output_to_log_string(whole.data(), 8192, 1);
  if (syslog) whole = std::regex_replace(world.log_text(), std::regex(","), "\n");
  world.log.clear();
  gZOPModuleLogMask = mask;
  std::istringstream lines(whole.c_str());
  for (std::string line; std::getline(lines, line);) {
    std::string label = line.substr(0, line.find(syslog ? '=' : ':'));
    if (contains(labels, label)) chosen += (chosen.empty() ? "" : "\n") + shortened(line);
  }
  return chosen;
}

void set_record(const Words& words) {
  zop_diag_info& d = gDiagInfo;
  static const std::map<std::string, const void*> OTHERS = {
      {"cells", d.screen.radio.wcdma.cells},   {"neighbors", d.screen.radio.gsm.neighbor_count},
      {"best", d.screen.radio.gsm.best_count}, {"sim status", &d.sim_status},
      {"lock status", &d.lock_status},         {"ring counts", d.ring_counts},
      {"last ring", &d.last_ring_origin},      {"operator count", &d.oplmn_count},
      {"asleep", &d.asleep_seconds},           {"everything", &d}};
  auto other = OTHERS.find(text_of(words[0]));
  const zop_log_item* item = gLogItems;
  while (other == OTHERS.end() && item->label != text_of(words[0])) ++item;
  const void* place = other != OTHERS.end() ? other->second : item->value;
  Bytes bytes = bytes_of({words.begin() + 2, words.end()});
  memcpy(const_cast<void*>(place), bytes.data(), bytes.size());
}

}  // namespace test
