// The settings of a scenario: one table of keys, ranges and places in the model.
#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "simulator/model/model.h"

namespace sim {

// A word that may stand for a number in a scenario.
struct Word {
  const char* name;
  int value;
};

struct NumberSetting {
  const char* key;  // "section.name"
  int& (*place)(Model&);
  int min, max;
  std::vector<Word> words = {};
};

struct TextSetting {
  const char* key;
  std::string& (*place)(Model&);
  size_t longest;
  bool digits_only;
};

// Null when none has this key.
template <typename Settings>
auto find_by_key(const Settings& settings, const std::string& key) {
  auto found = std::ranges::find_if(settings, [&](auto& setting) { return key == setting.key; });
  return found == std::end(settings) ? nullptr : &*found;
}

const NumberSetting* find_number_setting(const std::string& key);
const TextSetting* find_text_setting(const std::string& key);

// Every setting as "key", tab, what it takes; sorted.
std::vector<std::string> describe_settings();

// Whether any setting belongs to this section.
bool is_section(const std::string& name);

}  // namespace sim
